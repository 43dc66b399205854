// SPDX-License-Identifier: Apache-2.0
// The cap of one GPU: two kinds, two widths, no gate and no length.
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

// -- arguments that name no kind
const std::vector<int32_t> kNoKinds{
    0, 1, 15, 17, 31, 33, 48, 272, -1, -16, -32, 65552, 2'147'483'647, -2'147'483'647 - 1};

}  // namespace

class GpuCapping : public PlatformTest {
protected:
    uint16_t value = 0xABCD;

    uint32_t get(int32_t kind, std::vector<uint8_t> answer) {
        platform().answer_ipmi({.bytes = std::move(answer)});
        return pwrmgt_get_gpu_power_capping_policy(3, kind, &value);
    }
};

TEST_F(GpuCapping, Kind16SendsTheValueBigEndian) {
    platform().answer_ipmi({.bytes = {0}});

    EXPECT_EQ(pwrmgt_set_gpu_power_capping_policy(7, 16, 0x1234), 0U);

    EXPECT_EQ(platform().calls, Calls{"ipmi 20 3A 00 06 C0 07 12 34 told 0"});
}

TEST_F(GpuCapping, Kind32SendsTheLowByteOnly) {
    platform().answer_ipmi({.bytes = {0}});

    EXPECT_EQ(pwrmgt_set_gpu_power_capping_policy(255, 32, 0x1234), 0U);

    EXPECT_EQ(platform().calls, Calls{"ipmi 20 3A 00 06 C1 FF 34 told 0"});
}

TEST_F(GpuCapping, OtherKindsAre10AndSendNothing) {
    for (const int32_t kind : kNoKinds) {
        EXPECT_EQ(pwrmgt_set_gpu_power_capping_policy(0, kind, 1), 10U) << kind;
        EXPECT_EQ(pwrmgt_get_gpu_power_capping_policy(0, kind, &value), 10U) << kind;
        EXPECT_EQ(pwrmgt_get_gpu_power_capping_policy(0, kind, nullptr), 10U) << kind;
    }

    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_EQ(value, 0xABCD);
}

TEST_F(GpuCapping, GateIsNotAsked) {
    policy_is_read(2);
    platform().quoril = true;
    platform().answer_ipmi({.bytes = {0}});

    EXPECT_EQ(pwrmgt_set_gpu_power_capping_policy(0, 16, 1), 0U);
    EXPECT_EQ(get(16, {0, 1, 2}), 0U);

    EXPECT_EQ(platform().count("quoril"), 0U);
}

TEST_F(GpuCapping, GetSendsTheKindAndTheIndex) {
    EXPECT_EQ(get(16, {0, 1, 2}), 0U);
    EXPECT_EQ(get(32, {0, 1}), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"ipmi 20 3A 00 06 C0 03 told 0", "ipmi 20 3A 00 06 C1 03 told 0"}));
}

TEST_F(GpuCapping, Kind16IsReadBigEndian) {
    EXPECT_EQ(get(16, {0, 0x12, 0x34}), 0U);

    EXPECT_EQ(value, 0x1234);
}

TEST_F(GpuCapping, Kind16Reports0As65535) {
    EXPECT_EQ(get(16, {0, 0, 0}), 0U);
    EXPECT_EQ(value, 65535);

    EXPECT_EQ(get(16, {0, 0, 1}), 0U);
    EXPECT_EQ(value, 1);

    EXPECT_EQ(get(16, {0, 1, 0}), 0U);
    EXPECT_EQ(value, 256);
}

TEST_F(GpuCapping, KindThirtyTwoWritesOneByteOnly) {
    EXPECT_EQ(get(32, {0, 0x12, 0x34}), 0U);
    EXPECT_EQ(value, 0xAB12);

    EXPECT_EQ(get(32, {0, 0x00}), 0U);
    EXPECT_EQ(value, 0xAB00);

    EXPECT_EQ(get(32, {0, 0xFF}), 0U);
    EXPECT_EQ(value, 0xABFF);
}

TEST_F(GpuCapping, AnswerThatIsTooShortReadsAsZeros) {
    EXPECT_EQ(get(16, {0, 0x12}), 0U);
    EXPECT_EQ(value, 0x1200);

    EXPECT_EQ(get(16, {0}), 0U);
    EXPECT_EQ(value, 65535);

    EXPECT_EQ(get(32, {}), 0U);
    EXPECT_EQ(value, 0xFF00);
}

TEST_F(GpuCapping, NullOutputHasTheStatusOfAnyOther) {
    platform().answer_ipmi({.bytes = {0, 1, 2}});
    platform().answer_ipmi({.bytes = {0, 1, 2}});
    platform().answer_ipmi({.bytes = {0xC1}});

    EXPECT_EQ(pwrmgt_get_gpu_power_capping_policy(0, 16, nullptr), 0U);
    EXPECT_EQ(pwrmgt_get_gpu_power_capping_policy(0, 32, nullptr), 0U);
    EXPECT_EQ(pwrmgt_get_gpu_power_capping_policy(0, 32, nullptr), 31U);

    EXPECT_EQ(platform().count("ipmi"), 3U);
}

TEST_F(GpuCapping, FailingSendIs31AndAnExceptionPassesThrough) {
    const auto script = [](Recorder& recorder) { recorder.answer_ipmi({.bytes = {0, 1, 2}}); };

    for (const int32_t kind : {16, 32}) {
        const auto set = [&] { return pwrmgt_set_gpu_power_capping_policy(1, kind, 5); };
        const auto read = [&] { return pwrmgt_get_gpu_power_capping_policy(1, kind, &value); };
        // Three bytes are answered; fewer and more are taken as well.
        EXPECT_EQ(swept_statuses(script, set), (Outcomes{{31, 31, 0, 0, 0, 0}})) << kind;
        EXPECT_EQ(sweep_exceptions(script, set), 1U) << kind;

        value = 0xABCD;
        EXPECT_EQ(swept_statuses(script, read), (Outcomes{{31, 31, 0, 0, 0, 0}})) << kind;
        EXPECT_EQ(sweep_exceptions(script, read), 1U) << kind;
    }
}

TEST_F(GpuCapping, FailedExchangeLeavesTheOutput) {
    EXPECT_EQ(get(16, {0xC9, 1, 2}), 31U);
    EXPECT_EQ(get(32, {0xC9, 1}), 31U);
    platform().answer_ipmi({.bytes = {0, 1, 2}, .sent = 3});
    EXPECT_EQ(pwrmgt_get_gpu_power_capping_policy(0, 16, &value), 31U);

    EXPECT_EQ(value, 0xABCD);
}
