// SPDX-License-Identifier: Apache-2.0
// Each platform call of the queries by period fails in turn: the status, and every handle back.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

void policy_known(Recorder&) {
    g_power_policy_flag = 0;
}

void policy_stored(Recorder& recorder) {
    recorder.answer_table("PowerPolicy", {{0, 1, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}});
}

const Outcomes kLastStep{{8, 8, 0, 0}};

uint32_t ask_power() {
    pwrmgt_hist_pwr_sample_t entry = untouched_power();
    return pwrmgt_get_history_power(PWRMGT_DOMAIN_SYSTEM, 0, &entry, 1);
}

uint32_t ask_psu() {
    pwrmgt_hist_psu_sample_t entry = untouched_psu();
    return pwrmgt_get_history_psu_powers(12, 0, &entry, 1);
}

uint32_t ask_perf() {
    pwrmgt_hist_perf_sample_t entry = untouched_perf();
    return pwrmgt_get_history_performance(0, &entry, 1);
}

void one_row(Recorder& recorder, const Row& values) {
    recorder.answer_table("HistPowers24HrMem", steady_rows(1'699'999'980, 1, values));
    recorder.answer_table("HistExtraPowers24HrMem", steady_rows(1'699'999'980, 1, values));
}

void one_power_row(Recorder& recorder) {
    policy_known(recorder);
    one_row(recorder, {100, 120, 80, 110, 130, 90});
}

void one_psu_row(Recorder& recorder) {
    policy_known(recorder);
    one_row(recorder, {110, 100});
}

void one_perf_row(Recorder& recorder) {
    policy_known(recorder);
    one_row(recorder, {40, 60, 20, 41, 42, 43});
}

}  // namespace

class ByPeriodFaults : public PlatformTest {};

// Open, time, select, row count, first step, stamp, first group, second group (not tested), last
// step: where no row is left, its end is no failure, and a row told there has no value.
TEST_F(ByPeriodFaults, EachFailingCallOfThePowerQueryHasItsStatus) {
    EXPECT_EQ(swept_statuses(one_power_row, ask_power),
              in_turn({{{2}, {31}, {3}, {8, 8, 8, 0}}, each_of(5, 8), each_of(3, 0), kLastStep}));
}

TEST_F(ByPeriodFaults, EachFailingCallOfTheSupplyQueryHasItsStatus) {
    EXPECT_EQ(swept_statuses(one_psu_row, ask_psu),
              in_turn({{{2}, {31}, {3}, {8, 8, 8, 0}}, each_of(4, 8), kLastStep}));
}

TEST_F(ByPeriodFaults, EachFailingCallOfThePerformanceQueryHasItsStatus) {
    EXPECT_EQ(swept_statuses(one_perf_row, ask_perf),
              in_turn({{{2}, {31}, {3}, {31, 31, 31, 0}}, each_of(8, 8), kLastStep}));
}

// The first 19 calls are the policy read: open, select, row count, step, fifteen columns.
TEST_F(ByPeriodFaults, FailureWhileThePolicyIsReadNeverStopsAQuery) {
    const Outcomes statuses = swept_statuses(
        [](Recorder& recorder) {
            one_psu_row(recorder);
            g_power_policy_flag = 255;
            policy_stored(recorder);
        },
        ask_psu);

    EXPECT_EQ(statuses,
              in_turn({each_of(19, 0), {{2}, {31}, {3}, {8, 8, 8, 0}}, each_of(4, 8), kLastStep}));
}

TEST_F(ByPeriodFaults, FailureBeforeTheRowsAreReadLeavesTheEntries) {
    pwrmgt_hist_pwr_sample_t entry;

    const size_t failures = sweep_faults(
        one_power_row,
        [&] {
            entry = untouched_power();
            return pwrmgt_get_history_power(PWRMGT_DOMAIN_SYSTEM, 0, &entry, 1);
        },
        [&](const Faulted& faulted) {
            if (faulted.at > 6) return;
            const Row filled{0, 1'699'999'980, 100, 120, 80, 110, 130, 90};
            EXPECT_EQ(fields(entry), faulted.status == 0 ? filled : fields(untouched_power()))
                << faulted.at;
        });

    EXPECT_EQ(failures, 1U + 1U + 4U + 4U + 4U + 14U + 4U);
}

TEST_F(ByPeriodFaults, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(one_power_row, ask_power), 12U);
    EXPECT_EQ(sweep_exceptions(one_psu_row, ask_psu), 8U);
    EXPECT_EQ(sweep_exceptions(one_perf_row, ask_perf), 12U);
}

TEST_F(ByPeriodFaults, ExceptionWhileThePolicyIsReadPassesThroughToo) {
    const auto script = [](Recorder& recorder) {
        one_psu_row(recorder);
        g_power_policy_flag = 255;
        policy_stored(recorder);
    };

    EXPECT_EQ(sweep_exceptions(script, ask_psu), 27U);
}
