// SPDX-License-Identifier: Apache-2.0
// A server that goes away while it is used, and comes back.
#include "server_test.h"

namespace {

class LostServer : public ServerTest {
protected:
    void SetUp() override {
        if (!server().start()) GTEST_SKIP();
    }
    void TearDown() override { server().end(); }

    // Its data is made once; each test has a database of its own.
    static MariadbServer& server() {
        static MariadbServer the_server;
        return the_server;
    }

    EnvironmentVariable own_{"VEKDB_SERVER", server().address(name_of(address()))};
};

TEST_F(LostServer, IsAFailedStatementAndAFailedOpen) {
    const std::uint32_t db = open_database();
    ASSERT_EQ(insert_slot(db, "HistPowers24Hr", 1, 30, 1), 0);
    server().end();

    EXPECT_EQ(insert_slot(db, "HistPowers24Hr", 2, 60, 1), kFailed);
    EXPECT_EQ(raw(db, "select 1"), kFailed);
    EXPECT_EQ(open_database(), 0u);
    EXPECT_TRUE(log_tells("VEKDB_SERVER: "));
    expect_no_files();
    vek_db_close(db);
}

TEST_F(LostServer, ThatCameBackIsReachedByTheNextOpen) {
    const std::uint32_t db = open_database();
    insert_slot(db, "HistPowers24Hr", 1, 30, 7);
    insert_slot(db, "HistPowers24HrMem", 1, 30, 7);
    server().end();
    ASSERT_TRUE(server().start());
    const int in_between = raw(db, "select 1");
    vek_db_close(db);
    const std::uint32_t again = open_database();

    EXPECT_EQ(in_between, kFailed);
    EXPECT_EQ(select(again, "select _id, SysAvgDc from HistPowers24Hr", 2), (Table{{1, 7}}));
    EXPECT_EQ(select(again, "select * from HistPowers24HrMem", 2), Table{});
    EXPECT_EQ(insert_slot(again, "HistPowers24HrMem", 2, 60, 1), 0);
    vek_db_close(again);
}

TEST_F(LostServer, LeavesNoKeptConnectionToHandOut) {
    vek_db_close(open_database());
    server().end();
    ASSERT_TRUE(server().start());
    const std::uint32_t db = open_database();

    EXPECT_EQ(raw(db, "select 1"), 0);
    vek_db_close(db);
}

TEST_F(LostServer, TakesAnOpenTransactionWithIt) {
    const std::uint32_t db = open_database();
    raw(db, "BEGIN");
    insert_slot(db, "HistPowers24Hr", 1, 30, 1);
    server().end();
    ASSERT_TRUE(server().start());

    EXPECT_EQ(insert_slot(db, "HistPowers24Hr", 2, 60, 1), kFailed);
    EXPECT_EQ(insert_slot(db, "HistPowers24Hr", 3, 90, 1), kFailed);
    EXPECT_EQ(raw(db, "COMMIT"), kFailed);
    EXPECT_EQ(select(db, "select _id from HistPowers24Hr", 1), Table{});
    vek_db_close(db);
}

TEST_F(LostServer, ThatCameBackServesAUserWhoKeptHisConnection) {
    const std::uint32_t db = open_database();
    insert_slot(db, "HistPowers24Hr", 1, 30, 7);
    server().end();
    ASSERT_TRUE(server().start());

    EXPECT_EQ(raw(db, "select 1"), kFailed);
    EXPECT_EQ(select(db, "select _id, SysAvgDc from HistPowers24Hr", 2), (Table{{1, 7}}));
    EXPECT_EQ(raw(db, "BEGIN"), 0);
    EXPECT_EQ(insert_slot(db, "HistPowers24Hr", 2, 60, 1), 0);
    EXPECT_EQ(raw(db, "COMMIT"), 0);
    vek_db_close(db);
}

TEST_F(LostServer, DoesNotServeAUserWithoutTheSettingsHeMade) {
    const std::uint32_t db = open_database();
    ASSERT_EQ(raw(db, "SET SESSION sql_mode=''"), 0);
    server().end();
    ASSERT_TRUE(server().start());

    EXPECT_EQ(raw(db, "select 1"), kFailed);
    EXPECT_EQ(raw(db, "select 1"), kFailed);
    vek_db_close(db);
}

TEST_F(LostServer, SessionThatTheServerEndedIsReplaced) {
    const std::uint32_t victim = open_database();
    const std::uint32_t other = open_database();
    const std::int64_t id = connection_id(victim);
    vek_db_close(victim);
    ASSERT_EQ(raw(other, "KILL " + std::to_string(id)), 0);
    const std::uint32_t db = open_database();

    EXPECT_EQ(raw(db, "select 1"), 0);
    EXPECT_NE(connection_id(db), id);
    vek_db_close(db);
    vek_db_close(other);
}

}  // namespace
