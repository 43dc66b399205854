// SPDX-License-Identifier: Apache-2.0
// The one row of the real-time table: inserted, replaced, or left alone.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace realtime_row_tests {
namespace {

constexpr pwrmgt_realtime_pwr_t kReading{901, 902, 410, 380, 150, 60, 55, 44, 33, 22};

uint32_t update() {
    return pwrmgt_update_realtime_table(kDb, kReading, 1'700'000'000);
}

void one_row_stored(Recorder& recorder) {
    recorder.answer_table("RealTimePowersMem", {{0, 1'699'999'999}});
}

void empty_table(Recorder&) {}

}  // namespace

class RealtimeRow : public PlatformTest {};

TEST_F(RealtimeRow, EmptyTableGetsTheRowInserted) {
    EXPECT_EQ(update(), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"query RealTimePowersMem [] where _id=0 order null", "step", "row_count",
                     "content", "put_short_uint _id 0", "put_uint Timestamp 1700000000",
                     "put_short_uint SysPwrAc 410", "put_short_uint SysPwrDc 380",
                     "put_short_uint CpuPwrDc 150", "put_short_uint MemPwrDc 60",
                     "put_short_uint SysPctg 55", "put_short_uint CpuPctg 44",
                     "put_short_uint MemPctg 33", "put_short_uint IOPctg 22",
                     "insert RealTimePowersMem", "free_result", "free_content"}));
}

TEST_F(RealtimeRow, StoredRowIsReplaced) {
    one_row_stored(platform());

    EXPECT_EQ(update(), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"query RealTimePowersMem [] where _id=0 order null", "step", "row_count",
                     "content", "put_short_uint _id 0", "put_uint Timestamp 1700000000",
                     "put_short_uint SysPwrAc 410", "put_short_uint SysPwrDc 380",
                     "put_short_uint CpuPwrDc 150", "put_short_uint MemPwrDc 60",
                     "put_short_uint SysPctg 55", "put_short_uint CpuPctg 44",
                     "put_short_uint MemPctg 33", "put_short_uint IOPctg 22",
                     "update RealTimePowersMem where _id=0", "free_result", "free_content"}));
}

TEST_F(RealtimeRow, SecondRowIs31AndNothingIsWritten) {
    platform().answer_rows(std::vector<Row>{{0, 1}, {0, 2}});

    EXPECT_EQ(update(), 31U);

    EXPECT_EQ(platform().calls, (Calls{"query RealTimePowersMem [] where _id=0 order null", "step",
                                       "row_count", "free_result"}));
}

TEST_F(RealtimeRow, PercentagesArePutIn16Bits) {
    const pwrmgt_realtime_pwr_t reading{0, 0, 0, 0, 0, 0, 255, 254, 128, 0};

    EXPECT_EQ(pwrmgt_update_realtime_table(kDb, reading, 1), 0U);

    EXPECT_EQ(platform().count("put_uchar"), 0U);
    EXPECT_THAT(platform().calls, testing::IsSupersetOf(Calls{
                                      "put_short_uint SysPctg 255", "put_short_uint CpuPctg 254",
                                      "put_short_uint MemPctg 128", "put_short_uint IOPctg 0"}));
}

TEST_F(RealtimeRow, LeadingWordsAreNotStored) {
    pwrmgt_realtime_pwr_t other = kReading;
    other.lead0 = 4'294'967'295;
    other.lead1 = 12;

    update();
    const Calls calls = platform().calls;
    platform().calls.clear();
    pwrmgt_update_realtime_table(kDb, other, 1'700'000'000);

    EXPECT_EQ(platform().calls, calls);
}

TEST_F(RealtimeRow, MarkersAndLatestStampAreStoredAsTheyAre) {
    const pwrmgt_realtime_pwr_t reading{0, 0, 65535, 65535, 65535, 65535, 255, 255, 255, 255};

    EXPECT_EQ(pwrmgt_update_realtime_table(kDb, reading, UINT32_MAX), 0U);

    EXPECT_EQ(platform().named("put_uint"), Calls{"put_uint Timestamp 4294967295"});
    EXPECT_THAT(platform().calls, testing::Contains("put_short_uint SysPwrAc 65535"));
}

TEST_F(RealtimeRow, FailedQueryIs3HoweverItFails) {
    for (const Mode mode : {Mode::error, Mode::error_with_handle, Mode::no_handle}) {
        platform().reset();
        platform().fail(Operation::query, -1, 1, mode);

        EXPECT_EQ(update(), 3U);

        EXPECT_EQ(platform().count("free_result"), mode == Mode::error_with_handle ? 1U : 0U);
        EXPECT_EQ(platform().count("step") + platform().count("content"), 0U);
    }
}

TEST_F(RealtimeRow, FailedInsertIs4WhateverTheClientSays) {
    for (const int result : {1, 4, 5, 1062, -1}) {
        platform().reset();
        platform().fail(Operation::insert, result);

        EXPECT_EQ(update(), 4U) << result;
    }
}

TEST_F(RealtimeRow, FailedUpdateIs5WhateverTheClientSays) {
    for (const int result : {1, 4, 5, 1062, -1}) {
        platform().reset();
        one_row_stored(platform());
        platform().fail(Operation::update, result);

        EXPECT_EQ(update(), 5U) << result;
    }
}

TEST_F(RealtimeRow, MissingContentIsUsedAllTheSame) {
    platform().fail(Operation::content);

    EXPECT_EQ(update(), 0U);

    EXPECT_EQ(platform().count("put_short_uint"), 9U);
    EXPECT_EQ(platform().count("insert"), 1U);
    EXPECT_EQ(platform().count("free_content"), 0U);
}

TEST_F(RealtimeRow, ConnectionIsNotTested) {
    EXPECT_EQ(pwrmgt_update_realtime_table(0, kReading, 1), 0U);

    EXPECT_EQ(platform().count("query"), 1U);
    EXPECT_EQ(platform().count("insert"), 1U);
}

// Select, step, row count, content, ten puts, insert.
TEST_F(RealtimeRow, EachFailingCallBeforeAnInsertHasItsStatus) {
    EXPECT_EQ(swept_statuses(empty_table, update),
              in_turn({each_of(1, 3), each_of(13, 0), each_of(1, 4)}));
}

// A row too many told is more than one row.
TEST_F(RealtimeRow, EachFailingCallBeforeAnUpdateHasItsStatus) {
    EXPECT_EQ(swept_statuses(one_row_stored, update),
              in_turn({{{3}, {0}, {0, 0, 0, 31}}, each_of(11, 0), each_of(1, 5)}));
}

TEST_F(RealtimeRow, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(empty_table, update), 15U);
    EXPECT_EQ(sweep_exceptions(one_row_stored, update), 15U);
}

}  // namespace realtime_row_tests
