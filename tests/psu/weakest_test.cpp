// SPDX-License-Identifier: Apache-2.0
// The weakest usable supply, for each number of bays.
#include <algorithm>
#include <array>
#include <utility>

#include "psu_test.h"

using namespace pwrmgt::test;

namespace {

constexpr pwrmgt_psu_property_t kUntouched{77, 77, 77, 77, 77, 7777, 7777};

bool is_untouched(const pwrmgt_psu_property_t& psu) {
    return psu.psu_id == 77 && psu.present == 77 && psu.input_label_power == 7777 &&
           psu.output_label_power == 7777;
}

// The bay that comes back; 0 when no bay does, -1 when the record is untouched.
int weakest_of(const std::vector<Row>& rows) {
    script_supplies(rows);
    pwrmgt_psu_property_t out = kUntouched;
    pwrmgt_get_smallest_psuInfo(&out);
    platform().calls.clear();
    platform().operations.clear();
    return is_untouched(out) ? -1 : out.psu_id;
}

// A faulted supply weighs as much as one of unknown label.
int64_t weight(const Row& row) {
    return row[kFault] == 0 ? row[kOutputLabel] : 65535;
}

bool none_healthy(const std::vector<Row>& rows) {
    return std::all_of(rows.begin(), rows.end(), [](const Row& row) { return row[kFault] != 0; });
}

// Every row of `bays` bays with each of the labels, good or faulted, counted through.
std::vector<Row> combination(size_t bays, uint32_t number, const std::vector<int64_t>& labels) {
    std::vector<Row> rows;
    for (size_t index = 0; index < bays; ++index) {
        const auto choices = static_cast<uint32_t>(labels.size() * 2);
        const uint32_t choice = number % choices;
        rows.push_back(good_supply(static_cast<int64_t>(index) + 1, labels[choice / 2]));
        rows.back()[kFault] = choice % 2;
        number /= choices;
    }
    return rows;
}

}  // namespace

class Weakest : public PsuTest {};

// -- two bays

TEST_F(Weakest, OfTwoIsTheLighterOneTheFirstOfEquals) {
    platform().quiet = true;
    const std::vector<int64_t> labels{0, 900, 1000, 65534, 65535};
    for (uint32_t number = 0; number < 100; ++number) {
        const std::vector<Row> rows = combination(2, number, labels);
        const auto lightest =
            std::min(std::pair{weight(rows[0]), 1}, std::pair{weight(rows[1]), 2});

        EXPECT_EQ(weakest_of(rows), none_healthy(rows) ? -1 : lightest.second) << number;
    }
}

TEST_F(Weakest, FirstBayOfTwoStandsWithoutALabel) {
    EXPECT_EQ(weakest_of({good_supply(1, 65535), supply_with(2, kFault, 1)}), 1);
    EXPECT_EQ(weakest_of({good_supply(1, 65535), good_supply(2, 65535)}), 1);
    EXPECT_EQ(weakest_of({supply_with(1, kFault, 1), good_supply(2, 65535)}), 1);
}

TEST_F(Weakest, EachDefectOfAFirstBayLeavesTheSecond) {
    EXPECT_EQ(weakest_of({supply_with(1, kId, 15), good_supply(2)}), 2);
    EXPECT_EQ(weakest_of({supply_with(1, kPresent, 0), good_supply(2)}), 2);
    EXPECT_EQ(weakest_of({supply_with(1, kAcLost, 1), good_supply(2)}), 2);
    EXPECT_EQ(weakest_of({supply_with(1, kFault, 1), good_supply(2)}), 2);
    EXPECT_EQ(weakest_of({supply_with(1, kPresent, 2), good_supply(2)}), 1);
}

TEST_F(Weakest, WholeRowComesBack) {
    script_supplies({good_supply(1), {2, 1, 0, 0, 16, 1111, 1000}});
    pwrmgt_psu_property_t out = kUntouched;

    EXPECT_EQ(pwrmgt_get_smallest_psuInfo(&out), 0U);

    EXPECT_EQ(out.psu_id, 2);
    EXPECT_EQ(out.present, 1);
    EXPECT_EQ(out.input_ac_lost, 0);
    EXPECT_EQ(out.psu_fault, 0);
    EXPECT_EQ(out.input_voltage, 16);
    EXPECT_EQ(out.input_label_power, 1111);
    EXPECT_EQ(out.output_label_power, 1000);
}

// -- four bays

TEST_F(Weakest, OfFourIsTheLighterOfTwoPairsByItsStoredLabel) {
    platform().quiet = true;
    const std::vector<int64_t> labels{900, 1000, 65535};
    for (uint32_t number = 0; number < 6 * 6 * 6 * 6; ++number) {
        const std::vector<Row> rows = combination(4, number, labels);
        const auto odd =
            std::min(std::pair{weight(rows[0]), size_t{0}}, std::pair{weight(rows[2]), size_t{2}});
        const auto even =
            std::min(std::pair{weight(rows[1]), size_t{1}}, std::pair{weight(rows[3]), size_t{3}});
        const auto stored = [&](size_t index) { return rows[index][kOutputLabel]; };
        const size_t weakest = stored(even.second) < stored(odd.second) ? even.second : odd.second;

        EXPECT_EQ(weakest_of(rows), none_healthy(rows) ? -1 : static_cast<int>(weakest) + 1)
            << number;
    }
}

