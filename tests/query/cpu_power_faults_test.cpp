// SPDX-License-Identifier: Apache-2.0
// Each platform call of the processor queries fails in turn: the status, and every handle back.
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

using Statuses = std::vector<uint32_t>;

void two_rows_stored(Recorder& recorder) {
    recorder.answer_rows({{1'699'999'990, 101, 102, 103, 104, 105, 106, 107, 108},
                          {1'699'999'960, 201, 202, 203, 204, 205, 206, 207, 208}});
}

uint32_t ask_one() {
    pwrmgt_hist_cpu_pwr_t entries[2];
    return pwrmgt_get_history_cpu_power(3, entries, 2);
}

uint32_t ask_all() {
    pwrmgt_hist_entire_cpu_pwr_t entries[2];
    return pwrmgt_get_history_entire_cpu_power(entries, 2);
}

uint32_t ask_worker() {
    pwrmgt_hist_cpu_pwr_t entries[2];
    return pwrmgt_get_cpu_power_per_index(3, entries, 2);
}

uint32_t ask_latest_of_one() {
    pwrmgt_hist_cpu_pwr_t entry;
    return pwrmgt_get_latest_cpu_power(3, &entry);
}

uint32_t ask_latest_of_all() {
    pwrmgt_hist_entire_cpu_pwr_t entry;
    return pwrmgt_get_latest_entire_cpu_power(&entry);
}

}  // namespace

class CpuPowerFaults : public PlatformTest {};

// open, time (not tested), the select three ways, row count, then steps and columns, which are not
// tested either.
TEST_F(CpuPowerFaults, EachFailingCallHasItsStatus) {
    const Statuses expected{2, 0, 3, 3, 3, 8, 0, 0, 0, 0, 0, 0};

    EXPECT_EQ(swept_statuses(two_rows_stored, ask_worker), expected);
    EXPECT_EQ(swept_statuses(two_rows_stored, ask_one), expected);
}

TEST_F(CpuPowerFaults, EachFailingCallOfAllProcessorsHasItsStatus) {
    Statuses expected{2, 0, 3, 3, 3, 8};
    expected.resize(26, 0);

    EXPECT_EQ(swept_statuses(two_rows_stored, ask_all), expected);
}

TEST_F(CpuPowerFaults, EachFailingCallOfTheLatestRowHasItsStatus) {
    Statuses of_all{2, 0, 3, 3, 3, 8};
    of_all.resize(16, 0);

    EXPECT_EQ(swept_statuses(two_rows_stored, ask_latest_of_one),
              (Statuses{2, 0, 3, 3, 3, 8, 0, 0, 0}));
    EXPECT_EQ(swept_statuses(two_rows_stored, ask_latest_of_all), of_all);
}

TEST_F(CpuPowerFaults, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(two_rows_stored, ask_worker), 9U);
    EXPECT_EQ(sweep_exceptions(two_rows_stored, ask_one), 9U);
    EXPECT_EQ(sweep_exceptions(two_rows_stored, ask_all), 23U);
    EXPECT_EQ(sweep_exceptions(two_rows_stored, ask_latest_of_one), 6U);
    EXPECT_EQ(sweep_exceptions(two_rows_stored, ask_latest_of_all), 13U);
}
