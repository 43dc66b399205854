// SPDX-License-Identifier: Apache-2.0
#include "db/mariadb/dialect.h"

#include <gtest/gtest.h>

namespace {

using pwrmgt::vekdb::mariadb::says_nothing;
using pwrmgt::vekdb::mariadb::translated;

std::string alone(const char* sql) {
    return translated(sql, false);
}

TEST(ServerDialect, RowOfATableWithAKeyReplaces) {
    EXPECT_EQ(alone("INSERT INTO HistPowers24HrMem (_id) VALUES (?)"),
              "REPLACE INTO HistPowers24HrMem (_id) VALUES (?)");
    EXPECT_EQ(alone("insert into HistPowers24Hr select * from HistPowers24HrMem where _id=?"),
              "REPLACE into HistPowers24Hr select * from HistPowers24HrMem where _id=?");
    EXPECT_EQ(alone(" insert HistCpuPowersMem(_id) values (?)"),
              "REPLACE HistCpuPowersMem(_id) values (?)");
    EXPECT_EQ(alone("insert into HistExtraPowers24HrMem values (?)"),
              "REPLACE into HistExtraPowers24HrMem values (?)");
    EXPECT_EQ(alone("insert\tinto\nHistExtraPowers24Hr values (?)"),
              "REPLACE\tinto\nHistExtraPowers24Hr values (?)");
}

TEST(ServerDialect, RowOfATableWithoutAKeyIsAnotherRow) {
    EXPECT_EQ(alone("INSERT INTO HistThermal24HrMem VALUES (?,?,?,?)"), "");
    EXPECT_EQ(alone("INSERT INTO PowerPolicy (_id) VALUES (?)"), "");
    EXPECT_EQ(alone("INSERT INTO Nothing (_id) VALUES (?)"), "");
    EXPECT_EQ(alone("INSERT IGNORE INTO HistPowers24Hr VALUES (?)"), "");
    EXPECT_EQ(alone("INSERT"), "");
}

TEST(ServerDialect, WorkingTableIsEmptiedAtOnce) {
    EXPECT_EQ(alone("TRUNCATE TABLE HistThermal24HrMem"), "TRUNCATE TABLE HistThermal24HrMem");
    EXPECT_EQ(alone("truncate PsuPropertyMem ;"), "TRUNCATE TABLE PsuPropertyMem");
    EXPECT_EQ(alone("DELETE FROM PsuPropertyMem"), "TRUNCATE TABLE PsuPropertyMem");
    EXPECT_EQ(alone("delete from PsuPropertyMem ;"), "TRUNCATE TABLE PsuPropertyMem");
}

TEST(ServerDialect, WithinATransactionRowsAreDeleted) {
    EXPECT_EQ(translated("TRUNCATE TABLE PsuPropertyMem", true), "DELETE FROM PsuPropertyMem");
    EXPECT_EQ(translated("DELETE FROM PsuPropertyMem", true), "");
}

TEST(ServerDialect, RowsOfAPersistentTableAreDeleted) {
    EXPECT_EQ(alone("TRUNCATE TABLE HistPowers24Hr"), "DELETE FROM HistPowers24Hr");
    EXPECT_EQ(alone("DELETE FROM HistPowers24Hr"), "");
}

TEST(ServerDialect, DeletionOfSomeRowsStandsAsItIs) {
    EXPECT_EQ(alone("DELETE FROM PsuPropertyMem WHERE PsuId=?"), "");
    EXPECT_EQ(alone("DELETE FROM PsuPropertyMem LIMIT ?"), "");
    EXPECT_EQ(alone("DELETE FROM PsuPropertyMem; DELETE FROM PowerPolicy"), "");
    EXPECT_EQ(alone("DELETE Nothing FROM PsuPropertyMem"), "");
}

TEST(ServerDialect, TruncationOfNoTableStandsAsItIs) {
    EXPECT_EQ(alone("TRUNCATE TABLE Nothing"), "");
    EXPECT_EQ(alone("TRUNCATE TABLE PsuPropertyMem now"), "");
    EXPECT_EQ(alone("TRUNCATE VIEW PsuPropertyMem"), "");
}

TEST(ServerDialect, OtherStatementsStandAsTheyAre) {
    EXPECT_EQ(alone("select * from HistPowers24HrMem"), "");
    EXPECT_EQ(alone("UPDATE PowerPolicy SET _id=?"), "");
    EXPECT_EQ(alone(""), "");
}

TEST(ServerDialect, BlanksAndCommentsSayNothing) {
    for (const char* sql : {"", " \t\n", ";", "-- nothing", "--nothing\n ;", "# nothing\n",
                            "/* nothing */", "/* not */ ; -- ended\n/* here"}) {
        EXPECT_TRUE(says_nothing(sql)) << sql;
    }
    for (const char* sql : {"select 1", "-- nothing\nselect 1", "/* nothing */ select 1", "- 1",
                            "/*! select 1 */", "/ 1"}) {
        EXPECT_FALSE(says_nothing(sql)) << sql;
    }
}

}  // namespace
