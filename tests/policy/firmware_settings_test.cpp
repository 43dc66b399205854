// SPDX-License-Identifier: Apache-2.0
// Zero-output mode and processor caps: results of the transport and the firmware passed on.
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

const std::vector<uint8_t> kCaps{0x00, 0x02, 0x01, 0x00, 0x02, 0x01, 0xFF, 0xFF, 0x00,
                                 0x80, 0x05, 0x00, 0x06, 0x00, 0x07, 0x00, 0x34, 0x12};

std::vector<int> values(const pwrmgt_cpu_pcap_t& caps) {
    std::vector<int> all{caps.count};
    all.insert(all.end(), std::begin(caps.cap_w), std::end(caps.cap_w));
    return all;
}

const std::vector<int> kUntouched{0xABCD, 7, 7, 7, 7, 7, 7, 7, 7};

}  // namespace

class FirmwareSettings : public PlatformTest {
protected:
    uint8_t mode = 77;
    pwrmgt_cpu_pcap_t caps{0xABCD, {7, 7, 7, 7, 7, 7, 7, 7}};

    void TearDown() override {
        EXPECT_EQ(platform().count("quoril"), 0U) << "none of these asks the gate";
        PlatformTest::TearDown();
    }
};

// -- zero-output mode, set

TEST_F(FirmwareSettings, ZeroOutputModesAreSentInThisFrame) {
    platform().answer_ipmi({.bytes = {0}});
    platform().answer_ipmi({.bytes = {0}});

    EXPECT_EQ(pwrmgt_set_zero_output_mode(0), 0U);
    EXPECT_EQ(pwrmgt_set_zero_output_mode(1), 0U);

    EXPECT_EQ(platform().calls, (Calls{"ipmi 20 3A 00 32 06 01 01 00 told 0",
                                       "ipmi 20 3A 00 32 06 01 01 01 told 0"}));
}

