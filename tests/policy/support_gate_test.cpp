// SPDX-License-Identifier: Apache-2.0
// The support gate: the platform family, the cached flag, the row behind it.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

Row policy_with(int64_t is_blade) {
    return {is_blade, 4, 9, 1, 2, 300, 301, 302, 303, 304, 305, 306, 901, 902, 903};
}

uint32_t ask() {
    return pwrmgt_unsupport_check("");
}

}  // namespace

class SupportGate : public PlatformTest {};

// -- names

TEST_F(SupportGate, ThreeNamesAreOfferedOnQuoril) {
    EXPECT_EQ(judge_power_function("pwrmgt_get_realtime_powers"), 1U);
    EXPECT_EQ(judge_power_function("pwrmgt_get_history_power"), 1U);
    EXPECT_EQ(judge_power_function("pwrmgt_get_duration_summary_power"), 1U);
    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(SupportGate, AnyOtherNameIsNot) {
    for (const char* const name :
         {"", " ", "pwrmgt_get_history_powe", "pwrmgt_get_history_power ",
          "pwrmgt_get_history_power_by_tm", "pwrmgt_get_history_psu_powers",
          "PWRMGT_GET_HISTORY_POWER", "pwrmgt_get_realtime_slot_dev_powers",
          "pwrmgt_get_duration_summary_powers", "judge_power_function"}) {
        EXPECT_EQ(judge_power_function(name), 0U) << name;
    }
}

TEST_F(SupportGate, NullNameIsTheEmptyOne) {
    EXPECT_EQ(judge_power_function(nullptr), 0U);

    policy_is_read();
    EXPECT_EQ(pwrmgt_unsupport_check(nullptr), 0U);
    platform().quoril = true;
    EXPECT_EQ(pwrmgt_unsupport_check(nullptr), 1U);
}

// -- platform family

TEST_F(SupportGate, QuorilRefusesOtherNamesWithoutReadingTheRow) {
    platform().quoril = true;

    EXPECT_EQ(pwrmgt_unsupport_check(""), 1U);
    EXPECT_EQ(pwrmgt_unsupport_check("pwrmgt_get_history_performance"), 1U);

    EXPECT_EQ(platform().calls, (Calls{"quoril", "quoril"}));
}

TEST_F(SupportGate, QuorilLeavesTheThreeNamesToTheRow) {
    for (const char* const name : {"pwrmgt_get_realtime_powers", "pwrmgt_get_history_power",
                                   "pwrmgt_get_duration_summary_power"}) {
        platform().quoril = true;

        g_power_policy_flag = 1;
        EXPECT_EQ(pwrmgt_unsupport_check(name), 0U) << name;

        g_power_policy_flag = 2;
        EXPECT_EQ(pwrmgt_unsupport_check(name), 1U) << name;
    }
}

TEST_F(SupportGate, OtherPlatformsTakeEveryName) {
    policy_is_read();

    EXPECT_EQ(pwrmgt_unsupport_check(""), 0U);
    EXPECT_EQ(pwrmgt_unsupport_check("anything"), 0U);
}

// -- flag and row

TEST_F(SupportGate, KnownFlagDecidesWithoutTheDatabase) {
    for (const uint8_t flag : {uint8_t{0}, uint8_t{1}, uint8_t{3}, uint8_t{254}}) {
        policy_is_read(flag);
        EXPECT_EQ(ask(), 0U) << int{flag};
    }
    policy_is_read(2);
    EXPECT_EQ(ask(), 1U);

    EXPECT_EQ(platform().calls, (Calls{"quoril", "quoril", "quoril", "quoril", "quoril"}));
}

TEST_F(SupportGate, UnreadFlagIsFetchedFromTheRowOnce) {
    platform().answer_rows(std::vector<Row>{policy_with(2)});

    EXPECT_EQ(ask(), 1U);
    EXPECT_EQ(ask(), 1U);

    EXPECT_EQ(g_power_policy_flag, 2);
    EXPECT_EQ(platform().count("open"), 1U);
    EXPECT_EQ(platform().count("close"), 1U);
}

TEST_F(SupportGate, OnlyBladeValue2InTheRowRefuses) {
    for (const int64_t is_blade : {0, 1, 3, 254, 255}) {
        g_power_policy_flag = 255;
        platform().answer_rows(std::vector<Row>{policy_with(is_blade)});

        EXPECT_EQ(ask(), 0U) << is_blade;

        EXPECT_EQ(g_power_policy_flag, is_blade);
    }
}

TEST_F(SupportGate, UnreadableRowNeverRefuses) {
    const auto refusing_row = [](Recorder& recorder) {
        recorder.answer_rows(std::vector<Row>{policy_with(2)});
    };
    size_t unreadable = 0;

    sweep_faults(refusing_row, ask, [&](const Faulted& faulted) {
        if (!hides_the_rows(faulted)) return;
        ++unreadable;
        EXPECT_EQ(faulted.status, 0U);
        EXPECT_EQ(g_power_policy_flag, 255);
    });

    EXPECT_EQ(unreadable, 1U + 4U + 3U);
}

TEST_F(SupportGate, EmptyTableIsAskedAgainNextTime) {
    EXPECT_EQ(ask(), 0U);
    EXPECT_EQ(g_power_policy_flag, 255);

    platform().answer_rows(std::vector<Row>{policy_with(2)});
    EXPECT_EQ(ask(), 1U);
    EXPECT_EQ(g_power_policy_flag, 2);
}

TEST_F(SupportGate, BladeColumnThatCannotBeReadNeverRefuses) {
    platform().answer_rows(std::vector<Row>{policy_with(2)});
    platform().fail(Operation::column);

    EXPECT_EQ(ask(), 0U);
}

TEST_F(SupportGate, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(
        sweep_exceptions(
            [](Recorder& recorder) { recorder.answer_rows(std::vector<Row>{policy_with(1)}); },
            ask),
        19U);
}
