// SPDX-License-Identifier: Apache-2.0
#include "db/literals.h"

#include <gtest/gtest.h>

#include "db/statement_cache.h"

namespace {

using pwrmgt::vekdb::StatementCache;
using pwrmgt::vekdb::take_literals;
using pwrmgt::vekdb::take_literals_from;

using Values = std::vector<std::int64_t>;

TEST(Literals, IntegersOfAFilterAreTakenOutInOrder) {
    const auto taken = take_literals("select * from T where a=12 and b>=-5 and c<(3+4)");

    EXPECT_EQ(taken.text, "select * from T where a=? and b>=-? and c<(?+?)");
    EXPECT_EQ(taken.values, (Values{12, 5, 3, 4}));
}

TEST(Literals, DigitsInNamesTextsAndCommentsStay) {
    const char* sql = "SELECT HistPowers24Hr, '24''7', \"a 1\", `b 2`, [c 3] /* 4 */ FROM T -- 5\n";

    EXPECT_EQ(take_literals(sql).text, sql);
}

TEST(Literals, OtherNumbersStay) {
    const char* sql = "select 1.5, .5, 1e3, 0x1F, 99999999999999999999";

    EXPECT_EQ(take_literals(sql).text, sql);
    EXPECT_EQ(take_literals(sql).values, Values{});
}

TEST(Literals, OrdinalsOfAnOrderStayAndTheLimitIsTaken) {
    const auto taken = take_literals("select a from T where b=1 ORDER BY 2 DESC LIMIT 3 OFFSET 4");

    EXPECT_EQ(taken.text, "select a from T where b=? ORDER BY 2 DESC LIMIT ? OFFSET ?");
    EXPECT_EQ(taken.values, (Values{1, 3, 4}));
}

TEST(Literals, TextsWithParametersOfTheirOwnStayWhole) {
    EXPECT_EQ(take_literals("select 1 where a=?").text, "select 1 where a=?");
    EXPECT_EQ(take_literals("select 1 where a=:x").values, Values{});
}

TEST(Literals, OnlySelectsAndChangesOfRowsAreShared) {
    EXPECT_EQ(take_literals("PRAGMA user_version=3").text, "PRAGMA user_version=3");
    EXPECT_EQ(take_literals("  Delete from T where a=3").text, "  Delete from T where a=?");
}

TEST(Literals, UnfinishedTextsEndWithTheStatement) {
    EXPECT_EQ(take_literals("select 'abc 1").text, "select 'abc 1");
    EXPECT_EQ(take_literals("select /* 1").text, "select /* 1");
    EXPECT_EQ(take_literals("select -- 1").text, "select -- 1");
}

TEST(Literals, WhatStandsBeforeTheStartIsTakenOverAsItIs) {
    const std::string_view sql = "UPDATE T SET a=?, b=7 WHERE c=8 AND d=9";

    const auto taken = take_literals_from(sql, sql.find(" WHERE"));

    EXPECT_EQ(taken.text, "UPDATE T SET a=?, b=7 WHERE c=? AND d=?");
    EXPECT_EQ(taken.values, (Values{8, 9}));
}

TEST(Literals, AParameterBehindTheStartKeepsTheTextWhole) {
    const auto taken = take_literals_from("SELECT a FROM T WHERE b=1 AND c=?", 15);

    EXPECT_EQ(taken.text, "SELECT a FROM T WHERE b=1 AND c=?");
    EXPECT_EQ(taken.values, Values{});
}

class Statements : public testing::Test {
protected:
    Statements() { sqlite3_open(":memory:", &db_); }
    ~Statements() override {
        cache_.clear();
        sqlite3_close(db_);
    }

    sqlite3_stmt* get(const std::string& sql) {
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(cache_.get(db_, sql, statement), SQLITE_OK);
        return statement;
    }

    sqlite3* db_ = nullptr;
    StatementCache cache_;
};

TEST_F(Statements, TextsThatDifferInIntegersShareOneStatement) {
    EXPECT_EQ(get(take_literals("select 1").text), get(take_literals("select 2").text));
}

TEST_F(Statements, MoreTextsThanPlacesReplaceTheOneNotUsedLongest) {
    sqlite3_stmt* kept = get("select 'kept'");
    for (int i = 0; i < 300; ++i) {
        get("select '" + std::to_string(i) + "'");
        EXPECT_EQ(get("select 'kept'"), kept);
    }
    int live = 0;
    for (sqlite3_stmt* each = sqlite3_next_stmt(db_, nullptr); each != nullptr;
         each = sqlite3_next_stmt(db_, each)) {
        ++live;
    }

    EXPECT_EQ(live, 96);
}

}  // namespace
