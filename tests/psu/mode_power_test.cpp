// SPDX-License-Identifier: Apache-2.0
// The power query per redundancy mode: order of its checks, its calls, what it writes when.
#include "power_query.h"

using namespace pwrmgt::test;

namespace {

const Calls kConfigRead{"byte /ac/tavn/power/psu_config_info"};

}  // namespace

class ModePower : public PowerQuery {};

// -- calls

TEST_F(ModePower, FactorPolicyGateLayoutStatusAndWeakestInThisOrder) {
    script_supplies(bays_of_pattern(2, 3));

    EXPECT_EQ(ask(1), 0U);

    EXPECT_EQ(platform().calls, chain({kFactorRead,
                                       policy_read(),
                                       {"quoril"},
                                       kConfigRead,
                                       kConfigRead,
                                       supplies_read(2),
                                       supplies_read(2)}));
    EXPECT_EQ(max_dc, 306U);
    EXPECT_EQ(power, 2160U);
    EXPECT_EQ(state, 1);
}

TEST_F(ModePower, ReserveModeAsksItsOwnStatus) {
    script_supplies(bays_of_pattern(12, 3));

    EXPECT_EQ(ask(4), 0U);

    EXPECT_EQ(platform().calls, chain({kFactorRead,
                                       policy_read(),
                                       {"quoril"},
                                       kConfigRead,
                                       supplies_read(12),
                                       supplies_read(12)}));
    EXPECT_EQ(power, 3600U);
    EXPECT_EQ(state, 0);
}

TEST_F(ModePower, CrpsSuppliesDoNotAskForOversubscription) {
    platform().set_property(kTypeKey, 1);
    script_supplies(bays_of_pattern(2, 3));

    EXPECT_EQ(ask(1), 0U);

    EXPECT_EQ(platform().named("byte /dc/tavn/power/oversubscription_support"), Calls{});
    EXPECT_EQ(power, 1800U);
}

TEST_F(ModePower, WithoutOversubscriptionSupportTheLabelIsGivenExactly) {
    platform().set_property(kOversubscriptionKey, 0);
    script_supplies(bays_of_pattern(2, 3));

    EXPECT_EQ(ask(1), 0U);

    EXPECT_EQ(power, 1800U);
    EXPECT_EQ(state, 1);
}

// -- outputs

TEST_F(ModePower, AnyPointerMayBeNullButOne) {
    script_supplies(bays_of_pattern(2, 3));

    EXPECT_EQ(pwrmgt_get_powerInfo_perRedunMode(2, &max_dc, nullptr, nullptr), 0U);
    EXPECT_EQ(pwrmgt_get_powerInfo_perRedunMode(2, nullptr, &power, nullptr), 0U);
    EXPECT_EQ(pwrmgt_get_powerInfo_perRedunMode(1, nullptr, nullptr, &state), 0U);

    EXPECT_EQ(max_dc, 306U);
    EXPECT_EQ(power, 3600U);
    EXPECT_EQ(state, 1);
}

TEST_F(ModePower, AllPointersNullIsRefusedAfterTheFactor) {
    EXPECT_EQ(pwrmgt_get_powerInfo_perRedunMode(1, nullptr, nullptr, nullptr), 1U);

    EXPECT_EQ(platform().calls, kFactorRead);
}

TEST_F(ModePower, CapMaxDcIsWrittenBeforeLaterFailures) {
    script_supplies({});

    EXPECT_EQ(ask(1), 17U);

    EXPECT_EQ(max_dc, 306U);
    EXPECT_EQ(power, 77U);
    EXPECT_EQ(state, 77);
}

TEST_F(ModePower, UnsetMaximumComesBackAs65535) {
    Row policy = policy_with(0, 1);
    policy[11] = 65535;
    script_policy(policy);
    script_supplies(bays_of_pattern(2, 3));

    EXPECT_EQ(ask(0), 0U);

    EXPECT_EQ(max_dc, 65535U);
}

// -- refused

TEST_F(ModePower, PolicyRowIsReadBeforeTheGate) {
    platform().quoril = true;

    EXPECT_EQ(ask(1), 10U);

    EXPECT_EQ(platform().calls, chain({{"quoril", "byte /dc/tavn/power/oversubscription_support"},
                                       policy_read(),
                                       {"quoril"}}));
    expect_untouched();
}

TEST_F(ModePower, PolicyFailureWinsOverTheGate) {
    platform().quoril = true;
    platform().answer_table("PowerPolicy", {});

    EXPECT_EQ(ask(1), 8U);
}

TEST_F(ModePower, AnyBladeIsRefused) {
    script_supplies(bays_of_pattern(2, 3));
    for (const int64_t is_blade : {1, 2, 3, 255}) {
        script_policy(policy_with(is_blade, 1));

        EXPECT_EQ(ask(1), 10U) << is_blade;
    }
    expect_untouched();
}

TEST_F(ModePower, OnlyModesZeroOneTwoAndFourAreOffered) {
    platform().set_property(kAllowedModesKey, 3);
    script_supplies(bays_of_pattern(2, 3));
    for (const uint32_t mode : {3U, 5U, 6U, 255U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(ask(mode), 10U) << mode;
    }
    expect_untouched();
}

TEST_F(ModePower, OtherModesAreRefusedBeforeTheLayoutIsAsked) {
    EXPECT_EQ(ask(3), 10U);

    EXPECT_EQ(platform().calls, chain({kFactorRead, policy_read(), {"quoril"}}));
}

// -- oversubscription property

TEST_F(ModePower, OversubscriptionIsTheByteOrOneWithoutIt) {
    EXPECT_EQ(pwrmgt_get_oversubscription_prop(), 1U);
    for (const uint32_t value : {0U, 1U, 2U, 255U}) {
        platform().set_property(kOversubscriptionKey, value);
        EXPECT_EQ(pwrmgt_get_oversubscription_prop(), value);
    }
    EXPECT_EQ(platform().count("byte"), 5U);
}

TEST_F(ModePower, FailingReadOfTheOversubscriptionIsOne) {
    const auto switched_off = [](Recorder& recorder) {
        recorder.set_property(kOversubscriptionKey, 0);
    };

    EXPECT_EQ(swept_statuses(switched_off, pwrmgt_get_oversubscription_prop), each_of(1, 1));
    EXPECT_EQ(sweep_exceptions(switched_off, pwrmgt_get_oversubscription_prop), 1U);
}

TEST_F(ModePower, UnreadableOversubscriptionStillOversubscribes) {
    platform().set_property(kOversubscriptionKey, 0);
    platform().fail(Operation::property, 1, 2);  // after the type
    script_supplies(bays_of_pattern(2, 3));

    EXPECT_EQ(ask(1), 0U);

    EXPECT_EQ(power, 2160U);
}
