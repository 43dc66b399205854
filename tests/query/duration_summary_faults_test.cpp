// SPDX-License-Identifier: Apache-2.0
// Each platform call of the summary fails in turn: the status, the record, every handle back.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace duration_summary_faults_tests {
namespace {

const Outcomes kLastStep{{8, 8, 0, 0}};

pwrmgt_hist_pwr_sample_t summary = untouched_power();

uint32_t ask_system() {
    summary = untouched_power();
    return pwrmgt_get_duration_summary_power(PWRMGT_DOMAIN_SYSTEM, 0, &summary, psu_id_t{});
}

uint32_t ask_supply() {
    summary = untouched_power();
    return pwrmgt_get_duration_summary_power(PWRMGT_DOMAIN_PSU, 0, &summary, psu_id_t{6});
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

// The first 19 calls are the policy read: open, select, row count, step, fifteen columns.
void policy_unread(Recorder& recorder) {
    one_psu_row(recorder);
    g_power_policy_flag = 255;
    recorder.answer_table("PowerPolicy", {{0, 1, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}});
}

}  // namespace

class DurationSummaryFaults : public PlatformTest {};

// Open, time, select, row count, first step, stamp, first group, second group (not tested), last
// step: where no row is left, its end is no failure, and a row told there has no value.
TEST_F(DurationSummaryFaults, EachFailingCallOfThePowerSummaryHasItsStatus) {
    EXPECT_EQ(swept_statuses(one_power_row, ask_system),
              in_turn({{{2}, {31}, {3}, {8, 8, 8, 0}}, each_of(5, 8), each_of(3, 0), kLastStep}));
}

TEST_F(DurationSummaryFaults, EachFailingCallOfTheSupplySummaryHasItsStatus) {
    EXPECT_EQ(swept_statuses(one_psu_row, ask_supply),
              in_turn({{{2}, {31}, {3}, {8, 8, 8, 0}}, each_of(4, 8), kLastStep}));
}

TEST_F(DurationSummaryFaults, FailureWhileThePolicyIsReadNeverStopsTheSummary) {
    EXPECT_EQ(swept_statuses(policy_unread, ask_supply),
              in_turn({each_of(19, 0), {{2}, {31}, {3}, {8, 8, 8, 0}}, each_of(4, 8), kLastStep}));
}

TEST_F(DurationSummaryFaults, FailureBeforeTheRowsAreReadLeavesThePowerSummary) {
    const size_t failures = sweep_faults(one_power_row, ask_system, [](const Faulted& faulted) {
        if (faulted.at > 6) return;
        const Row filled{0, 1'699'999'980, 100, 120, 80, 110, 130, 90};
        EXPECT_EQ(fields(summary), faulted.status == 0 ? filled : fields(untouched_power()))
            << faulted.at;
    });

    EXPECT_EQ(failures, 1U + 1U + 4U + 4U + 4U + 14U + 4U);
}

TEST_F(DurationSummaryFaults, AnyFailureLeavesTheSupplySummary) {
    const size_t failures = sweep_faults(one_psu_row, ask_supply, [](const Faulted& faulted) {
        const Row averages{7, 7, 100, 7, 7, 110, 7, 7};
        EXPECT_EQ(fields(summary), faulted.status == 0 ? averages : fields(untouched_power()))
            << faulted.at;
    });

    EXPECT_EQ(failures, 1U + 1U + 4U + 4U + 4U + 6U + 4U);
}

TEST_F(DurationSummaryFaults, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(one_power_row, ask_system), 12U);
    EXPECT_EQ(sweep_exceptions(one_psu_row, ask_supply), 8U);
    EXPECT_EQ(sweep_exceptions(policy_unread, ask_supply), 27U);
}

}  // namespace duration_summary_faults_tests
