// SPDX-License-Identifier: Apache-2.0
// The power that the system may draw: by its redundancy mode, or from the rated-power file.
#include "captured_output.h"
#include "psu_test.h"
#include "rated_power_file.h"

using namespace pwrmgt::test;

class AvailablePower : public PsuTest {
protected:
    uint32_t ask() { return pwrmgt_get_sys_avail_power(&avail); }
    uint32_t avail = 77;
};

// -- by redundancy mode

TEST_F(AvailablePower, StoredModeGivesItsPower) {
    script_supplies(bays_of_pattern(2, 3));
    script_policy(policy_with(0, 1));
    EXPECT_EQ(ask(), 0U);
    EXPECT_EQ(avail, 2160U);

    script_policy(policy_with(0, 2));
    EXPECT_EQ(ask(), 0U);
    EXPECT_EQ(avail, 3600U);
}

TEST_F(AvailablePower, FamilyGatePolicyThenThePowerQuery) {
    script_supplies(bays_of_pattern(2, 3));

    ask();

    EXPECT_EQ(platform().calls, chain({{"quoril", "quoril"},
                                       policy_read(),
                                       {"quoril", "byte /ac/tavn/power/psu_installed",
                                        "byte /dc/tavn/power/oversubscription_support"},
                                       policy_read(),
                                       {"quoril", "byte /ac/tavn/power/psu_config_info",
                                        "byte /ac/tavn/power/psu_config_info"},
                                       supplies_read(2),
                                       supplies_read(2)}));
}

TEST_F(AvailablePower, UnknownPowerIs65535) {
    script_policy(policy_with(0, 0));
    script_supplies(bays_of_pattern(4, 15));

    EXPECT_EQ(ask(), 0U);

    EXPECT_EQ(avail, 65535U);
}

TEST_F(AvailablePower, LayoutThatWritesNothingGivesZero) {
    g_psu_config_info = 12;
    script_policy(policy_with(0, 4));
    script_supplies(bays_of_pattern(12, 0xFFF));

    EXPECT_EQ(ask(), 0U);

    EXPECT_EQ(avail, 0U);
}

TEST_F(AvailablePower, ModeWithoutAPowerIsRefused) {
    script_supplies(bays_of_pattern(2, 3));
    for (const int64_t mode : {3, 5, 15, 255}) {
        script_policy(policy_with(0, mode));

        EXPECT_EQ(ask(), 10U) << mode;
    }
    EXPECT_EQ(avail, 77U);
}

TEST_F(AvailablePower, BladeIsRefusedByThePowerQuery) {
    script_policy(policy_with(1, 1));
    script_supplies(bays_of_pattern(2, 3));

    EXPECT_EQ(ask(), 10U);

    EXPECT_EQ(platform().count("open"), 2U);
    EXPECT_EQ(avail, 77U);
}

TEST_F(AvailablePower, RefusedFlagEndsItBeforeThePolicyIsRead) {
    policy_is_read(2);

    EXPECT_EQ(ask(), 10U);

    EXPECT_EQ(platform().calls, (Calls{"quoril", "quoril"}));
}

TEST_F(AvailablePower, SuppliesThatCannotBeToldAre17) {
    script_supplies({});

    EXPECT_EQ(ask(), 17U);

    EXPECT_EQ(avail, 77U);
}

TEST_F(AvailablePower, NullPointerGetsTheCallsAndTheStatusOfAValidOne) {
    script_supplies(bays_of_pattern(2, 3));
    ask();
    const Calls of_a_valid_one = platform().calls;
    platform().calls.clear();
    fresh_process();

    EXPECT_EQ(pwrmgt_get_sys_avail_power(nullptr), 0U);

    EXPECT_EQ(platform().calls, of_a_valid_one);
}

TEST_F(AvailablePower, EachFailureHasItsStatus) {
    const auto script = [this](Recorder&) {
        avail = 77;
        fresh_process();
        script_policy(policy_with(0, 0));
        script_supplies(bays_of_pattern(2, 3));
    };
    const auto act = [this] { return ask(); };

    EXPECT_EQ(swept_statuses(script, act), in_turn({policy_outcomes(), power_outcomes()}));
    sweep_faults(script, act, [&](const Faulted& faulted) {
        if (faulted.status != 0) {
            EXPECT_EQ(avail, 77U);
        }
    });
    EXPECT_EQ(sweep_exceptions(script, act), 118U);
}

// -- from the file

TEST_F(AvailablePower, QuorilReadsTheRatedPowerFile) {
    const RatedPowerFile file;
    if (!file.free()) GTEST_SKIP() << "somebody else's rated-power file cannot be moved aside";
    file.write("1200\n70000\n");
    platform().quoril = true;

    EXPECT_EQ(ask(), 0U);
    EXPECT_EQ(avail, 70000U);
    EXPECT_EQ(pwrmgt_get_sys_avail_power(nullptr), 0U);

    EXPECT_EQ(platform().calls, (Calls{"quoril", "quoril"}));
}

TEST_F(AvailablePower, QuorilWithoutTheFileIs31AndZeroWatts) {
    const RatedPowerFile file;
    if (!file.free()) GTEST_SKIP() << "somebody else's rated-power file cannot be moved aside";
    platform().quoril = true;
    CapturedError error;

    EXPECT_EQ(ask(), 31U);
    EXPECT_EQ(pwrmgt_get_sys_avail_power(nullptr), 31U);

    EXPECT_EQ(error.text(),
              "can not open file: /tmp/.ratedPowerData.log\n"
              "can not open file: /tmp/.ratedPowerData.log\n");
    EXPECT_EQ(avail, 0U);
}

TEST_F(AvailablePower, QuorilWithAFileOfZeroIs31) {
    const RatedPowerFile file;
    if (!file.free()) GTEST_SKIP() << "somebody else's rated-power file cannot be moved aside";
    file.write("1200\n0\n");
    platform().quoril = true;

    EXPECT_EQ(ask(), 31U);

    EXPECT_EQ(avail, 0U);
}