TEST_F(Weakest, FaultedPairOfFourStandsWithItsStoredLabel) {
    EXPECT_EQ(weakest_of({supply_with(1, kOutputLabel, 1500), good_supply(2, 1800),
                          good_supply(3, 1500), good_supply(4, 1500)}),
              1);
    std::vector<Row> rows = bays_of_pattern(4, 0b1010);
    rows[0][kOutputLabel] = 700;
    rows[2][kOutputLabel] = 600;

    EXPECT_EQ(weakest_of(rows), 1);
}

// -- eight and twelve bays

TEST_F(Weakest, OfEightIsTheLightestUsableInEveryPattern) {
    platform().quiet = true;
    const std::array<int64_t, 8> labels{1500, 1300, 1700, 1300, 1100, 1600, 1100, 1200};
    const std::array<int, 8> lightest_first{5, 7, 8, 2, 4, 1, 6, 3};
    for (uint32_t good = 1; good < 256; ++good) {
        std::vector<Row> rows = bays_of_pattern(8, good);
        for (size_t index = 0; index < 8; ++index)
            rows[index][kOutputLabel] = labels[index];
        const auto weakest = std::find_if(lightest_first.begin(), lightest_first.end(),
                                          [good](int bay) { return (good >> (bay - 1) & 1) != 0; });

        ASSERT_EQ(weakest_of(rows), *weakest) << good;
    }
}

TEST_F(Weakest, OfTwelveIsTheLightestUsableInEveryPattern) {
    platform().quiet = true;
    const std::array<int64_t, 12> labels{1500, 1300, 1700, 1300, 1100, 1600,
                                         1100, 1200, 1000, 1900, 1000, 1400};
    const std::array<int, 12> lightest_first{9, 11, 5, 7, 8, 2, 4, 12, 1, 6, 3, 10};
    for (uint32_t good = 1; good < 4096; ++good) {
        std::vector<Row> rows = bays_of_pattern(12, good);
        for (size_t index = 0; index < 12; ++index)
            rows[index][kOutputLabel] = labels[index];
        const auto weakest = std::find_if(lightest_first.begin(), lightest_first.end(),
                                          [good](int bay) { return (good >> (bay - 1) & 1) != 0; });

        ASSERT_EQ(weakest_of(rows), *weakest) << good;
    }
}

TEST_F(Weakest, ManyBaysWithoutALabelGiveZerosAnd65535) {
    for (const size_t bays : {size_t{8}, size_t{12}}) {
        script_supplies(bays_of_pattern(bays, 0xFFF, 65535));
        pwrmgt_psu_property_t out = kUntouched;

        EXPECT_EQ(pwrmgt_get_smallest_psuInfo(&out), 0U);

        EXPECT_EQ(out.psu_id, 0);
        EXPECT_EQ(out.present, 0);
        EXPECT_EQ(out.input_ac_lost, 0);
        EXPECT_EQ(out.psu_fault, 0);
        EXPECT_EQ(out.input_voltage, 0);
        EXPECT_EQ(out.output_label_power, 65535);
    }
}

TEST_F(Weakest, LabelOneBelowUnknownIsFoundAmongMany) {
    EXPECT_EQ(weakest_of(bays_of_pattern(8, 0b100000, 65534)), 6);
}

// -- other numbers, failures

TEST_F(Weakest, OtherNumbersOfBaysLeaveTheRecordUntouched) {
    for (const size_t bays : {1U, 3U, 5U, 6U, 7U, 9U, 10U, 11U, 13U, 14U}) {
        script_supplies(bays_of_pattern(bays, 0x3FFF));
        pwrmgt_psu_property_t out = kUntouched;

        EXPECT_EQ(pwrmgt_get_smallest_psuInfo(&out), 0U) << bays;

        EXPECT_TRUE(is_untouched(out)) << bays;
    }
}

TEST_F(Weakest, CodeOfTheReaderComesBackAndLeavesTheRecordUntouched) {
    pwrmgt_psu_property_t out = kUntouched;

    script_supplies(bays_of_pattern(2, 0));
    EXPECT_EQ(pwrmgt_get_smallest_psuInfo(&out), 17U);

    script_supplies({});
    EXPECT_EQ(pwrmgt_get_smallest_psuInfo(&out), 8U);

    platform().quoril = true;
    EXPECT_EQ(pwrmgt_get_smallest_psuInfo(&out), 10U);

    EXPECT_TRUE(is_untouched(out));
}

TEST_F(Weakest, NullPointerGetsTheCallsAndTheStatusOfAValidOne) {
    for (const size_t bays : {2U, 3U, 4U, 8U, 12U}) {
        script_supplies(bays_of_pattern(bays, 0xFFF));
        platform().calls.clear();

        EXPECT_EQ(pwrmgt_get_smallest_psuInfo(nullptr), 0U);

        EXPECT_EQ(platform().calls, supplies_read(bays));
    }
}

TEST_F(Weakest, EachFailureHasTheReadersStatus) {
    pwrmgt_psu_property_t out{};
    const auto script = [](Recorder&) {
        fresh_process();
        script_policy(policy_with(0, 1));
        script_supplies(bays_of_pattern(2, 1));
    };
    const auto act = [&] { return pwrmgt_get_smallest_psuInfo(&out); };

    // Open, select, row count (of two); then the good bay and the faulted one. A row whose step
    // fails comes with the next step.
    EXPECT_EQ(swept_statuses(script, act), in_turn({policy_outcomes(),
                                                    {{2}, {3}, {8, 8, 0, 0}},
                                                    {{0, 0, 17, 0}},
                                                    each_of(4, 17),
                                                    each_of(3 + 8, 0)}));
    EXPECT_EQ(sweep_exceptions(script, act), 38U);
}
