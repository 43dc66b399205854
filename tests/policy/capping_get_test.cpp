// SPDX-License-Identifier: Apache-2.0
// The power cap that the firmware tells: through the gate, and raw.
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

const std::vector<uint8_t> kCap{0x00, 0x00, 0x01, 0x2C, 0x01, 0x02};

struct Getter {
    const char* name;
    uint32_t (*get)(uint8_t* enable, uint8_t* mode, uint16_t* value);
};
const std::vector<Getter> kGetters{
    {"gated", pwrmgt_get_power_capping_policy},
    {"raw", pwrmgt_ipmi_get_pwr_capping},
};

}  // namespace

class CappingGet : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        policy_is_read();
    }

    std::vector<int> outputs() const { return {enable, mode, value}; }

    uint8_t enable = 77;
    uint8_t mode = 77;
    uint16_t value = 7777;
};

TEST_F(CappingGet, GatedReadingAsksTheGateFirst) {
    platform().answer_ipmi({.bytes = kCap});

    EXPECT_EQ(pwrmgt_get_power_capping_policy(&enable, &mode, &value), 0U);

    EXPECT_EQ(platform().calls, (Calls{"quoril", "ipmi 20 3A 00 32 03 00 00 00 00 told 0"}));
    EXPECT_EQ(outputs(), (std::vector<int>{1, 2, 300}));
}

TEST_F(CappingGet, RawReadingAsksNoGate) {
    policy_is_read(2);
    platform().quoril = true;
    platform().answer_ipmi({.bytes = kCap});

    EXPECT_EQ(pwrmgt_ipmi_get_pwr_capping(&enable, &mode, &value), 0U);

    EXPECT_EQ(platform().calls, Calls{"ipmi 20 3A 00 32 03 00 00 00 00 told 0"});
    EXPECT_EQ(outputs(), (std::vector<int>{1, 2, 300}));
}

TEST_F(CappingGet, AnswerIsPassedOnWhateverItSays) {
    for (const Getter& getter : kGetters) {
        platform().answer_ipmi({.bytes = {0, 0, 0xFF, 0xFF, 0xFE, 0xFD}});
        EXPECT_EQ(getter.get(&enable, &mode, &value), 0U) << getter.name;
        EXPECT_EQ(outputs(), (std::vector<int>{255, 253, 65279}));

        platform().answer_ipmi({.bytes = {0, 0, 0, 0, 0, 0}});
        EXPECT_EQ(getter.get(&enable, &mode, &value), 0U) << getter.name;
        EXPECT_EQ(outputs(), (std::vector<int>{0, 0, 0}));
    }
}

TEST_F(CappingGet, AnyNullPointerIs1BeforeTheGate) {
    policy_is_read(2);

    for (const Getter& getter : kGetters) {
        EXPECT_EQ(getter.get(nullptr, &mode, &value), 1U) << getter.name;
        EXPECT_EQ(getter.get(&enable, nullptr, &value), 1U) << getter.name;
        EXPECT_EQ(getter.get(&enable, &mode, nullptr), 1U) << getter.name;
        EXPECT_EQ(getter.get(nullptr, nullptr, nullptr), 1U) << getter.name;
    }

    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_EQ(outputs(), (std::vector<int>{77, 77, 7777}));
}

TEST_F(CappingGet, RefusedReadingIs10AndSendsNothing) {
    policy_is_read(2);
    EXPECT_EQ(pwrmgt_get_power_capping_policy(&enable, &mode, &value), 10U);

    policy_is_read(0);
    platform().quoril = true;
    EXPECT_EQ(pwrmgt_get_power_capping_policy(&enable, &mode, &value), 10U);

    EXPECT_EQ(platform().calls, (Calls{"quoril", "quoril"}));
    EXPECT_EQ(outputs(), (std::vector<int>{77, 77, 7777}));
}

TEST_F(CappingGet, AnswerOf5Or7BytesIs31) {
    for (const Getter& getter : kGetters) {
        for (const size_t length : {size_t{5}, size_t{7}}) {
            std::vector<uint8_t> bytes = kCap;
            bytes.resize(length);
            platform().answer_ipmi({.bytes = bytes});

            EXPECT_EQ(getter.get(&enable, &mode, &value), 31U) << getter.name << length;

            EXPECT_EQ(outputs(), (std::vector<int>{77, 77, 7777}));
        }
    }
}

TEST_F(CappingGet, StatusByteOfTheFirmwareIs14AndLeavesTheOutputs) {
    for (const Getter& getter : kGetters) {
        for (uint32_t status = 1; status <= 255; ++status) {
            platform().answer_ipmi({.bytes = {0, static_cast<uint8_t>(status), 1, 1, 1, 1}});

            EXPECT_EQ(getter.get(&enable, &mode, &value), 14U) << getter.name << status;

            EXPECT_EQ(outputs(), (std::vector<int>{77, 77, 7777}));
        }
    }
}

TEST_F(CappingGet, FailedExchangeIs31BeforeTheStatusByteIsLookedAt) {
    for (const Getter& getter : kGetters) {
        platform().answer_ipmi({.bytes = {0, 1, 1, 1, 1, 1}, .sent = 9});
        EXPECT_EQ(getter.get(&enable, &mode, &value), 31U) << getter.name;
        platform().answer_ipmi({.bytes = {0xCC, 1, 1, 1, 1, 1}});
        EXPECT_EQ(getter.get(&enable, &mode, &value), 31U) << getter.name;
        platform().answer_ipmi({.bytes = {0, 1}});
        EXPECT_EQ(getter.get(&enable, &mode, &value), 31U) << getter.name;
    }

    EXPECT_EQ(outputs(), (std::vector<int>{77, 77, 7777}));
}

TEST_F(CappingGet, FailingSendIs31AndAnExceptionPassesThrough) {
    const auto script = [](Recorder& recorder) {
        g_power_policy_flag = 0;
        recorder.answer_ipmi({.bytes = kCap});
    };

    for (const Getter& getter : kGetters) {
        const auto act = [&] { return getter.get(&enable, &mode, &value); };
        EXPECT_EQ(swept_statuses(script, act), each_of(1, 31)) << getter.name;
        EXPECT_EQ(sweep_exceptions(script, act), 1U) << getter.name;
    }
}
