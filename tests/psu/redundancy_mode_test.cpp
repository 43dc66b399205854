// SPDX-License-Identifier: Apache-2.0
// The redundancy mode: which modes a machine allows, the stored one, storing another.
#include <array>

#include "psu_test.h"

using namespace pwrmgt::test;

namespace {

const Calls kModesRead{"byte /dc/tavn/dm/planar/0/psu/config_type"};

void allow_modes(uint32_t mask) {
    platform().set_property(kAllowedModesKey, mask);
}

}  // namespace

// -- allowed modes

class AllowedModes : public PsuTest {};

TEST_F(AllowedModes, EveryMaskAndMode) {
    // Modes 0 to 5, by the low two bits of the mask.
    constexpr std::array<std::array<uint32_t, 6>, 4> kExpected{
        {{0, 0, 0, 0, 0, 1}, {0, 0, 1, 1, 0, 1}, {1, 1, 0, 0, 1, 1}, {1, 1, 1, 1, 1, 1}}};
    for (uint32_t mask = 0; mask < 256; ++mask) {
        allow_modes(mask);
        for (uint32_t mode = 0; mode < 6; ++mode) {
            ASSERT_EQ(pwrmgt_redundant_mode_support_check(mode), kExpected[mask % 4][mode])
                << mask << ' ' << mode;
        }
    }
}

TEST_F(AllowedModes, ModesAboveFourAreAllowedWhateverTheMask) {
    allow_modes(0);

    EXPECT_EQ(pwrmgt_redundant_mode_support_check(5), 1U);
    EXPECT_EQ(pwrmgt_redundant_mode_support_check(0x7FFFFFFF), 1U);
    EXPECT_EQ(pwrmgt_redundant_mode_support_check(0xFFFFFFFF), 1U);
}

TEST_F(AllowedModes, MissingPropertyAllowsNothing) {
    for (const uint32_t mode : {0U, 1U, 2U, 3U, 4U, 5U, 0xFFFFFFFFU}) {
        EXPECT_EQ(pwrmgt_redundant_mode_support_check(mode), 0U) << mode;
    }
    EXPECT_EQ(platform().count("byte"), 7U);
}

TEST_F(AllowedModes, PropertyIsReadEveryTime) {
    allow_modes(3);

    pwrmgt_redundant_mode_support_check(0);
    pwrmgt_redundant_mode_support_check(5);

    EXPECT_EQ(platform().calls, chain({kModesRead, kModesRead}));
}

TEST_F(AllowedModes, FailingReadAllowsNothing) {
    const auto both_allowed = [](Recorder&) { allow_modes(3); };

    EXPECT_EQ(swept_statuses(both_allowed, [] { return pwrmgt_redundant_mode_support_check(0); }),
              each_of(1, 0));
}

TEST_F(AllowedModes, ExceptionPassesThrough) {
    EXPECT_EQ(
        sweep_exceptions([](Recorder&) {}, [] { return pwrmgt_redundant_mode_support_check(0); }),
        1U);
}

// -- stored mode

class StoredMode : public PsuTest {
protected:
    uint32_t out = 77;
};

TEST_F(StoredMode, ComesFromThePolicyRow) {
    allow_modes(3);
    script_policy(policy_with(0, 4));

    EXPECT_EQ(pwrmgt_get_power_redundant_mode(&out), 0U);

    EXPECT_EQ(out, 4U);
    EXPECT_EQ(platform().calls, chain({{"quoril"}, policy_read(), kModesRead}));
}

TEST_F(StoredMode, ModeIsWrittenBeforeTheSupportTest) {
    allow_modes(1);
    script_policy(policy_with(0, 1));

    EXPECT_EQ(pwrmgt_get_power_redundant_mode(&out), 10U);

    EXPECT_EQ(out, 1U);
}

TEST_F(StoredMode, ByteAboveFourIsAllowed) {
    allow_modes(0);
    script_policy(policy_with(0, 255));

    EXPECT_EQ(pwrmgt_get_power_redundant_mode(&out), 0U);

    EXPECT_EQ(out, 255U);
}

