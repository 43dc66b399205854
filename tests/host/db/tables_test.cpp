// SPDX-License-Identifier: Apache-2.0
// What each table holds, and when two of its rows are one.
#include <numeric>

#include "database_test.h"
#include "db/schema.h"

namespace {

class Tables : public OpenDatabaseTest {
protected:
    std::int64_t column_count(const char* table) {
        return select(db_, "select count(*) from " + columns_of(table) + " c", 1)[0][0];
    }

    bool stands_at(const char* table, const char* column, int place) {
        return select(db_,
                      "select cid from " + columns_of(table) + " c where name='" + column + "'",
                      1) == Table{{place}};
    }
};

TEST_F(Tables, EachHasItsNumberOfColumns) {
    EXPECT_EQ(column_count("HistPowers24HrMem"), 28);
    EXPECT_EQ(column_count("HistPowers24Hr"), 28);
    EXPECT_EQ(column_count("HistExtraPowers24HrMem"), 18);
    EXPECT_EQ(column_count("HistExtraPowers24Hr"), 18);
    EXPECT_EQ(column_count("HistCpuPowersMem"), 10);
    EXPECT_EQ(column_count("RealTimePowersMem"), 10);
    EXPECT_EQ(column_count("PowerPolicy"), 16);
    EXPECT_EQ(column_count("PsuPropertyMem"), 7);
    EXPECT_EQ(column_count("HistThermal24HrMem"), 4);
    EXPECT_EQ(column_count("HistThermal24Hr"), 4);
    EXPECT_EQ(column_count("RealTimeThermalMem"), 4);
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

TEST_F(Tables, EveryColumnIsWrittenAndReadByItsName) {
    for (const pwrmgt::vekdb::TableShape& table : pwrmgt::vekdb::tables()) {
        const std::string names{table.columns};
        const std::uint32_t content = vek_db_get_content_values();
        int columns = 0;
        for (std::size_t at = 0; at < names.size(); at = names.find(',', at) + 1) {
            const std::string name = names.substr(at, names.find(',', at) - at);
            EXPECT_EQ(vek_db_content_put_short_uint(content, name.c_str(),
                                                    static_cast<std::uint16_t>(700 + columns)),
                      0);
            ++columns;
            if (names.find(',', at) == std::string::npos) break;
        }
        EXPECT_EQ(vek_db_insert(db_, table.name, content, 0, 0), 0) << table.name;
        vek_db_free_content_values(content);
        std::vector<std::int64_t> expected(static_cast<std::size_t>(columns));
        std::iota(expected.begin(), expected.end(), 700);

        EXPECT_EQ(select(db_, "select " + names + " from " + table.name, columns),
                  (Table{expected}));
        EXPECT_EQ(select(db_, std::string{"select * from "} + table.name, columns),
                  (Table{expected}));
    }
}

TEST_F(Tables, PairsHaveTheSameColumnsInTheSameOrder) {
    for (const char* pair : {"HistPowers24Hr", "HistExtraPowers24Hr", "HistThermal24Hr"}) {
        const std::string name{pair};
        EXPECT_EQ(select(db_,
                         "select count(*) from " + columns_of(name) + " a join " +
                             columns_of(name + "Mem") + " b on a.cid=b.cid where a.name<>b.name",
                         1),
                  (Table{{0}}));
    }
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

}  // namespace
