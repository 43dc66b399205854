// SPDX-License-Identifier: Apache-2.0
// What each table holds, and when two of its rows are one.
#include "database_test.h"
#include "db/schema.h"

namespace {

class Tables : public OpenDatabaseTest {
protected:
    std::int64_t columns_of(const char* table) {
        return select(db_, std::string{"select count(*) from pragma_table_info('"} + table + "')",
                      1)[0][0];
    }

    bool stands_at(const char* table, const char* column, int place) {
        return select(db_,
                      std::string{"select cid from pragma_table_info('"} + table +
                          "') where name='" + column + "'",
                      1) == Table{{place}};
    }
};

TEST_F(Tables, EachHasItsNumberOfColumns) {
    EXPECT_EQ(columns_of("HistPowers24HrMem"), 28);
    EXPECT_EQ(columns_of("HistPowers24Hr"), 28);
    EXPECT_EQ(columns_of("HistExtraPowers24HrMem"), 18);
    EXPECT_EQ(columns_of("HistExtraPowers24Hr"), 18);
    EXPECT_EQ(columns_of("HistCpuPowersMem"), 10);
    EXPECT_EQ(columns_of("RealTimePowersMem"), 10);
    EXPECT_EQ(columns_of("PowerPolicy"), 16);
    EXPECT_EQ(columns_of("PsuPropertyMem"), 7);
    EXPECT_EQ(columns_of("HistThermal24HrMem"), 4);
    EXPECT_EQ(columns_of("HistThermal24Hr"), 4);
    EXPECT_EQ(columns_of("RealTimeThermalMem"), 4);
}

TEST_F(Tables, SlotAndTimeStandFirstInThePowerTables) {
    for (const char* table : {"HistPowers24HrMem", "HistPowers24Hr", "HistExtraPowers24HrMem",
                              "HistExtraPowers24Hr", "HistCpuPowersMem", "RealTimePowersMem"}) {
        EXPECT_TRUE(stands_at(table, "_id", 0)) << table;
        EXPECT_TRUE(stands_at(table, "Timestamp", 1)) << table;
    }
}

TEST_F(Tables, LastColumnsStandAtTheirPlaces) {
    EXPECT_TRUE(stands_at("HistPowers24HrMem", "SysAvgDc", 2));
    EXPECT_TRUE(stands_at("HistPowers24Hr", "Ps4AvgDc", 21));
    EXPECT_TRUE(stands_at("HistPowers24HrMem", "IOAvgPtg", 27));
    EXPECT_TRUE(stands_at("HistExtraPowers24Hr", "Ps12AvgDc", 17));
    EXPECT_TRUE(stands_at("HistCpuPowersMem", "Cpu8AvgPwr", 9));
    EXPECT_TRUE(stands_at("RealTimePowersMem", "IOPctg", 9));
    EXPECT_TRUE(stands_at("PowerPolicy", "UnstressHddPwr", 15));
    EXPECT_TRUE(stands_at("PsuPropertyMem", "OutputLablePower", 6));
    EXPECT_TRUE(stands_at("HistThermal24HrMem", "Timestamp", 0));
    EXPECT_TRUE(stands_at("RealTimeThermalMem", "Value", 3));
}

TEST_F(Tables, PairsHaveTheSameColumnsInTheSameOrder) {
    for (const char* pair : {"HistPowers24Hr", "HistExtraPowers24Hr", "HistThermal24Hr"}) {
        const std::string name{pair};
        EXPECT_EQ(select(db_,
                         "select count(*) from pragma_table_info('" + name +
                             "') a join pragma_table_info('" + name +
                             "Mem') b on a.cid=b.cid where a.name<>b.name",
                         1),
                  (Table{{0}}));
    }
}

TEST_F(Tables, OnlyTheOnesNamedMemAreInTheRuntimeFile) {
    EXPECT_EQ(
        select(db_,
               "select count(*), sum(name like '%Mem') from main.sqlite_schema where type='table'",
               2),
        (Table{{4, 0}}));
    EXPECT_EQ(
        select(db_,
               "select count(*), sum(name like '%Mem') from mem.sqlite_schema where type='table'",
               2),
        (Table{{7, 7}}));
}

TEST_F(Tables, HistoryRowEqualInSlotAndTimeReplacesTheOldOne) {
    for (const char* table : {"HistPowers24HrMem", "HistPowers24Hr"}) {
        insert_slot(db_, table, 1, 30, 100);

        EXPECT_EQ(insert_slot(db_, table, 1, 30, 200), 0);
        EXPECT_EQ(select(db_, std::string{"select _id, Timestamp, SysAvgDc from "} + table, 3),
                  (Table{{1, 30, 200}}));
    }
}

TEST_F(Tables, HistoryRowsThatShareOnlySlotOrTimeStandSideBySide) {
    insert_slot(db_, "HistPowers24HrMem", 1, 30, 100);
    insert_slot(db_, "HistPowers24HrMem", 1, 60, 200);
    insert_slot(db_, "HistPowers24HrMem", 2, 60, 300);

    EXPECT_EQ(
        select(db_, "select _id, Timestamp from HistPowers24HrMem order by Timestamp, _id", 2),
        (Table{{1, 30}, {1, 60}, {2, 60}}));
}

TEST_F(Tables, OneRowTablesAcceptTwoRowsOfOneSlot) {
    for (const char* table : {"PowerPolicy", "RealTimePowersMem"}) {
        const std::uint32_t content = vek_db_get_content_values();
        vek_db_content_put_uchar(content, "_id", 0);
        EXPECT_EQ(vek_db_insert(db_, table, content, 0, 0), 0);
        EXPECT_EQ(vek_db_insert(db_, table, content, 0, 0), 0);
        vek_db_free_content_values(content);

        EXPECT_EQ(select(db_, std::string{"select _id from "} + table, 1), (Table{{0}, {0}}));
    }
}

TEST_F(Tables, TwoRowsOfOneBayAreAccepted) {
    const std::uint32_t content = vek_db_get_content_values();
    vek_db_content_put_uchar(content, "PsuId", 3);
    EXPECT_EQ(vek_db_insert(db_, "PsuPropertyMem", content, 0, 0), 0);
    EXPECT_EQ(vek_db_insert(db_, "PsuPropertyMem", content, 0, 0), 0);
    vek_db_free_content_values(content);

    EXPECT_EQ(select(db_, "select PsuId from PsuPropertyMem", 1), (Table{{3}, {3}}));
}

TEST_F(Tables, TimesAbove31BitsAreStoredUnsignedAndKeepTheirOrder) {
    insert_slot(db_, "HistPowers24HrMem", 1, 2147483647, 1);
    insert_slot(db_, "HistPowers24HrMem", 2, 4294967280, 2);

    EXPECT_EQ(select(db_, "select Timestamp from HistPowers24HrMem where Timestamp>2147483647", 1),
              (Table{{4294967280}}));
    EXPECT_EQ(select(db_, "select _id from HistPowers24HrMem order by Timestamp DESC", 1),
              (Table{{2}, {1}}));
}

TEST(Schema, EveryColumnNameIsFoundByItsOwnNumber) {
    for (std::uint16_t number = 0; number < 85; ++number) {
        const auto name = pwrmgt::vekdb::column_name(number);
        EXPECT_EQ(pwrmgt::vekdb::column_number(name), number) << name;
    }
    EXPECT_EQ(pwrmgt::vekdb::column_number("timestamp"), std::nullopt);
}

}  // namespace
