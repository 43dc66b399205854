// SPDX-License-Identifier: Apache-2.0
// The 30-second walk as the three sample readers take it: slots, gaps, the end.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

class GridWalk : public PlatformTest {
protected:
    std::vector<pwrmgt_hist_pwr_sample_t> power{5, untouched_power()};
    std::vector<pwrmgt_hist_psu_sample_t> psu{5, untouched_psu()};
    std::vector<pwrmgt_hist_perf_sample_t> perf{5, untouched_perf()};

    // Processor power: three columns a row, which keeps the tables short.
    int32_t walk(uint32_t rows, int32_t count, uint32_t per_entry) {
        return pwrmgt_get_powerSamples(rows, count, per_entry, power.data(), PWRMGT_DOMAIN_CPU);
    }
    int32_t walk_psu(uint32_t rows, int32_t count, uint32_t per_entry) {
        return pwrmgt_get_psuPowerSamples(rows, count, per_entry, psu.data());
    }
    int32_t walk_perf(uint32_t rows, int32_t count, uint32_t per_entry) {
        return pwrmgt_get_perfSample_perIndex(rows, count, per_entry, perf.data());
    }
};

// -- slots

TEST_F(GridWalk, EntryFoldsItsSlotsAndBearsTheNewestStamp) {
    const OpenResult rows(rows_back_from(
        90'000,
        {{10, 15, 5}, {20, 25, 15}, {31, 35, 25}, {100, 110, 90}, {110, 120, 95}, {121, 130, 99}}));

    EXPECT_EQ(walk(rows, 2, 3), 1);

    EXPECT_EQ(fields(power[0]), (Row{0, 90'000, 20, 35, 5, 7, 7, 7}));
    EXPECT_EQ(fields(power[1]), (Row{1, 89'910, 110, 130, 90, 7, 7, 7}));
    EXPECT_EQ(fields(power[2]), fields(untouched_power()));
}

TEST_F(GridWalk, SlotRunsOnFromEntryToEntry) {
    const OpenResult rows({{90'000, 10, 10, 10}, {89'940, 30, 30, 30}, {89'910, 40, 40, 40}});

    EXPECT_EQ(walk(rows, 4, 1), 1);

    EXPECT_EQ(fields(power[0]), (Row{0, 90'000, 10, 10, 10, 7, 7, 7}));
    EXPECT_EQ(fields(power[1]), (Row{1, 89'970, 65535, 65535, 65535, 7, 7, 7}));
    EXPECT_EQ(fields(power[2]), (Row{2, 89'940, 30, 30, 30, 7, 7, 7}));
    EXPECT_EQ(fields(power[3]), (Row{3, 89'910, 40, 40, 40, 7, 7, 7}));
}

TEST_F(GridWalk, MissingRowLeavesTheMeanOverTheOthers) {
    const OpenResult rows({{90'000, 10, 12, 8}, {89'940, 30, 32, 28}});

    EXPECT_EQ(walk(rows, 1, 3), 1);

    EXPECT_EQ(fields(power[0]), (Row{0, 90'000, 20, 32, 8, 7, 7, 7}));
}

TEST_F(GridWalk, EntryWithoutARowIsMarkedAndStillStamped) {
    const OpenResult rows({{90'000, 10, 12, 8}, {89'880, 30, 32, 28}});

    EXPECT_EQ(walk(rows, 3, 2), 1);

    EXPECT_EQ(fields(power[1]), (Row{1, 89'940, 65535, 65535, 65535, 7, 7, 7}));
    EXPECT_EQ(fields(power[2]), (Row{2, 89'880, 30, 32, 28, 7, 7, 7}));
}

TEST_F(GridWalk, StampOfAnEntryIsItsNewestSlotAlsoWhenThatRowIsMissing) {
    const OpenResult rows({{90'000, 10, 12, 8}, {89'910, 30, 32, 28}});

    EXPECT_EQ(walk(rows, 2, 2), 1);

    EXPECT_EQ(fields(power[1]), (Row{1, 89'940, 30, 32, 28, 7, 7, 7}));
}

TEST_F(GridWalk, EntriesAfterTheLastRowHaveNoStamp) {
    const OpenResult rows(steady_rows(90'000, 3, {10, 12, 8}));

    EXPECT_EQ(walk(rows, 4, 2), 1);

    EXPECT_EQ(fields(power[1]), (Row{1, 89'940, 10, 12, 8, 7, 7, 7}));
    EXPECT_EQ(fields(power[2]), (Row{2, 0, 65535, 65535, 65535, 7, 7, 7}));
    EXPECT_EQ(fields(power[3]), (Row{3, 0, 65535, 65535, 65535, 7, 7, 7}));
}

TEST_F(GridWalk, SupplyAndPerformanceEntriesAfterTheLastRowHaveNoStamp) {
    const OpenResult supply_rows(steady_rows(90'000, 1, {10, 9}));
    const OpenResult percent_rows(steady_rows(90'000, 1, {10, 20, 5, 11, 12, 13}));

    EXPECT_EQ(walk_psu(supply_rows, 2, 2), 1);
    EXPECT_EQ(walk_perf(percent_rows, 2, 2), 1);

    EXPECT_EQ(fields(psu[0]), (Row{0, 90'000, 10, 9}));
    EXPECT_EQ(fields(psu[1]), (Row{1, 0, 65535, 65535}));
    EXPECT_EQ(fields(perf[0]), (Row{0, 90'000, 10, 20, 5, 11, 12, 13}));
    EXPECT_EQ(fields(perf[1]), (Row{1, 0, 255, 255, 255, 255, 255, 255}));
}

// -- rows that do not fit the grid

TEST_F(GridWalk, OffGridRowHidesAllOlderRows) {
    const OpenResult rows({{90'000, 10, 12, 8}, {89'971, 1, 1, 1}, {89'940, 2, 2, 2}});

    EXPECT_EQ(walk(rows, 3, 1), 1);

    EXPECT_EQ(fields(power[1]), (Row{1, 89'970, 65535, 65535, 65535, 7, 7, 7}));
    EXPECT_EQ(fields(power[2]), (Row{2, 89'940, 65535, 65535, 65535, 7, 7, 7}));
    EXPECT_EQ(platform().count("step"), 2U);
}

TEST_F(GridWalk, DoubledRowHidesAllOlderRows) {
    const OpenResult rows({{90'000, 10, 12, 8}, {90'000, 1, 1, 1}, {89'970, 2, 2, 2}});

    EXPECT_EQ(walk(rows, 2, 1), 1);

    EXPECT_EQ(fields(power[0]), (Row{0, 90'000, 10, 12, 8, 7, 7, 7}));
    EXPECT_EQ(fields(power[1]), (Row{1, 89'970, 65535, 65535, 65535, 7, 7, 7}));
}

TEST_F(GridWalk, RowNewerThanTheFirstHidesAllOlderRows) {
    const OpenResult rows({{90'000, 10, 12, 8}, {90'030, 1, 1, 1}, {89'970, 2, 2, 2}});

    EXPECT_EQ(walk(rows, 2, 1), 1);

    EXPECT_EQ(fields(power[1]), (Row{1, 89'970, 65535, 65535, 65535, 7, 7, 7}));
}

// -- the ends of time

TEST_F(GridWalk, SlotAtTheEpochIsReadAndNeverCounted) {
    const OpenResult rows({{30, 10, 12, 8}, {0, 20, 22, 18}});

    EXPECT_EQ(walk(rows, 2, 1), 1);

    EXPECT_EQ(fields(power[0]), (Row{0, 30, 10, 12, 8, 7, 7, 7}));
    EXPECT_EQ(fields(power[1]), (Row{1, 0, 20, 22, 18, 7, 7, 7}));
}

TEST_F(GridWalk, SlotsBeforeTheEpochWrap) {
    const OpenResult rows({{30, 10, 12, 8}, {4'294'967'266, 30, 32, 28}});

    EXPECT_EQ(walk(rows, 3, 1), 1);

    EXPECT_EQ(fields(power[1]), (Row{1, 0, 65535, 65535, 65535, 7, 7, 7}));
    EXPECT_EQ(fields(power[2]), (Row{2, 4'294'967'266, 30, 32, 28, 7, 7, 7}));
}

TEST_F(GridWalk, LatestStampOf32BitsIsARowLikeAnyOther) {
    const OpenResult rows({{4'294'967'295, 10, 12, 8}, {4'294'967'265, 30, 32, 28}});

    EXPECT_EQ(walk(rows, 3, 1), 1);

    EXPECT_EQ(fields(power[0]), (Row{0, 4'294'967'295, 10, 12, 8, 7, 7, 7}));
    EXPECT_EQ(fields(power[1]), (Row{1, 4'294'967'265, 30, 32, 28, 7, 7, 7}));
    EXPECT_EQ(fields(power[2]), (Row{2, 0, 65535, 65535, 65535, 7, 7, 7}));
}

// -- odd widths

TEST_F(GridWalk, WidthOfZeroMarksEveryEntryAndReadsNoValue) {
    const OpenResult power_rows(steady_rows(90'000, 2, {10, 12, 8}));
    const OpenResult supply_rows(steady_rows(90'000, 2, {10, 9}));
    const OpenResult percent_rows(steady_rows(90'000, 2, {1, 2, 3, 4, 5, 6}));

    EXPECT_EQ(walk(power_rows, 2, 0), 0);
    EXPECT_EQ(walk_psu(supply_rows, 2, 0), 0);
    EXPECT_EQ(walk_perf(percent_rows, 2, 0), 0);

    EXPECT_EQ(fields(power[1]), (Row{1, 0, 65535, 65535, 65535, 7, 7, 7}));
    EXPECT_EQ(fields(psu[1]), (Row{1, 0, 65535, 65535}));
    EXPECT_EQ(fields(perf[1]), (Row{1, 0, 255, 255, 255, 255, 255, 255}));
    EXPECT_EQ(platform().calls, (Calls{"step", "uint 0", "step", "uint 0", "step", "uint 0"}));
}

// Without its short cut this walk would take 4 * 10^12 turns: it ends by the test's time limit.
TEST_F(GridWalk, HugeWidthCostsNothingOnceTheRowsHaveEnded) {
    std::vector<pwrmgt_hist_pwr_sample_t> entries(1000, untouched_power());
    const OpenResult rows(steady_rows(90'000, 2, {10, 12, 8}));

    EXPECT_EQ(pwrmgt_get_powerSamples(rows, 1000, UINT32_MAX, entries.data(), PWRMGT_DOMAIN_CPU),
              1);

    EXPECT_EQ(fields(entries[0]), (Row{0, 90'000, 10, 12, 8, 7, 7, 7}));
    EXPECT_EQ(fields(entries[999]), (Row{999, 0, 65535, 65535, 65535, 7, 7, 7}));
    EXPECT_EQ(platform().calls.size(), 11U);
}

TEST_F(GridWalk, WidthOfHalfTheRangeEndsForEveryReader) {
    const OpenResult power_rows(steady_rows(90'000, 1, {10, 12, 8}));
    const OpenResult supply_rows(steady_rows(90'000, 1, {10, 9}));
    const OpenResult percent_rows(steady_rows(90'000, 1, {1, 2, 3, 4, 5, 6}));

    EXPECT_EQ(walk(power_rows, 5, 2'147'483'648U), 1);
    EXPECT_EQ(walk_psu(supply_rows, 5, 2'147'483'648U), 1);
    EXPECT_EQ(walk_perf(percent_rows, 5, 2'147'483'648U), 1);

    EXPECT_EQ(platform().count("step"), 6U);
}

TEST_F(GridWalk, IndexIsKeptIn16Bits) {
    std::vector<pwrmgt_hist_psu_sample_t> entries(65'538, untouched_psu());
    const OpenResult rows(steady_rows(90'000, 1, {10, 9}));

    EXPECT_EQ(pwrmgt_get_psuPowerSamples(rows, 65'538, 1, entries.data()), 1);

    EXPECT_EQ(entries[65'535].index, 65'535);
    EXPECT_EQ(entries[65'536].index, 0);
    EXPECT_EQ(entries[65'537].index, 1);
}
