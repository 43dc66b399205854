// SPDX-License-Identifier: Apache-2.0
// The sample readers on a result of two rows, with each call failing in turn: what they tell, and
// what the entries hold.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

std::vector<pwrmgt_hist_pwr_sample_t> power;
std::vector<pwrmgt_hist_psu_sample_t> psu;
std::vector<pwrmgt_hist_perf_sample_t> perf;

void nothing_scripted(Recorder&) {}

uint32_t read_power() {
    power.assign(2, untouched_power());
    const OpenResult rows(rows_back_from(90'000, {{10, 12, 8}, {20, 22, 18}}));
    return static_cast<uint32_t>(
        pwrmgt_get_powerSamples(rows, 2, 1, power.data(), PWRMGT_DOMAIN_CPU));
}

uint32_t read_psu() {
    psu.assign(2, untouched_psu());
    const OpenResult rows(rows_back_from(90'000, {{10, 9}, {20, 19}}));
    return static_cast<uint32_t>(pwrmgt_get_psuPowerSamples(rows, 2, 1, psu.data()));
}

uint32_t read_perf() {
    perf.assign(2, untouched_perf());
    const OpenResult rows(rows_back_from(90'000, {{1, 2, 3, 4, 5, 6}, {7, 8, 9, 10, 11, 12}}));
    return static_cast<uint32_t>(pwrmgt_get_perfSample_perIndex(rows, 2, 1, perf.data()));
}

// Opening the result, then step and stamp; the first row's columns; step and stamp; the second
// row's columns; the last step. A failed step ends the walk, but not one that tells the end of the
// rows or one more; a value that cannot be read is the slot's before.
Outcomes outcomes(size_t columns) {
    return in_turn({{{0, 0, 1, 0}, {0}, {0}},
                    each_of(columns, 1),
                    {{0, 0, 1, 1}, {1}},
                    each_of(columns, 1),
                    {{0, 0, 1, 1}}});
}

}  // namespace

class ReaderFaults : public PlatformTest {};

TEST_F(ReaderFaults, EachFailingCallHasItsResult) {
    EXPECT_EQ(swept_statuses(nothing_scripted, read_power), outcomes(3));
    EXPECT_EQ(swept_statuses(nothing_scripted, read_psu), outcomes(2));
    EXPECT_EQ(swept_statuses(nothing_scripted, read_perf), outcomes(6));
}

TEST_F(ReaderFaults, PowerIsUntouchedWithoutAFirstRow) {
    sweep_faults(nothing_scripted, read_power, [](const Faulted& faulted) {
        if (faulted.at > 3 || faulted.status == 1) return;
        EXPECT_EQ(fields(power[0]), fields(untouched_power())) << faulted.at;
        EXPECT_EQ(fields(power[1]), fields(untouched_power())) << faulted.at;
    });
}

TEST_F(ReaderFaults, EarlyEndMarksTheEntriesAfterIt) {
    sweep_faults(nothing_scripted, read_power, [](const Faulted& faulted) {
        if (faulted.at != 7 || faulted.mode != Mode::early_end) return;
        EXPECT_EQ(fields(power[0]), (Row{0, 90'000, 10, 12, 8, 7, 7, 7}));
        EXPECT_EQ(fields(power[1]), (Row{1, 0, 65535, 65535, 65535, 7, 7, 7}));
    });
    sweep_faults(nothing_scripted, read_psu, [](const Faulted& faulted) {
        if (faulted.at != 6 || faulted.mode != Mode::early_end) return;
        EXPECT_EQ(fields(psu[0]), (Row{0, 90'000, 10, 9}));
        EXPECT_EQ(fields(psu[1]), (Row{1, 0, 65535, 65535}));
    });
    sweep_faults(nothing_scripted, read_perf, [](const Faulted& faulted) {
        if (faulted.at != 10 || faulted.mode != Mode::early_end) return;
        EXPECT_EQ(fields(perf[0]), (Row{0, 90'000, 1, 2, 3, 4, 5, 6}));
        EXPECT_EQ(fields(perf[1]), (Row{1, 0, 255, 255, 255, 255, 255, 255}));
    });
}

// The row that is told keeps the stamp of the one before: its slot is a gap.
TEST_F(ReaderFaults, RowThatIsToldAndNotThereIsAGap) {
    sweep_faults(nothing_scripted, read_power, [](const Faulted& faulted) {
        if (faulted.at != 7 || faulted.mode != Mode::no_row) return;
        EXPECT_EQ(fields(power[0]), (Row{0, 90'000, 10, 12, 8, 7, 7, 7}));
        EXPECT_EQ(fields(power[1]), (Row{1, 89'970, 65535, 65535, 65535, 7, 7, 7}));
    });
}

TEST_F(ReaderFaults, ExceptionOfAnyCallPassesThroughWithTheResultBack) {
    EXPECT_EQ(sweep_exceptions(nothing_scripted, read_power), 12U);
    EXPECT_EQ(sweep_exceptions(nothing_scripted, read_psu), 10U);
    EXPECT_EQ(sweep_exceptions(nothing_scripted, read_perf), 18U);
}
