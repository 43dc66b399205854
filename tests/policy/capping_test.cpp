// SPDX-License-Identifier: Apache-2.0
// The power cap: the frame that sets it, with and without a name for the audit log, and the
// reading.
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

const std::vector<uint8_t> kAccepted{0x00, 0x00};

// Both setters, which differ in the name alone.
struct Setter {
    const char* name;
    uint32_t (*set)(uint8_t enable, uint8_t mode, uint16_t value);
};
const std::vector<Setter> kSetters{
    {"plain", pwrmgt_set_power_capping_policy},
    {"audited",
     [](uint8_t enable, uint8_t mode, uint16_t value) {
         return pwrmgt_set_power_capping_policy_auditlog(enable, mode, value, "root");
     }},
};

void policy_read(Recorder&) {
    g_power_policy_flag = 0;
}

}  // namespace

class Capping : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        policy_is_read();
    }

    // The frame that goes out with a name, without the log's own words.
    static std::string frame_with(const char* name) {
        platform().reset();
        platform().answer_ipmi({.bytes = kAccepted});
        EXPECT_EQ(pwrmgt_set_power_capping_policy_auditlog(1, 2, 300, name), 0U);
        EXPECT_EQ(platform().count("ipmi"), 1U);
        return platform().named("ipmi").at(0);
    }
};

// -- set

TEST_F(Capping, SetAsksTheGateAndSendsThisFrame) {
    platform().answer_ipmi({.bytes = kAccepted});

    EXPECT_EQ(pwrmgt_set_power_capping_policy(1, 2, 300), 0U);

    EXPECT_EQ(platform().calls, (Calls{"quoril", "ipmi 20 3A 00 32 02 01 2C 01 02 told 0"}));
}

TEST_F(Capping, WidestArgumentsAreSentWhole) {
    platform().answer_ipmi({.bytes = kAccepted});

    EXPECT_EQ(pwrmgt_set_power_capping_policy(255, 254, 65535), 0U);

    EXPECT_EQ(platform().named("ipmi"), Calls{"ipmi 20 3A 00 32 02 FF FF FF FE told 0"});
}

