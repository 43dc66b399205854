// SPDX-License-Identifier: Apache-2.0
// The connection that every query opens.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

class Session : public PlatformTest {};

TEST_F(Session, ConnectionGoesToTheLocalServerAsRootWithoutAPassword) {
    const uint32_t db = pwrmgt_get_db_handle();

    EXPECT_EQ(platform().calls, Calls{"open localhost root '' vek_pwr_db 0"});
    EXPECT_TRUE(platform().alive('c', db));
    vek_db_close(db);
}

TEST_F(Session, EachCallOpensAConnectionOfItsOwn) {
    const uint32_t first = pwrmgt_get_db_handle();
    const uint32_t second = pwrmgt_get_db_handle();

    EXPECT_NE(first, second);
    vek_db_close(first);
    vek_db_close(second);
}

TEST_F(Session, ServerThatIsDownIs0) {
    const auto open_and_close = [] {
        const uint32_t db = pwrmgt_get_db_handle();
        if (db != 0) vek_db_close(db);
        return db;
    };

    EXPECT_EQ(swept_statuses([](Recorder&) {}, open_and_close), each_of(1, 0));
    EXPECT_EQ(sweep_exceptions([](Recorder&) {}, open_and_close), 1U);
}

TEST_F(Session, QueriesNeverCloseAConnectionThatDidNotOpen) {
    g_power_policy_flag = 0;
    platform().fail(Operation::open, 0, 1);
    platform().fail(Operation::open, 0, 2);
    platform().fail(Operation::open, 0, 3);
    platform().fail(Operation::open, 0, 4);
    pwrmgt_hist_pwr_sample_t power{};
    pwrmgt_hist_psu_sample_t psu{};
    pwrmgt_hist_perf_sample_t perf{};
    pwrmgt_power_policy_t policy{};

    EXPECT_EQ(pwrmgt_get_history_power(PWRMGT_DOMAIN_SYSTEM, 0, &power, 1), 2U);
    EXPECT_EQ(pwrmgt_get_history_psu_powers(1, 0, &psu, 1), 2U);
    EXPECT_EQ(pwrmgt_get_history_performance(0, &perf, 1), 2U);
    EXPECT_EQ(pwrmgt_get_pwrpolicy_tbl(&policy), 2U);

    EXPECT_EQ(platform().count("close"), 0U);
}

TEST_F(Session, StatementIsSentWithItsOwnLength) {
    pwrmgt_load_hist_bak_table(kDb);

    EXPECT_EQ(platform().calls.front(), "raw DELETE FROM HistPowers24HrMem");
}
