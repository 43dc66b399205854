// SPDX-License-Identifier: Apache-2.0
// The statement texts that the library formats, as they stand.
#include <algorithm>

#include "database_test.h"

namespace {

class LibraryStatements : public OpenDatabaseTest {
protected:
    void thermal_row(const char* table, std::int32_t time, std::int16_t type, std::int16_t instance,
                     std::int16_t value) {
        const std::uint32_t content = vek_db_get_content_values();
        vek_db_content_put_int(content, "Timestamp", time);
        vek_db_content_put_short_int(content, "Type", type);
        vek_db_content_put_short_int(content, "InstNum", instance);
        vek_db_content_put_short_int(content, "Value", value);
        EXPECT_EQ(vek_db_insert(db_, table, content, 0, 0), 0);
        vek_db_free_content_values(content);
    }

    Table slots(const char* table) {
        return select(
            db_, std::string{"select _id, Timestamp from "} + table + " order by Timestamp", 2);
    }
};

TEST_F(LibraryStatements, TrimDropsRowsOutsideTheDay) {
    insert_slot(db_, "HistPowers24HrMem", 1, 99, 1);
    insert_slot(db_, "HistPowers24HrMem", 2, 100, 1);
    insert_slot(db_, "HistPowers24HrMem", 3, 86499, 1);
    insert_slot(db_, "HistPowers24HrMem", 4, 86500, 1);

    EXPECT_EQ(raw(db_, "DELETE FROM HistPowers24HrMem where Timestamp < 100 or Timestamp >= 86500"),
              0);
    EXPECT_EQ(slots("HistPowers24HrMem"), (Table{{2, 100}, {3, 86499}}));
}

TEST_F(LibraryStatements, TruncateEmptiesATable) {
    insert_slot(db_, "HistPowers24HrMem", 1, 99, 1);

    EXPECT_EQ(raw(db_, "TRUNCATE TABLE HistPowers24HrMem"), 0);
    EXPECT_EQ(slots("HistPowers24HrMem"), Table{});
}

TEST_F(LibraryStatements, TruncateTakesItsWordsInAnyCaseAndRefusesOthers) {
    EXPECT_EQ(raw(db_, "truncate Table RealTimeThermalMem;"), 0);
    EXPECT_EQ(raw(db_, " TRUNCATE HistThermal24HrMem"), 0);
    EXPECT_NE(raw(db_, "TRUNCATE TABLE Nothing"), 0);
    EXPECT_NE(raw(db_, "TRUNCATE"), 0);
    EXPECT_NE(raw(db_, "TRUNCATE VIEW PowerPolicy"), 0);
    EXPECT_NE(raw(db_, "TRUNCATE TABLE PowerPolicy now"), 0);
}

TEST_F(LibraryStatements, CopyFillsTheWorkingTableFromThePersistentOne) {
    insert_slot(db_, "HistPowers24Hr", 7, 210, 350);
    insert_slot(db_, "HistPowers24Hr", 8, 240, 360);

    EXPECT_EQ(raw(db_, "INSERT INTO HistPowers24HrMem SELECT * FROM HistPowers24Hr"), 0);
    EXPECT_EQ(select(db_, "SELECT * FROM HistPowers24HrMem order by _id DESC", 3),
              (Table{{8, 240, 360}, {7, 210, 350}}));
}

TEST_F(LibraryStatements, SlotSaveReplacesExactlyItsSlot) {
    insert_slot(db_, "HistPowers24Hr", 5, 150, 1);
    insert_slot(db_, "HistPowers24Hr", 6, 180, 1);
    insert_slot(db_, "HistPowers24HrMem", 5, 86550, 2);

    EXPECT_EQ(raw(db_, "delete from HistPowers24Hr where _id=5"), 0);
    EXPECT_EQ(raw(db_, "insert into HistPowers24Hr select * from HistPowers24HrMem where _id=5"),
              0);
    EXPECT_EQ(slots("HistPowers24Hr"), (Table{{6, 180}, {5, 86550}}));
}

TEST_F(LibraryStatements, SaveOfAllCopiesTheSlotsAboveTheLast) {
    for (std::uint16_t slot = 0; slot < 4; ++slot)
        insert_slot(db_, "HistPowers24HrMem", slot, 30u * slot, 1);

    EXPECT_EQ(raw(db_, "INSERT INTO HistPowers24Hr SELECT * FROM HistPowers24HrMem where _id>1"),
              0);
    EXPECT_EQ(slots("HistPowers24Hr"), (Table{{2, 60}, {3, 90}}));
}

TEST_F(LibraryStatements, ExtraHistoryIsCopiedByPlace) {
    const std::uint32_t content = vek_db_get_content_values();
    vek_db_content_put_short_uint(content, "Ps5AvgAc", 51);
    vek_db_content_put_short_uint(content, "Ps12AvgDc", 122);
    vek_db_content_put_short_uint(content, "_id", 4);
    vek_db_content_put_uint(content, "Timestamp", 120);
    vek_db_insert(db_, "HistExtraPowers24HrMem", content, 0, 0);
    vek_db_free_content_values(content);

    EXPECT_EQ(
        raw(db_,
            "INSERT INTO HistExtraPowers24Hr SELECT * FROM HistExtraPowers24HrMem where _id>0"),
        0);
    EXPECT_EQ(select(db_, "select _id, Timestamp, Ps5AvgAc, Ps12AvgDc from HistExtraPowers24Hr", 4),
              (Table{{4, 120, 51, 122}}));
}

TEST_F(LibraryStatements, ThermalQueryFindsASensorInTheOrderOfTime) {
    thermal_row("HistThermal24HrMem", 120, 2, 1, 50);
    thermal_row("HistThermal24HrMem", 60, 2, 1, -40);
    thermal_row("HistThermal24HrMem", 60, 2, 2, 41);
    std::uint32_t result = 0;

    ASSERT_EQ(
        raw(db_,
            "select * from HistThermal24HrMem where Type=2 and InstNum=1 and Timestamp>=60 and "
            "Timestamp<=120 order by Timestamp ASC",
            &result),
        0);
    EXPECT_EQ(vek_db_result_row_count(result), 2);
    EXPECT_EQ(rows_of(result, 4), (Table{{60, 2, 1, 4294967256}, {120, 2, 1, 50}}));
}

TEST_F(LibraryStatements, ThermalQueryOfSeveralInstancesMergesThemByTime) {
    thermal_row("HistThermal24HrMem", 90, 3, 1, 1);
    thermal_row("HistThermal24HrMem", 60, 3, 16, 2);
    thermal_row("HistThermal24HrMem", 60, 3, 17, 3);

    EXPECT_EQ(select(db_,
                     "select * from HistThermal24HrMem where Type=3 and InstNum>=1 and InstNum<=16 "
                     "and Timestamp>=0 "
                     "and Timestamp<=100 order by Timestamp ASC",
                     4),
              (Table{{60, 3, 16, 2}, {90, 3, 1, 1}}));
}

TEST_F(LibraryStatements, ThermalTablesKeepEqualRows) {
    for (const char* table : {"HistThermal24HrMem", "HistThermal24Hr", "RealTimeThermalMem"}) {
        thermal_row(table, 60, 1, 1, 20);
        thermal_row(table, 60, 1, 1, 20);

        EXPECT_EQ(select(db_, std::string{"select * from "} + table, 5),
                  (Table{{60, 1, 1, 20, -1}, {60, 1, 1, 20, -1}}));
    }
}

TEST_F(LibraryStatements, ThermalSaveCopiesWhatIsLaterThanTheLast) {
    thermal_row("HistThermal24Hr", 60, 1, 1, 20);
    thermal_row("HistThermal24HrMem", 60, 1, 1, 20);
    thermal_row("HistThermal24HrMem", 90, 1, 1, 21);

    EXPECT_EQ(
        raw(db_, "INSERT INTO HistThermal24Hr SELECT * FROM HistThermal24HrMem where Timestamp>60"),
        0);
    EXPECT_EQ(select(db_, "SELECT * FROM HistThermal24Hr order by Timestamp DESC", 4),
              (Table{{90, 1, 1, 21}, {60, 1, 1, 20}}));
}

TEST_F(LibraryStatements, OneTextWithManyNumbersGivesEachItsOwnRows) {
    for (std::uint16_t slot = 0; slot < 50; ++slot)
        insert_slot(db_, "HistPowers24HrMem", slot, 30u * slot, slot);

    for (std::int64_t slot = 0; slot < 50; ++slot) {
        EXPECT_EQ(
            select(db_, "select SysAvgDc from HistPowers24HrMem where _id=" + std::to_string(slot),
                   1),
            (Table{{slot}}));
    }
}

TEST_F(LibraryStatements, TrimPast2038EmptiesTheTable) {
    insert_slot(db_, "HistPowers24HrMem", 1, 30, 1);
    insert_slot(db_, "HistPowers24HrMem", 2, 2147483670, 1);

    EXPECT_EQ(raw(db_,
                  "DELETE FROM HistPowers24HrMem where Timestamp < 2147397278 or Timestamp > "
                  "-2147483648"),
              0);
    EXPECT_EQ(slots("HistPowers24HrMem"), Table{});
}

TEST_F(LibraryStatements, NumbersBelowZeroAreComparedAsNumbers) {
    thermal_row("HistThermal24HrMem", -60, 1, 1, -5);
    thermal_row("HistThermal24HrMem", 60, 1, 1, 5);

    EXPECT_EQ(select(db_,
                     "select * from HistThermal24HrMem where Type=1 and InstNum=1 and "
                     "Timestamp>=-2147483648 and Timestamp<=-1 order by Timestamp ASC",
                     4),
              (Table{{4294967236, 1, 1, 4294967291}}));
    EXPECT_EQ(select(db_, "select Value from HistThermal24HrMem where Timestamp>-61", 1).size(),
              2u);
}

TEST_F(LibraryStatements, NumbersAboveAnyColumnsAreComparedAsNumbers) {
    insert_slot(db_, "HistPowers24HrMem", 1, 4294967295, 1);

    EXPECT_EQ(
        select(db_, "select _id from HistPowers24HrMem where Timestamp<9223372036854775807", 1),
        (Table{{1}}));
    EXPECT_EQ(
        select(db_, "select _id from HistPowers24HrMem where Timestamp<99999999999999999999", 1),
        (Table{{1}}));
}

TEST_F(LibraryStatements, NamesMayBeQuotedAndABackslashIsACharacter) {
    insert_slot(db_, "HistPowers24HrMem", 1, 30, 1);

    EXPECT_EQ(
        select(db_, R"(select "Timestamp" from "HistPowers24HrMem" where '\'<>'' or "_id"=7)", 1),
        (Table{{30}}));
}

TEST_F(LibraryStatements, EmptiedTableKeepsTheOrderOfComing) {
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(vek_db_delete(db_, "PsuPropertyMem", nullptr), 0);
        for (std::uint8_t bay = 1; bay <= 12; ++bay) {
            const std::uint32_t content = vek_db_get_content_values();
            vek_db_content_put_uchar(content, "PsuId", bay);
            vek_db_insert(db_, "PsuPropertyMem", content, 0, 0);
            vek_db_free_content_values(content);
        }
        const Table bays = select(db_, "select PsuId from PsuPropertyMem", 1);
        ASSERT_EQ(bays.size(), 12u);
        EXPECT_TRUE(std::is_sorted(bays.begin(), bays.end()));
    }
}

TEST_F(LibraryStatements, RowsAreReplacedFromATableAsOneByOne) {
    insert_slot(db_, "HistPowers24Hr", 1, 30, 100);
    insert_slot(db_, "HistPowers24HrMem", 1, 30, 200);
    insert_slot(db_, "HistPowers24HrMem", 2, 60, 300);

    EXPECT_EQ(raw(db_, "INSERT INTO HistPowers24Hr SELECT * FROM HistPowers24HrMem"), 0);
    EXPECT_EQ(select(db_, "select _id, SysAvgDc from HistPowers24Hr order by _id", 2),
              (Table{{1, 200}, {2, 300}}));
}

TEST_F(LibraryStatements, RowOfTheHistoryWithoutSlotOrTimeIsRefused) {
    EXPECT_EQ(raw(db_, "insert into HistPowers24HrMem (Timestamp) values (30)"), 2);
    EXPECT_EQ(raw(db_, "insert into HistPowers24Hr (_id) values (1)"), 2);
    EXPECT_EQ(slots("HistPowers24HrMem"), Table{});
}

}  // namespace