TEST_F(FirmwareSettings, ZeroOutputModeAbove1Is20AndSendsNothing) {
    for (const uint8_t above : {uint8_t{2}, uint8_t{3}, uint8_t{128}, uint8_t{255}}) {
        EXPECT_EQ(pwrmgt_set_zero_output_mode(above), 20U);
    }

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(FirmwareSettings, SendStatusIsReturnedUnmapped) {
    for (const int sent : {1, 20, 255, -1, -2'147'483'647 - 1}) {
        platform().answer_ipmi({.bytes = {0}, .sent = sent});
        EXPECT_EQ(pwrmgt_set_zero_output_mode(1), static_cast<uint32_t>(sent));
        platform().answer_ipmi({.bytes = {0, 1}, .sent = sent});
        EXPECT_EQ(pwrmgt_get_zero_output_mode(&mode), static_cast<uint32_t>(sent));
        platform().answer_ipmi({.bytes = kCaps, .sent = sent});
        EXPECT_EQ(pwrmgt_get_cpu_pcap(&caps), static_cast<uint32_t>(sent));
    }

    EXPECT_EQ(mode, 77);
    EXPECT_EQ(values(caps), kUntouched);
}

TEST_F(FirmwareSettings, AnswerToAZeroOutputModeIsNotLookedAt) {
    for (const Answer& answer : {Answer{{0xC1}, 0, {}}, Answer{{}, 0, {}},
                                 Answer{{0, 1, 2, 3}, 0, {}}, Answer{{0}, 0, 4'294'967'295U}}) {
        platform().answer_ipmi(answer);

        EXPECT_EQ(pwrmgt_set_zero_output_mode(1), 0U);
    }
}

// -- zero-output mode, get

TEST_F(FirmwareSettings, ZeroOutputModeIsByte1OfTheAnswer) {
    platform().answer_ipmi({.bytes = {0, 1, 99}});
    EXPECT_EQ(pwrmgt_get_zero_output_mode(&mode), 0U);
    EXPECT_EQ(mode, 1);

    platform().answer_ipmi({.bytes = {0, 255}});
    EXPECT_EQ(pwrmgt_get_zero_output_mode(&mode), 0U);
    EXPECT_EQ(mode, 255);

    EXPECT_EQ(platform().calls,
              (Calls{"ipmi 20 3A 00 32 06 01 00 told 0", "ipmi 20 3A 00 32 06 01 00 told 0"}));
}

TEST_F(FirmwareSettings, ZeroOutputAnswerWithoutAByteReadsAs0) {
    platform().answer_ipmi({.bytes = {0}});

    EXPECT_EQ(pwrmgt_get_zero_output_mode(&mode), 0U);

    EXPECT_EQ(mode, 0);
}

TEST_F(FirmwareSettings, RefusedZeroOutputGetReturnsZero) {
    for (uint32_t completion = 1; completion <= 255; ++completion) {
        platform().answer_ipmi({.bytes = {static_cast<uint8_t>(completion), 1}});

        EXPECT_EQ(pwrmgt_get_zero_output_mode(&mode), 0U) << completion;
    }

    EXPECT_EQ(mode, 77);
}

TEST_F(FirmwareSettings, NullZeroOutputModeIsSentAllTheSame) {
    platform().answer_ipmi({.bytes = {0, 1}});
    platform().answer_ipmi({.bytes = {0, 1}, .sent = 5});

    EXPECT_EQ(pwrmgt_get_zero_output_mode(nullptr), 0U);
    EXPECT_EQ(pwrmgt_get_zero_output_mode(nullptr), 5U);

    EXPECT_EQ(platform().count("ipmi"), 2U);
}

// -- processor caps

TEST_F(FirmwareSettings, ProcessorCapsAreCopiedInOrder) {
    platform().answer_ipmi({.bytes = kCaps});

    EXPECT_EQ(pwrmgt_get_cpu_pcap(&caps), 0U);

    EXPECT_EQ(platform().calls, Calls{"ipmi 20 3A 00 32 09 told 0"});
    EXPECT_EQ(values(caps), (std::vector<int>{0xAB02, 1, 258, 65535, 32768, 5, 6, 7, 0x1234}));
}

TEST_F(FirmwareSettings, NullCapsAre1AndSendNothing) {
    EXPECT_EQ(pwrmgt_get_cpu_pcap(nullptr), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(FirmwareSettings, CompletionCodeIsTheStatus) {
    for (uint32_t completion = 1; completion <= 255; ++completion) {
        std::vector<uint8_t> bytes = kCaps;
        bytes[0] = static_cast<uint8_t>(completion);
        platform().answer_ipmi({.bytes = bytes});

        EXPECT_EQ(pwrmgt_get_cpu_pcap(&caps), completion);
    }

    EXPECT_EQ(values(caps), kUntouched);
}

TEST_F(FirmwareSettings, CompletionCodeComesBeforeTheLengthOf19) {
    std::vector<uint8_t> bytes(19, 1);
    bytes[0] = 0xC9;
    platform().answer_ipmi({.bytes = bytes});

    EXPECT_EQ(pwrmgt_get_cpu_pcap(&caps), 0xC9U);
}

TEST_F(FirmwareSettings, OnlyNineteenBytesAreRefused) {
    for (const uint32_t length : {0U, 1U, 17U, 18U, 20U, 256U, 4'294'967'295U}) {
        platform().answer_ipmi({.bytes = kCaps, .told = length});
        EXPECT_EQ(pwrmgt_get_cpu_pcap(&caps), 0U) << length;
    }

    caps = {0xABCD, {7, 7, 7, 7, 7, 7, 7, 7}};
    platform().answer_ipmi({.bytes = kCaps, .told = 19});
    EXPECT_EQ(pwrmgt_get_cpu_pcap(&caps), 31U);
    EXPECT_EQ(values(caps), kUntouched);
}

TEST_F(FirmwareSettings, CapsThatDidNotArriveReadAs0) {
    platform().answer_ipmi({.bytes = {0, 8, 0x10, 0x27}});

    EXPECT_EQ(pwrmgt_get_cpu_pcap(&caps), 0U);

    EXPECT_EQ(values(caps), (std::vector<int>{0xAB08, 10000, 0, 0, 0, 0, 0, 0, 0}));
}

// -- failures

TEST_F(FirmwareSettings, FailingSendIsPassedOnAndAnExceptionPassesThrough) {
    const auto script = [](Recorder& recorder) { recorder.answer_ipmi({.bytes = kCaps}); };
    const std::vector<std::function<uint32_t()>> acts{
        [] { return pwrmgt_set_zero_output_mode(1); },
        [&] { return pwrmgt_get_zero_output_mode(&mode); },
        [&] { return pwrmgt_get_cpu_pcap(&caps); },
    };
    // Eighteen shorter answers than that of eighteen bytes, and the one of nineteen.
    Outcomes expected{{1, kMinusOne}};
    expected[0].resize(2 + 19, 0);

    for (const auto& act : acts) {
        if (&act == &acts.back()) expected[0].back() = 31;
        EXPECT_EQ(swept_statuses(script, act), expected);
        EXPECT_EQ(sweep_exceptions(script, act), 1U);
    }
}
