// SPDX-License-Identifier: Apache-2.0
// Each platform call of the queries by window fails in turn: the status, the count, every handle
// back.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace by_window_faults_tests {
namespace {

constexpr int32_t kEnd = 1'700'000'000;
const Outcomes kLastStep{{8, 8, 0, 0}};

uint32_t count = 0;

// Thirty seconds are not a whole minute: two slots in one entry are the shortest window.
uint32_t ask_power() {
    pwrmgt_hist_pwr_sample_t entry = untouched_power();
    count = 77;
    return pwrmgt_get_history_power_by_tm(PWRMGT_DOMAIN_SYSTEM, kEnd, 1, 2, &entry, &count);
}

uint32_t ask_psu() {
    pwrmgt_hist_psu_sample_t entry = untouched_psu();
    count = 77;
    return pwrmgt_get_history_psu_power_by_tm(12, kEnd, 1, 2, &entry, &count);
}

uint32_t ask_perf() {
    pwrmgt_hist_perf_sample_t entry = untouched_perf();
    count = 77;
    return pwrmgt_get_history_performance_by_tm(kEnd, 1, 2, &entry, &count);
}

void one_row(Recorder& recorder, const Row& values) {
    g_power_policy_flag = 0;
    recorder.set_property("/dc/tavn/dm/planar/0/psu/maxcount", 12);
    recorder.answer_table("HistPowers24HrMem", steady_rows(1'699'999'980, 1, values));
    recorder.answer_table("HistExtraPowers24HrMem", steady_rows(1'699'999'980, 1, values));
}

void one_power_row(Recorder& recorder) {
    one_row(recorder, {100, 120, 80, 110, 130, 90});
}

void one_psu_row(Recorder& recorder) {
    one_row(recorder, {110, 100});
}

void one_perf_row(Recorder& recorder) {
    one_row(recorder, {40, 60, 20, 41, 42, 43});
}

// The first 19 calls are the policy read: open, select, row count, step, fifteen columns.
void policy_unread(Recorder& recorder) {
    one_perf_row(recorder);
    g_power_policy_flag = 255;
    recorder.answer_table("PowerPolicy", {{0, 1, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}});
}

}  // namespace

class ByWindowFaults : public PlatformTest {};

// Open, select, first step, stamp, first group, second group (not tested), last step: where no row
// is left, its end is no failure, and a row told there has no value.
TEST_F(ByWindowFaults, EachFailingCallOfThePowerQueryHasItsStatus) {
    EXPECT_EQ(swept_statuses(one_power_row, ask_power),
              in_turn({{{2}, {3}}, each_of(5, 8), each_of(3, 0), kLastStep}));
}

// The property stands first; unreadable, it bounds the bay to 4.
TEST_F(ByWindowFaults, EachFailingCallOfTheSupplyQueryHasItsStatus) {
    EXPECT_EQ(swept_statuses(one_psu_row, ask_psu),
              in_turn({{{8}, {2}, {3}}, each_of(4, 8), kLastStep}));
}

TEST_F(ByWindowFaults, EachFailingCallOfThePerformanceQueryHasItsStatus) {
    EXPECT_EQ(swept_statuses(one_perf_row, ask_perf),
              in_turn({{{2}, {3}}, each_of(8, 8), kLastStep}));
}

TEST_F(ByWindowFaults, FailureWhileThePolicyIsReadNeverStopsAQuery) {
    EXPECT_EQ(swept_statuses(policy_unread, ask_perf),
              in_turn({each_of(19, 0), {{2}, {3}}, each_of(8, 8), kLastStep}));
}

TEST_F(ByWindowFaults, CountIsStoredFromTheFirstStepOn) {
    const size_t failures = sweep_faults(one_power_row, ask_power, [](const Faulted& faulted) {
        EXPECT_EQ(count, faulted.at <= 2 ? 77U : 1U) << faulted.at;
    });

    EXPECT_EQ(failures, 1U + 4U + 4U + 14U + 4U);
}

TEST_F(ByWindowFaults, FailureBeforeTheRowsAreReadLeavesTheEntries) {
    pwrmgt_hist_pwr_sample_t entry;

    const size_t failures = sweep_faults(
        one_power_row,
        [&] {
            entry = untouched_power();
            return pwrmgt_get_history_power_by_tm(PWRMGT_DOMAIN_SYSTEM, kEnd, 1, 2, &entry,
                                                  nullptr);
        },
        [&](const Faulted& faulted) {
            if (faulted.at > 4) return;
            EXPECT_EQ(fields(entry), fields(untouched_power())) << faulted.at;
        });

    EXPECT_EQ(failures, 1U + 4U + 4U + 14U + 4U);
}

TEST_F(ByWindowFaults, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(one_power_row, ask_power), 11U);
    EXPECT_EQ(sweep_exceptions(one_psu_row, ask_psu), 8U);
    EXPECT_EQ(sweep_exceptions(one_perf_row, ask_perf), 11U);
}

TEST_F(ByWindowFaults, ExceptionWhileThePolicyIsReadPassesThroughToo) {
    EXPECT_EQ(sweep_exceptions(policy_unread, ask_perf), 30U);
}

}  // namespace by_window_faults_tests
