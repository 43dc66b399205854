// SPDX-License-Identifier: Apache-2.0
// Period arithmetic and the texts of the windows.
#include "platform_test.h"

#include <algorithm>

using namespace pwrmgt::test;

namespace {

constexpr uint32_t kUntouched = 77;

struct Clauses {
    char order[PWRMGT_ORDER_SIZE];
    char filter[PWRMGT_FILTER_SIZE];

    Clauses() {
        std::fill(std::begin(order), std::end(order), 'x');
        std::fill(std::begin(filter), std::end(filter), 'x');
    }
    bool untouched() const {
        const auto is_x = [](char c) { return c == 'x'; };
        return std::all_of(std::begin(order), std::end(order), is_x) &&
               std::all_of(std::begin(filter), std::end(filter), is_x);
    }
};

uint32_t oldest(uint32_t period, int32_t now, uint32_t count) {
    uint32_t start = kUntouched;
    EXPECT_EQ(pwrmgt_oldest_ts_per_period(period, now, count, &start), 0U);
    return start;
}

}  // namespace

class Window : public PlatformTest {
protected:
    Clauses clauses;

    uint32_t last(uint32_t period, uint32_t count) {
        return pwrmgt_hist_query_string(clauses.order, clauses.filter, period, count);
    }
    uint32_t duration(int32_t minutes) {
        return pwrmgt_duration_summary_query_string(clauses.order, sizeof clauses.order,
                                                    clauses.filter, sizeof clauses.filter, minutes);
    }
};

// -- start of a period

