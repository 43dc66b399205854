// SPDX-License-Identifier: Apache-2.0
// Power and state of the layouts with two domains, in every pattern of usable supplies.
#include <algorithm>
#include <array>
#include <bit>

#include "psu_test.h"

using namespace pwrmgt::test;

namespace two_domains_tests {
namespace {

struct Power {
    uint32_t watts = 77;
    uint8_t state = 77;

    bool operator==(const Power&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Power& power) {
    return out << power.watts << " W, state " << int{power.state};
}

using Ask = int32_t (*)(int32_t, uint32_t*, uint8_t*, float);

Power power_of(Ask ask, const std::vector<Row>& rows, int32_t mode, int32_t expected) {
    script_supplies(rows);
    platform().calls.clear();
    platform().operations.clear();
    Power power;
    EXPECT_EQ(ask(mode, &power.watts, &power.state, 1.2F), expected);
    return power;
}

Power power_of_eight(const std::vector<Row>& rows, int32_t mode) {
    return power_of(pwrmgt_8_psu_2_domain_power_info, rows, mode, 0);
}

Power power_of_twelve(const std::vector<Row>& rows, int32_t mode) {
    return power_of(pwrmgt_12_psu_2_domain_power_info, rows, mode, 0);
}

// Supplies of 1000 W; those whose bit is clear are not there.
std::vector<Row> only(size_t bays, uint32_t good) {
    std::vector<Row> rows(bays, empty_bay());
    for (size_t index = 0; index < bays; ++index) {
        if ((good >> index & 1) != 0)
            rows[index] = good_supply(static_cast<int64_t>(index) + 1, 1000);
    }
    return rows;
}

size_t bits(uint32_t pattern) {
    return static_cast<size_t>(std::popcount(pattern));
}

// The first read of the policy and the bays finds `first`, a later one `then`.
void supplies_change(const std::vector<Row>& first, const std::vector<Row>& then) {
    platform().answer_rows(std::vector<Row>{policy_with(0, 1)});
    platform().answer_rows(first);
    script_supplies(then);
}

}  // namespace

// -- eight bays

class EightBays : public PsuTest {};

TEST_F(EightBays, OthersFaultedInEveryPattern) {
    platform().quiet = true;
    // By the number of good supplies, eight being present.
    constexpr std::array<Power, 9> kHalf{{{},
                                          {1000, 0},
                                          {2000, 0},
                                          {3000, 0},
                                          {4000, 0},
                                          {4800, 1},
                                          {4800, 2},
                                          {4800, 3},
                                          {4800, 4}}};
    constexpr std::array<Power, 9> kAll{{{},
                                         {1000, 0},
                                         {2000, 0},
                                         {3000, 0},
                                         {4000, 0},
                                         {5000, 0},
                                         {6000, 0},
                                         {7000, 0},
                                         {8000, 0}}};
    for (uint32_t good = 1; good < 256; ++good) {
        const std::vector<Row> rows = bays_of_pattern(8, good, 1000);

        ASSERT_EQ(power_of_eight(rows, 1), kHalf[bits(good)]) << good;
        ASSERT_EQ(power_of_eight(rows, 2), kAll[bits(good)]) << good;
        ASSERT_EQ(power_of_eight(rows, 4), good == 255 ? (Power{7000, 1}) : kAll[bits(good)])
            << good;
    }
}

TEST_F(EightBays, OthersAbsentInEveryPattern) {
    platform().quiet = true;
    constexpr std::array<Power, 9> kHalf{
        {{}, {0, 1}, {1200, 1}, {1200, 2}, {2400, 2}, {2400, 3}, {3600, 3}, {3600, 4}, {4800, 4}}};
    constexpr std::array<Power, 9> kReserve{{{},
                                             {1000, 1},
                                             {1200, 1},
                                             {2400, 1},
                                             {3600, 1},
                                             {4800, 1},
                                             {6000, 1},
                                             {6000, 1},
                                             {7000, 1}}};
    for (uint32_t good = 1; good < 256; ++good) {
        const std::vector<Row> rows = only(8, good);

        ASSERT_EQ(power_of_eight(rows, 1), kHalf[bits(good)]) << good;
        ASSERT_EQ(power_of_eight(rows, 4), kReserve[bits(good)]) << good;
    }
}

TEST_F(EightBays, SevenAndEightAreNotOversubscribed) {
    EXPECT_EQ(power_of_eight(only(8, 0b0111111), 4), (Power{6000, 1}));
    EXPECT_EQ(power_of_eight(only(8, 0b1111111), 4), (Power{6000, 1}));
    EXPECT_EQ(power_of_eight(only(8, 0b11111111), 4), (Power{7000, 1}));
}

TEST_F(EightBays, AnyPresenceButZeroCounts) {
    std::vector<Row> rows = only(8, 0b1111);
    rows[3][kPresent] = 2;
    EXPECT_EQ(power_of_eight(rows, 1), (Power{2400, 2}));

    rows[7] = supply_with(8, kPresent, 15);
    rows[7][kFault] = 1;
    EXPECT_EQ(power_of_eight(rows, 4), (Power{4000, 0}));
}

TEST_F(EightBays, SupplyWithoutALabelIsPresentButNotGood) {
    std::vector<Row> rows = only(8, 0b11);
    rows[2] = good_supply(3, 65535);

    EXPECT_EQ(power_of_eight(rows, 4), (Power{2000, 0}));
}

TEST_F(EightBays, WeakestLabelIsTheUnit) {
    std::vector<Row> rows = only(8, 0b11);
    rows[6] = good_supply(7, 999);

    EXPECT_EQ(power_of_eight(rows, 2), (Power{2997, 0}));
}

TEST_F(EightBays, NoneLeftByTheSecondReadIsCountedAsFound) {
    supplies_change(only(8, 0b11), bays_of_pattern(8, 0, 1000));
    EXPECT_EQ(power_of(pwrmgt_8_psu_2_domain_power_info, bays_of_pattern(8, 0), 4, 0),
              (Power{0, 0}));

    supplies_change(only(8, 0b11), only(8, 0));
    EXPECT_EQ(power_of(pwrmgt_8_psu_2_domain_power_info, only(8, 0), 4, 0), (Power{1000, 1}));
}

// -- twelve bays

class TwelveBays : public PsuTest {};

TEST_F(TwelveBays, EveryPattern) {
    platform().quiet = true;
    constexpr std::array<Power, 7> kHalf{
        {{0, 77}, {1200, 0}, {2400, 1}, {3600, 2}, {4800, 3}, {6000, 4}, {7200, 5}}};
    constexpr std::array<uint32_t, 13> kAll{0,    1000, 2000, 3000,  4000,  5000, 6000,
                                            7000, 8000, 9000, 10000, 11000, 12000};
    for (uint32_t good = 1; good < 4096; ++good) {
        const std::vector<Row> rows = bays_of_pattern(12, good, 1000);
        const size_t smaller = std::min(bits(good % 64), bits(good / 64));

        ASSERT_EQ(power_of_twelve(rows, 1), kHalf[smaller]) << good;
        ASSERT_EQ(power_of_twelve(rows, 2), (Power{kAll[bits(good)], 0})) << good;
    }
}

TEST_F(TwelveBays, StateIsUntouchedWhenADomainIsEmpty) {
    EXPECT_EQ(power_of_twelve(only(12, 0b000000'111111), 1), (Power{0, 77}));
    EXPECT_EQ(power_of_twelve(only(12, 0b111111'000000), 1), (Power{0, 77}));
    EXPECT_EQ(power_of_twelve(only(12, 0b000001'111111), 1), (Power{1200, 0}));
}

TEST_F(TwelveBays, NoneLeftByTheSecondReadIsCountedAsFound) {
    supplies_change(only(12, 0b11), only(12, 0));
    EXPECT_EQ(power_of(pwrmgt_12_psu_2_domain_power_info, only(12, 0), 2, 0), (Power{0, 0}));

    supplies_change(only(12, 0b11), only(12, 0));
    EXPECT_EQ(power_of(pwrmgt_12_psu_2_domain_power_info, only(12, 0), 1, 0), (Power{0, 77}));
}

// -- both

class TwoDomains : public PsuTest {};

TEST_F(TwoDomains, WeakestIsReadFirstThenTheBays) {
    power_of_eight(only(8, 1), 2);
    EXPECT_EQ(platform().calls, chain({supplies_read(8), supplies_read(8)}));

    power_of_twelve(only(12, 1), 2);
    EXPECT_EQ(platform().calls, chain({supplies_read(12), supplies_read(12)}));
}

TEST_F(TwoDomains, OtherModesAnswerWithoutWriting) {
    for (const int32_t mode : {-1, 0, 3, 5, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(power_of_eight(only(8, 0xFF), mode), Power{}) << mode;
        EXPECT_EQ(power_of_twelve(only(12, 0xFFF), mode), Power{}) << mode;
    }
    EXPECT_EQ(power_of_twelve(only(12, 0xFFF), 4), Power{});
}

TEST_F(TwoDomains, OtherNumbersOfBaysAreRefusedInEveryMode) {
    for (const uint32_t bays : {0U, 2U, 3U, 4U, 7U, 8U, 9U, 11U, 12U, 13U}) {
        for (const int32_t mode : {0, 1, 2, 4}) {
            const std::vector<Row> rows = only(bays, 0x1FFF);
            if (bays != 8) {
                EXPECT_EQ(power_of(pwrmgt_8_psu_2_domain_power_info, rows, mode, -1), Power{});
            }
            if (bays != 12) {
                EXPECT_EQ(power_of(pwrmgt_12_psu_2_domain_power_info, rows, mode, -1), Power{});
            }
        }
    }
}

TEST_F(TwoDomains, BaysThatChangeTheirNumberBetweenTheReadsAreRefused) {
    supplies_change(only(8, 0xFF), only(12, 0xFFF));
    EXPECT_EQ(power_of(pwrmgt_8_psu_2_domain_power_info, only(12, 0xFFF), 2, -1), Power{});
}

TEST_F(TwoDomains, LabelFrom8192OnIsRefused) {
    EXPECT_EQ(power_of_eight(bays_of_pattern(8, 0xFF, 8191), 2), (Power{65528, 0}));
    EXPECT_EQ(power_of_twelve(bays_of_pattern(12, 0xFFF, 8191), 2), (Power{98292, 0}));

    power_of(pwrmgt_8_psu_2_domain_power_info, bays_of_pattern(8, 0xFF, 8192), 2, -1);
    power_of(pwrmgt_12_psu_2_domain_power_info, bays_of_pattern(12, 0xFFF, 8192), 2, -1);
}

TEST_F(TwoDomains, NoHealthySupplyIsRefused) {
    power_of(pwrmgt_8_psu_2_domain_power_info, bays_of_pattern(8, 0), 2, -1);
    power_of(pwrmgt_12_psu_2_domain_power_info, bays_of_pattern(12, 0), 2, -1);
}

TEST_F(TwoDomains, EitherPointerMayBeNull) {
    Power power;
    for (const int32_t mode : {1, 2, 4}) {
        script_supplies(only(8, 0b1111));
        EXPECT_EQ(pwrmgt_8_psu_2_domain_power_info(mode, nullptr, nullptr, 1.2F), 0);
        script_supplies(only(12, 0b1111'001111));
        EXPECT_EQ(pwrmgt_12_psu_2_domain_power_info(mode, nullptr, nullptr, 1.2F), 0);
    }
    EXPECT_EQ(pwrmgt_12_psu_2_domain_power_info(1, &power.watts, nullptr, 1.2F), 0);
    EXPECT_EQ(pwrmgt_12_psu_2_domain_power_info(1, nullptr, &power.state, 1.2F), 0);

    EXPECT_EQ(power, (Power{4800, 3}));
}

TEST_F(TwoDomains, SuppliesThatCannotBeReadAreMinusOne) {
    for (const auto& [ask, bays] : {std::pair<Ask, size_t>{pwrmgt_8_psu_2_domain_power_info, 8},
                                    {pwrmgt_12_psu_2_domain_power_info, 12}}) {
        Power power;
        const auto script = [&, bays = bays](Recorder&) {
            fresh_process();
            power = {};
            script_policy(policy_with(0, 1));
            script_supplies(only(bays, 0b11'000011));
        };
        const auto act = [&, ask = ask] {
            return static_cast<uint32_t>(ask(1, &power.watts, &power.state, 1.2F));
        };
        const size_t policy_calls = 19, weakest_calls = policy_calls + 3 + 8 * bays;
        size_t unreadable = 0;

        sweep_faults(script, act, [&](const Faulted& faulted) {
            const bool of_the_policy = (faulted.at - 1) % weakest_calls < policy_calls;
            const bool no_weakest =
                faulted.mode == Mode::early_end && faulted.at == policy_calls + 4;
            const bool ends_it = hides_the_rows(faulted) || no_weakest ||
                                 (faulted.mode == Mode::one_row_more && !of_the_policy);
            EXPECT_EQ(static_cast<int32_t>(faulted.status) == -1, ends_it);
            if (!ends_it) return;
            EXPECT_EQ(power, Power{});
            ++unreadable;
        });

        EXPECT_EQ(unreadable, 2 * 17U + 1U);
        EXPECT_EQ(sweep_exceptions(script, act), 2 * (19 + 3 + 8 * bays));
    }
}

}  // namespace two_domains_tests
