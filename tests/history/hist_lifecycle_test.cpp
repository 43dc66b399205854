// SPDX-License-Identifier: Apache-2.0
// The working history and its twin: start, reload, trim, save at once.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace hist_lifecycle_tests {
namespace {

constexpr int32_t kNow = 1'700'000'000;
constexpr int32_t kUntouched = -77;

// The calls that empty and refill the working table, between others.
Calls refill(Calls before, const Calls& after) {
    before.insert(before.end(),
                  {"raw TRUNCATE TABLE HistPowers24HrMem",
                   "raw INSERT INTO HistPowers24HrMem SELECT * FROM HistPowers24Hr",
                   "query HistPowers24HrMem [] where null order _id DESC", "row_count"});
    before.insert(before.end(), after.begin(), after.end());
    return before;
}

uint32_t clean_up() {
    return pwrmgt_cleanup_hist_mem_table(kDb, kNow);
}

void one_row_stored(Recorder& recorder) {
    recorder.answer_rows(std::vector<Row>{{17, 1'699'999'980}});
}

}  // namespace

class HistLifecycle : public PlatformTest {
protected:
    int32_t last_id = kUntouched;
    int32_t last_stamp = kUntouched;

    uint32_t init(int32_t now) { return pwrmgt_init_hist_table(kDb, now, &last_id, &last_stamp); }
};

// -- start

TEST_F(HistLifecycle, StartTrimsEmptiesRefillsAndReadsTheHighestSlot) {
    platform().answer_rows(std::vector<Row>{{2879, 1'699'999'980}, {2878, 1'699'999'950}});

    EXPECT_EQ(init(kNow), 0U);

    EXPECT_EQ(platform().calls,
              refill({"raw DELETE FROM HistPowers24Hr where Timestamp < 1699913600 or Timestamp >= "
                      "1700000000"},
                     {"step", "int 0", "int 1", "free_result"}));
    EXPECT_EQ(last_id, 2879);
    EXPECT_EQ(last_stamp, 1'699'999'980);
}

TEST_F(HistLifecycle, StartWithinTheFirstDayTrimsNothing) {
    for (const int32_t now : {86400, 1, 0, -1, INT32_MIN}) {
        platform().reset();

        EXPECT_EQ(init(now), 0U) << now;

        EXPECT_EQ(platform().calls, refill({}, {"free_result"}));
    }
}

TEST_F(HistLifecycle, StartOneSecondAfterTheFirstDayTrims) {
    EXPECT_EQ(init(86401), 0U);

    EXPECT_EQ(platform().calls.front(),
              "raw DELETE FROM HistPowers24Hr where Timestamp < 1 or Timestamp >= 86401");
}

TEST_F(HistLifecycle, StartWithoutAnyRowLeavesBothOutputs) {
    EXPECT_EQ(init(kNow), 0U);

    EXPECT_EQ(last_id, kUntouched);
    EXPECT_EQ(last_stamp, kUntouched);
    EXPECT_EQ(platform().count("step"), 0U);
}

TEST_F(HistLifecycle, StartWritesNothingThroughNullOutputs) {
    one_row_stored(platform());
    EXPECT_EQ(pwrmgt_init_hist_table(kDb, kNow, nullptr, &last_stamp), 0U);
    EXPECT_EQ(last_stamp, 1'699'999'980);

    one_row_stored(platform());
    EXPECT_EQ(pwrmgt_init_hist_table(kDb, kNow, &last_id, nullptr), 0U);
    EXPECT_EQ(last_id, 17);

    one_row_stored(platform());
    EXPECT_EQ(pwrmgt_init_hist_table(kDb, kNow, nullptr, nullptr), 0U);
    EXPECT_EQ(platform().count("int"), 6U);
}

TEST_F(HistLifecycle, StartWithoutAConnectionIs1AndCallsNothing) {
    EXPECT_EQ(pwrmgt_init_hist_table(0, kNow, &last_id, &last_stamp), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_EQ(last_id, kUntouched);
}

TEST_F(HistLifecycle, FailedTrimStopsTheStart) {
    platform().fail(Operation::raw, -1, 1);

    EXPECT_EQ(init(kNow), 6U);

    EXPECT_EQ(platform().calls.size(), 1U);
}

TEST_F(HistLifecycle, FailedTruncateStopsTheStart) {
    platform().fail(Operation::raw, -1, 2);

    EXPECT_EQ(init(kNow), 6U);

    EXPECT_EQ(platform().calls.size(), 2U);
}

TEST_F(HistLifecycle, FailedCopyStopsTheStart) {
    platform().fail(Operation::raw, -1, 3);

    EXPECT_EQ(init(kNow), 4U);

    EXPECT_EQ(platform().calls.size(), 3U);
}

TEST_F(HistLifecycle, FailedReadOfTheHighestSlotLeavesItsOutput) {
    one_row_stored(platform());
    platform().fail(Operation::column, 1, 1);

    EXPECT_EQ(init(kNow), 0U);

    EXPECT_EQ(last_id, kUntouched);
    EXPECT_EQ(last_stamp, 1'699'999'980);
}

// -- reload

TEST_F(HistLifecycle, ReloadEmptiesAndCopies) {
    EXPECT_EQ(pwrmgt_load_hist_bak_table(kDb), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"raw DELETE FROM HistPowers24HrMem",
                     "raw INSERT INTO HistPowers24HrMem SELECT * FROM HistPowers24Hr"}));
}

TEST_F(HistLifecycle, ReloadCopiesAlsoAfterAFailedDeleteAndOrsBothResults) {
    platform().fail(Operation::raw, 4, 1);
    platform().fail(Operation::raw, 3, 2);

    EXPECT_EQ(pwrmgt_load_hist_bak_table(kDb), 7U);

    EXPECT_EQ(platform().count("raw"), 2U);
}

TEST_F(HistLifecycle, ReloadReportsEitherFailure) {
    platform().fail(Operation::raw, 4, 1);
    EXPECT_EQ(pwrmgt_load_hist_bak_table(kDb), 4U);

    platform().fail(Operation::raw, -1, 4);
    EXPECT_EQ(pwrmgt_load_hist_bak_table(kDb), 4'294'967'295U);
}

TEST_F(HistLifecycle, ReloadDoesNotTestItsConnection) {
    EXPECT_EQ(pwrmgt_load_hist_bak_table(0), 0U);

    EXPECT_EQ(platform().count("raw"), 2U);
}

// -- trim

TEST_F(HistLifecycle, TrimWithinTheFirstDayDeletesNothing) {
    for (const int32_t now : {86400, 0, -1, INT32_MIN}) {
        EXPECT_EQ(pwrmgt_cleanup_hist_mem_table(kDb, now), 0U) << now;
    }

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(HistLifecycle, TrimWithoutAConnectionIs1AlsoWithinTheFirstDay) {
    EXPECT_EQ(pwrmgt_cleanup_hist_mem_table(0, 0), 1U);
    EXPECT_EQ(pwrmgt_cleanup_hist_mem_table(0, kNow), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(HistLifecycle, FailedTrimOfTheWorkingTableSparesTheOther) {
    platform().fail(Operation::raw, -1, 1);

    EXPECT_EQ(clean_up(), 6U);

    EXPECT_EQ(platform().count("raw"), 1U);
}

// -- save at once

TEST_F(HistLifecycle, SaveCopiesTheRowsAboveTheHighestSavedSlot) {
    platform().answer_rows(std::vector<Row>{{17, 1'699'999'980}, {16, 1'699'999'950}});

    EXPECT_EQ(pwrmgt_save_hist_mem_table(kDb, &last_id), 0U);

    EXPECT_EQ(
        platform().calls,
        (Calls{"raw SELECT * FROM HistPowers24Hr order by _id DESC", "step", "int 0", "free_result",
               "raw INSERT INTO HistPowers24Hr SELECT * FROM HistPowers24HrMem where "
               "_id>17"}));
    EXPECT_EQ(last_id, 17);
}

TEST_F(HistLifecycle, SlotZeroIsNotCopiedToAnEmptyTable) {
    EXPECT_EQ(pwrmgt_save_hist_mem_table(kDb, &last_id), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"raw SELECT * FROM HistPowers24Hr order by _id DESC", "step", "free_result",
                     "raw INSERT INTO HistPowers24Hr SELECT * FROM HistPowers24HrMem where "
                     "_id>0"}));
    EXPECT_EQ(last_id, 0);
}

TEST_F(HistLifecycle, SaveCountsAFailedStepAsNoRow) {
    for (const int code : {-1, 0, 1, 3, 8, 11}) {
        platform().reset();
        platform().answer_rows(Rows{{}, code, {}});

        EXPECT_EQ(pwrmgt_save_hist_mem_table(kDb, &last_id), 0U);

        EXPECT_EQ(platform().count("int"), 0U);
        EXPECT_EQ(last_id, 0);
    }
}

TEST_F(HistLifecycle, FailedSelectOfTheSaveIs6WithTheOutputZeroed) {
    for (const Mode mode : {Mode::error, Mode::error_with_handle, Mode::no_handle}) {
        platform().reset();
        platform().fail(Operation::raw_rows, -1, 1, mode);
        last_id = kUntouched;

        EXPECT_EQ(pwrmgt_save_hist_mem_table(kDb, &last_id), 6U);

        EXPECT_EQ(last_id, 0);
        EXPECT_EQ(platform().count("raw"), 1U);
    }
}

TEST_F(HistLifecycle, FailedCopyOfTheSaveIs4WithTheSlotHandedBack) {
    one_row_stored(platform());
    platform().fail(Operation::raw, -1);

    EXPECT_EQ(pwrmgt_save_hist_mem_table(kDb, &last_id), 4U);

    EXPECT_EQ(last_id, 17);
}

TEST_F(HistLifecycle, SaveWritesNothingThroughANullOutput) {
    one_row_stored(platform());

    EXPECT_EQ(pwrmgt_save_hist_mem_table(kDb, nullptr), 0U);

    EXPECT_THAT(platform().calls.back(), testing::EndsWith("_id>17"));
}

TEST_F(HistLifecycle, SaveDoesNotTestItsConnection) {
    EXPECT_EQ(pwrmgt_save_hist_mem_table(0, &last_id), 0U);

    EXPECT_EQ(platform().count("raw"), 2U);
}

}  // namespace hist_lifecycle_tests
