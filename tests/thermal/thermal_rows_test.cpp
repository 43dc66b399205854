// SPDX-License-Identifier: Apache-2.0
// The thermal history from start to save: start, save, trim.
#include "thermal_test.h"

using namespace pwrmgt::test;

namespace thermal_rows_tests {
namespace {

uint32_t initialise() {
    return thermal_init_thermal_hist_table(kDb);
}
uint32_t save() {
    return thermal_save_hist_mem_table(kDb);
}
uint32_t clean_up() {
    return thermal_cleanup_hist_mem_table(kDb);
}

void nothing_stored(Recorder&) {}
void one_row_stored(Recorder& recorder) {
    recorder.answer_rows(std::vector<Row>{{1'699'999'980, 1, 1, 23}});
}

const Calls kRefill{"raw TRUNCATE TABLE HistThermal24HrMem",
                    "raw INSERT INTO HistThermal24HrMem SELECT * FROM HistThermal24Hr",
                    "raw TRUNCATE TABLE RealTimeThermalMem"};

Calls joined(Calls first, const Calls& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

}  // namespace

class ThermalRows : public ThermalTest {};

// -- start

TEST_F(ThermalRows, StartTrimsTheLowerBoundOnly) {
    EXPECT_EQ(initialise(), 0U);

    EXPECT_EQ(
        platform().calls,
        joined({"time", "raw DELETE FROM HistThermal24Hr where Timestamp < 1699913600"}, kRefill));
}

TEST_F(ThermalRows, StartWithinTheFirstDayTrimsNothing) {
    for (const int64_t now : {int64_t{86400}, int64_t{1}, int64_t{0}, int64_t{-1}}) {
        platform().reset();
        platform().clock = now;

        EXPECT_EQ(initialise(), 0U) << now;

        EXPECT_EQ(platform().calls, joined({"time"}, kRefill)) << now;
    }
}

TEST_F(ThermalRows, StartOneSecondAfterTheFirstDayTrims) {
    platform().clock = 86401;

    EXPECT_EQ(initialise(), 0U);

    EXPECT_EQ(platform().calls,
              joined({"time", "raw DELETE FROM HistThermal24Hr where Timestamp < 1"}, kRefill));
}

TEST_F(ThermalRows, EachFailingStatementStopsTheStart) {
    const std::vector<uint32_t> statuses{6, 6, 4, 6};
    for (size_t nth = 1; nth <= 4; ++nth) {
        platform().reset();
        platform().fail(Operation::raw, -1, nth);

        EXPECT_EQ(initialise(), statuses[nth - 1]) << nth;

        EXPECT_EQ(platform().count("raw"), nth);
    }
}

// clock, trim, truncate, copy, truncate; without the clock nothing is trimmed.
TEST_F(ThermalRows, EachFailingCallOfTheStartHasItsStatus) {
    EXPECT_EQ(swept_statuses(nothing_stored, initialise), (Outcomes{{0}, {6}, {6}, {4}, {6}}));
}

// -- save

TEST_F(ThermalRows, SaveCopiesTheRowsAfterTheLastSavedTime) {
    one_row_stored(platform());

    EXPECT_EQ(save(), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"raw SELECT * FROM HistThermal24Hr order by Timestamp DESC", "step", "int 0",
                     "free_result",
                     "raw INSERT INTO HistThermal24Hr SELECT * FROM HistThermal24HrMem where "
                     "Timestamp>1699999980"}));
}

TEST_F(ThermalRows, SaveToAnEmptyTableCopiesEveryPositiveTime) {
    EXPECT_EQ(save(), 0U);

    EXPECT_EQ(
        platform().calls,
        (Calls{"raw SELECT * FROM HistThermal24Hr order by Timestamp DESC", "step", "free_result",
               "raw INSERT INTO HistThermal24Hr SELECT * FROM HistThermal24HrMem where "
               "Timestamp>0"}));
}

TEST_F(ThermalRows, SaveCountsAnyStepButNineAsNoRow) {
    for (const int code : {-1, 0, 1, 3, 8, 10, 11}) {
        platform().reset();
        platform().answer_rows(Rows{{}, code, {}});

        EXPECT_EQ(save(), 0U) << code;

        EXPECT_THAT(platform().calls.back(), testing::EndsWith("Timestamp>0")) << code;
    }
}

TEST_F(ThermalRows, FailedSelectOfTheSaveCopiesNothing) {
    for (const Mode mode : {Mode::error, Mode::error_with_handle, Mode::no_handle}) {
        platform().reset();
        platform().fail(Operation::raw_rows, -1, 1, mode);

        EXPECT_EQ(save(), 6U);

        EXPECT_EQ(platform().count("raw"), 1U);
    }
}

// Select, step, column, copy.
TEST_F(ThermalRows, EachFailingCallOfTheSaveHasItsStatus) {
    EXPECT_EQ(swept_statuses(one_row_stored, save), (Outcomes{{6}, {0}, {0}, {4}}));
}

// -- trim

TEST_F(ThermalRows, ThermalRowStampedNowStays) {
    EXPECT_EQ(clean_up(), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"time",
                     "raw DELETE FROM HistThermal24HrMem where Timestamp < 1699913600 or Timestamp "
                     "> 1700000000",
                     "raw DELETE FROM HistThermal24Hr where Timestamp < 1699913600 or Timestamp > "
                     "1700000000"}));
}

TEST_F(ThermalRows, TrimWithinTheFirstDayDeletesNothing) {
    for (const int64_t now : {int64_t{86400}, int64_t{0}, int64_t{-1}}) {
        platform().reset();
        platform().clock = now;

        EXPECT_EQ(clean_up(), 0U) << now;

        EXPECT_EQ(platform().calls, Calls{"time"}) << now;
    }
}

TEST_F(ThermalRows, TrimOneSecondAfterTheFirstDayDeletes) {
    platform().clock = 86401;

    EXPECT_EQ(clean_up(), 0U);

    EXPECT_EQ(platform().named("raw"),
              (Calls{"raw DELETE FROM HistThermal24HrMem where Timestamp < 1 or Timestamp > 86401",
                     "raw DELETE FROM HistThermal24Hr where Timestamp < 1 or Timestamp > 86401"}));
}

TEST_F(ThermalRows, FailedTrimOfTheWorkingTableSparesTheOther) {
    platform().fail(Operation::raw, -1, 1);

    EXPECT_EQ(clean_up(), 6U);

    EXPECT_EQ(platform().count("raw"), 1U);
}

TEST_F(ThermalRows, EachFailingCallOfTheTrimHasItsStatus) {
    EXPECT_EQ(swept_statuses(nothing_stored, clean_up), (Outcomes{{0}, {6}, {6}}));
}

// -- all

TEST_F(ThermalRows, NoneTestsItsConnection) {
    EXPECT_EQ(thermal_init_thermal_hist_table(0), 0U);
    EXPECT_EQ(thermal_save_hist_mem_table(0), 0U);
    EXPECT_EQ(thermal_cleanup_hist_mem_table(0), 0U);
    EXPECT_EQ(platform().count("raw"), 8U);
}

TEST_F(ThermalRows, NonePrintsAnything) {
    traced([] { return initialise() + save() + clean_up(); });

    EXPECT_EQ(trace, "");
}

TEST_F(ThermalRows, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(nothing_stored, initialise), 4U);
    EXPECT_EQ(sweep_exceptions(one_row_stored, save), 4U);
    EXPECT_EQ(sweep_exceptions(nothing_stored, clean_up), 2U);
}

}  // namespace thermal_rows_tests
