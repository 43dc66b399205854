// SPDX-License-Identifier: Apache-2.0
// What the power reader makes of the rows of an entry: both groups, markers, widths.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

class Folds : public PlatformTest {
protected:
    pwrmgt_hist_pwr_sample_t entry = untouched_power();

    int32_t fold(const std::vector<Row>& values, pwrmgt_pwr_domain domain) {
        const OpenResult rows(rows_back_from(90'000, values));
        return pwrmgt_get_powerSamples(rows, 1, static_cast<uint32_t>(values.size()), &entry,
                                       domain);
    }
    int32_t fold_system(const std::vector<Row>& values) {
        return fold(values, PWRMGT_DOMAIN_SYSTEM);
    }
};

TEST_F(Folds, SystemReadsTwoGroupsIn16Bits) {
    const OpenResult rows(steady_rows(90'000, 1, {100, 120, 80, 110, 130, 90}));

    EXPECT_EQ(pwrmgt_get_powerSamples(rows, 1, 1, &entry, PWRMGT_DOMAIN_SYSTEM), 1);

    EXPECT_EQ(platform().calls,
              (Calls{"step", "uint 0", "short_uint 1", "short_uint 2", "short_uint 3",
                     "short_uint 4", "short_uint 5", "short_uint 6", "step"}));
    EXPECT_EQ(fields(entry), (Row{0, 90'000, 100, 120, 80, 110, 130, 90}));
}

TEST_F(Folds, AnyOtherDomainReadsOneGroupIn16Bits) {
    for (const uint32_t domain : {1U, 2U, 3U, 4'294'967'295U}) {
        const OpenResult rows(steady_rows(90'000, 1, {100, 120, 80}));

        EXPECT_EQ(
            pwrmgt_get_powerSamples(rows, 1, 1, &entry, static_cast<pwrmgt_pwr_domain>(domain)), 1);

        EXPECT_EQ(platform().calls, (Calls{"step", "uint 0", "short_uint 1", "short_uint 2",
                                           "short_uint 3", "step"}));
    }
}

TEST_F(Folds, SecondGroupStaysUntouchedForProcessorsAndMemory) {
    for (const auto domain : {PWRMGT_DOMAIN_CPU, PWRMGT_DOMAIN_MEMORY}) {
        entry = {7, 7, 7, 7, 7, 11, 12, 13};
        EXPECT_EQ(fold({{100, 120, 80}, {102, 122, 82}}, domain), 1);
        EXPECT_EQ(fields(entry), (Row{0, 90'000, 101, 122, 80, 11, 12, 13}));

        entry = {7, 7, 7, 7, 7, 11, 12, 13};
        EXPECT_EQ(fold({{65535, 65535, 65535}}, domain), 0);
        EXPECT_EQ(fields(entry), (Row{0, 90'000, 65535, 65535, 65535, 11, 12, 13}));
    }
}

TEST_F(Folds, SecondGroupWithoutReadingsIsFoldedAsItStands) {
    EXPECT_EQ(fold_system({{1, 2, 3, 65535, 65535, 65535}}), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 1, 2, 3, 65535, 65535, 65535}));
}

TEST_F(Folds, EntryThatAFailedStepCutsShortIsClearedInBothGroups) {
    const OpenResult rows(Rows{steady_rows(90'000, 1, {1, 2, 3, 4, 5, 6}), 3, {}});

    EXPECT_EQ(pwrmgt_get_powerSamples(rows, 1, 2, &entry, PWRMGT_DOMAIN_SYSTEM), 0);

    EXPECT_EQ(fields(entry), (Row{7, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(Folds, MeanIsTruncated) {
    EXPECT_EQ(fold_system({{100, 1, 1, 200, 1, 1}, {101, 1, 1, 201, 1, 1}, {101, 1, 1, 201, 1, 1}}),
              1);

    EXPECT_EQ(entry.avg, 100);
    EXPECT_EQ(entry.avg2, 200);
}

TEST_F(Folds, MaximumAndMinimumAreThoseOfTheirOwnColumns) {
    EXPECT_EQ(fold_system({{500, 10, 30, 500, 11, 31}, {0, 12, 29, 0, 13, 28}}), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 250, 12, 29, 250, 13, 28}));
}

TEST_F(Folds, ZeroWattsIsAReading) {
    EXPECT_EQ(fold_system({{0, 0, 0, 0, 0, 0}}), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 0, 0, 0, 0, 0, 0}));
}

TEST_F(Folds, ReadingOneBelowTheMarkerIsValid) {
    EXPECT_EQ(fold_system({{65534, 65534, 65534, 65534, 65534, 65534}}), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 65534, 65534, 65534, 65534, 65534, 65534}));
}

TEST_F(Folds, SumsOfPowerDoNotWrap) {
    EXPECT_EQ(fold_system(std::vector<Row>(24, {65534, 65534, 65534, 65534, 65534, 65534})), 1);

    EXPECT_EQ(entry.avg, 65534);
    EXPECT_EQ(entry.avg2, 65534);
}

TEST_F(Folds, MarkerInAnyFirstGroupColumnInvalidatesTheSlotForBothGroups) {
    for (const size_t column : {0U, 1U, 2U}) {
        Row marked{500, 500, 1, 500, 500, 1};
        marked[column] = 65535;

        EXPECT_EQ(fold_system({{100, 120, 80, 110, 130, 90}, marked}), 1);

        EXPECT_EQ(fields(entry), (Row{0, 90'000, 100, 120, 80, 110, 130, 90})) << column;
    }
}

TEST_F(Folds, MarkerInTheSecondGroupIsTakenAsAValue) {
    EXPECT_EQ(fold_system({{100, 120, 80, 65535, 65535, 65535}, {100, 120, 80, 1, 2, 3}}), 1);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 100, 120, 80, 32768, 65535, 3}));
}

TEST_F(Folds, EntryWithoutAValidSlotShowsItsLastSlotAsStored) {
    EXPECT_EQ(fold_system({{65535, 1, 2, 3, 4, 5}, {100, 65535, 80, 110, 130, 90}}), 0);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 100, 65535, 80, 110, 130, 90}));
}

TEST_F(Folds, EntryWhoseLastSlotIsMissingAndNoneValidIsMarked) {
    const OpenResult rows({{90'000, 100, 65535, 80, 110, 130, 90}, {89'910, 1, 1, 1, 1, 1, 1}});

    EXPECT_EQ(pwrmgt_get_powerSamples(rows, 1, 3, &entry, PWRMGT_DOMAIN_SYSTEM), 0);

    EXPECT_EQ(fields(entry), (Row{0, 90'000, 65535, 65535, 65535, 65535, 65535, 65535}));
}

TEST_F(Folds, EntryAfterTheEndOfTheRowsIsMarkedInBothGroups) {
    std::vector<pwrmgt_hist_pwr_sample_t> entries(2, untouched_power());
    const OpenResult rows(steady_rows(90'000, 1, {100, 120, 80, 110, 130, 90}));

    EXPECT_EQ(pwrmgt_get_powerSamples(rows, 2, 1, entries.data(), PWRMGT_DOMAIN_SYSTEM), 1);

    EXPECT_EQ(fields(entries[1]), (Row{1, 0, 65535, 65535, 65535, 65535, 65535, 65535}));
}

TEST_F(Folds, EntryOfNoSlotsIsMarkedInBothGroups) {
    const OpenResult rows(steady_rows(90'000, 1, {100, 120, 80, 110, 130, 90}));

    EXPECT_EQ(pwrmgt_get_powerSamples(rows, 1, 0, &entry, PWRMGT_DOMAIN_SYSTEM), 0);

    EXPECT_EQ(fields(entry), (Row{0, 0, 65535, 65535, 65535, 65535, 65535, 65535}));
}

TEST_F(Folds, OneEntryWithAReadingIsEnough) {
    std::vector<pwrmgt_hist_pwr_sample_t> entries(3, untouched_power());
    const OpenResult rows(
        rows_back_from(90'000, {{65535, 65535, 65535}, {10, 12, 8}, {65535, 65535, 65535}}));

    EXPECT_EQ(pwrmgt_get_powerSamples(rows, 3, 1, entries.data(), PWRMGT_DOMAIN_MEMORY), 1);

    EXPECT_EQ(fields(entries[0]), (Row{0, 90'000, 65535, 65535, 65535, 7, 7, 7}));
    EXPECT_EQ(fields(entries[1]), (Row{1, 89'970, 10, 12, 8, 7, 7, 7}));
    EXPECT_EQ(fields(entries[2]), (Row{2, 89'940, 65535, 65535, 65535, 7, 7, 7}));
}

TEST_F(Folds, EachEntryStartsAfresh) {
    std::vector<pwrmgt_hist_pwr_sample_t> entries(2, untouched_power());
    const OpenResult rows(
        rows_back_from(90'000, {{900, 990, 10, 800, 880, 5}, {100, 120, 80, 110, 130, 90}}));

    EXPECT_EQ(pwrmgt_get_powerSamples(rows, 2, 1, entries.data(), PWRMGT_DOMAIN_SYSTEM), 1);

    EXPECT_EQ(fields(entries[1]), (Row{1, 89'970, 100, 120, 80, 110, 130, 90}));
}