TEST_F(Capping, EnabledWithoutAValueIsRefusedBeforeTheGate) {
    policy_is_read(2);

    for (const Setter& setter : kSetters) {
        EXPECT_EQ(setter.set(1, 2, 0), 15U) << setter.name;
    }

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(Capping, ValueOf0IsSentUnlessEnableIs1) {
    for (const uint8_t enable : {uint8_t{0}, uint8_t{2}, uint8_t{255}}) {
        platform().answer_ipmi({.bytes = kAccepted});
        EXPECT_EQ(pwrmgt_set_power_capping_policy(enable, 0, 0), 0U);
    }

    EXPECT_EQ(platform().named("ipmi"), (Calls{"ipmi 20 3A 00 32 02 00 00 00 00 told 0",
                                               "ipmi 20 3A 00 32 02 02 00 00 00 told 0",
                                               "ipmi 20 3A 00 32 02 FF 00 00 00 told 0"}));
}

TEST_F(Capping, EnabledWithAValueOf1IsSent) {
    platform().answer_ipmi({.bytes = kAccepted});

    EXPECT_EQ(pwrmgt_set_power_capping_policy(1, 0, 1), 0U);
}

TEST_F(Capping, RefusedSetIs10AndSendsNothing) {
    policy_is_read(2);
    for (const Setter& setter : kSetters) {
        EXPECT_EQ(setter.set(1, 2, 300), 10U) << setter.name;
    }

    policy_is_read(0);
    platform().quoril = true;
    for (const Setter& setter : kSetters) {
        EXPECT_EQ(setter.set(0, 0, 0), 10U) << setter.name;
    }

    EXPECT_EQ(platform().calls, (Calls{"quoril", "quoril", "quoril", "quoril"}));
}

TEST_F(Capping, StatusByteOfTheFirmwareIs14) {
    for (const Setter& setter : kSetters) {
        for (uint32_t status = 1; status <= 255; ++status) {
            platform().answer_ipmi({.bytes = {0, static_cast<uint8_t>(status)}});

            EXPECT_EQ(setter.set(1, 2, 300), 14U) << setter.name << status;
        }
    }
}

TEST_F(Capping, FailedExchangeIs31BeforeTheStatusByteIsLookedAt) {
    for (const Setter& setter : kSetters) {
        platform().answer_ipmi({.bytes = {0, 1}, .sent = -1});
        EXPECT_EQ(setter.set(1, 2, 300), 31U);
        platform().answer_ipmi({.bytes = {0xC1, 1}});
        EXPECT_EQ(setter.set(1, 2, 300), 31U);
        platform().answer_ipmi({.bytes = {0, 1, 0}});
        EXPECT_EQ(setter.set(1, 2, 300), 31U);
        platform().answer_ipmi({.bytes = {0}});
        EXPECT_EQ(setter.set(1, 2, 300), 31U);
    }
}

// -- audit name

TEST_F(Capping, NameFollowsItsFlagWithoutATerminator) {
    EXPECT_EQ(frame_with("root"), "ipmi 20 3A 00 32 02 01 2C 01 02 01 72 6F 6F 74 told 0");
}

TEST_F(Capping, EmptyNameIsANameOfNoCharacters) {
    EXPECT_EQ(frame_with(""), "ipmi 20 3A 00 32 02 01 2C 01 02 01 told 0");
}

TEST_F(Capping, NameOf1CharacterIsSent) {
    EXPECT_EQ(frame_with("A"), "ipmi 20 3A 00 32 02 01 2C 01 02 01 41 told 0");
}

TEST_F(Capping, NameOf64CharactersIsSentWhole) {
    std::string expected = "ipmi 20 3A 00 32 02 01 2C 01 02 01";
    for (int at = 0; at < 64; ++at) {
        expected += " 7A";
    }

    EXPECT_EQ(frame_with(std::string(64, 'z').c_str()), expected + " told 0");
}

TEST_F(Capping, NameOf65CharactersIsLeftOut) {
    EXPECT_EQ(frame_with(std::string(65, 'z').c_str()),
              "ipmi 20 3A 00 32 02 01 2C 01 02 00 told 0");
    EXPECT_EQ(frame_with(std::string(100'000, 'z').c_str()),
              "ipmi 20 3A 00 32 02 01 2C 01 02 00 told 0");
}

TEST_F(Capping, NullNameSendsNoFlagEither) {
    EXPECT_EQ(frame_with(nullptr), "ipmi 20 3A 00 32 02 01 2C 01 02 told 0");
}

TEST_F(Capping, NameIsSentByteByByteWhateverItsEncoding) {
    EXPECT_EQ(frame_with("\xC3\xA9\x01\xFF"),
              "ipmi 20 3A 00 32 02 01 2C 01 02 01 C3 A9 01 FF told 0");
}

// -- failures

TEST_F(Capping, FailingSendOfASetIs31) {
    for (const Setter& setter : kSetters) {
        const auto script = [](Recorder& recorder) {
            policy_read(recorder);
            recorder.answer_ipmi({.bytes = kAccepted});
        };
        const auto act = [&] { return setter.set(1, 2, 300); };

        EXPECT_EQ(swept_statuses(script, act), each_of(1, 31));
        EXPECT_EQ(sweep_exceptions(script, act), 1U);
    }
}

// The first 19 calls are the policy read, which never refuses.
TEST_F(Capping, FailureWhileThePolicyIsReadNeverStopsASet) {
    EXPECT_EQ(swept_statuses(
                  [](Recorder& recorder) {
                      recorder.answer_ipmi({.bytes = kAccepted});
                      recorder.answer_table("PowerPolicy",
                                            {{0, 4, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}});
                  },
                  [] { return pwrmgt_set_power_capping_policy(1, 2, 300); }),
              in_turn({each_of(19, 0), each_of(1, 31)}));
}
