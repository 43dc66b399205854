// SPDX-License-Identifier: Apache-2.0
// Status codes of the supplies per layout, in every pattern of usable supplies.
#include <array>
#include <bit>

#include "psu_test.h"

using namespace pwrmgt::test;

namespace {

int32_t status_of(const std::vector<Row>& rows, int32_t (*ask)()) {
    script_supplies(rows);
    platform().calls.clear();
    platform().operations.clear();
    return ask();
}

// The same pattern, but the bays that are not good are not even present.
std::vector<Row> others_absent(size_t rows, uint32_t good) {
    std::vector<Row> bays = bays_of_pattern(rows, good);
    for (Row& row : bays) {
        if (row[kFault] != 0) row[kPresent] = 0;
    }
    return bays;
}

}  // namespace

class BayStatus : public PsuTest {};

// -- two and four bays

TEST_F(BayStatus, TwoBaysInEveryPattern) {
    const std::array<int32_t, 4> expected{15, 0, 0, 1};
    for (uint32_t good = 0; good < 4; ++good) {
        EXPECT_EQ(status_of(bays_of_pattern(2, good), pwrmgt_check_psuStatus), expected[good]);
    }
}

TEST_F(BayStatus, FourBaysInEveryPattern) {
    // Bit 0 is bay 1; bays 1 and 3 are one group, 2 and 4 the other.
    const std::array<int32_t, 16> expected{15, 2, 2, 4, 2, 3, 4, 5, 2, 4, 3, 5, 4, 5, 5, 6};
    for (uint32_t good = 0; good < 16; ++good) {
        EXPECT_EQ(status_of(bays_of_pattern(4, good), pwrmgt_check_psuStatus), expected[good])
            << good;
    }
}

TEST_F(BayStatus, EachDefectMakesASupplyUnusable) {
    EXPECT_EQ(status_of({good_supply(1), supply_with(2, kId, 15)}, pwrmgt_check_psuStatus), 0);
    EXPECT_EQ(status_of({good_supply(1), supply_with(2, kPresent, 0)}, pwrmgt_check_psuStatus), 0);
    for (const int64_t value : {1, 15, 255}) {
        EXPECT_EQ(
            status_of({good_supply(1), supply_with(2, kAcLost, value)}, pwrmgt_check_psuStatus), 0);
        EXPECT_EQ(
            status_of({good_supply(1), supply_with(2, kFault, value)}, pwrmgt_check_psuStatus), 0);
    }
    EXPECT_EQ(
        status_of({good_supply(1), supply_with(2, kOutputLabel, 65535)}, pwrmgt_check_psuStatus),
        0);
}

TEST_F(BayStatus, AnyPresenceButZeroAndAnyLabelBelow65535AreUsable) {
    for (const int64_t present : {2, 15, 255}) {
        EXPECT_EQ(
            status_of({good_supply(1), supply_with(2, kPresent, present)}, pwrmgt_check_psuStatus),
            1);
    }
    for (const int64_t label_w : {0, 8192, 65534}) {
        EXPECT_EQ(status_of({good_supply(1), good_supply(2, label_w)}, pwrmgt_check_psuStatus), 1);
    }
}

TEST_F(BayStatus, OnePresentButFaultedIsZeroAndBothFaulted15) {
    EXPECT_EQ(status_of({good_supply(1), supply_with(2, kFault, 1)}, pwrmgt_check_psuStatus), 0);
    EXPECT_EQ(
        status_of({supply_with(1, kFault, 1), supply_with(2, kFault, 1)}, pwrmgt_check_psuStatus),
        15);
}

TEST_F(BayStatus, OnlyTwoAndFourBaysCanBeTold) {
    for (size_t bays = 0; bays <= 14; ++bays) {
        const int32_t expected = bays == 2 ? 1 : bays == 4 ? 6 : -1;
        EXPECT_EQ(status_of(bays_of_pattern(bays, 0x3FFF), pwrmgt_check_psuStatus), expected)
            << bays;
    }
}

// -- configuration code

