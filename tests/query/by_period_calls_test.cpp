// SPDX-License-Identifier: Apache-2.0
// What the three queries by period call, in which order, and what they fill.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

class ByPeriodCalls : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        policy_is_read();
    }

    uint32_t ask_power(uint32_t domain, uint32_t period, uint32_t count) {
        return pwrmgt_get_history_power(static_cast<pwrmgt_pwr_domain>(domain), period,
                                        power.data(), count);
    }
    uint32_t ask_psu(uint32_t bay, uint32_t period, uint32_t count) {
        return pwrmgt_get_history_psu_powers(bay, period, psu.data(), count);
    }
    uint32_t ask_perf(uint32_t period, uint32_t count) {
        return pwrmgt_get_history_performance(period, perf.data(), count);
    }

    std::vector<pwrmgt_hist_pwr_sample_t> power{121, untouched_power()};
    std::vector<pwrmgt_hist_psu_sample_t> psu{121, untouched_psu()};
    std::vector<pwrmgt_hist_perf_sample_t> perf{121, untouched_perf()};
};

TEST_F(ByPeriodCalls, PowerQueryMakesTheseCallsAndNoOthers) {
    platform().answer_rows(steady_rows(1'699'999'980, 1, {100, 120, 80, 110, 130, 90}));

    EXPECT_EQ(ask_power(0, 0, 1), 0U);

    EXPECT_EQ(
        platform().calls,
        (Calls{"quoril", "open localhost root '' vek_pwr_db 0", "time",
               "query HistPowers24HrMem [Timestamp,SysAvgDc,SysMaxDc,SysMinDc,SysAvgAc,"
               "SysMaxAc,SysMinAc] where Timestamp>=1699999980 AND Timestamp<=1700000000 "
               "order Timestamp DESC",
               "row_count", "step", "uint 0", "short_uint 1", "short_uint 2", "short_uint 3",
               "short_uint 4", "short_uint 5", "short_uint 6", "step", "free_result", "close"}));
    EXPECT_EQ(fields(power[0]), (Row{0, 1'699'999'980, 100, 120, 80, 110, 130, 90}));
    EXPECT_EQ(fields(power[1]), fields(untouched_power()));
}

TEST_F(ByPeriodCalls, SupplyQueryMakesTheseCallsAndNoOthers) {
    platform().answer_rows(steady_rows(1'699'999'980, 1, {110, 100}));

    EXPECT_EQ(ask_psu(5, 1, 120), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"quoril", "open localhost root '' vek_pwr_db 0", "time",
                     "query HistExtraPowers24HrMem [Timestamp,Ps5AvgAc,Ps5AvgDc] where "
                     "Timestamp>=1699978560 AND Timestamp<=1700000000 order Timestamp DESC",
                     "row_count", "step", "uint 0", "short_uint 1", "short_uint 2", "step",
                     "free_result", "close"}));
    EXPECT_EQ(fields(psu[0]), (Row{0, 1'699'999'980, 110, 100}));
    EXPECT_EQ(fields(psu[119]), (Row{119, 0, 65535, 65535}));
    EXPECT_EQ(fields(psu[120]), fields(untouched_psu()));
}

TEST_F(ByPeriodCalls, PerformanceQueryMakesTheseCallsAndNoOthers) {
    platform().answer_rows(steady_rows(1'699'999'980, 1, {40, 60, 20, 41, 42, 43}));

    EXPECT_EQ(ask_perf(0, 1), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"quoril", "open localhost root '' vek_pwr_db 0", "time",
                     "query HistPowers24HrMem [Timestamp,SysAvgPtg,SysMaxPtg,SysMinPtg,CpuAvgPtg,"
                     "MemAvgPtg,IOAvgPtg] where Timestamp>=1699999980 AND Timestamp<=1700000000 "
                     "order Timestamp DESC",
                     "row_count", "step", "uint 0", "uchar 1", "uchar 2", "uchar 3", "uchar 4",
                     "uchar 5", "uchar 6", "step", "free_result", "close"}));
    EXPECT_EQ(fields(perf[0]), (Row{0, 1'699'999'980, 40, 60, 20, 41, 42, 43}));
}

TEST_F(ByPeriodCalls, UnreadPolicyIsReadFirstOnAConnectionOfItsOwn) {
    g_power_policy_flag = 255;
    platform().answer_table("PowerPolicy", {{1, 4, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}});
    platform().answer_table("HistPowers24HrMem", steady_rows(1'699'999'980, 1, {110, 100}));

    EXPECT_EQ(ask_psu(1, 0, 1), 0U);

    const Calls first(platform().calls.begin(), platform().calls.begin() + 5);
    EXPECT_THAT(first, testing::ElementsAre("quoril", "open localhost root '' vek_pwr_db 0",
                                            testing::StartsWith("query PowerPolicy ["), "row_count",
                                            "step"));
    EXPECT_EQ(platform().count("open"), 2U);
    EXPECT_EQ(platform().count("close"), 2U);
    EXPECT_EQ(g_power_policy_flag, 1);
}

TEST_F(ByPeriodCalls, EachPeriodFoldsItsOwnNumberOfSamples) {
    std::vector<Row> counted;
    for (int64_t at = 0; at < 24; ++at) {
        counted.push_back({100 + at, 100 + at, 100 + at});
    }
    const std::vector<Row> expected{
        {100, 100, 100}, {102, 105, 100}, {105, 111, 100}, {111, 123, 100}};

    for (uint32_t period = 0; period < 4; ++period) {
        platform().answer_rows(rows_back_from(1'699'999'980, counted));

        EXPECT_EQ(ask_power(2, period, 1), 0U);

        EXPECT_EQ((Row{power[0].avg, power[0].max, power[0].min}), expected[period]) << period;
    }
}
