// SPDX-License-Identifier: Apache-2.0
// Frames as the firmware sees them, and replies by place, through the shortest exchange there is.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

class Ipmi : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        policy_is_read();
    }

    pwrmgt_realtime_pwr_t reading{};
};

TEST_F(Ipmi, RequestHoldsItsHeaderItsDataAndNoMore) {
    pwrmgt_get_realtime_powers(&reading);

    EXPECT_EQ(platform().named("ipmi"), Calls{"ipmi 20 3A 00 32 01 00 00 00 00 told 0"});
}

TEST_F(Ipmi, ReplyWordsAreLittleEndian) {
    platform().answer_ipmi(
        {.bytes = {0, 0x34, 0x12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x78, 0x56, 0x34, 0x92}});

    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 0U);

    EXPECT_EQ(reading.sys_ac_w, 0x1234);
    EXPECT_EQ(reading.lead1, 0x92345678U);
}

TEST_F(Ipmi, BytesThatTheFirmwareToldOfAndDidNotSendAreZero) {
    platform().answer_ipmi({.bytes = {0}, .told = 17});

    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 0U);

    EXPECT_EQ(fields(reading), (Row{0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(Ipmi, LongestReplyFitsTheBuffer) {
    platform().answer_ipmi({.bytes = std::vector<uint8_t>(256, 0)});

    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 31U);
}

TEST_F(Ipmi, LengthIsTakenFromTheAnswerAndNotFromTheLastOne) {
    platform().answer_ipmi({.bytes = std::vector<uint8_t>(17, 0)});
    platform().answer_ipmi({.bytes = {}});

    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 0U);
    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 31U);

    EXPECT_EQ(platform().named("ipmi"), (Calls{"ipmi 20 3A 00 32 01 00 00 00 00 told 0",
                                               "ipmi 20 3A 00 32 01 00 00 00 00 told 0"}));
}