TEST_F(BayStatus, ThreeCodesHaveARuleOfTheirOwn) {
    for (uint32_t config = 0; config < 255; ++config) {
        g_psu_config_info = static_cast<uint8_t>(config);
        const bool own_rule = config == 3 || config == 8 || config == 12;

        EXPECT_EQ(status_of(bays_of_pattern(2, 3), pwrmgt_check_psuStatus), own_rule ? -1 : 1)
            << config;
    }
}

TEST_F(BayStatus, EachOfTheThreeGoesToItsLayout) {
    g_psu_config_info = 12;
    EXPECT_EQ(status_of(bays_of_pattern(12, 0xFFF), pwrmgt_check_psuStatus), 8);
    g_psu_config_info = 3;
    EXPECT_EQ(status_of(bays_of_pattern(3, 7), pwrmgt_check_psuStatus), 9);
    g_psu_config_info = 8;
    EXPECT_EQ(status_of(bays_of_pattern(8, 0xFF), pwrmgt_check_psuStatus), 1);
}

TEST_F(BayStatus, CodeIsAskedBeforeTheSuppliesAreRead) {
    EXPECT_EQ(status_of(bays_of_pattern(2, 3), pwrmgt_check_psuStatus), 1);

    EXPECT_EQ(platform().calls, chain({{"byte /ac/tavn/power/psu_config_info"}, supplies_read(2)}));
}

// -- layouts

TEST_F(BayStatus, GoxIsEightOnlyWithMoreThanOneOnBothFeeds) {
    platform().quiet = true;
    // By usable supplies among bays 1 to 6, then among 7 to 12.
    constexpr std::array<std::array<int32_t, 7>, 7> kExpected{{{7, 7, 7, 7, 7, 7, 7},
                                                               {7, 7, 7, 7, 7, 7, 7},
                                                               {7, 7, 8, 8, 8, 8, 8},
                                                               {7, 7, 8, 8, 8, 8, 8},
                                                               {7, 7, 8, 8, 8, 8, 8},
                                                               {7, 7, 8, 8, 8, 8, 8},
                                                               {7, 7, 8, 8, 8, 8, 8}}};
    for (uint32_t good = 0; good < 4096; ++good) {
        const auto a = static_cast<size_t>(std::popcount(good % 64));
        const auto b = static_cast<size_t>(std::popcount(good / 64));

        ASSERT_EQ(status_of(bays_of_pattern(12, good), pwrmgt_gox_check_psu_feed_count),
                  kExpected[a][b])
            << good;
    }
}

TEST_F(BayStatus, OrvaneIsNineWithAnyUsableSupply) {
    const std::array<int32_t, 8> expected{15, 9, 9, 9, 9, 9, 9, 9};
    for (uint32_t good = 0; good < 8; ++good) {
        EXPECT_EQ(status_of(bays_of_pattern(3, good), pwrmgt_orvane_check_psu_feed_count),
                  expected[good]);
    }
}

TEST_F(BayStatus, EightIsOneFromFiveUsableSuppliesOn) {
    platform().quiet = true;
    constexpr std::array<int32_t, 9> kExpected{0, 0, 0, 0, 0, 1, 1, 1, 1};
    for (uint32_t good = 0; good < 256; ++good) {
        ASSERT_EQ(status_of(bays_of_pattern(8, good), pwrmgt_check_eight_psu_feed_count),
                  kExpected[static_cast<size_t>(std::popcount(good))])
            << good;
    }
}

TEST_F(BayStatus, EachLayoutTakesItsOwnNumberOfBaysOnly) {
    for (size_t bays = 0; bays <= 14; ++bays) {
        const std::vector<Row> rows = bays_of_pattern(bays, 0x3FFF);

        EXPECT_EQ(status_of(rows, pwrmgt_gox_check_psu_feed_count), bays == 12 ? 8 : -1);
        EXPECT_EQ(status_of(rows, pwrmgt_orvane_check_psu_feed_count), bays == 3 ? 9 : -1);
        EXPECT_EQ(status_of(rows, pwrmgt_check_eight_psu_feed_count), bays == 8 ? 1 : -1);
    }
}

// -- one in reserve

