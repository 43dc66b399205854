// SPDX-License-Identifier: Apache-2.0
#include "tool.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

class Summary : public ToolTest {};

TEST_F(Summary, SystemPowerIsATableOfBothGroups) {
    store_slot(0, slot_of(300));
    store_slot(1, slot_of(280));

    const Finished run = tool({"power", "summary", "--minutes", "60"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(
        run.out,
        "System power, last 1 h up to 2023-11-14T22:13:30Z; newest reading 0 s old; database " +
            working_file() +
            "\n"
            "Reading        Value\n"
            "DC average, W    290\n"
            "DC highest, W    310\n"
            "DC lowest, W     270\n"
            "AC average, W    340\n"
            "AC highest, W    360\n"
            "AC lowest, W     320\n");
}

TEST_F(Summary, SystemPowerAsJsonHoldsBothGroups) {
    store_slot(0, slot_of(300));

    const json document = json_of({"power", "summary", "--minutes", "5", "--json"});

    EXPECT_EQ(values_of(document), parsed(R"({
        "schema": "pwrmgtctl.power.summary/1", "domain": "system", "period_s": 300, "age_s": 0, "stale": false,
        "dc": {"avg_w": 300, "max_w": 310, "min_w": 290},
        "ac": {"avg_w": 350, "max_w": 360, "min_w": 340}})"));
}

TEST_F(Summary, ProcessorsAndMemoryHaveOneGroup) {
    store_slot(0, slot_of(300));

    const json cpu = json_of({"power", "summary", "--domain", "cpu", "--minutes", "5", "--json"});
    const json memory =
        json_of({"power", "summary", "--domain", "memory", "--minutes", "5", "--json"});

    EXPECT_EQ(cpu["dc"], parsed(R"({"avg_w": 100, "max_w": 110, "min_w": 90})"));
    EXPECT_FALSE(cpu.contains("ac"));
    EXPECT_EQ(memory["dc"], parsed(R"({"avg_w": 40, "max_w": 45, "min_w": 35})"));
}

TEST_F(Summary, SupplySaysUpToWhichPowerItsMeanIsRight) {
    store_slot(0, slot_of(300));

    const Finished run = tool({"psu", "summary", "3", "--minutes", "60"});

    EXPECT_EQ(run.out,
              "Power of supply 3, last 1 h up to 2023-11-14T22:13:30Z; age not known; database " +
                  working_file() +
                  "\n"
                  "Reading            Value\n"
                  "AC in average, W     300\n"
                  "DC out average, W    290\n"
                  "Summed in 16 bits: right while the mean is at most 541 W.\n");
}

TEST_F(Summary, SupplyAsJsonNamesItsBay) {
    store_slot(0, slot_of(300));

    const json document = json_of({"psu", "summary", "2", "--minutes", "10", "--json"});

    EXPECT_EQ(document["schema"], "pwrmgtctl.psu.summary/1");
    EXPECT_EQ(document["psu"], 2);
    EXPECT_EQ(document["right_up_to_w"], 3120);
    EXPECT_EQ(document["ac"], parsed(R"({"avg_w": 200})"));
    EXPECT_EQ(document["dc"], parsed(R"({"avg_w": 190})"));
}

TEST_F(Summary, SlotWithoutAcLeavesTheAcMeanAndMaximumOut) {
    store_slot(0, slot_of(300));
    pwrmgt_hist_sample_t half = slot_of(280);
    half.system.avg2 = half.system.max2 = half.system.min2 = PWRMGT_NO_POWER;
    store_slot(1, half);

    const json document = json_of({"power", "summary", "--minutes", "5", "--json"});

    EXPECT_EQ(document["dc"]["avg_w"], 290);
    EXPECT_EQ(document["ac"], parsed(R"({"avg_w": null, "max_w": null, "min_w": 340})"));
}

TEST_F(Summary, NothingRecordedIsExit4) {
    store_slot(30, slot_of(300));

    const Finished system = tool({"power", "summary", "--minutes", "5"});
    const Finished psu = tool({"psu", "summary", "7", "--minutes", "60"});

    EXPECT_EQ(system.exit, 4);
    EXPECT_EQ(system.out, "");
    EXPECT_EQ(system.err, "pwrmgtctl: no reading recorded in the last 5 min (status 8)\n");
    EXPECT_EQ(psu.exit, 4);
    EXPECT_EQ(psu.err, "pwrmgtctl: no reading recorded of supply 7 in the last 1 h (status 8)\n");
}

TEST_F(Summary, SlotsWithoutAReadingAreExit4) {
    store_slot(0, empty_slot());

    const Finished run = tool({"power", "summary", "--minutes", "5", "--json"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.out, "");
}

TEST_F(Summary, PlatformWithoutPowerManagementIsExit3) {
    store_policy(2, 1);

    const Finished run = tool({"power", "summary", "--minutes", "5"});

    EXPECT_EQ(run.exit, 3);
    EXPECT_EQ(run.err, "pwrmgtctl: power management is not offered on this platform (status 10)\n");
}

TEST_F(Summary, ClockBefore1970IsExit1) {
    const Finished run = launch({{"power", "summary", "--minutes", "5"}, {}, -100000, Sink::file});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "pwrmgtctl: the clock shows no time from 1970 to 2038-01-19 (status 31)\n");
}

}  // namespace
}  // namespace pwrmgt::tooltest
