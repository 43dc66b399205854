// SPDX-License-Identifier: Apache-2.0
// What the supply reader makes of the rows of an entry: 16-bit sums, validity.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

class PsuFold : public PlatformTest {
protected:
    pwrmgt_hist_psu_sample_t entry = untouched_psu();

    int32_t fold(const std::vector<Row>& values) {
        const OpenResult rows(rows_back_from(90'000, values));
        return pwrmgt_get_psuPowerSamples(rows, 1, static_cast<uint32_t>(values.size()), &entry);
    }
};

TEST_F(PsuFold, ReadsTwoColumnsIn16Bits) {
    const OpenResult rows(steady_rows(90'000, 1, {110, 100}));

    EXPECT_EQ(pwrmgt_get_psuPowerSamples(rows, 1, 1, &entry), 1);

    EXPECT_EQ(platform().calls, (Calls{"step", "uint 0", "short_uint 1", "short_uint 2", "step"}));
    EXPECT_EQ(fields(entry), (Row{0, 90'000, 110, 100}));
}

TEST_F(PsuFold, MeanIsTruncated) {
    EXPECT_EQ(fold({{100, 200}, {101, 201}, {101, 201}}), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 100, 200}));
}

TEST_F(PsuFold, SumsWrapIn16BitsBeforeTheDivision) {
    EXPECT_EQ(fold(std::vector<Row>(24, {3000, 2731})), 1);

    // 72000 becomes 6464 and 65544 becomes 8.
    EXPECT_EQ(fields(entry), (Row{0, 90'000, 269, 0}));
}

TEST_F(PsuFold, LargestSumThatFitsDoesNotWrap) {
    EXPECT_EQ(fold({{32767, 32768}, {32768, 32768}}), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 32767, 0}));
}

TEST_F(PsuFold, ReadingOneBelowTheMarkerIsValid) {
    EXPECT_EQ(fold({{65534, 65534}}), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 65534, 65534}));
}

TEST_F(PsuFold, ZeroWattsIsAReading) {
    EXPECT_EQ(fold({{0, 0}}), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 0, 0}));
}

TEST_F(PsuFold, MarkerInEitherColumnInvalidatesTheSlot) {
    EXPECT_EQ(fold({{110, 100}, {65535, 500}}), 1);
    EXPECT_EQ(fields(entry), (Row{0, 90'000, 110, 100}));

    EXPECT_EQ(fold({{500, 65535}, {110, 100}}), 1);
    EXPECT_EQ(fields(entry), (Row{0, 90'000, 110, 100}));
}

TEST_F(PsuFold, EntryWithoutAValidSlotIsMarkedWhateverItsLastSlotHolds) {
    EXPECT_EQ(fold({{65535, 65535}, {65535, 100}}), 0);
    EXPECT_EQ(fields(entry), (Row{0, 90'000, 65535, 65535}));

    EXPECT_EQ(fold({{110, 65535}}), 0);
    EXPECT_EQ(fields(entry), (Row{0, 90'000, 65535, 65535}));
}

TEST_F(PsuFold, MissingRowLeavesTheMeanOverTheOthers) {
    const OpenResult rows({{90'000, 10, 100}, {89'940, 30, 300}});

    EXPECT_EQ(pwrmgt_get_psuPowerSamples(rows, 1, 3, &entry), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 20, 200}));
}

TEST_F(PsuFold, EachEntryStartsAfresh) {
    std::vector<pwrmgt_hist_psu_sample_t> entries(2, untouched_psu());
    const OpenResult rows(rows_back_from(90'000, {{900, 800}, {110, 100}}));

    EXPECT_EQ(pwrmgt_get_psuPowerSamples(rows, 2, 1, entries.data()), 1);

    EXPECT_EQ(fields(entries[1]), (Row{1, 89'970, 110, 100}));
}
