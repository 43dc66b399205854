// SPDX-License-Identifier: Apache-2.0
// The power query per redundancy mode: supplies that cannot be told, the layouts of two domains,
// and each platform call failing.
#include "power_query.h"

using namespace pwrmgt::test;

class ModePowerSupplies : public PowerQuery {};

// -- supplies that cannot be told

TEST_F(ModePowerSupplies, LabelFrom8192OnCannotBeUsed) {
    script_supplies(bays_of_pattern(2, 3, 8191));
    EXPECT_EQ(ask(2), 0U);
    EXPECT_EQ(power, 16382U);

    script_supplies(bays_of_pattern(2, 3, 8192));
    EXPECT_EQ(ask(2), 17U);
    script_supplies(bays_of_pattern(12, 3, 8192));
    EXPECT_EQ(ask(4), 17U);
}

TEST_F(ModePowerSupplies, NoHealthySupplyEndsWith17) {
    script_supplies(bays_of_pattern(2, 0));

    EXPECT_EQ(ask(0), 17U);
}

TEST_F(ModePowerSupplies, StatusWithoutAWeakestSupplyEndsWith17) {
    g_psu_config_info = 3;
    script_supplies(bays_of_pattern(3, 7));

    EXPECT_EQ(ask(0), 17U);
}

TEST_F(ModePowerSupplies, ReserveModeWithFewerThanTwelveRowsEndsWith17) {
    script_supplies(bays_of_pattern(11, 1));

    EXPECT_EQ(ask(4), 17U);
    EXPECT_EQ(power, 77U);
}

TEST_F(ModePowerSupplies, LabelOfZeroIsZeroWatts) {
    script_supplies(bays_of_pattern(2, 3, 0));

    EXPECT_EQ(ask(1), 0U);

    EXPECT_EQ(power, 0U);
}

// -- two domains

TEST_F(ModePowerSupplies, ConfigurationEightGoesToTheEightBayLayout) {
    g_psu_config_info = 8;
    script_supplies(bays_of_pattern(8, 0b11111));

    EXPECT_EQ(ask(1), 0U);

    EXPECT_EQ(max_dc, 306U);
    EXPECT_EQ(power, 8640U);
    EXPECT_EQ(state, 1);
    EXPECT_EQ(platform().calls,
              chain({kFactorRead, policy_read(), {"quoril"}, supplies_read(8), supplies_read(8)}));
}

TEST_F(ModePowerSupplies, ConfigurationTwelveGoesToTheTwelveBayLayout) {
    g_psu_config_info = 12;
    script_supplies(bays_of_pattern(12, 0b111'000011));

    EXPECT_EQ(ask(1), 0U);

    EXPECT_EQ(power, 4320U);
    EXPECT_EQ(state, 1);
}

TEST_F(ModePowerSupplies, TwoDomainsTakeTheFactorOfThisMachine) {
    platform().set_property(kOversubscriptionKey, 0);
    g_psu_config_info = 8;
    script_supplies(bays_of_pattern(8, 0b11111));
    EXPECT_EQ(ask(1), 0U);
    EXPECT_EQ(power, 7200U);

    g_psu_config_info = 12;
    script_supplies(bays_of_pattern(12, 0b111'000011));
    EXPECT_EQ(ask(1), 0U);
    EXPECT_EQ(power, 3600U);
}

TEST_F(ModePowerSupplies, ModeOfAnotherLayoutAnswersWithoutWriting) {
    g_psu_config_info = 8;
    script_supplies(bays_of_pattern(8, 0xFF));
    EXPECT_EQ(ask(0), 0U);

    g_psu_config_info = 12;
    script_supplies(bays_of_pattern(12, 0xFFF));
    EXPECT_EQ(ask(0), 0U);
    EXPECT_EQ(ask(4), 0U);

    EXPECT_EQ(max_dc, 306U);
    EXPECT_EQ(power, 77U);
    EXPECT_EQ(state, 77);
}

TEST_F(ModePowerSupplies, TwoDomainsWithAnotherNumberOfBaysEndWith17) {
    script_supplies(bays_of_pattern(2, 3));
    for (const uint8_t config : {uint8_t{8}, uint8_t{12}}) {
        g_psu_config_info = config;
        for (const uint32_t mode : {0U, 1U, 2U, 4U}) {
            EXPECT_EQ(ask(mode), 17U) << int{config} << ' ' << mode;
        }
    }
    EXPECT_EQ(power, 77U);
}

// -- failures

TEST_F(ModePowerSupplies, EachFailureOfThePolicyHasItsStatusAndOfTheSupplies17) {
    const auto script = [this](Recorder&) {
        fresh_process();
        max_dc = power = 77;
        script_policy(policy_with(0, 1));
        script_supplies(bays_of_pattern(2, 3));
    };
    const auto act = [this] { return ask(0); };

    EXPECT_EQ(swept_statuses(script, act), power_outcomes());
    sweep_faults(script, act, [&](const Faulted& faulted) {
        if (faulted.status == 0) return;
        EXPECT_EQ(max_dc, faulted.status == 17 ? 306U : 77U);
        EXPECT_EQ(power, 77U);
    });
    EXPECT_EQ(sweep_exceptions(script, act), 99U);
}