TEST_F(BayStatus, ReserveWithOthersFaultedInEveryPattern) {
    platform().quiet = true;
    constexpr std::array<int32_t, 13> kExpected{15, 1, 2, 3, 15, 15, 15, 15, 15, 15, 15, 15, 15};
    for (uint32_t good = 0; good < 4096; ++good) {
        ASSERT_EQ(status_of(bays_of_pattern(12, good), pwrmgt_check_psuStatus_for_N_1),
                  kExpected[static_cast<size_t>(std::popcount(good))])
            << good;
    }
}

TEST_F(BayStatus, ReserveWithOthersAbsentInEveryPattern) {
    platform().quiet = true;
    constexpr std::array<int32_t, 13> kExpected{15, 4, 5, 6, 7, 15, 15, 15, 15, 15, 15, 15, 15};
    for (uint32_t good = 0; good < 4096; ++good) {
        ASSERT_EQ(status_of(others_absent(12, good), pwrmgt_check_psuStatus_for_N_1),
                  kExpected[static_cast<size_t>(std::popcount(good))])
            << good;
    }
}

TEST_F(BayStatus, ReserveNeedsTwelveRowsAndLooksAtTwelve) {
    EXPECT_EQ(status_of(bays_of_pattern(11, 1), pwrmgt_check_psuStatus_for_N_1), -1);
    EXPECT_EQ(status_of(others_absent(12, 1), pwrmgt_check_psuStatus_for_N_1), 4);
    EXPECT_EQ(status_of(others_absent(13, 0x1001), pwrmgt_check_psuStatus_for_N_1), 1);
}

TEST_F(BayStatus, ReserveComparesWithSuppliesWhosePresenceIsOne) {
    std::vector<Row> rows = others_absent(12, 3);
    rows[1][kPresent] = 2;  // usable, but not counted as present

    EXPECT_EQ(status_of(rows, pwrmgt_check_psuStatus_for_N_1), 2);
}

// -- failures

TEST_F(BayStatus, SuppliesThatCannotBeReadAreMinusOneEverywhere) {
    struct Layout {
        int32_t (*ask)();
        size_t bays;
        size_t calls;
        bool takes_more;  // bays than those
    };
    for (const Layout& layout : {Layout{pwrmgt_check_psuStatus, 2, 38, false},
                                 {pwrmgt_check_psuStatus_for_N_1, 12, 118, true},
                                 {pwrmgt_gox_check_psu_feed_count, 12, 118, false},
                                 {pwrmgt_orvane_check_psu_feed_count, 3, 46, false},
                                 {pwrmgt_check_eight_psu_feed_count, 8, 86, false}}) {
        const auto script = [&](Recorder&) {
            fresh_process();
            g_psu_config_info = 0;
            script_policy(policy_with(0, 1));
            script_supplies(bays_of_pattern(layout.bays, 1));
        };
        const auto act = [&] { return static_cast<uint32_t>(layout.ask()); };
        size_t unreadable = 0;

        sweep_faults(script, act, [&](const Faulted& faulted) {
            const bool of_the_policy = faulted.at <= 19;
            const bool ends_it = hides_the_rows(faulted) || (faulted.mode == Mode::one_row_more &&
                                                             !of_the_policy && !layout.takes_more);
            EXPECT_EQ(static_cast<int32_t>(faulted.status) == -1, ends_it);
            if (ends_it) ++unreadable;
        });

        EXPECT_EQ(unreadable, layout.takes_more ? 16U : 17U);
        EXPECT_EQ(sweep_exceptions(script, act), layout.calls);
    }
}

TEST_F(BayStatus, RefusedPlatformIsMinusOneEverywhere) {
    platform().quoril = true;

    EXPECT_EQ(pwrmgt_check_psuStatus(), -1);
    EXPECT_EQ(pwrmgt_check_psuStatus_for_N_1(), -1);
    EXPECT_EQ(pwrmgt_gox_check_psu_feed_count(), -1);
    EXPECT_EQ(pwrmgt_orvane_check_psu_feed_count(), -1);
    EXPECT_EQ(pwrmgt_check_eight_psu_feed_count(), -1);
}