TEST_F(Window, HourOfSixtyEntriesStartsOneEntryAfterTheHourCutToTheMinute) {
    EXPECT_EQ(oldest(0, 1'700'000'000, 60), 1'699'996'440U);
}

TEST_F(Window, EachPeriodReachesBackItsOwnLength) {
    EXPECT_EQ(oldest(0, 1'700'000'000, 120), 1'699'996'410U);
    EXPECT_EQ(oldest(1, 1'700'000'000, 120), 1'699'978'560U);
    EXPECT_EQ(oldest(2, 1'700'000'000, 120), 1'699'957'140U);
    EXPECT_EQ(oldest(3, 1'700'000'000, 120), 1'699'914'300U);
}

TEST_F(Window, CountOfZeroAddsNoEntryWidth) {
    EXPECT_EQ(oldest(0, 1'700'000'000, 0), 1'699'996'380U);
    EXPECT_EQ(oldest(3, 1'700'000'000, 0), 1'699'913'580U);
}

TEST_F(Window, EntryWidthIsTruncated) {
    EXPECT_EQ(oldest(0, 1'700'000'000, 7), 1'699'996'894U);
    EXPECT_EQ(oldest(0, 1'700'000'000, 1), 1'699'999'980U);
}

TEST_F(Window, StartBeforeTheEpochIsCutTowardZeroAndWraps) {
    EXPECT_EQ(oldest(0, 3600, 0), 0U);
    EXPECT_EQ(oldest(0, 3541, 0), 0U);
    EXPECT_EQ(oldest(0, 3540, 0), 4'294'967'236U);
    EXPECT_EQ(oldest(0, 3481, 0), 4'294'967'236U);
    EXPECT_EQ(oldest(0, 3481, 60), 0U);
}

TEST_F(Window, LatestTimeOf32BitsHasAStart) {
    EXPECT_EQ(oldest(3, 2'147'483'647, 1), 2'147'483'640U);
}

TEST_F(Window, NullStartIsRefusedBeforeAnythingElse) {
    EXPECT_EQ(pwrmgt_oldest_ts_per_period(4, 1'700'000'000, 121, nullptr), 1U);
}

TEST_F(Window, TimeThatIsNotPositiveIsRefusedBeforePeriodAndCount) {
    uint32_t start = kUntouched;

    EXPECT_EQ(pwrmgt_oldest_ts_per_period(4, 0, 121, &start), 1U);
    EXPECT_EQ(pwrmgt_oldest_ts_per_period(0, -1, 60, &start), 1U);
    EXPECT_EQ(pwrmgt_oldest_ts_per_period(0, INT32_MIN, 60, &start), 1U);

    EXPECT_EQ(start, kUntouched);
}

TEST_F(Window, FirstSecondIsAccepted) {
    EXPECT_EQ(oldest(0, 1, 0), 4'294'963'756U);
}

TEST_F(Window, PeriodAbove3IsOutOfRange) {
    uint32_t start = kUntouched;

    EXPECT_EQ(pwrmgt_oldest_ts_per_period(4, 1'700'000'000, 60, &start), 10U);
    EXPECT_EQ(pwrmgt_oldest_ts_per_period(UINT32_MAX, 1'700'000'000, 60, &start), 10U);
    EXPECT_EQ(start, kUntouched);

    EXPECT_EQ(pwrmgt_oldest_ts_per_period(3, 1'700'000'000, 60, &start), 0U);
}

TEST_F(Window, CountAbove120IsOutOfRange) {
    uint32_t start = kUntouched;

    EXPECT_EQ(pwrmgt_oldest_ts_per_period(0, 1'700'000'000, 121, &start), 10U);
    EXPECT_EQ(pwrmgt_oldest_ts_per_period(0, 1'700'000'000, UINT32_MAX, &start), 10U);
    EXPECT_EQ(start, kUntouched);

    EXPECT_EQ(pwrmgt_oldest_ts_per_period(0, 1'700'000'000, 120, &start), 0U);
}

TEST_F(Window, PeriodArithmeticCallsNothing) {
    oldest(1, 1'700'000'000, 60);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

// -- clauses of a period

TEST_F(Window, PeriodClausesNameTheWindowNewestFirst) {
    EXPECT_EQ(last(0, 60), 0U);

    EXPECT_STREQ(clauses.order, "Timestamp DESC");
    EXPECT_STREQ(clauses.filter, "Timestamp>=1699996440 AND Timestamp<=1700000000");
    EXPECT_EQ(platform().calls, Calls{"time"});
}

TEST_F(Window, StartBeforeTheEpochReadsAsANegativeNumber) {
    platform().clock = 3540;

    EXPECT_EQ(last(0, 0), 0U);

    EXPECT_STREQ(clauses.filter, "Timestamp>=-60 AND Timestamp<=3540");
}

TEST_F(Window, ClausesAreCopiedWhole) {
    EXPECT_EQ(last(0, 60), 0U);

    EXPECT_EQ(std::string(clauses.order, 17), std::string("Timestamp DESC\0xx", 17));
    EXPECT_EQ(std::string(clauses.filter, 50),
              std::string("Timestamp>=1699996440 AND Timestamp<=1700000000\0xx", 50));
}

TEST_F(Window, NullClauseOfAPeriodIsRefusedBeforeTheClock) {
    EXPECT_EQ(pwrmgt_hist_query_string(nullptr, clauses.filter, 4, 121), 1U);
    EXPECT_EQ(pwrmgt_hist_query_string(clauses.order, nullptr, 4, 121), 1U);
    EXPECT_EQ(pwrmgt_hist_query_string(nullptr, nullptr, 0, 60), 1U);

    EXPECT_TRUE(clauses.untouched());
    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(Window, NegativeClockIs31BeforePeriodAndCount) {
    platform().clock = -1;

    EXPECT_EQ(last(4, 121), 31U);

    EXPECT_TRUE(clauses.untouched());
}

TEST_F(Window, ClockBeyond31BitsIs31) {
    platform().clock = 2'147'483'648;
    EXPECT_EQ(last(0, 60), 31U);
    EXPECT_EQ(duration(5), 31U);
    EXPECT_TRUE(clauses.untouched());

    platform().clock = 2'147'483'647;
    EXPECT_EQ(last(0, 60), 0U);
    EXPECT_STREQ(clauses.filter, "Timestamp>=2147480100 AND Timestamp<=2147483647");
}

TEST_F(Window, ClockOfZeroIs1ForAPeriod) {
    platform().clock = 0;

    EXPECT_EQ(last(4, 60), 1U);

    EXPECT_TRUE(clauses.untouched());
}

TEST_F(Window, BadPeriodOrCountComesBackAs10) {
    EXPECT_EQ(last(4, 60), 10U);
    EXPECT_EQ(last(0, 121), 10U);
    EXPECT_TRUE(clauses.untouched());

    EXPECT_EQ(last(3, 120), 0U);
}

TEST_F(Window, FailingClockIs31InBothBuilders) {
    EXPECT_EQ(swept_statuses([](Recorder&) {}, [&] { return last(0, 60); }), each_of(1, 31));
    EXPECT_EQ(swept_statuses([](Recorder&) {}, [&] { return duration(5); }), each_of(1, 31));
}

// -- clauses of a duration

TEST_F(Window, DurationStartsOnAHalfMinute) {
    platform().clock = 1'700'000'010;

    EXPECT_EQ(duration(5), 0U);

    EXPECT_STREQ(clauses.order, "Timestamp DESC");
    EXPECT_STREQ(clauses.filter, "Timestamp>=1699999710 AND Timestamp<=1700000010");
    EXPECT_EQ(platform().calls, Calls{"time"});
}

TEST_F(Window, DurationStartIsCutDownToTheHalfMinute) {
    platform().clock = 1'700'000'039;

    EXPECT_EQ(duration(5), 0U);

    EXPECT_STREQ(clauses.filter, "Timestamp>=1699999710 AND Timestamp<=1700000039");
}

TEST_F(Window, DurationOfZeroOnAHalfMinuteIs30SecondsWide) {
    platform().clock = 1'700'000'010;

    EXPECT_EQ(duration(0), 0U);

    EXPECT_STREQ(clauses.filter, "Timestamp>=1699999980 AND Timestamp<=1700000010");
}

TEST_F(Window, DurationOfZeroOffTheHalfMinuteStartsAtTheLastOne) {
    EXPECT_EQ(duration(0), 0U);

    EXPECT_STREQ(clauses.filter, "Timestamp>=1699999980 AND Timestamp<=1700000000");
}

TEST_F(Window, NegativeDurationIsNotRefused) {
    platform().clock = 1'700'000'010;

    EXPECT_EQ(duration(-1), 0U);

    EXPECT_STREQ(clauses.filter, "Timestamp>=1700000070 AND Timestamp<=1700000010");
}

TEST_F(Window, DurationWrapsIn32Bits) {
    platform().clock = 1'700'000'010;

    EXPECT_EQ(duration(INT32_MAX), 0U);
    EXPECT_STREQ(clauses.filter, "Timestamp>=1700000070 AND Timestamp<=1700000010");

    EXPECT_EQ(duration(INT32_MIN), 0U);
    EXPECT_STREQ(clauses.filter, "Timestamp>=1699999980 AND Timestamp<=1700000010");
}

TEST_F(Window, DurationReachingBeforeTheEpochIsCutTowardZero) {
    platform().clock = 20;

    EXPECT_EQ(duration(1), 0U);

    EXPECT_STREQ(clauses.filter, "Timestamp>=-30 AND Timestamp<=20");
}

TEST_F(Window, ClockOfZeroIsAcceptedForADuration) {
    platform().clock = 0;

    EXPECT_EQ(duration(0), 0U);

    EXPECT_STREQ(clauses.filter, "Timestamp>=-30 AND Timestamp<=0");
}

TEST_F(Window, DurationClausesAreCutToTheSizesGiven) {
    EXPECT_EQ(pwrmgt_duration_summary_query_string(clauses.order, 10, clauses.filter, 12, 5), 0U);

    EXPECT_EQ(std::string(clauses.order, 12), std::string("Timestamp\0xx", 12));
    EXPECT_EQ(std::string(clauses.filter, 14), std::string("Timestamp>=\0xx", 14));
}

TEST_F(Window, DurationClausesOfSizeZeroAreNotWritten) {
    EXPECT_EQ(pwrmgt_duration_summary_query_string(clauses.order, 0, clauses.filter, 0, 5), 0U);

    EXPECT_TRUE(clauses.untouched());
}

TEST_F(Window, NullClauseOfADurationIsRefusedBeforeTheClock) {
    EXPECT_EQ(pwrmgt_duration_summary_query_string(nullptr, 32, clauses.filter, 256, 5), 1U);
    EXPECT_EQ(pwrmgt_duration_summary_query_string(clauses.order, 32, nullptr, 256, 5), 1U);

    EXPECT_TRUE(clauses.untouched());
    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(Window, NegativeClockIs31ForADuration) {
    platform().clock = -1;

    EXPECT_EQ(duration(5), 31U);

    EXPECT_TRUE(clauses.untouched());
}

// -- samples per entry

TEST_F(Window, SamplesPerEntryFollowThePeriodAndAre1ForAnyOtherCode) {
    EXPECT_EQ(pwrmgt_get_samples_perIndex(0), 1U);
    EXPECT_EQ(pwrmgt_get_samples_perIndex(1), 6U);
    EXPECT_EQ(pwrmgt_get_samples_perIndex(2), 12U);
    EXPECT_EQ(pwrmgt_get_samples_perIndex(3), 24U);
    EXPECT_EQ(pwrmgt_get_samples_perIndex(4), 1U);
    EXPECT_EQ(pwrmgt_get_samples_perIndex(7), 1U);
    EXPECT_EQ(pwrmgt_get_samples_perIndex(UINT32_MAX), 1U);
    EXPECT_THAT(platform().calls, testing::IsEmpty());
}
