// SPDX-License-Identifier: Apache-2.0
#include "tool.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

class Realtime : public ToolTest {};

TEST_F(Realtime, StoredReadingIsATableWithItsAge) {
    store_realtime(kReading, kNow - 7);

    const Finished run = tool({"power", "realtime"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "Stored reading of 2023-11-14T22:13:23Z, 7 s old; database " +
                           working_file() +
                           "\n"
                           "Reading                   Value\n"
                           "System AC power, W          350\n"
                           "System DC power, W          300\n"
                           "Processor DC power, W       100\n"
                           "Memory DC power, W           40\n"
                           "System utilisation, %        30\n"
                           "Processor utilisation, %     20\n"
                           "Memory utilisation, %        10\n"
                           "I/O utilisation, %            5\n");
}

TEST_F(Realtime, StoredReadingAsJsonHasUnitsInItsKeys) {
    store_realtime(kReading, kNow - 7);

    const json document = json_of({"power", "realtime", "--json"});

    EXPECT_EQ(values_of(document), parsed(R"({
        "schema": "pwrmgtctl.power.realtime/1", "timestamp_s": 1700000003,
        "time_utc": "2023-11-14T22:13:23Z", "age_s": 7, "stale": false, "firmware_word": null,
        "system": {"ac_w": 350, "dc_w": 300, "pct": 30}, "cpu": {"dc_w": 100, "pct": 20},
        "memory": {"dc_w": 40, "pct": 10}, "io": {"pct": 5}})"));
}

TEST_F(Realtime, MissingReadingsAreDashes) {
    store_realtime({0, 0, 65535, 300, 65535, 65535, 255, 255, 255, 255}, kNow);

    const std::vector<std::string> lines = lines_of(tool({"power", "realtime"}).out);

    ASSERT_EQ(lines.size(), 10U);
    EXPECT_EQ(lines[2], "System AC power, W            -");
    EXPECT_EQ(lines[3], "System DC power, W          300");
    EXPECT_EQ(lines[6], "System utilisation, %         -");
    EXPECT_EQ(lines[9], "I/O utilisation, %            -");
}

TEST_F(Realtime, MissingReadingsAreNullInJson) {
    store_realtime({0, 0, 65535, 300, 65535, 65535, 255, 255, 255, 255}, kNow);

    const json document = json_of({"power", "realtime", "--json"});

    EXPECT_TRUE(document["system"]["ac_w"].is_null());
    EXPECT_EQ(document["system"]["dc_w"], 300);
    EXPECT_TRUE(document["cpu"]["pct"].is_null());
    EXPECT_TRUE(document["io"]["pct"].is_null());
}

TEST_F(Realtime, ReadingStampedAfterNowIsToldAsInTheFuture) {
    store_realtime(kReading, kNow + 90);

    EXPECT_NE(tool({"power", "realtime"}).out.find(", 90 s in the future;"), std::string::npos);
    EXPECT_EQ(json_of({"power", "realtime", "--json"})["age_s"], -90);
}

TEST_F(Realtime, ReadingOfTwoSlotsAgoIsNotStale) {
    store_realtime(kReading, kNow - 60);

    EXPECT_EQ(tool({"power", "realtime"}).exit, 0);
    EXPECT_EQ(json_of({"power", "realtime", "--json"})["stale"], false);
}

TEST_F(Realtime, OlderReadingIsShownAsStaleWithExit5) {
    store_realtime(kReading, kNow - 61);

    const Finished run = tool({"power", "realtime"});

    EXPECT_EQ(run.exit, 5);
    EXPECT_NE(run.out.find("Stored reading of 2023-11-14T22:12:29Z, 61 s old, STALE; database "),
              std::string::npos)
        << run.out;
    EXPECT_EQ(lines_of(run.out).size(), 10U);
    EXPECT_EQ(run.err, "pwrmgtctl: the newest reading is 61 s old\n");
}

TEST_F(Realtime, OlderReadingIsStaleInJson) {
    store_realtime(kReading, kNow - 7200);

    const Finished run = tool({"power", "realtime", "--json"});

    EXPECT_EQ(run.exit, 5);
    EXPECT_EQ(parsed(run.out)["stale"], true);
    EXPECT_EQ(parsed(run.out)["age_s"], 7200);
    EXPECT_EQ(run.err, "pwrmgtctl: the newest reading is 2 h old\n");
}

TEST_F(Realtime, NoStoredRowIsExit4) {
    const Finished run = tool({"power", "realtime"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "pwrmgtctl: no real-time reading is stored (status 8)\n");
}

TEST_F(Realtime, PolicyThatRefusesPowerManagementIsExit3StoredAndLive) {
    store_realtime(kReading, kNow);
    store_policy(2, 1);

    EXPECT_EQ(tool({"power", "realtime"}).exit, 3);
    EXPECT_EQ(tool({"power", "realtime", "--live"}).exit, 3);
}

// The trace has 290 W, 60 W and 35 W at 22:13:06 of its day, and supplies that give out 75 W and
// 150 W; the simulator's word of a reading is its time.
TEST_F(Realtime, LiveReadingComesFromTheFirmwareAndIsNew) {
    const Finished run = tool_with({kTrace}, {"power", "realtime", "--live", "--json"});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(values_of(parsed(run.out)), parsed(R"({
        "schema": "pwrmgtctl.power.realtime/1", "timestamp_s": 1700000010,
        "time_utc": "2023-11-14T22:13:30Z", "age_s": 0, "stale": false, "firmware_word": 1699999975,
        "system": {"ac_w": 290, "dc_w": 225, "pct": 0}, "cpu": {"dc_w": 60, "pct": 0},
        "memory": {"dc_w": 35, "pct": 0}, "io": {"pct": 0}})"));
}

TEST_F(Realtime, LiveReadingAsTextNamesTheFirmware) {
    const std::vector<std::string> lines =
        lines_of(tool_with({kTrace}, {"power", "realtime", "--live"}).out);

    ASSERT_EQ(lines.size(), 10U);
    EXPECT_EQ(lines[0], "Live reading of 2023-11-14T22:13:30Z, 0 s old; asked of the firmware");
    EXPECT_EQ(lines[2], "System AC power, W          290");
}

TEST_F(Realtime, FirmwareWithoutAReadingIsExit1) {
    const Finished run = tool({"power", "realtime", "--live"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err,
              "pwrmgtctl: the firmware did not answer for the real-time reading, refused, or "
              "answered another length (status 31)\n");
}

TEST_F(Realtime, FirmwareThatCannotBeReachedIsExit1) {
    const Finished run = tool_with({"VEKDB_IPMI=/dev/null"}, {"power", "realtime", "--live"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("pwrmgtctl: the firmware did not answer for the real-time reading, "
                           "refused, or answered another length (status 31)\n"),
              std::string::npos)
        << run.err;
}

TEST_F(Realtime, TimingIsAskedFor) {
    store_realtime(kReading, kNow);

    EXPECT_NE(tool({"power", "realtime", "--timing"}).out.find("\nThe query took "),
              std::string::npos);
    EXPECT_TRUE(json_of({"power", "realtime", "--json", "--timing"})["query_ms"].is_number());
}

}  // namespace
}  // namespace pwrmgt::tooltest
