// SPDX-License-Identifier: Apache-2.0
// What the performance reader makes of the rows of an entry: four means, one maximum, one minimum.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

class PerfFold : public PlatformTest {
protected:
    pwrmgt_hist_perf_sample_t entry = untouched_perf();

    int32_t fold(const std::vector<Row>& values) {
        const OpenResult rows(rows_back_from(90'000, values));
        return pwrmgt_get_perfSample_perIndex(rows, 1, static_cast<uint32_t>(values.size()),
                                              &entry);
    }
};

TEST_F(PerfFold, ReadsSixColumnsIn8Bits) {
    const OpenResult rows(steady_rows(90'000, 1, {40, 60, 20, 41, 42, 43}));

    EXPECT_EQ(pwrmgt_get_perfSample_perIndex(rows, 1, 1, &entry), 1);

    EXPECT_EQ(platform().calls, (Calls{"step", "uint 0", "uchar 1", "uchar 2", "uchar 3", "uchar 4",
                                       "uchar 5", "uchar 6", "step"}));
    EXPECT_EQ(fields(entry), (Row{0, 90'000, 40, 60, 20, 41, 42, 43}));
}

TEST_F(PerfFold, MeansAreTruncatedAndExtremesAreThoseOfTheirColumns) {
    EXPECT_EQ(fold({{40, 60, 20, 41, 42, 43}, {41, 55, 25, 42, 43, 44}}), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 40, 60, 20, 41, 42, 43}));
}

TEST_F(PerfFold, ExtremeOfALaterRowWins) {
    EXPECT_EQ(fold({{40, 55, 25, 41, 42, 43}, {40, 60, 20, 41, 42, 43}}), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 40, 60, 20, 41, 42, 43}));
}

// 300 rows of 250, 240, 230 and 220: 75000, 72000, 69000 and 66000 in 16 bits.
TEST_F(PerfFold, SumsOfPercentagesWrapIn16Bits) {
    EXPECT_EQ(fold(std::vector<Row>(300, {250, 254, 1, 240, 230, 220})), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 31, 254, 1, 21, 11, 1}));
}

TEST_F(PerfFold, ZeroPercentIsAReading) {
    EXPECT_EQ(fold({{0, 0, 0, 0, 0, 0}}), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 0, 0, 0, 0, 0, 0}));
}

TEST_F(PerfFold, ReadingOneBelowTheMarkerIsValid) {
    EXPECT_EQ(fold({{254, 254, 254, 254, 254, 254}}), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 254, 254, 254, 254, 254, 254}));
}

TEST_F(PerfFold, MarkerInAnyColumnInvalidatesTheSlot) {
    for (size_t column = 0; column < 6; ++column) {
        Row marked{90, 95, 1, 90, 90, 90};
        marked[column] = 255;

        EXPECT_EQ(fold({{40, 60, 20, 41, 42, 43}, marked}), 1);

        EXPECT_EQ(fields(entry), (Row{0, 90'000, 40, 60, 20, 41, 42, 43})) << column;
    }
}

TEST_F(PerfFold, EntryWithoutAValidSlotShowsItsLastSlotAsStored) {
    EXPECT_EQ(fold({{255, 1, 2, 3, 4, 5}, {40, 60, 20, 41, 42, 255}}), 0);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 40, 60, 20, 41, 42, 255}));
}

TEST_F(PerfFold, EntryWhoseRowsAreAllMissingIsMarked) {
    std::vector<pwrmgt_hist_perf_sample_t> entries(3, untouched_perf());
    const OpenResult rows({{90'000, 40, 60, 20, 41, 42, 43}, {89'940, 40, 60, 20, 41, 42, 43}});

    EXPECT_EQ(pwrmgt_get_perfSample_perIndex(rows, 3, 1, entries.data()), 1);

    EXPECT_EQ(fields(entries[1]), (Row{1, 89'970, 255, 255, 255, 255, 255, 255}));
    EXPECT_EQ(fields(entries[2]), (Row{2, 89'940, 40, 60, 20, 41, 42, 43}));
}

TEST_F(PerfFold, EachEntryStartsAfresh) {
    std::vector<pwrmgt_hist_perf_sample_t> entries(2, untouched_perf());
    const OpenResult rows(
        rows_back_from(90'000, {{90, 95, 1, 90, 90, 90}, {40, 60, 20, 41, 42, 43}}));

    EXPECT_EQ(pwrmgt_get_perfSample_perIndex(rows, 2, 1, entries.data()), 1);

    EXPECT_EQ(fields(entries[1]), (Row{1, 89'970, 40, 60, 20, 41, 42, 43}));
}
