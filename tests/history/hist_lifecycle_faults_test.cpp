// SPDX-License-Identifier: Apache-2.0
// The working history's start, reload, trim and save with each platform call failing in turn: the
// status, the outputs, every handle back.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace hist_lifecycle_faults_tests {
namespace {

constexpr int32_t kNow = 1'700'000'000;
constexpr int32_t kUntouched = -77;

int32_t last_id = 0;
int32_t last_stamp = 0;

uint32_t initialise() {
    last_id = last_stamp = kUntouched;
    return pwrmgt_init_hist_table(kDb, kNow, &last_id, &last_stamp);
}

uint32_t reload() {
    return pwrmgt_load_hist_bak_table(kDb);
}

uint32_t clean_up() {
    return pwrmgt_cleanup_hist_mem_table(kDb, kNow);
}

uint32_t save() {
    last_id = kUntouched;
    return pwrmgt_save_hist_mem_table(kDb, &last_id);
}

void one_row_stored(Recorder& recorder) {
    recorder.answer_rows(std::vector<Row>{{17, 1'699'999'980}});
}

void nothing_stored(Recorder&) {}

}  // namespace

class HistLifecycleFaults : public PlatformTest {};

// Trim, truncate, copy, select, row count, step, two columns.
TEST_F(HistLifecycleFaults, EachFailingCallOfTheStartHasItsStatus) {
    EXPECT_EQ(swept_statuses(one_row_stored, initialise),
              (Outcomes{{6}, {6}, {4}, {3}, {0}, {0}, {0}, {0}}));
}

TEST_F(HistLifecycleFaults, StartFillsItsOutputsOnlyFromARowThatIsThere) {
    sweep_faults(one_row_stored, initialise, [](const Faulted& faulted) {
        const bool counted = faulted.mode == Mode::one_row_more;
        EXPECT_EQ(last_id, counted || faulted.at == 8 ? 17 : kUntouched) << faulted.at;
        EXPECT_EQ(last_stamp, counted || faulted.at == 7 ? 1'699'999'980 : kUntouched)
            << faulted.at;
    });
}

TEST_F(HistLifecycleFaults, FailingCallsOfTheReloadAreHandedBack) {
    EXPECT_EQ(swept_statuses(nothing_stored, reload), (Outcomes{{1, kMinusOne}, {1, kMinusOne}}));
}

TEST_F(HistLifecycleFaults, EachFailingTrimIs6) {
    EXPECT_EQ(swept_statuses(nothing_stored, clean_up), each_of(2, 6));
}

// Select, step, column, copy.
TEST_F(HistLifecycleFaults, EachFailingCallOfTheSaveHasItsStatus) {
    EXPECT_EQ(swept_statuses(one_row_stored, save), (Outcomes{{6}, {0}, {0}, {4}}));
}

TEST_F(HistLifecycleFaults, SaveWithoutASavedRowCopiesAllAndTellsSlot0) {
    sweep_faults(one_row_stored, save, [](const Faulted& faulted) {
        EXPECT_EQ(last_id, faulted.at == 4 ? 17 : 0) << faulted.at;
        if (faulted.at == 2 || faulted.at == 3) {
            EXPECT_THAT(platform().calls.back(), testing::EndsWith(" where _id>0"));
        }
    });
}

TEST_F(HistLifecycleFaults, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(one_row_stored, initialise), 8U);
    EXPECT_EQ(sweep_exceptions(nothing_stored, reload), 2U);
    EXPECT_EQ(sweep_exceptions(nothing_stored, clean_up), 2U);
    EXPECT_EQ(sweep_exceptions(one_row_stored, save), 4U);
}

}  // namespace hist_lifecycle_faults_tests
