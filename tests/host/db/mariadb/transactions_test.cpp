// SPDX-License-Identifier: Apache-2.0
// Locks that others hold, transactions that the server undoes, and what a connection leaves behind.
#include <atomic>
#include <thread>

#include "server_test.h"

namespace {

class Transactions : public ServerTest {
protected:
    void SetUp() override {
        insert_slot(one_, "HistPowers24Hr", 1, 30, 1);
        insert_slot(one_, "HistPowers24Hr", 2, 60, 1);
    }
    ~Transactions() override {
        vek_db_close(one_);
        vek_db_close(other_);
    }

    static int touch(std::uint32_t db, int slot) {
        return raw(
            db, "update HistPowers24Hr set SysAvgDc=SysAvgDc+1 where _id=" + std::to_string(slot));
    }

    // Until a session waits for a lock of another's, or it is said that none will any more.
    void await_waiting_session(const std::atomic<bool>& ended) {
        while (!ended && select(watcher_,
                                "select variable_value from information_schema.global_status where "
                                "variable_name='INNODB_ROW_LOCK_CURRENT_WAITS'",
                                1)[0][0] == 0) {
            std::this_thread::yield();
        }
    }

    std::uint32_t one_ = open_database();
    std::uint32_t other_ = open_database();
    std::uint32_t watcher_ = 0;
};

TEST_F(Transactions, LockThatDoesNotComeFreeIsBusy) {
    ASSERT_EQ(raw(other_, "SET SESSION innodb_lock_wait_timeout=1"), 0);
    raw(one_, "BEGIN");
    touch(one_, 1);

    EXPECT_EQ(touch(other_, 1), kBusy);
    EXPECT_EQ(raw(one_, "COMMIT"), 0);
    EXPECT_EQ(touch(other_, 1), 0);
}

TEST_F(Transactions, EachWaitsOnlySoLongAndSeesWhatIsCommitted) {
    EXPECT_EQ(select(one_,
                     "select @@innodb_lock_wait_timeout, @@lock_wait_timeout, @@autocommit, "
                     "@@tx_isolation='READ-COMMITTED'",
                     4),
              (Table{{5, 5, 1, 1}}));
}

// The server undoes one of two transactions that wait for each other, as a whole.
TEST_F(Transactions, UndoneOneIsNotEndedAsIfItWereWhole) {
    watcher_ = open_database();
    for (const std::uint32_t db : {one_, other_}) {
        raw(db, "SET SESSION innodb_lock_wait_timeout=60");
        raw(db, "BEGIN");
    }
    insert_slot(one_, "HistPowers24Hr", 11, 330, 1);
    insert_slot(other_, "HistPowers24Hr", 12, 360, 1);
    touch(one_, 1);
    touch(other_, 2);
    int first = 0;
    std::atomic<bool> ended{false};
    std::thread waiting{[&] {
        first = touch(one_, 2);
        ended = true;
    }};
    await_waiting_session(ended);
    const int second = touch(other_, 1);
    if (second == 0) raw(other_, "COMMIT");
    waiting.join();
    const std::uint32_t undone = first != 0 ? one_ : other_;
    const std::uint32_t whole = first != 0 ? other_ : one_;

    EXPECT_EQ(first + second, kBusy);
    EXPECT_EQ(insert_slot(undone, "HistPowers24Hr", 13, 390, 1), kBusy);
    EXPECT_EQ(raw(undone, "COMMIT"), kBusy);
    raw(whole, "COMMIT");
    EXPECT_EQ(select(watcher_, "select _id from HistPowers24Hr where _id>2", 1),
              (Table{{undone == one_ ? 12 : 11}}));
    EXPECT_EQ(insert_slot(undone, "HistPowers24Hr", 14, 420, 1), 0);
    vek_db_close(watcher_);
}

TEST_F(Transactions, RollBackUndoesWhatIsOnDisk) {
    raw(one_, "BEGIN");
    insert_slot(one_, "HistPowers24Hr", 3, 90, 1);

    EXPECT_EQ(select(other_, "select count(*) from HistPowers24Hr", 1), (Table{{2}}));
    EXPECT_EQ(raw(one_, "ROLLBACK"), 0);
    EXPECT_EQ(select(one_, "select count(*) from HistPowers24Hr", 1), (Table{{2}}));
}

TEST_F(Transactions, TruncationWithinOneIsPartOfIt) {
    raw(one_, "BEGIN");
    EXPECT_EQ(raw(one_, "TRUNCATE TABLE HistPowers24Hr"), 0);
    EXPECT_EQ(vek_db_delete(one_, "PsuPropertyMem", nullptr), 0);
    EXPECT_EQ(raw(one_, "ROLLBACK"), 0);

    EXPECT_EQ(select(one_, "select count(*) from HistPowers24Hr", 1), (Table{{2}}));
}

TEST_F(Transactions, SettingsOfOneUserDoNotReachTheNext) {
    const std::int64_t id = connection_id(one_);
    ASSERT_EQ(raw(one_, "SET SESSION sql_mode=''"), 0);
    vek_db_close(one_);
    one_ = open_database();

    EXPECT_NE(connection_id(one_), id);
}

TEST_F(Transactions, ReadersDoNotWaitForAWriter) {
    raw(one_, "BEGIN");
    touch(one_, 1);

    EXPECT_EQ(select(other_, "select SysAvgDc from HistPowers24Hr where _id=1", 1), (Table{{1}}));
    EXPECT_EQ(raw(other_, "INSERT INTO HistPowers24HrMem SELECT * FROM HistPowers24Hr"), 0);
    raw(one_, "COMMIT");
}

}  // namespace
