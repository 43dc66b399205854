// SPDX-License-Identifier: Apache-2.0
// The two readers of the capping limits: what each adds where, and the live cap over the stored
// one.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace policy_limits_tests {
namespace {

constexpr uint16_t kNotSet = 65535;
constexpr pwrmgt_power_policy_t kUntouched{77, 77, 77, 77, 77, 77, 77, 77, 77, 77, 77, 77};
const std::string kGetCap = "ipmi 20 3A 00 32 03 00 00 00 00 told 0";
const Calls kRowRead{
    "open localhost root '' vek_pwr_db 0",
    "query PowerPolicy [IsBlade,RedunMode,MaximStatus,CapEnable,CapMode,CapValue,CapSoftAc,"
    "CapMinAc,CapMaxAc,CapSoftDc,CapMinDc,CapMaxDc,UnstressAdapterPwr,UnstressHddPwr] where null "
    "order null",
    "row_count",
    "step",
};

using Reader = uint32_t (*)(pwrmgt_power_policy_t* out);
const std::vector<Reader> kReaders{pwrmgt_get_power_policy_extra_pwr,
                                   pwrmgt_get_power_policy_setting};

// A stored row: is_blade 1 ... cap_mode 2, the limits, the two unstress powers.
struct Limits {
    int64_t min_ac = 302;
    int64_t max_ac = 303;
    int64_t min_dc = 305;
    int64_t max_dc = 306;
};
Row stored(const Limits& limits, int64_t adapter_w, int64_t hdd_w) {
    return {1,
            4,
            9,
            1,
            2,
            300,
            301,
            limits.min_ac,
            limits.max_ac,
            304,
            limits.min_dc,
            limits.max_dc,
            adapter_w,
            hdd_w};
}

void row_and_cap(Recorder& recorder) {
    recorder.answer_rows(std::vector<Row>{stored({}, 10, 20)});
    recorder.answer_ipmi({.bytes = {0, 0, 1, 0x2C, 0x01, 2}});
}

}  // namespace

class PolicyLimits : public PlatformTest {
protected:
    pwrmgt_power_policy_t policy = kUntouched;

    // The four adjusted limits in the order min AC, max AC, min DC, max DC.
    Row limits_of(Reader read, const Row& row) {
        policy = kUntouched;
        platform().answer_rows(std::vector<Row>{row});
        platform().answer_ipmi({.bytes = {0, 0, 0, 0, 0, 0}});
        EXPECT_EQ(read(&policy), 0U);
        return {policy.cap_min_ac, policy.cap_max_ac, policy.cap_min_dc, policy.cap_max_dc};
    }
};

TEST_F(PolicyLimits, ExtraPowerReaderMakesTheseCallsAndNoOthers) {
    row_and_cap(platform());

    EXPECT_EQ(pwrmgt_get_power_policy_extra_pwr(&policy), 0U);

    EXPECT_EQ(platform().calls, chain({kRowRead, policy_cells(13), {"free_result", "close"}}));
    EXPECT_EQ(fields(policy), (Row{1, 4, 9, 1, 2, 300, 301, 332, 333, 304, 335, 336}));
}

TEST_F(PolicyLimits, SettingReaderAsksTheFirmwareWhileTheConnectionIsOpen) {
    row_and_cap(platform());

    EXPECT_EQ(pwrmgt_get_power_policy_setting(&policy), 0U);

    EXPECT_EQ(platform().calls,
              chain({kRowRead, policy_cells(13), {kGetCap, "free_result", "close"}}));
}

TEST_F(PolicyLimits, NeitherAsksTheGateNorSetsTheFlag) {
    platform().quoril = true;

    for (const Reader read : kReaders) {
        row_and_cap(platform());
        EXPECT_EQ(read(&policy), 0U);
    }

    EXPECT_EQ(platform().count("quoril"), 0U);
    EXPECT_EQ(g_power_policy_flag, 255);
}

// -- bounds of the unstress powers

TEST_F(PolicyLimits, UnstressBoundsDiffer) {
    struct Case {
        int64_t adapter_w;
        int64_t hdd_w;
        int64_t max_ac;
    };
    for (const Case& c :
         {Case{549, 351, 1203}, Case{550, 351, 303}, Case{549, 352, 303}, Case{550, 352, 303},
          Case{0, 351, 654}, Case{549, 0, 852}, Case{0, 0, 303}, Case{351, 549, 303},
          Case{65535, 0, 303}, Case{0, 65535, 303}, Case{65535, 1, 303}}) {
        for (const Reader read : kReaders) {
            EXPECT_EQ(limits_of(read, stored({}, c.adapter_w, c.hdd_w))[1], c.max_ac)
                << c.adapter_w << " " << c.hdd_w;
        }
    }
}

TEST_F(PolicyLimits, LimitsAreReturnedAsStoredAboveTheBounds) {
    for (const Reader read : kReaders) {
        EXPECT_EQ(limits_of(read, stored({}, 550, 352)), (Row{302, 303, 305, 306}));
    }
}

