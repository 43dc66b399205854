// SPDX-License-Identifier: Apache-2.0
// The summary of the last minutes: checks in order, calls, what it fills and what it leaves.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace duration_summary_tests {
namespace {

constexpr uint32_t kOneSupply = 3;

uint32_t ask(uint32_t domain, int32_t minutes, pwrmgt_hist_pwr_sample_t* summary,
             uint32_t psu = 0) {
    return pwrmgt_get_duration_summary_power(static_cast<pwrmgt_pwr_domain>(domain), minutes,
                                             summary, static_cast<psu_id_t>(psu));
}

void one_power_row(Recorder& recorder) {
    g_power_policy_flag = 0;
    recorder.answer_table("HistPowers24HrMem",
                          steady_rows(1'699'999'980, 1, {100, 120, 80, 110, 130, 90}));
}

void one_psu_row(Recorder& recorder) {
    g_power_policy_flag = 0;
    recorder.answer_table("HistExtraPowers24HrMem", steady_rows(1'699'999'980, 1, {110, 100}));
}

}  // namespace

class DurationSummary : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        policy_is_read();
    }

    pwrmgt_hist_pwr_sample_t summary = untouched_power();
};

// -- checks, each before the next

TEST_F(DurationSummary, NullSummaryIs1BeforeAnyOtherCheck) {
    policy_is_read(2);

    EXPECT_EQ(ask(4, -1, nullptr, 13), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(DurationSummary, GateRefusesBeforeTheConnection) {
    policy_is_read(2);

    EXPECT_EQ(ask(4, 5, &summary), 10U);

    EXPECT_EQ(platform().calls, Calls{"quoril"});
    EXPECT_EQ(fields(summary), fields(untouched_power()));
}

TEST_F(DurationSummary, GateIsAskedWithItsOwnNameAndOffersItOnQuoril) {
    platform().quoril = true;
    one_power_row(platform());

    EXPECT_EQ(ask(PWRMGT_DOMAIN_SYSTEM, 0, &summary), 0U);
    EXPECT_EQ(summary.avg, 100);
}

TEST_F(DurationSummary, NoConnectionIs2BeforeTheClockAndTheDomain) {
    platform().clock = -1;
    platform().fail(Operation::open);

    EXPECT_EQ(ask(4, 5, &summary), 2U);

    EXPECT_EQ(platform().calls, (Calls{"quoril", kOpen}));
    EXPECT_EQ(fields(summary), fields(untouched_power()));
}

TEST_F(DurationSummary, ClockBelowZeroIs31BeforeTheDomain) {
    platform().clock = -1;

    EXPECT_EQ(ask(4, 5, &summary), 31U);

    EXPECT_EQ(platform().calls, (Calls{"quoril", kOpen, "time", "close"}));
    EXPECT_EQ(fields(summary), fields(untouched_power()));
}

TEST_F(DurationSummary, DomainAboveThreeIs3WithoutAQuery) {
    for (const uint32_t domain : {4U, 255U, 4'294'967'295U}) {
        platform().calls.clear();

        EXPECT_EQ(ask(domain, 5, &summary, 1), 3U);

        EXPECT_EQ(platform().calls, (Calls{"quoril", kOpen, "time", "close"}));
    }
    EXPECT_EQ(fields(summary), fields(untouched_power()));
}

TEST_F(DurationSummary, BayOutside1To12Is3WithoutAQuery) {
    for (const uint32_t psu : {0U, 13U, 4'294'967'295U}) {
        platform().calls.clear();

        EXPECT_EQ(ask(kOneSupply, 5, &summary, psu), 3U);

        EXPECT_EQ(platform().calls, (Calls{"quoril", kOpen, "time", "close"}));
    }
    EXPECT_EQ(fields(summary), fields(untouched_power()));
}

TEST_F(DurationSummary, BayIsLookedAtForOneSupplyOnly) {
    for (const uint32_t domain : {0U, 1U, 2U}) {
        EXPECT_EQ(ask(domain, 5, &summary, 13), 8U) << domain;
    }

    EXPECT_EQ(platform().count("query HistPowers24HrMem"), 3U);
}

TEST_F(DurationSummary, FailedQueryIs3HoweverItFails) {
    for (const Mode mode : {Mode::error, Mode::error_with_handle, Mode::no_handle}) {
        platform().reset();
        platform().fail(Operation::query, -1, 1, mode);

        EXPECT_EQ(ask(PWRMGT_DOMAIN_SYSTEM, 5, &summary), 3U);

        EXPECT_EQ(platform().count("row_count"), 0U);
        EXPECT_EQ(platform().count("free_result"), mode == Mode::error_with_handle ? 1U : 0U);
        EXPECT_EQ(platform().calls.back(), "close");
    }
    EXPECT_EQ(fields(summary), fields(untouched_power()));
}

TEST_F(DurationSummary, NoRowsAre8AndLeaveTheSummary) {
    for (const uint32_t domain : {0U, 1U, 2U, 3U}) {
        EXPECT_EQ(ask(domain, 5, &summary, 1), 8U) << domain;
    }

    EXPECT_EQ(fields(summary), fields(untouched_power()));
    EXPECT_EQ(platform().count("step"), 0U);
}

TEST_F(DurationSummary, RowCountBelowZeroCountsAsNoRows) {
    one_power_row(platform());
    platform().fail(Operation::row_count);

    EXPECT_EQ(ask(PWRMGT_DOMAIN_SYSTEM, 5, &summary), 8U);

    EXPECT_EQ(platform().count("step"), 0U);
}

// -- calls

TEST_F(DurationSummary, SystemSummaryMakesTheseCallsAndNoOthers) {
    one_power_row(platform());

    EXPECT_EQ(ask(PWRMGT_DOMAIN_SYSTEM, 5, &summary), 0U);

    EXPECT_EQ(
        platform().calls,
        (Calls{"quoril", kOpen, "time",
               "query HistPowers24HrMem [Timestamp,SysAvgDc,SysMaxDc,SysMinDc,SysAvgAc,"
               "SysMaxAc,SysMinAc] where Timestamp>=1699999680 AND Timestamp<=1700000000 "
               "order Timestamp DESC",
               "row_count", "step", "uint 0", "short_uint 1", "short_uint 2", "short_uint 3",
               "short_uint 4", "short_uint 5", "short_uint 6", "step", "free_result", "close"}));
    EXPECT_EQ(fields(summary), (Row{0, 1'699'999'980, 100, 120, 80, 110, 130, 90}));
}

TEST_F(DurationSummary, SupplySummaryMakesTheseCallsAndNoOthers) {
    one_psu_row(platform());

    EXPECT_EQ(ask(kOneSupply, 5, &summary, 6), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"quoril", kOpen, "time",
                     "query HistExtraPowers24HrMem [Timestamp,Ps6AvgAc,Ps6AvgDc] where "
                     "Timestamp>=1699999680 AND Timestamp<=1700000000 order Timestamp DESC",
                     "row_count", "step", "uint 0", "short_uint 1", "short_uint 2", "step",
                     "free_result", "close"}));
}

TEST_F(DurationSummary, EachBayReadsItsOwnTableAndColumns) {
    ask(kOneSupply, 5, &summary, 1);
    ask(kOneSupply, 5, &summary, 4);
    ask(kOneSupply, 5, &summary, 5);
    ask(kOneSupply, 5, &summary, 12);

    EXPECT_THAT(platform().named("query"),
                testing::ElementsAre(
                    testing::HasSubstr("HistPowers24HrMem [Timestamp,Ps1AvgAc,Ps1AvgDc] "),
                    testing::HasSubstr("HistPowers24HrMem [Timestamp,Ps4AvgAc,Ps4AvgDc] "),
                    testing::HasSubstr("HistExtraPowers24HrMem [Timestamp,Ps5AvgAc,Ps5AvgDc] "),
                    testing::HasSubstr("HistExtraPowers24HrMem [Timestamp,Ps12AvgAc,Ps12AvgDc] ")));
}

// -- what it fills

TEST_F(DurationSummary, FiveMinutesAreElevenSlotsWithSixRowsAmongThem) {
    platform().answer_rows(rows_back_from(1'699'999'980, {{100, 100, 100},
                                                          {110, 110, 110},
                                                          {120, 120, 120},
                                                          {130, 130, 130},
                                                          {140, 140, 140},
                                                          {150, 150, 150}}));

    EXPECT_EQ(ask(PWRMGT_DOMAIN_CPU, 5, &summary), 0U);

    EXPECT_EQ(fields(summary), (Row{0, 1'699'999'980, 125, 150, 100, 7, 7, 7}));
}

TEST_F(DurationSummary, TwelfthRowOfFiveMinutesIsLeftOut) {
    std::vector<Row> rows = steady_rows(1'699'999'980, 12, {100, 100, 100});
    rows[10] = {1'699'999'680, 210, 300, 50};
    rows[11] = {1'699'999'650, 900, 900, 1};
    platform().answer_rows(rows);

    EXPECT_EQ(ask(PWRMGT_DOMAIN_MEMORY, 5, &summary), 0U);

    EXPECT_EQ(fields(summary), (Row{0, 1'699'999'980, 110, 300, 50, 7, 7, 7}));
}

TEST_F(DurationSummary, NoMinutesAreOneSlotOfAThirtySecondWindow) {
    platform().clock = 1'700'000'010;
    platform().answer_rows(rows_back_from(1'700'000'010, {{100, 120, 80}, {900, 900, 1}}));

    EXPECT_EQ(ask(PWRMGT_DOMAIN_CPU, 0, &summary), 0U);

    EXPECT_THAT(platform().named("query").at(0),
                testing::HasSubstr("where Timestamp>=1699999980 AND Timestamp<=1700000010 "));
    EXPECT_EQ(fields(summary), (Row{0, 1'700'000'010, 100, 120, 80, 7, 7, 7}));
}

TEST_F(DurationSummary, NegativeMinutesAskForTheFutureAndFindNothing) {
    EXPECT_EQ(ask(PWRMGT_DOMAIN_SYSTEM, -5, &summary), 8U);

    EXPECT_THAT(platform().named("query").at(0),
                testing::HasSubstr("where Timestamp>=1700000280 AND Timestamp<=1700000000 "));
    EXPECT_EQ(fields(summary), fields(untouched_power()));
}

TEST_F(DurationSummary, MinutesAreNotBounded) {
    EXPECT_EQ(ask(PWRMGT_DOMAIN_SYSTEM, 1441, &summary), 8U);
    EXPECT_EQ(ask(PWRMGT_DOMAIN_SYSTEM, INT32_MAX, &summary), 8U);

    EXPECT_THAT(
        platform().named("query"),
        testing::ElementsAre(testing::HasSubstr(">=1699913520 AND Timestamp<=1700000000 "),
                             testing::HasSubstr(">=1700000040 AND Timestamp<=1700000000 ")));
}

TEST_F(DurationSummary, PowerWithoutAValidSampleIs8WithTheSummaryMarked) {
    platform().answer_rows(steady_rows(1'699'999'980, 1, {100, 120, 65535, 110, 130, 90}));

    EXPECT_EQ(ask(PWRMGT_DOMAIN_SYSTEM, 0, &summary), 8U);

    EXPECT_EQ(fields(summary), (Row{0, 1'699'999'980, 100, 120, 65535, 110, 130, 90}));
}

TEST_F(DurationSummary, SupplyFillsOnlyTheTwoAverages) {
    platform().answer_rows(rows_back_from(1'699'999'980, {{110, 100}, {115, 104}}));

    EXPECT_EQ(ask(kOneSupply, 5, &summary, 6), 0U);

    EXPECT_EQ(fields(summary), (Row{7, 7, 102, 7, 7, 112, 7, 7}));
}

TEST_F(DurationSummary, SupplyWithoutAValidSampleIs8AndLeavesTheSummary) {
    platform().answer_rows(rows_back_from(1'699'999'980, {{65535, 100}, {110, 65535}}));

    EXPECT_EQ(ask(kOneSupply, 5, &summary, 6), 8U);

    EXPECT_EQ(fields(summary), fields(untouched_power()));
}

TEST_F(DurationSummary, FailingStepOfASupplyIs8AndLeavesTheSummary) {
    platform().answer_rows(Rows{steady_rows(1'699'999'980, 2, {110, 100}), 3, {}});

    EXPECT_EQ(ask(kOneSupply, 5, &summary, 6), 8U);

    EXPECT_EQ(fields(summary), fields(untouched_power()));
}

}  // namespace duration_summary_tests
