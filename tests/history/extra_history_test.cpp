// SPDX-License-Identifier: Apache-2.0
// The history of supplies 5 to 12: start, row, trim, save; calls, statuses, failures.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace extra_history_tests {
namespace {

constexpr int32_t kNow = 1'700'000'000;

constexpr pwrmgt_hist_extra_sample_t kSample{{{900, 901, 511, 512},
                                              {900, 901, 611, 612},
                                              {900, 901, 711, 712},
                                              {900, 901, 811, 812},
                                              {900, 901, 911, 912},
                                              {900, 901, 1011, 1012},
                                              {900, 901, 1111, 1112},
                                              {900, 901, 1211, 65535}}};

uint32_t initialise() {
    return pwrmgt_init_hist_extra_table(kDb, kNow);
}

uint32_t update() {
    return pwrmgt_update_hist_extra_table(kDb, 2879, 1'699'999'980, kSample);
}

uint32_t clean_up() {
    return pwrmgt_cleanup_extra_hist_mem_table(kDb, kNow);
}

uint32_t save() {
    return pwrmgt_save_extra_hist_mem_table(kDb, 17);
}

void nothing_scripted(Recorder&) {}

}  // namespace

class ExtraHistory : public PlatformTest {};

// -- start

TEST_F(ExtraHistory, StartTrimsEmptiesAndRefillsWithoutReadingARow) {
    EXPECT_EQ(initialise(), 0U);

    EXPECT_EQ(
        platform().calls,
        (Calls{"raw DELETE FROM HistExtraPowers24Hr where Timestamp < 1699913600 or Timestamp >= "
               "1700000000",
               "raw TRUNCATE TABLE HistExtraPowers24HrMem",
               "raw INSERT INTO HistExtraPowers24HrMem SELECT * FROM HistExtraPowers24Hr"}));
}

TEST_F(ExtraHistory, StartWithinTheFirstDayTrimsNothing) {
    for (const int32_t now : {86400, 1, 0, -1, INT32_MIN}) {
        platform().reset();

        EXPECT_EQ(pwrmgt_init_hist_extra_table(kDb, now), 0U) << now;

        EXPECT_EQ(platform().calls, (Calls{"raw TRUNCATE TABLE HistExtraPowers24HrMem",
                                           "raw INSERT INTO HistExtraPowers24HrMem SELECT * FROM "
                                           "HistExtraPowers24Hr"}));
    }
}

TEST_F(ExtraHistory, StartOneSecondAfterTheFirstDayTrims) {
    EXPECT_EQ(pwrmgt_init_hist_extra_table(kDb, 86401), 0U);

    EXPECT_EQ(platform().calls.front(),
              "raw DELETE FROM HistExtraPowers24Hr where Timestamp < 1 or Timestamp >= 86401");
}

TEST_F(ExtraHistory, StartWithoutAConnectionIs1AndCallsNothing) {
    EXPECT_EQ(pwrmgt_init_hist_extra_table(0, kNow), 1U);
    EXPECT_EQ(pwrmgt_init_hist_extra_table(0, 0), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(ExtraHistory, FailedTrimOrTruncateStopsTheStart) {
    for (const size_t nth : {size_t{1}, size_t{2}}) {
        platform().reset();
        platform().fail(Operation::raw, -1, nth);

        EXPECT_EQ(initialise(), 6U);

        EXPECT_EQ(platform().calls.size(), nth);
    }
}

TEST_F(ExtraHistory, CopyResultIsReturnedUnmapped) {
    for (const int result : {1, 3, 4, 1062}) {
        platform().reset();
        platform().fail(Operation::raw, result, 3);

        EXPECT_EQ(initialise(), static_cast<uint32_t>(result));
    }
    platform().reset();
    platform().fail(Operation::raw, -5, 3);
    EXPECT_EQ(initialise(), 4'294'967'291U);
}

// -- row

TEST_F(ExtraHistory, RowIsClearedFilledStampedAndInserted) {
    EXPECT_EQ(update(), 0U);

    EXPECT_EQ(platform().calls, (Calls{"content",
                                       "clear",
                                       "put_short_uint Ps5AvgAc 511",
                                       "put_short_uint Ps5AvgDc 512",
                                       "put_short_uint Ps6AvgAc 611",
                                       "put_short_uint Ps6AvgDc 612",
                                       "put_short_uint Ps7AvgAc 711",
                                       "put_short_uint Ps7AvgDc 712",
                                       "put_short_uint Ps8AvgAc 811",
                                       "put_short_uint Ps8AvgDc 812",
                                       "put_short_uint Ps9AvgAc 911",
                                       "put_short_uint Ps9AvgDc 912",
                                       "put_short_uint Ps10AvgAc 1011",
                                       "put_short_uint Ps10AvgDc 1012",
                                       "put_short_uint Ps11AvgAc 1111",
                                       "put_short_uint Ps11AvgDc 1112",
                                       "put_short_uint Ps12AvgAc 1211",
                                       "put_short_uint Ps12AvgDc 65535",
                                       "put_short_uint _id 2879",
                                       "put_uint Timestamp 1699999980",
                                       "insert HistExtraPowers24HrMem",
                                       "free_content"}));
}

TEST_F(ExtraHistory, SlotIsStoredAsItIs) {
    EXPECT_EQ(pwrmgt_update_hist_extra_table(kDb, 0, 30, kSample), 0U);
    EXPECT_EQ(pwrmgt_update_hist_extra_table(kDb, 2880, 30, kSample), 0U);
    EXPECT_EQ(pwrmgt_update_hist_extra_table(kDb, 65535, 30, kSample), 0U);

    EXPECT_THAT(platform().calls,
                testing::IsSupersetOf(Calls{"put_short_uint _id 0", "put_short_uint _id 2880",
                                            "put_short_uint _id 65535"}));
}

TEST_F(ExtraHistory, RowWithoutAConnectionIs1AndCallsNothing) {
    EXPECT_EQ(pwrmgt_update_hist_extra_table(0, 1, 1'699'999'980, kSample), 1U);
    EXPECT_EQ(pwrmgt_update_hist_extra_table(0, 1, 0, kSample), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(ExtraHistory, StampThatIsNotPositiveIs1AndCallsNothing) {
    for (const int32_t stamp : {0, -1, INT32_MIN}) {
        EXPECT_EQ(pwrmgt_update_hist_extra_table(kDb, 1, stamp, kSample), 1U) << stamp;
    }

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(ExtraHistory, EarliestAndLatestStampAreStored) {
    EXPECT_EQ(pwrmgt_update_hist_extra_table(kDb, 1, 1, kSample), 0U);
    EXPECT_EQ(pwrmgt_update_hist_extra_table(kDb, 1, INT32_MAX, kSample), 0U);

    EXPECT_EQ(platform().named("put_uint"),
              (Calls{"put_uint Timestamp 1", "put_uint Timestamp 2147483647"}));
}

TEST_F(ExtraHistory, NoContentIs7AndNothingIsWritten) {
    platform().fail(Operation::content);

    EXPECT_EQ(update(), 7U);

    EXPECT_EQ(platform().calls, Calls{"content"});
}

TEST_F(ExtraHistory, ResultOfTheInsertIsReturnedUnmapped) {
    for (const int result : {1, 4, 1062}) {
        platform().reset();
        platform().fail(Operation::insert, result);

        EXPECT_EQ(update(), static_cast<uint32_t>(result));

        EXPECT_EQ(platform().calls.back(), "free_content");
    }
    platform().reset();
    platform().fail(Operation::insert, -5);
    EXPECT_EQ(update(), 4'294'967'291U);
}

// -- trim

TEST_F(ExtraHistory, TrimDropsRowsStampedNowOrLaterFromBothTables) {
    EXPECT_EQ(clean_up(), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"raw DELETE FROM HistExtraPowers24HrMem where Timestamp < 1699913600 or "
                     "Timestamp >= 1700000000",
                     "raw DELETE FROM HistExtraPowers24Hr where Timestamp < 1699913600 or "
                     "Timestamp >= 1700000000"}));
}

TEST_F(ExtraHistory, TrimWithinTheFirstDayDeletesNothing) {
    for (const int32_t now : {86400, 0, -1, INT32_MIN}) {
        EXPECT_EQ(pwrmgt_cleanup_extra_hist_mem_table(kDb, now), 0U) << now;
    }

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(ExtraHistory, TrimOneSecondAfterTheFirstDayDeletes) {
    EXPECT_EQ(pwrmgt_cleanup_extra_hist_mem_table(kDb, 86401), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"raw DELETE FROM HistExtraPowers24HrMem where Timestamp < 1 or Timestamp >= "
                     "86401",
                     "raw DELETE FROM HistExtraPowers24Hr where Timestamp < 1 or Timestamp >= "
                     "86401"}));
}

TEST_F(ExtraHistory, TrimWithoutAConnectionIs1AlsoWithinTheFirstDay) {
    EXPECT_EQ(pwrmgt_cleanup_extra_hist_mem_table(0, 0), 1U);
    EXPECT_EQ(pwrmgt_cleanup_extra_hist_mem_table(0, kNow), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(ExtraHistory, FailedTrimOfTheWorkingTableSparesTheOther) {
    platform().fail(Operation::raw, -1, 1);

    EXPECT_EQ(clean_up(), 6U);

    EXPECT_EQ(platform().count("raw"), 1U);
}

// -- save

TEST_F(ExtraHistory, LastSavedSlotIsTheCallers) {
    for (const int32_t last : {17, 2879, -1, INT32_MIN}) {
        platform().reset();

        EXPECT_EQ(pwrmgt_save_extra_hist_mem_table(kDb, last), 0U);

        EXPECT_EQ(platform().calls,
                  Calls{"raw INSERT INTO HistExtraPowers24Hr SELECT * FROM HistExtraPowers24HrMem "
                        "where _id>" +
                        std::to_string(last)});
    }
}

TEST_F(ExtraHistory, SaveAboveSlotZeroLeavesThatSlotBehind) {
    EXPECT_EQ(pwrmgt_save_extra_hist_mem_table(kDb, 0), 0U);

    EXPECT_EQ(platform().calls,
              Calls{"raw INSERT INTO HistExtraPowers24Hr SELECT * FROM HistExtraPowers24HrMem "
                    "where _id>0"});
}

TEST_F(ExtraHistory, FailedSaveIs4WhateverTheClientSays) {
    for (const int result : {1, 7, -1}) {
        platform().reset();
        platform().fail(Operation::raw, result);

        EXPECT_EQ(save(), 4U);
    }
}

TEST_F(ExtraHistory, SaveDoesNotTestItsConnection) {
    EXPECT_EQ(pwrmgt_save_extra_hist_mem_table(0, 17), 0U);

    EXPECT_EQ(platform().count("raw"), 1U);
}

// -- failures

TEST_F(ExtraHistory, EachFailingCallHasItsStatus) {
    EXPECT_EQ(swept_statuses(nothing_scripted, initialise), (Outcomes{{6}, {6}, {1, kMinusOne}}));
    EXPECT_EQ(swept_statuses(nothing_scripted, clean_up), (Outcomes{{6}, {6}}));
    EXPECT_EQ(swept_statuses(nothing_scripted, save), each_of(1, 4));
}

// The content, eighteen puts that are not tested, the insert.
TEST_F(ExtraHistory, FailedPutsDoNotStopTheInsert) {
    EXPECT_EQ(swept_statuses(nothing_scripted, update),
              in_turn({each_of(1, 7), each_of(18, 0), {{1, kMinusOne}}}));
}

TEST_F(ExtraHistory, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(nothing_scripted, initialise), 3U);
    EXPECT_EQ(sweep_exceptions(nothing_scripted, update), 20U);
    EXPECT_EQ(sweep_exceptions(nothing_scripted, clean_up), 2U);
    EXPECT_EQ(sweep_exceptions(nothing_scripted, save), 1U);
}

}  // namespace extra_history_tests
