// SPDX-License-Identifier: Apache-2.0
// The tables on a server: of which kind, made when they are missing, and how much they hold.
#include "server_test.h"

namespace {

class MadeTables : public ServerTest {
protected:
    ~MadeTables() override { vek_db_close(db_); }

    Table counted(const std::string& from, const std::string& where) {
        return select(db_,
                      "select count(*) from information_schema." + from +
                          " where table_schema=database() and " + where,
                      1);
    }

    std::uint32_t db_ = open_database();
};

TEST_F(MadeTables, OnesNamedMemAreInMemoryAndTheOthersOnDisk) {
    EXPECT_EQ(counted("tables", "engine='MEMORY' and table_name like '%Mem'"), (Table{{7}}));
    EXPECT_EQ(counted("tables", "engine='MEMORY'"), (Table{{7}}));
    EXPECT_EQ(counted("tables", "engine='InnoDB' and table_name<>'VekdbSchema'"), (Table{{4}}));
}

TEST_F(MadeTables, EveryIndexKnowsRanges) {
    EXPECT_EQ(counted("statistics", "index_type<>'BTREE'"), (Table{{0}}));
    EXPECT_EQ(counted("statistics", "table_name='HistPowers24HrMem' and index_name='PRIMARY'"),
              (Table{{2}}));
    EXPECT_EQ(counted("statistics", "table_name='HistThermal24HrMem'"), (Table{{4}}));
}

TEST_F(MadeTables, WorkingTableHoldsADayOfEverySensor) {
    raw(db_,
        "insert into HistThermal24HrMem select 30*seq, seq%4, seq%128, 40 from seq_1_to_207360");

    EXPECT_EQ(select(db_, "select count(*) from HistThermal24HrMem", 1), (Table{{207360}}));
    EXPECT_EQ(raw(db_, "TRUNCATE TABLE HistThermal24HrMem"), 0);
}

TEST_F(MadeTables, FullWorkingTableIsAFailedInsertAndSpaceHeals) {
    ASSERT_EQ(raw(db_, "SET SESSION max_heap_table_size=16384"), 0);
    ASSERT_EQ(raw(db_, "TRUNCATE TABLE HistPowers24HrMem"), 0);
    std::uint32_t stored = 0;
    int failed = 0;
    while (stored < 100000 && failed == 0) {
        failed = insert_slot(db_, "HistPowers24HrMem", 1, ++stored, 1);
    }

    EXPECT_EQ(failed, kNoSpace);
    EXPECT_EQ(select(db_, "select count(*) from HistPowers24HrMem", 1), (Table{{stored - 1}}));
    EXPECT_EQ(raw(db_, "delete from HistPowers24HrMem where Timestamp<10"), 0);
    EXPECT_EQ(insert_slot(db_, "HistPowers24HrMem", 1, stored, 1), 0);
}

TEST_F(MadeTables, MissingOneIsMadeAtTheNextOpen) {
    ASSERT_EQ(raw(db_, "DROP TABLE PowerPolicy"), 0);
    EXPECT_EQ(raw(db_, "select * from PowerPolicy"), kRefused);
    vek_db_close(db_);
    db_ = open_database();

    EXPECT_EQ(select(db_, "select * from PowerPolicy", 1), Table{});
}

TEST_F(MadeTables, DroppedDatabaseIsMadeAtTheNextOpen) {
    ASSERT_EQ(raw(db_, "DROP DATABASE " + name_of(address())), 0);
    vek_db_close(db_);
    db_ = open_database();

    EXPECT_EQ(insert_slot(db_, "HistPowers24Hr", 1, 30, 1), 0);
}

TEST_F(MadeTables, OnesOfANewerVersionAreLeftAlone) {
    ASSERT_EQ(raw(db_, "update VekdbSchema set Version=1000"), 0);
    ASSERT_EQ(raw(db_, "SET @kept_out_of_the_pool=1"), 0);
    vek_db_close(db_);
    db_ = open_database();

    EXPECT_EQ(db_, 0u);
    EXPECT_TRUE(log_tells("made by a newer version"));
}

TEST_F(MadeTables, NumberThatFitsNoColumnIsRefused) {
    EXPECT_EQ(raw(db_, "insert into PowerPolicy (_id) values (99999999999999999999)"), kRefused);
    EXPECT_EQ(raw(db_, "insert into PsuPropertyMem (PsuId) values ('three')"), kRefused);
    EXPECT_EQ(select(db_, "select * from PowerPolicy", 1), Table{});
}

TEST_F(MadeTables, CellsOfOtherTypesAreReadAsIntegers) {
    EXPECT_EQ(select(db_, "select sum(2.5), 7.9, 1e3, '12 W', 'none', true, cast(3 as char)", 7),
              (Table{{2, 7, 1000, 12, 0, 1, 3}}));
}

TEST_F(MadeTables, TextThatTheServerDividesOtherwiseIsRefused) {
    // What is a comment to the server is a number to the client.
    EXPECT_EQ(raw(db_, "select 1 # 2"), kRefused);
    EXPECT_EQ(select(db_, "select 1", 1), (Table{{1}}));
}

}  // namespace
