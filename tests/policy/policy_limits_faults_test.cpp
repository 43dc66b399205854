// SPDX-License-Identifier: Apache-2.0
// The readers of the capping limits with each of their calls failing in turn.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace policy_limits_faults_tests {
namespace {

constexpr pwrmgt_power_policy_t kUntouched{77, 77, 77, 77, 77, 77, 77, 77, 77, 77, 77, 77};
const Row kStored{1, 4, 9, 1, 2, 300, 301, 302, 303, 304, 305, 306, 10, 20};

using Reader = uint32_t (*)(pwrmgt_power_policy_t* out);
const std::vector<Reader> kReaders{pwrmgt_get_power_policy_extra_pwr,
                                   pwrmgt_get_power_policy_setting};

void row_and_cap(Recorder& recorder) {
    recorder.answer_rows(std::vector<Row>{kStored});
    recorder.answer_ipmi({.bytes = {0, 0, 1, 0x2C, 0x01, 2}});
}

}  // namespace

class PolicyLimitsFaults : public PlatformTest {
protected:
    pwrmgt_power_policy_t policy = kUntouched;
};

TEST_F(PolicyLimitsFaults, NullOutputIs1AndNothingIsCalled) {
    for (const Reader read : kReaders) {
        EXPECT_EQ(read(nullptr), 1U);
    }

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(PolicyLimitsFaults, EmptyTableIs8AndTheFirmwareIsNotAsked) {
    for (const Reader read : kReaders) {
        EXPECT_EQ(read(&policy), 8U);
    }

    EXPECT_EQ(platform().count("step"), 0U);
    EXPECT_EQ(platform().count("ipmi"), 0U);
    EXPECT_EQ(fields(policy), fields(kUntouched));
}

TEST_F(PolicyLimitsFaults, FirstOfSeveralRowsIsRead) {
    Row second = kStored;
    second[5] = 555;

    for (const Reader read : kReaders) {
        platform().answer_rows(std::vector<Row>{kStored, second});
        platform().answer_ipmi({.bytes = {0, 0, 1, 0x2C, 0x01, 2}});

        EXPECT_EQ(read(&policy), 0U);

        EXPECT_EQ(policy.cap_value, 300);
    }
}

// Open, select, row count, step, fourteen columns; the setting's exchange.
TEST_F(PolicyLimitsFaults, EachFailingCallHasItsStatus) {
    const Outcomes before_the_row{{2}, {3}, {8, 8, 8, 0}};

    EXPECT_EQ(swept_statuses(row_and_cap, [&] { return kReaders[0](&policy); }),
              in_turn({before_the_row, each_of(15, 0)}));
    EXPECT_EQ(swept_statuses(row_and_cap, [&] { return kReaders[1](&policy); }),
              in_turn({before_the_row, each_of(16, 0)}));
}

TEST_F(PolicyLimitsFaults, FailureLeavesTheOutput) {
    for (const Reader read : kReaders) {
        sweep_faults(
            row_and_cap,
            [&] {
                policy = kUntouched;
                return read(&policy);
            },
            [&](const Faulted& faulted) {
                if (faulted.status != 0) {
                    EXPECT_EQ(fields(policy), fields(kUntouched));
                }
                EXPECT_EQ(g_power_policy_flag, 255);
            });
    }
}

TEST_F(PolicyLimitsFaults, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(row_and_cap, [&] { return kReaders[0](&policy); }), 18U);
    EXPECT_EQ(sweep_exceptions(row_and_cap, [&] { return kReaders[1](&policy); }), 19U);
}

}  // namespace policy_limits_faults_tests
