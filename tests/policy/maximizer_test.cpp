// SPDX-License-Identifier: Apache-2.0
// The maximizer status read from the whole policy record, behind the gate.
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

const Row kStored{1, 4, 9, 1, 2, 300, 301, 302, 303, 304, 305, 306, 901, 902, 903};

void flag_and_row(Recorder& recorder) {
    g_power_policy_flag = 0;
    recorder.answer_rows(std::vector<Row>{kStored});
}

}  // namespace

class Maximizer : public PlatformTest {
protected:
    uint8_t status = 77;
};

TEST_F(Maximizer, StatusComesFromTheWholeRecordAfterTheGate) {
    flag_and_row(platform());

    EXPECT_EQ(pwrmgt_get_power_maximzer_status(&status), 0U);

    EXPECT_EQ(status, 9);
    EXPECT_EQ(platform().calls.front(), "quoril");
    EXPECT_EQ(platform().named("query"),
              Calls{"query PowerPolicy [IsBlade,RedunMode,MaximStatus,CapEnable,CapMode,CapValue,"
                    "CapSoftAc,CapMinAc,CapMaxAc,CapSoftDc,CapMinDc,CapMaxDc,UnstressAdapterPwr,"
                    "UnstressFanPwr,UnstressHddPwr] where null order null"});
}

TEST_F(Maximizer, UnreadFlagMakesTheGateReadTheRowToo) {
    platform().answer_table("PowerPolicy", {kStored});

    EXPECT_EQ(pwrmgt_get_power_maximzer_status(&status), 0U);

    EXPECT_EQ(platform().count("open"), 2U);
    EXPECT_EQ(platform().count("close"), 2U);
    EXPECT_EQ(g_power_policy_flag, 1);
}

TEST_F(Maximizer, NullOutputIs1BeforeTheGate) {
    policy_is_read(2);

    EXPECT_EQ(pwrmgt_get_power_maximzer_status(nullptr), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(Maximizer, RefusedReadingIs10AndOpensNothing) {
    policy_is_read(2);
    EXPECT_EQ(pwrmgt_get_power_maximzer_status(&status), 10U);

    policy_is_read(0);
    platform().quoril = true;
    EXPECT_EQ(pwrmgt_get_power_maximzer_status(&status), 10U);

    EXPECT_EQ(platform().calls, (Calls{"quoril", "quoril"}));
    EXPECT_EQ(status, 77);
}

TEST_F(Maximizer, EmptyTableIs8) {
    policy_is_read();

    EXPECT_EQ(pwrmgt_get_power_maximzer_status(&status), 8U);

    EXPECT_EQ(status, 77);
}

// Open, select, row count, step, fifteen columns.
TEST_F(Maximizer, EachFailingCallHasItsStatusAndLeavesTheOutput) {
    const auto get = [&] {
        status = 77;
        return pwrmgt_get_power_maximzer_status(&status);
    };

    EXPECT_EQ(swept_statuses(flag_and_row, get),
              in_turn({{{2}, {3}, {8, 8, 8, 0}}, each_of(16, 0)}));
    sweep_faults(flag_and_row, get, [&](const Faulted& faulted) {
        if (faulted.status != 0) {
            EXPECT_EQ(status, 77);
        }
    });
}

TEST_F(Maximizer, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(
        sweep_exceptions(flag_and_row, [&] { return pwrmgt_get_power_maximzer_status(&status); }),
        19U);
}
