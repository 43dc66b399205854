// SPDX-License-Identifier: Apache-2.0
// The short history of each processor: its row and its trim.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

constexpr pwrmgt_cpu_pwr_sample_t kSample{
    19, 1'699'999'980, {101, 102, 103, 104, 105, 106, 107, 65535}};

uint32_t update() {
    return pwrmgt_update_cpu_pwr_hist_table(kDb, kSample);
}

uint32_t clean_up() {
    return pwrmgt_cleanup_cpu_pwr_hist_table(kDb, 1'700'000'000);
}

// What the trim deletes at a time.
Calls trim_at(uint32_t now) {
    platform().reset();
    EXPECT_EQ(pwrmgt_cleanup_cpu_pwr_hist_table(kDb, now), 0U);
    return platform().calls;
}

void nothing_scripted(Recorder&) {}

}  // namespace

class CpuHistory : public PlatformTest {};

// -- row

TEST_F(CpuHistory, RowIsClearedFilledStampedTwiceAndInserted) {
    EXPECT_EQ(update(), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"content", "clear", "put_uint Timestamp 0", "put_short_uint Cpu1AvgPwr 101",
                     "put_short_uint Cpu2AvgPwr 102", "put_short_uint Cpu3AvgPwr 103",
                     "put_short_uint Cpu4AvgPwr 104", "put_short_uint Cpu5AvgPwr 105",
                     "put_short_uint Cpu6AvgPwr 106", "put_short_uint Cpu7AvgPwr 107",
                     "put_short_uint Cpu8AvgPwr 65535", "put_short_uint _id 19",
                     "put_uint Timestamp 1699999980", "insert HistCpuPowersMem", "free_content"}));
}

TEST_F(CpuHistory, TimestampZeroIsInserted) {
    pwrmgt_cpu_pwr_sample_t sample = kSample;
    sample.timestamp = 0;

    EXPECT_EQ(pwrmgt_update_cpu_pwr_hist_table(kDb, sample), 0U);

    EXPECT_EQ(platform().named("put_uint"),
              (Calls{"put_uint Timestamp 0", "put_uint Timestamp 0"}));
    EXPECT_EQ(platform().count("insert"), 1U);
}

TEST_F(CpuHistory, LargestSlotAndStampAreStoredAsTheyAre) {
    pwrmgt_cpu_pwr_sample_t sample = kSample;
    sample.id = 65535;
    sample.timestamp = 4'294'967'295;

    EXPECT_EQ(pwrmgt_update_cpu_pwr_hist_table(kDb, sample), 0U);

    EXPECT_THAT(platform().calls, testing::IsSupersetOf(Calls{"put_short_uint _id 65535",
                                                              "put_uint Timestamp 4294967295"}));
}

TEST_F(CpuHistory, RowWithoutAConnectionIs1AndCallsNothing) {
    EXPECT_EQ(pwrmgt_update_cpu_pwr_hist_table(0, kSample), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(CpuHistory, NoContentIs7AndNothingIsWritten) {
    platform().fail(Operation::content);

    EXPECT_EQ(update(), 7U);

    EXPECT_EQ(platform().calls, Calls{"content"});
}

TEST_F(CpuHistory, ResultOfTheInsertIsReturnedUnmapped) {
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

// The content, eleven puts that are not tested, the insert.
TEST_F(CpuHistory, EachFailingCallOfTheRowHasItsStatus) {
    EXPECT_EQ(swept_statuses(nothing_scripted, update),
              in_turn({each_of(1, 7), each_of(11, 0), {{1, kMinusOne}}}));
}

// -- trim

TEST_F(CpuHistory, TrimWithinTheFirst600SecondsDeletesNothing) {
    EXPECT_EQ(trim_at(600), Calls{});
    EXPECT_EQ(trim_at(1), Calls{});
    EXPECT_EQ(trim_at(0), Calls{});
}

TEST_F(CpuHistory, TrimOneSecondLaterDeletes) {
    EXPECT_EQ(trim_at(601),
              Calls{"raw DELETE FROM HistCpuPowersMem where Timestamp < 1 or Timestamp > 601"});
}

TEST_F(CpuHistory, ProcessorRowStampedNowStays) {
    EXPECT_EQ(trim_at(1000),
              Calls{"raw DELETE FROM HistCpuPowersMem where Timestamp < 400 or Timestamp > 1000"});
}

TEST_F(CpuHistory, TimesAbove31BitsAreWrittenAsSignedNumbers) {
    EXPECT_EQ(trim_at(2'147'483'648),
              Calls{"raw DELETE FROM HistCpuPowersMem where Timestamp < 2147483048 or Timestamp > "
                    "-2147483648"});
    EXPECT_EQ(trim_at(4'294'967'295),
              Calls{"raw DELETE FROM HistCpuPowersMem where Timestamp < -601 or Timestamp > -1"});
}

TEST_F(CpuHistory, TrimWithoutAConnectionIs1AlsoWithinTheFirst600Seconds) {
    EXPECT_EQ(pwrmgt_cleanup_cpu_pwr_hist_table(0, 0), 1U);
    EXPECT_EQ(pwrmgt_cleanup_cpu_pwr_hist_table(0, 1'700'000'000), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(CpuHistory, FailedTrimIs6WhateverTheClientSays) {
    for (const int result : {1, 7, -1}) {
        platform().reset();
        platform().fail(Operation::raw, result);

        EXPECT_EQ(clean_up(), 6U);
    }
}

TEST_F(CpuHistory, FailingTrimIs6) {
    EXPECT_EQ(swept_statuses(nothing_scripted, clean_up), each_of(1, 6));
}

TEST_F(CpuHistory, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(nothing_scripted, update), 13U);
    EXPECT_EQ(sweep_exceptions(nothing_scripted, clean_up), 1U);
}
