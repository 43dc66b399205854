// SPDX-License-Identifier: Apache-2.0
// Each operation of the client, and how it refuses.
#include <array>

#include "database_test.h"

namespace {

class Operations : public OpenDatabaseTest {
protected:
    void SetUp() override {
        for (std::uint16_t slot = 1; slot <= 5; ++slot) {
            insert_slot(db_, "HistPowers24HrMem", slot, 1000u + 30u * slot,
                        static_cast<std::uint16_t>(100 * slot));
        }
    }

    Table query(const char* where, int limit, int offset, const char* order) {
        constexpr std::array<const char*, 2> kColumns{"_id", "SysAvgDc"};
        std::uint32_t result = 0;
        EXPECT_EQ(vek_db_query(db_, "HistPowers24HrMem", kColumns.data(), 2, where, limit, offset,
                               order, &result),
                  0);
        return rows_of(result, 2);
    }

    int query_status(const char* table, const char* const* columns, int n, const char* where,
                     const char* order) {
        std::uint32_t result = 5;
        const int status = vek_db_query(db_, table, columns, n, where, 0, 0, order, &result);
        EXPECT_EQ(result == 0, status != 0);
        vek_db_free_result(result);
        return status;
    }
};

TEST_F(Operations, QuerySelectsColumnsInTheGivenOrder) {
    EXPECT_EQ(query("_id=3", 0, 0, nullptr), (Table{{3, 300}}));
}

TEST_F(Operations, QueryOrdersNewestFirst) {
    EXPECT_EQ(query("Timestamp>=1060 AND Timestamp<=1120", 0, 0, "Timestamp DESC"),
              (Table{{4, 400}, {3, 300}, {2, 200}}));
}

TEST_F(Operations, QueryWithLimitAndOffsetSkipsAndCuts) {
    EXPECT_EQ(query(nullptr, 2, 1, "_id DESC"), (Table{{4, 400}, {3, 300}}));
    EXPECT_EQ(query(nullptr, 0, 3, "_id DESC"), (Table{{2, 200}, {1, 100}}));
    EXPECT_EQ(query(nullptr, 1, 0, "_id"), (Table{{1, 100}}));
}

TEST_F(Operations, QueryWithEmptyTextsIsUnfilteredAndUnordered) {
    EXPECT_EQ(query("", 0, 0, "").size(), 5u);
}

TEST_F(Operations, QueryWithoutColumnListSelectsAllOfThem) {
    std::uint32_t result = 0;
    ASSERT_EQ(vek_db_query(db_, "HistPowers24HrMem", nullptr, 7, "_id=2", 0, 0, nullptr, &result),
              0);
    const Table rows = rows_of(result, 29);

    EXPECT_EQ(rows, (Table{{2,  1060, 200, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                            -1, -1,   -1,  -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1}}));
}

TEST_F(Operations, QueryRefusesNamesThatNoTableHas) {
    constexpr std::array<const char*, 1> kInjected{"_id FROM PowerPolicy --"};
    constexpr std::array<const char*, 1> kNull{nullptr};

    EXPECT_NE(query_status("PowerPolicy; drop table PowerPolicy", nullptr, 0, nullptr, nullptr), 0);
    EXPECT_NE(query_status("sqlite_schema", nullptr, 0, nullptr, nullptr), 0);
    EXPECT_NE(query_status("", nullptr, 0, nullptr, nullptr), 0);
    EXPECT_NE(query_status(nullptr, nullptr, 0, nullptr, nullptr), 0);
    EXPECT_NE(query_status("HistPowers24HrMem", kInjected.data(), 1, nullptr, nullptr), 0);
    EXPECT_NE(query_status("HistPowers24HrMem", kNull.data(), 1, nullptr, nullptr), 0);
}

TEST_F(Operations, QueryRefusesAColumnOfAnotherTable) {
    constexpr std::array<const char*, 1> kForeign{"PsuId"};

    EXPECT_NE(query_status("HistPowers24HrMem", kForeign.data(), 1, nullptr, nullptr), 0);
}

TEST_F(Operations, QueryRefusesBadFilterOrderAndNumbers) {
    std::uint32_t result = 5;

    EXPECT_NE(query_status("HistPowers24HrMem", nullptr, 0, "_id=", nullptr), 0);
    EXPECT_NE(
        query_status("HistPowers24HrMem", nullptr, 0, "_id=1; delete from PowerPolicy", nullptr),
        0);
    EXPECT_NE(query_status("HistPowers24HrMem", nullptr, 0, nullptr, "Nothing DESC"), 0);
    EXPECT_NE(query_status("HistPowers24HrMem", nullptr, -1, nullptr, nullptr), 0);
    EXPECT_NE(vek_db_query(db_, "HistPowers24HrMem", nullptr, 0, nullptr, -1, 0, nullptr, &result),
              0);
    EXPECT_NE(vek_db_query(db_, "HistPowers24HrMem", nullptr, 0, nullptr, 0, -1, nullptr, &result),
              0);
    EXPECT_NE(vek_db_query(db_, "HistPowers24HrMem", nullptr, 0, nullptr, 0, 0, nullptr, nullptr),
              0);
    EXPECT_EQ(result, 0u);
}

TEST_F(Operations, RawQueryReadsExactlyTheGivenLength) {
    const std::string_view sql = "select 12345";
    std::uint32_t result = 0;
    ASSERT_EQ(vek_db_raw_query(db_, sql.data(), 9, &result), 0);

    EXPECT_EQ(rows_of(result, 1), (Table{{12}}));
}

TEST_F(Operations, RawQueryWithoutRowsHandsOutNoResult) {
    std::uint32_t result = 5;

    EXPECT_EQ(raw(db_, "delete from PowerPolicy", &result), 0);
    EXPECT_EQ(result, 0u);
}

TEST_F(Operations, RawQueryDropsRowsThatNobodyWants) {
    EXPECT_EQ(raw(db_, "select * from HistPowers24HrMem"), 0);
}

TEST_F(Operations, RawQueryRefusesWhatIsNotOneStatement) {
    EXPECT_NE(raw(db_, ""), 0);
    EXPECT_NE(raw(db_, "  -- nothing"), 0);
    EXPECT_NE(raw(db_, "nonsense"), 0);
    EXPECT_NE(raw(db_, "delete from PowerPolicy; delete from HistPowers24HrMem"), 0);
    EXPECT_NE(raw(db_, std::string_view{"select 1\0", 9}), 0);
    EXPECT_NE(vek_db_raw_query(db_, nullptr, 8, nullptr), 0);
    EXPECT_EQ(raw(db_, "delete from PowerPolicy ; -- the end"), 0);
    EXPECT_EQ(query(nullptr, 0, 0, nullptr).size(), 5u);
}

TEST_F(Operations, LastOfTwoPutsOfAColumnIsStored) {
    const std::uint32_t content = vek_db_get_content_values();
    vek_db_content_put_uint(content, "Timestamp", 0);
    vek_db_content_put_short_uint(content, "_id", 9);
    vek_db_content_put_uint(content, "Timestamp", 1270);
    ASSERT_EQ(vek_db_insert(db_, "HistPowers24HrMem", content, 0, 0), 0);
    vek_db_free_content_values(content);

    EXPECT_EQ(select(db_, "select _id, Timestamp from HistPowers24HrMem where _id=9", 2),
              (Table{{9, 1270}}));
}

TEST_F(Operations, EachPutStoresItsValueWithItsSign) {
    const std::uint32_t content = vek_db_get_content_values();
    vek_db_content_put_uint(content, "_id", 4294967295u);
    vek_db_content_put_int(content, "Timestamp", -7);
    vek_db_content_put_short_uint(content, "SysPwrAc", 65535);
    vek_db_content_put_short_int(content, "SysPwrDc", -300);
    vek_db_content_put_uchar(content, "CpuPwrDc", 255);
    vek_db_content_put_char(content, "MemPwrDc", -1);
    ASSERT_EQ(vek_db_insert(db_, "RealTimePowersMem", content, 0, 0), 0);
    vek_db_free_content_values(content);

    EXPECT_EQ(
        select(db_,
               "select _id=4294967295, Timestamp=-7, SysPwrAc=65535, SysPwrDc=-300, CpuPwrDc=255, "
               "MemPwrDc=-1 from RealTimePowersMem",
               6),
        (Table{{1, 1, 1, 1, 1, 1}}));
}

TEST_F(Operations, PutRefusesANameThatNoTableHas) {
    const std::uint32_t content = vek_db_get_content_values();

    EXPECT_NE(vek_db_content_put_uint(content, "Timestamp) VALUES (1); --", 1), 0);
    EXPECT_NE(vek_db_content_put_uint(content, nullptr, 1), 0);
    EXPECT_NE(vek_db_content_put_uint(content, "", 1), 0);
    EXPECT_NE(vek_db_content_put_uint(0, "Timestamp", 1), 0);
    vek_db_free_content_values(content);
}

TEST_F(Operations, ClearedContentHoldsNothingOfBefore) {
    const std::uint32_t content = vek_db_get_content_values();
    vek_db_content_put_uint(content, "Timestamp", 1);
    vek_db_content_clear(content);

    EXPECT_NE(vek_db_insert(db_, "HistPowers24HrMem", content, 0, 0), 0);
    vek_db_content_put_uchar(content, "PsuId", 4);
    EXPECT_EQ(vek_db_insert(db_, "PsuPropertyMem", content, 0, 0), 0);
    vek_db_free_content_values(content);
}

TEST_F(Operations, InsertRefusesUnknownTablesAndForeignColumns) {
    const std::uint32_t content = vek_db_get_content_values();
    vek_db_content_put_uchar(content, "PsuId", 1);

    EXPECT_NE(vek_db_insert(db_, "HistPowers24HrMem", content, 0, 0), 0);
    EXPECT_NE(vek_db_insert(db_, "psupropertymem", content, 0, 0), 0);
    EXPECT_NE(vek_db_insert(db_, nullptr, content, 0, 0), 0);
    EXPECT_NE(vek_db_insert(db_, "PsuPropertyMem", 0, 0, 0), 0);
    EXPECT_NE(vek_db_insert(0, "PsuPropertyMem", content, 0, 0), 0);
    vek_db_free_content_values(content);
}

TEST_F(Operations, UpdateChangesTheRowsOfItsFilterOnly) {
    const std::uint32_t content = vek_db_get_content_values();
    vek_db_content_put_short_uint(content, "SysAvgDc", 7);

    EXPECT_EQ(vek_db_update(db_, "HistPowers24HrMem", content, "_id=2", 0, 0), 0);
    EXPECT_EQ(vek_db_update(db_, "HistPowers24HrMem", content, "_id=77", 0, 0), 0);
    EXPECT_EQ(query("_id<=3", 0, 0, "_id"), (Table{{1, 100}, {2, 7}, {3, 300}}));
    EXPECT_EQ(vek_db_update(db_, "HistPowers24HrMem", content, nullptr, 0, 0), 0);
    EXPECT_EQ(query("_id<=3", 0, 0, "_id"), (Table{{1, 7}, {2, 7}, {3, 7}}));
    EXPECT_NE(vek_db_update(db_, "HistPowers24HrMem", content, "_id=", 0, 0), 0);
    EXPECT_NE(vek_db_update(db_, "Nothing", content, nullptr, 0, 0), 0);
    vek_db_free_content_values(content);
}

TEST_F(Operations, DeleteRemovesTheRowsOfItsFilterOrAll) {
    EXPECT_EQ(vek_db_delete(db_, "HistPowers24HrMem", "_id>3"), 0);
    EXPECT_EQ(query(nullptr, 0, 0, "_id"), (Table{{1, 100}, {2, 200}, {3, 300}}));
    EXPECT_EQ(vek_db_delete(db_, "HistPowers24HrMem", nullptr), 0);
    EXPECT_EQ(query(nullptr, 0, 0, nullptr), Table{});
    EXPECT_NE(vek_db_delete(db_, "Nothing", nullptr), 0);
    EXPECT_NE(vek_db_delete(db_, nullptr, nullptr), 0);
    EXPECT_NE(vek_db_delete(db_, "PowerPolicy", "nonsense nonsense"), 0);
}

TEST_F(Operations, OpenRefusesNullTexts) {
    EXPECT_EQ(vek_db_open(nullptr, "root", "", "vek_pwr_db", 0), 0u);
    EXPECT_EQ(vek_db_open("localhost", nullptr, "", "vek_pwr_db", 0), 0u);
    EXPECT_EQ(vek_db_open("localhost", "root", nullptr, "vek_pwr_db", 0), 0u);
    EXPECT_EQ(vek_db_open("localhost", "root", "", nullptr, 0), 0u);
    EXPECT_EQ(log_lines().size(), 4u);
}

TEST_F(Operations, ReleasingZeroDoesNothing) {
    vek_db_close(0);
    vek_db_free_result(0);
    vek_db_free_content_values(0);
    vek_db_content_clear(0);

    EXPECT_EQ(query("_id=1", 0, 0, nullptr), (Table{{1, 100}}));
}

}  // namespace