TEST_F(StoredMode, NullPointerIsRefusedBeforeTheGate) {
    EXPECT_EQ(pwrmgt_get_power_redundant_mode(nullptr), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(StoredMode, GateIsAskedWithTheEmptyName) {
    platform().quoril = true;

    EXPECT_EQ(pwrmgt_get_power_redundant_mode(&out), 10U);

    EXPECT_EQ(platform().calls, Calls{"quoril"});
    EXPECT_EQ(out, 77U);
}

TEST_F(StoredMode, AnyBladeIsRefusedWithNothingWritten) {
    allow_modes(3);
    for (const int64_t is_blade : {1, 2, 3, 255}) {
        platform().calls.clear();
        script_policy(policy_with(is_blade, 1));

        EXPECT_EQ(pwrmgt_get_power_redundant_mode(&out), 10U) << is_blade;

        EXPECT_EQ(out, 77U);
        EXPECT_EQ(platform().calls, chain({{"quoril"}, policy_read()}));
    }
}

TEST_F(StoredMode, EachFailureHasItsStatus) {
    const auto script = [](Recorder&) {
        fresh_process();
        allow_modes(2);
        script_policy(policy_with(0, 1));
    };
    const auto act = [this] { return pwrmgt_get_power_redundant_mode(&out); };

    EXPECT_EQ(swept_statuses(script, act), in_turn({policy_outcomes(), each_of(1, 10)}));
    EXPECT_EQ(sweep_exceptions(script, act), 20U);
}

// -- another mode

class ModeSetter : public PsuTest {
protected:
    void SetUp() override {
        PsuTest::SetUp();
        allow_modes(3);
    }
};

TEST_F(ModeSetter, AnotherModeGoesToEveryRowAsASignedByte) {
    EXPECT_EQ(pwrmgt_set_power_redundant_mode(4), 0U);

    EXPECT_EQ(platform().calls,
              chain({{"quoril"},
                     kModesRead,
                     {kOpen},
                     policy_read(),
                     {"content", "put_char RedunMode 4", "update PowerPolicy where null",
                      "free_content", "close"}}));
}

TEST_F(ModeSetter, ContentIsMadeBeforeTheComparison) {
    EXPECT_EQ(pwrmgt_set_power_redundant_mode(1), 0U);

    EXPECT_EQ(platform().calls, chain({{"quoril"},
                                       kModesRead,
                                       {kOpen},
                                       policy_read(),
                                       {"content", "free_content", "close"}}));
}

TEST_F(ModeSetter, StoredModeWithoutAContentIsStill7) {
    platform().fail(Operation::content);

    EXPECT_EQ(pwrmgt_set_power_redundant_mode(1), 7U);
}

TEST_F(ModeSetter, EachOfTheFiveModesIsStored) {
    script_policy(policy_with(0, 9));
    for (const int32_t mode : {0, 1, 2, 3, 4}) {
        platform().calls.clear();

        EXPECT_EQ(pwrmgt_set_power_redundant_mode(mode), 0U);

        EXPECT_EQ(platform().named("put_char"),
                  Calls{"put_char RedunMode " + std::to_string(mode)});
    }
}

TEST_F(ModeSetter, ModeAboveFourIsRefusedBeforeAnyCall) {
    EXPECT_EQ(pwrmgt_set_power_redundant_mode(5), 10U);
    EXPECT_EQ(pwrmgt_set_power_redundant_mode(INT32_MAX), 10U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(ModeSetter, NegativeModePassesBothComparisons) {
    allow_modes(0);

    EXPECT_EQ(pwrmgt_set_power_redundant_mode(-1), 0U);
    EXPECT_EQ(pwrmgt_set_power_redundant_mode(INT32_MIN), 0U);
    EXPECT_EQ(pwrmgt_set_power_redundant_mode(-129), 0U);

    EXPECT_EQ(platform().named("put_char"),
              (Calls{"put_char RedunMode -1", "put_char RedunMode 0", "put_char RedunMode 127"}));
}

TEST_F(ModeSetter, NegativeModeWhoseLowByteIsStoredIsWrittenAllTheSame) {
    EXPECT_EQ(pwrmgt_set_power_redundant_mode(-255), 0U);

    EXPECT_EQ(platform().named("put_char"), Calls{"put_char RedunMode 1"});
}

TEST_F(ModeSetter, NegativeModeWithoutTheModesPropertyIsRefused) {
    platform().fail(Operation::property);

    EXPECT_EQ(pwrmgt_set_power_redundant_mode(-1), 10U);

    EXPECT_EQ(platform().count("open"), 0U);
}

TEST_F(ModeSetter, GateIsAskedBeforeTheAllowedModes) {
    platform().quoril = true;

    EXPECT_EQ(pwrmgt_set_power_redundant_mode(2), 10U);

    EXPECT_EQ(platform().calls, Calls{"quoril"});
}

TEST_F(ModeSetter, ModeWhoseBitIsClearIsRefusedBeforeTheDatabase) {
    allow_modes(1);

    for (const int32_t mode : {0, 1, 4}) {
        EXPECT_EQ(pwrmgt_set_power_redundant_mode(mode), 10U);
    }
    allow_modes(2);
    for (const int32_t mode : {2, 3}) {
        EXPECT_EQ(pwrmgt_set_power_redundant_mode(mode), 10U);
    }

    EXPECT_EQ(platform().count("open"), 0U);
}

TEST_F(ModeSetter, AnyBladeIsRefusedBeforeAContentIsMade) {
    for (const int64_t is_blade : {1, 2, 3, 255}) {
        platform().calls.clear();
        script_policy(policy_with(is_blade, 1));

        EXPECT_EQ(pwrmgt_set_power_redundant_mode(2), 10U) << is_blade;

        EXPECT_EQ(platform().calls,
                  chain({{"quoril"}, kModesRead, {kOpen}, policy_read(), {"close"}}));
    }
}

TEST_F(ModeSetter, EachFailureHasItsStatus) {
    const auto script = [](Recorder&) {
        fresh_process();
        allow_modes(3);
        script_policy(policy_with(0, 1));
    };
    const auto act = [] { return pwrmgt_set_power_redundant_mode(2); };

    // Modes, open; the policy row; content, put, update.
    EXPECT_EQ(swept_statuses(script, act),
              in_turn({{{10}, {2}}, policy_outcomes(), {{7}, {0}, {5}}}));
    EXPECT_EQ(sweep_exceptions(script, act), 24U);
}
