// SPDX-License-Identifier: Apache-2.0
// The live reading: its fields, the gate before it, and every way in which the exchange fails.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace realtime_powers_tests {
namespace {

constexpr pwrmgt_realtime_pwr_t kUntouched{77, 77, 77, 77, 77, 77, 77, 77, 77, 77};
const std::vector<uint8_t> kAnswer{0,  0x9A, 0x01, 0x7C, 0x01, 0x96, 0x00, 0x3C, 0x00,
                                   55, 44,   33,   22,   0x04, 0x03, 0x02, 0x01};

uint32_t live_reading() {
    pwrmgt_realtime_pwr_t reading = kUntouched;
    return pwrmgt_get_realtime_powers(&reading);
}

void answered(Recorder& recorder) {
    g_power_policy_flag = 0;
    recorder.answer_ipmi({.bytes = kAnswer});
}

}  // namespace

class RealtimePowers : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        policy_is_read();
    }

    pwrmgt_realtime_pwr_t reading = kUntouched;
};

TEST_F(RealtimePowers, AnswerIsCopiedFieldByField) {
    platform().answer_ipmi({.bytes = kAnswer});

    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 0U);

    EXPECT_EQ(fields(reading), (Row{77, 16'909'060, 410, 380, 150, 60, 55, 44, 33, 22}));
    EXPECT_EQ(platform().calls, (Calls{"quoril", "ipmi 20 3A 00 32 01 00 00 00 00 told 0"}));
}

TEST_F(RealtimePowers, MarkersArePassedThrough) {
    std::vector<uint8_t> bytes(17, 0xFF);
    bytes[0] = 0;
    platform().answer_ipmi({.bytes = bytes});

    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 0U);

    EXPECT_EQ(fields(reading),
              (Row{77, 4'294'967'295, 65535, 65535, 65535, 65535, 255, 255, 255, 255}));
}

TEST_F(RealtimePowers, NullOutputIs1BeforeTheGate) {
    policy_is_read(2);

    EXPECT_EQ(pwrmgt_get_realtime_powers(nullptr), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(RealtimePowers, GateRefusesBeforeAnythingIsSent) {
    policy_is_read(2);
    platform().answer_ipmi({.bytes = kAnswer});

    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 10U);

    EXPECT_EQ(platform().calls, Calls{"quoril"});
    EXPECT_EQ(fields(reading), fields(kUntouched));
}

TEST_F(RealtimePowers, QuorilStillOffersIt) {
    platform().quoril = true;
    platform().answer_ipmi({.bytes = kAnswer});

    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 0U);
}

TEST_F(RealtimePowers, EmptyPolicyTableDoesNotHideIt) {
    g_power_policy_flag = 255;
    platform().answer_ipmi({.bytes = kAnswer});

    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 0U);

    EXPECT_EQ(platform().count("open"), 1U);
    EXPECT_EQ(platform().count("close"), 1U);
}

TEST_F(RealtimePowers, AnswerOfAnyOtherLengthIs31AndLeavesTheOutput) {
    for (const uint32_t length : {0U, 1U, 16U, 18U, 120U, 256U, 4'294'967'295U}) {
        platform().answer_ipmi({.bytes = kAnswer, .told = length});

        EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 31U) << length;

        EXPECT_EQ(fields(reading), fields(kUntouched));
    }
}

TEST_F(RealtimePowers, CompletionCodeOtherThan0Is31AndLeavesTheOutput) {
    for (const uint8_t completion : {uint8_t{1}, uint8_t{0xC1}, uint8_t{0xFF}}) {
        std::vector<uint8_t> bytes = kAnswer;
        bytes[0] = completion;
        platform().answer_ipmi({.bytes = bytes});

        EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 31U);

        EXPECT_EQ(fields(reading), fields(kUntouched));
    }
}

TEST_F(RealtimePowers, FailedSendIs31EvenWithAGoodAnswer) {
    for (const int sent : {1, -1}) {
        platform().answer_ipmi({.bytes = kAnswer, .sent = sent});

        EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 31U);

        EXPECT_EQ(fields(reading), fields(kUntouched));
    }
}

TEST_F(RealtimePowers, FailingSendHasItsStatus) {
    EXPECT_EQ(swept_statuses(answered, live_reading), each_of(1, 31));
}

// The first 19 calls are the policy read, which never refuses.
TEST_F(RealtimePowers, FailureWhileThePolicyIsReadNeverStopsIt) {
    EXPECT_EQ(swept_statuses(
                  [](Recorder& recorder) {
                      answered(recorder);
                      g_power_policy_flag = 255;
                      recorder.answer_table("PowerPolicy",
                                            {{0, 4, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}});
                  },
                  live_reading),
              in_turn({each_of(19, 0), each_of(1, 31)}));
}

TEST_F(RealtimePowers, ExceptionOfTheTransportPassesThrough) {
    EXPECT_EQ(sweep_exceptions(answered, live_reading), 1U);
}

}  // namespace realtime_powers_tests
