// SPDX-License-Identifier: Apache-2.0
#include "tool.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

class Cpu : public ToolTest {
protected:
    // A row `rows_back` before the newest slot: processor N draws N x 10 + `base_w`, processors 5
    // to 8 have no reading.
    void store_row(uint16_t rows_back, uint16_t base_w) {
        constexpr uint16_t kNone = PWRMGT_NO_POWER;
        pwrmgt_cpu_pwr_sample_t sample{
            rows_back, kNewestSlot - rows_back * 30U, {0, 0, 0, 0, kNone, kNone, kNone, kNone}};
        for (uint16_t at = 0; at < 4; ++at) {
            sample.cpu_w[at] = static_cast<uint16_t>((at + 1) * 10 + base_w);
        }
        ASSERT_EQ(pwrmgt_update_cpu_pwr_hist_table(connection(), sample), 0U);
    }
};

TEST_F(Cpu, HistoryOfAllIsATableWithDashesForWhatIsMissing) {
    store_row(0, 100);
    store_row(1, 90);

    const Finished run = tool({"cpu", "history"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "Power of each processor, last 690 s up to 2023-11-14T22:13:30Z: 2 rows, newest "
              "first; newest reading 0 s old; database " +
                  working_file() +
                  "\n"
                  "Time (UTC)            CPU 1 W  CPU 2 W  CPU 3 W  CPU 4 W  CPU 5 W  CPU 6 W  "
                  "CPU 7 W  CPU 8 W\n"
                  "2023-11-14T22:13:00Z      110      120      130      140        -        -      "
                  "  -        -\n"
                  "2023-11-14T22:12:30Z      100      110      120      130        -        -      "
                  "  -        -\n");
}

TEST_F(Cpu, HistoryOfOneAsJsonNamesTheProcessor) {
    store_row(0, 100);

    const json document = json_of({"cpu", "history", "3", "--rows", "4", "--json"});

    EXPECT_EQ(values_of(document), parsed(R"({
        "schema": "pwrmgtctl.cpu.history/1", "cpu": 3, "period_s": 210, "entry_width_s": null, "age_s": 0, "stale": false, "order": "newest_first",
        "end_s": 1700000010, "end_utc": "2023-11-14T22:13:30Z",
        "entries": [{"index": 0, "timestamp_s": 1699999980, "time_utc": "2023-11-14T22:13:00Z",
                     "cpu3": {"avg_w": 130}}]})"));
}

TEST_F(Cpu, HistoryOfAllAsJsonHasNullForWhatIsMissing) {
    store_row(0, 0);

    const json document = json_of({"cpu", "history", "all", "--json"});

    EXPECT_EQ(document["cpu"], "all");
    ASSERT_EQ(document["entries"].size(), 1);
    EXPECT_EQ(document["entries"][0]["cpu4"]["avg_w"], 40);
    EXPECT_TRUE(document["entries"][0]["cpu5"]["avg_w"].is_null());
}

TEST_F(Cpu, RowsBoundHowManyAreShown) {
    for (uint16_t back = 0; back < 6; ++back) {
        store_row(back, 100);
    }

    EXPECT_EQ(json_of({"cpu", "history", "--rows", "1", "--json"})["entries"].size(), 1);
    EXPECT_EQ(json_of({"cpu", "history", "1", "--rows", "4", "--json"})["entries"].size(), 4);
    EXPECT_EQ(json_of({"cpu", "history", "--json"})["entries"].size(), 6);
}

TEST_F(Cpu, OldestFirstTurnsTheRowsRound) {
    store_row(0, 100);
    store_row(1, 90);

    const json entries = json_of({"cpu", "history", "1", "--oldest-first", "--json"})["entries"];

    EXPECT_EQ(entries[0]["cpu1"]["avg_w"], 100);
    EXPECT_EQ(entries[1]["cpu1"]["avg_w"], 110);
}

TEST_F(Cpu, LatestIsTheNewestRow) {
    store_row(0, 100);
    store_row(1, 90);

    const Finished one = tool({"cpu", "latest", "1"});
    const json all = json_of({"cpu", "latest", "--json"});

    EXPECT_EQ(one.out,
              "Power of processor 1, last 2 min up to 2023-11-14T22:13:30Z: 1 row, newest first; "
              "newest reading 0 s old; "
              "database " +
                  working_file() +
                  "\n"
                  "Time (UTC)            CPU 1 W\n"
                  "2023-11-14T22:13:00Z      110\n");
    ASSERT_EQ(all["entries"].size(), 1);
    EXPECT_EQ(all["entries"][0]["timestamp_s"], 1699999980);
    EXPECT_TRUE(all["entries"][0]["cpu8"]["avg_w"].is_null());
}

TEST_F(Cpu, NoRowIsExit4) {
    store_row(4, 100);

    const Finished latest = tool({"cpu", "latest"});
    const Finished history = tool({"cpu", "history", "8", "--rows", "1"});

    EXPECT_EQ(latest.exit, 4);
    EXPECT_EQ(latest.out, "");
    EXPECT_EQ(latest.err,
              "pwrmgtctl: no row of processor power recorded in the last 2 min (status 8)\n");
    EXPECT_EQ(history.exit, 4);
}

}  // namespace
}  // namespace pwrmgt::tooltest
