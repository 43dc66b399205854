// SPDX-License-Identifier: Apache-2.0
// What the three queries by window call and fill: filters, entry counts, the bound on the bay.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

constexpr int32_t kEnd = 1'700'000'000;
constexpr const char* kBayCount = "/dc/tavn/dm/planar/0/psu/maxcount";
constexpr const char* kAskBayCount = "byte /dc/tavn/dm/planar/0/psu/maxcount";

}  // namespace

class ByWindowCalls : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        policy_is_read();
    }

    uint32_t ask_power(uint32_t domain, int32_t end, int32_t minutes, int32_t samples) {
        return pwrmgt_get_history_power_by_tm(static_cast<pwrmgt_pwr_domain>(domain), end, minutes,
                                              samples, power.data(), &count);
    }
    uint32_t ask_psu(int32_t bay, int32_t minutes, int32_t samples) {
        return pwrmgt_get_history_psu_power_by_tm(bay, kEnd, minutes, samples, psu.data(), &count);
    }
    uint32_t ask_perf(int32_t minutes, int32_t samples) {
        return pwrmgt_get_history_performance_by_tm(kEnd, minutes, samples, perf.data(), &count);
    }

    // The filter that the power query sends.
    std::string filter(int32_t end, int32_t minutes) {
        platform().reset();
        ask_power(1, end, minutes, 24);
        const std::string line = platform().named("query").at(0);
        const size_t from = line.find(" where ") + 7;
        return line.substr(from, line.find(" order ") - from);
    }

    // Status of a bay on a machine whose property tells a number of bays; a row is stored.
    uint32_t ask_bay(int32_t bay, uint32_t bays) {
        platform().set_property(kBayCount, bays);
        return ask_bay_untold(bay);
    }
    uint32_t ask_bay_untold(int32_t bay) {
        platform().calls.clear();
        platform().answer_table("HistPowers24HrMem", steady_rows(1'699'999'980, 1, {110, 100}));
        platform().answer_table("HistExtraPowers24HrMem",
                                steady_rows(1'699'999'980, 1, {210, 200}));
        return ask_psu(bay, 1, 2);
    }

    uint32_t count = 77;
    std::vector<pwrmgt_hist_pwr_sample_t> power{2881, untouched_power()};
    std::vector<pwrmgt_hist_psu_sample_t> psu{2881, untouched_psu()};
    std::vector<pwrmgt_hist_perf_sample_t> perf{2881, untouched_perf()};
};

// -- calls

TEST_F(ByWindowCalls, PowerQueryMakesTheseCallsAndNoOthers) {
    platform().answer_rows(steady_rows(1'699'999'980, 1, {100, 120, 80, 110, 130, 90}));

    EXPECT_EQ(ask_power(0, kEnd, 5, 10), 0U);

    EXPECT_EQ(
        platform().calls,
        (Calls{"quoril", kOpen,
               "query HistPowers24HrMem [Timestamp,SysAvgDc,SysMaxDc,SysMinDc,SysAvgAc,"
               "SysMaxAc,SysMinAc] where Timestamp>=1699999680 AND Timestamp<=1700000000 "
               "order Timestamp DESC",
               "step", "uint 0", "short_uint 1", "short_uint 2", "short_uint 3", "short_uint 4",
               "short_uint 5", "short_uint 6", "step", "free_result", "close"}));
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(fields(power[0]), (Row{0, 1'699'999'980, 100, 120, 80, 110, 130, 90}));
    EXPECT_EQ(fields(power[1]), fields(untouched_power()));
}

TEST_F(ByWindowCalls, SupplyQueryMakesTheseCallsAndNoOthers) {
    platform().set_property(kBayCount, 6);
    platform().answer_rows(steady_rows(1'699'999'980, 1, {110, 100}));

    EXPECT_EQ(ask_psu(12, 1, 1), 0U);

    EXPECT_EQ(
        platform().calls,
        (Calls{"quoril", kAskBayCount, kOpen,
               "query HistExtraPowers24HrMem [Timestamp,Ps12AvgAc,Ps12AvgDc] where "
               "Timestamp>=1699999920 AND Timestamp<=1700000000 order Timestamp DESC",
               "step", "uint 0", "short_uint 1", "short_uint 2", "step", "free_result", "close"}));
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(fields(psu[0]), (Row{0, 1'699'999'980, 110, 100}));
    EXPECT_EQ(fields(psu[1]), (Row{1, 0, 65535, 65535}));
    EXPECT_EQ(fields(psu[2]), fields(untouched_psu()));
}

TEST_F(ByWindowCalls, PerformanceQueryMakesTheseCallsAndNoOthers) {
    platform().answer_rows(steady_rows(1'699'999'980, 1, {40, 60, 20, 41, 42, 43}));

    EXPECT_EQ(ask_perf(1, 2), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"quoril", kOpen,
                     "query HistPowers24HrMem [Timestamp,SysAvgPtg,SysMaxPtg,SysMinPtg,CpuAvgPtg,"
                     "MemAvgPtg,IOAvgPtg] where Timestamp>=1699999920 AND Timestamp<=1700000000 "
                     "order Timestamp DESC",
                     "step", "uint 0", "uchar 1", "uchar 2", "uchar 3", "uchar 4", "uchar 5",
                     "uchar 6", "step", "free_result", "close"}));
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(fields(perf[0]), (Row{0, 1'699'999'980, 40, 60, 20, 41, 42, 43}));
    EXPECT_EQ(fields(perf[1]), fields(untouched_perf()));
}

TEST_F(ByWindowCalls, ProcessorAndMemoryPowerReadTheirOwnColumns) {
    ask_power(1, kEnd, 0, 1);
    ask_power(2, kEnd, 0, 1);

    EXPECT_THAT(
        platform().named("query"),
        testing::ElementsAre(
            testing::HasSubstr("HistPowers24HrMem [Timestamp,CpuAvgPwr,CpuMaxPwr,CpuMinPwr] "),
            testing::HasSubstr("HistPowers24HrMem [Timestamp,MemAvgPwr,MemMaxPwr,MemMinPwr] ")));
}

// -- filters

TEST_F(ByWindowCalls, StartIsCutToThirtySecondsAndTheEndIsAsGiven) {
    EXPECT_EQ(filter(1'700'000'009, 1), "Timestamp>=1699999920 AND Timestamp<=1700000009");
    EXPECT_EQ(filter(1'700'000'010, 1), "Timestamp>=1699999950 AND Timestamp<=1700000010");
    EXPECT_EQ(filter(1'700'000'010, 1440), "Timestamp>=1699913610 AND Timestamp<=1700000010");
}

TEST_F(ByWindowCalls, WindowOfNoMinutesIsNotWidened) {
    EXPECT_EQ(filter(1'700'000'000, 0), "Timestamp>=1699999980 AND Timestamp<=1700000000");
    EXPECT_EQ(filter(1'700'000'010, 0), "Timestamp>=1700000010 AND Timestamp<=1700000010");
}

TEST_F(ByWindowCalls, TimesBeforeTheEpochAreCutTowardZero) {
    EXPECT_EQ(filter(0, 0), "Timestamp>=0 AND Timestamp<=0");
    EXPECT_EQ(filter(29, 1), "Timestamp>=-30 AND Timestamp<=29");
    EXPECT_EQ(filter(-45, 0), "Timestamp>=-30 AND Timestamp<=-45");
}

TEST_F(ByWindowCalls, NegativeMinutesStartAfterTheEnd) {
    EXPECT_EQ(filter(1'700'000'010, -1), "Timestamp>=1700000070 AND Timestamp<=1700000010");
}

TEST_F(ByWindowCalls, ArithmeticWrapsIn32Bits) {
    EXPECT_EQ(filter(INT32_MIN, 1), "Timestamp>=2147483580 AND Timestamp<=-2147483648");
    EXPECT_EQ(filter(INT32_MAX, 0), "Timestamp>=2147483640 AND Timestamp<=2147483647");
    EXPECT_EQ(filter(0, INT32_MIN), "Timestamp>=0 AND Timestamp<=0");
}

// -- entries

TEST_F(ByWindowCalls, EntriesAreTheSlotsOfTheWindowFolded) {
    struct Case {
        int32_t minutes, samples;
        uint32_t entries;
    };
    for (const Case& c : {Case{1440, 24, 120}, Case{1440, 1, 2880}, Case{1440, 7, 411},
                          Case{5, 3, 3}, Case{1, 2, 1}, Case{1, 3, 0}, Case{12, 24, 1}}) {
        EXPECT_EQ(ask_perf(c.minutes, c.samples), 8U);

        EXPECT_EQ(count, c.entries) << c.minutes << " minutes by " << c.samples;
        EXPECT_EQ(fields(perf[c.entries]), fields(untouched_perf()));
        perf.assign(2881, untouched_perf());
    }
}

TEST_F(ByWindowCalls, NoMinutesAreNoEntriesAnd8) {
    for (const int32_t minutes : {0, -1, -1440, INT32_MIN}) {
        count = 77;
        platform().answer_rows(steady_rows(1'699'999'980, 1, {40, 60, 20, 41, 42, 43}));

        EXPECT_EQ(ask_perf(minutes, 1), 8U);

        EXPECT_EQ(count, 0U) << minutes;
        EXPECT_EQ(fields(perf[0]), fields(untouched_perf()));
    }
}

TEST_F(ByWindowCalls, EmptyWindowLeavesPowerEntriesAndMarksTheOthers) {
    EXPECT_EQ(ask_power(0, kEnd, 1, 1), 8U);
    EXPECT_EQ(ask_psu(1, 1, 1), 8U);
    EXPECT_EQ(ask_perf(1, 1), 8U);

    EXPECT_EQ(fields(power[0]), fields(untouched_power()));
    EXPECT_EQ(fields(psu[1]), (Row{1, 0, 65535, 65535}));
    EXPECT_EQ(fields(perf[1]), (Row{1, 0, 255, 255, 255, 255, 255, 255}));
}

TEST_F(ByWindowCalls, GridStartsAtTheNewestRowNotAtTheEnd) {
    platform().answer_rows(rows_back_from(1'699'999'815, {{100, 120, 80}, {110, 130, 90}}));

    EXPECT_EQ(ask_power(1, kEnd, 5, 2), 0U);

    EXPECT_EQ(fields(power[0]), (Row{0, 1'699'999'815, 105, 130, 80, 7, 7, 7}));
    EXPECT_EQ(fields(power[4]), (Row{4, 0, 65535, 65535, 65535, 7, 7, 7}));
    EXPECT_EQ(fields(power[5]), fields(untouched_power()));
}

// -- the bound on the bay

TEST_F(ByWindowCalls, BayThreePassesOnATwoBayMachine) {
    EXPECT_EQ(ask_bay(3, 2), 0U);
    EXPECT_THAT(platform().named("query").at(0), testing::HasSubstr("Ps3AvgAc,Ps3AvgDc"));

    EXPECT_EQ(ask_bay(4, 2), 8U);
    EXPECT_EQ(platform().calls, (Calls{"quoril", kAskBayCount}));
}

TEST_F(ByWindowCalls, BayFourIsTheLastOnAFourBayMachine) {
    EXPECT_EQ(ask_bay(4, 4), 0U);

    EXPECT_EQ(ask_bay(5, 4), 8U);
    EXPECT_EQ(platform().calls, (Calls{"quoril", kAskBayCount}));
}

TEST_F(ByWindowCalls, BayFourIsTheLastWithoutTheProperty) {
    EXPECT_EQ(ask_bay_untold(4), 0U);

    EXPECT_EQ(ask_bay_untold(5), 8U);
    EXPECT_EQ(platform().calls, (Calls{"quoril", kAskBayCount}));
}

TEST_F(ByWindowCalls, RefusedBayLeavesCountAndEntries) {
    EXPECT_EQ(ask_bay_untold(5), 8U);

    EXPECT_EQ(count, 77U);
    EXPECT_EQ(fields(psu[0]), fields(untouched_psu()));
}

TEST_F(ByWindowCalls, AnyOtherNumberOfBaysBoundsNothing) {
    for (const uint32_t bays : {0U, 1U, 3U, 5U, 6U, 8U, 12U, 255U}) {
        EXPECT_EQ(ask_bay(12, bays), 0U) << bays;
        EXPECT_EQ(ask_bay(13, bays), 3U) << bays;
    }
}

TEST_F(ByWindowCalls, BayFiveIsTheFirstOfTheExtraTable) {
    EXPECT_EQ(ask_bay(4, 12), 0U);
    EXPECT_EQ(fields(psu[0]), (Row{0, 1'699'999'980, 110, 100}));

    EXPECT_EQ(ask_bay(5, 12), 0U);
    EXPECT_EQ(fields(psu[0]), (Row{0, 1'699'999'980, 210, 200}));
}

TEST_F(ByWindowCalls, OtherQueriesDoNotAskForTheBays) {
    ask_power(0, kEnd, 1, 1);
    ask_perf(1, 1);

    EXPECT_EQ(platform().count("byte"), 0U);
}