TEST_F(PolicyLimits, SoftLimitsAndTheCapAreNeverWidened) {
    row_and_cap(platform());
    EXPECT_EQ(pwrmgt_get_power_policy_setting(&policy), 0U);

    EXPECT_EQ(policy.cap_soft_ac, 301);
    EXPECT_EQ(policy.cap_soft_dc, 304);
    EXPECT_EQ(policy.cap_value, 300);
}

// -- which limits are widened

TEST_F(PolicyLimits, ExtraPowerReaderTestsEachLimitForItself) {
    struct Case {
        Limits stored_limits;
        Row expected;
    };
    for (const Case& c : {Case{{.min_ac = kNotSet}, {65535, 1203, 1205, 1206}},
                          Case{{.max_ac = kNotSet}, {1202, 65535, 1205, 1206}},
                          Case{{.min_dc = kNotSet}, {1202, 1203, 65535, 1206}},
                          Case{{.max_dc = kNotSet}, {1202, 1203, 1205, 65535}},
                          Case{{100, kNotSet, kNotSet, 0}, {1000, 65535, 65535, 900}}}) {
        EXPECT_EQ(limits_of(pwrmgt_get_power_policy_extra_pwr, stored(c.stored_limits, 549, 351)),
                  c.expected);
    }
}

TEST_F(PolicyLimits, MinimumIsWidenedWithItsMaximum) {
    struct Case {
        Limits stored_limits;
        Row expected;
    };
    for (const Case& c : {Case{{.max_ac = kNotSet}, {302, 65535, 1205, 1206}},
                          Case{{.max_dc = kNotSet}, {1202, 1203, 305, 65535}},
                          Case{{100, kNotSet, 200, kNotSet}, {100, 65535, 200, 65535}},
                          // A minimum that is not set wraps with the maximum that is.
                          Case{{.min_ac = kNotSet}, {899, 1203, 1205, 1206}},
                          Case{{.min_dc = kNotSet}, {1202, 1203, 899, 1206}}}) {
        EXPECT_EQ(limits_of(pwrmgt_get_power_policy_setting, stored(c.stored_limits, 549, 351)),
                  c.expected);
    }
}

TEST_F(PolicyLimits, SumsWrapIn16Bits) {
    const Limits high{64'635, 64'636, 65'534, 64'634};

    for (const Reader read : kReaders) {
        EXPECT_EQ(limits_of(read, stored(high, 549, 351)), (Row{65'535, 0, 898, 65'534}));
    }
}

// A maximum that reaches 65535 by the sum was tested before it was widened.
TEST_F(PolicyLimits, MinimumFollowsAMaximumThatIsWidenedTo65535) {
    EXPECT_EQ(
        limits_of(pwrmgt_get_power_policy_setting, stored({100, 64'635, 0, 64'635}, 549, 351)),
        (Row{1000, 65535, 900, 65535}));
}

// -- the live cap

TEST_F(PolicyLimits, LiveCapReplacesTheStoredOne) {
    platform().answer_rows(std::vector<Row>{stored({}, 0, 0)});
    platform().answer_ipmi({.bytes = {0, 0, 0xFE, 0x34, 0x12, 0xFD}});

    EXPECT_EQ(pwrmgt_get_power_policy_setting(&policy), 0U);

    EXPECT_EQ(fields(policy), (Row{1, 4, 9, 254, 253, 0x1234, 301, 302, 303, 304, 305, 306}));
}

TEST_F(PolicyLimits, WithoutALiveCapItReadsAsOff) {
    for (const Answer& answer : {Answer{{0, 0, 1, 1, 1, 1}, 1, {}},     // not sent
                                 Answer{{0xC1, 0, 1, 1, 1, 1}, 0, {}},  // completion code
                                 Answer{{0, 0, 1, 1, 1}, 0, {}},        // too short
                                 Answer{{0, 0, 1, 1, 1, 1, 1}, 0, {}},  // too long
                                 Answer{{0, 1, 1, 1, 1, 1}, 0, {}}}) {  // the firmware's own no
        platform().answer_rows(std::vector<Row>{stored({}, 10, 20)});
        platform().answer_ipmi(answer);

        EXPECT_EQ(pwrmgt_get_power_policy_setting(&policy), 0U);

        EXPECT_EQ(fields(policy), (Row{1, 4, 9, 0, 0, 65535, 301, 332, 333, 304, 335, 336}));
    }
}

TEST_F(PolicyLimits, ExtraPowerReaderKeepsTheStoredCap) {
    row_and_cap(platform());

    EXPECT_EQ(pwrmgt_get_power_policy_extra_pwr(&policy), 0U);

    EXPECT_EQ(policy.cap_value, 300);
    EXPECT_EQ(platform().count("ipmi"), 0U);
}

}  // namespace policy_limits_tests
