// SPDX-License-Identifier: Apache-2.0
// Each platform call of the processor queries fails in turn: the status, and every handle back.
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

const Outcomes kBeforeTheRows{{2}, {0}, {3}, {8, 8, 0, 0}};

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

// Open, time (not tested), select, row count (of two rows), then steps and columns, which are not
// tested either.
TEST_F(CpuPowerFaults, EachFailingCallHasItsStatus) {
    const Outcomes expected = in_turn({kBeforeTheRows, each_of(6, 0)});

    EXPECT_EQ(swept_statuses(two_rows_stored, ask_worker), expected);
    EXPECT_EQ(swept_statuses(two_rows_stored, ask_one), expected);
}

TEST_F(CpuPowerFaults, EachFailingCallOfAllProcessorsHasItsStatus) {
    EXPECT_EQ(swept_statuses(two_rows_stored, ask_all), in_turn({kBeforeTheRows, each_of(20, 0)}));
}

TEST_F(CpuPowerFaults, EachFailingCallOfTheLatestRowHasItsStatus) {
    EXPECT_EQ(swept_statuses(two_rows_stored, ask_latest_of_one),
              in_turn({kBeforeTheRows, each_of(3, 0)}));
    EXPECT_EQ(swept_statuses(two_rows_stored, ask_latest_of_all),
              in_turn({kBeforeTheRows, each_of(10, 0)}));
}

TEST_F(CpuPowerFaults, EntriesFromABrokenStepOnAreZeroed) {
    pwrmgt_hist_cpu_pwr_t entries[2];
    const auto ask = [&] {
        entries[0] = entries[1] = {7, 7, 7};
        return pwrmgt_get_history_cpu_power(3, entries, 2);
    };
    const auto held = [&](size_t at) {
        return Row{entries[at].index, entries[at].timestamp, entries[at].cpu_pwr};
    };

    sweep_faults(two_rows_stored, ask, [&](const Faulted& faulted) {
        const Row newest{0, 1'699'999'990, 103};
        const Row nothing{0, 0, 0};
        const bool row_later = faulted.mode == Mode::no_row;
        if (faulted.at == 5) {
            EXPECT_EQ(held(0), nothing);
            EXPECT_EQ(held(1), row_later ? (Row{1, 1'699'999'990, 103}) : nothing);
        } else if (faulted.at == 8) {
            EXPECT_EQ(held(0), newest);
            EXPECT_EQ(held(1), row_later ? (Row{1, 0, 0}) : nothing);
        } else if (faulted.status != 0) {
            EXPECT_EQ(held(0), (Row{7, 7, 7}));
        }
    });
}

TEST_F(CpuPowerFaults, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(two_rows_stored, ask_worker), 9U);
    EXPECT_EQ(sweep_exceptions(two_rows_stored, ask_one), 9U);
    EXPECT_EQ(sweep_exceptions(two_rows_stored, ask_all), 23U);
    EXPECT_EQ(sweep_exceptions(two_rows_stored, ask_latest_of_one), 6U);
    EXPECT_EQ(sweep_exceptions(two_rows_stored, ask_latest_of_all), 13U);
}
