// SPDX-License-Identifier: Apache-2.0
#include "tables.h"

#include <gmock/gmock.h>

#include <array>
#include <filesystem>
#include <vector>

#include "database_fixture.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class TablesTest : public DatabaseTest {
protected:
    // It grows with every write, until it is long enough to start over.
    std::uintmax_t persistent_log_size() {
        return std::filesystem::file_size(place_.directory() + "/state/vek_pwr_db.sqlite-wal");
    }
};

TEST_F(TablesTest, AReadingBecomesTheRealTimeRow) {
    Reading reading = system_reading(300);
    reading.sys_ac_w = 330;
    reading.cpu_pct = 12;

    EXPECT_TRUE(tables.show(system_reading(1), kMidnight));
    EXPECT_TRUE(tables.show(reading, kMidnight + 1));

    EXPECT_EQ(number("RealTimePowersMem", "SysPwrDc", "_id=0"), 300);
    EXPECT_EQ(number("RealTimePowersMem", "SysPwrAc", "_id=0"), 330);
    EXPECT_EQ(number("RealTimePowersMem", "CpuPctg", "_id=0"), 12);
    EXPECT_EQ(number("RealTimePowersMem", "Timestamp", "_id=0"), kMidnight + 1);
}

TEST_F(TablesTest, AReadingIsStampedUpToTheLastSecondOf32Bits) {
    EXPECT_TRUE(tables.show(system_reading(1), 4294967295));
    EXPECT_FALSE(tables.show(system_reading(2), 4294967296));
    EXPECT_FALSE(tables.show(system_reading(2), 4294967297));
    EXPECT_FALSE(tables.show(system_reading(2), -1));

    EXPECT_EQ(number("RealTimePowersMem", "Timestamp", "_id=0"), 4294967295);
    EXPECT_EQ(number("RealTimePowersMem", "SysPwrDc", "_id=0"), 1);
    EXPECT_THAT(log.lines, ElementsAre("real-time row: its time does not hold the clock's"));
}

TEST_F(TablesTest, AMissingReadingBecomesTheMarkers) {
    EXPECT_TRUE(tables.show({}, kMidnight));

    EXPECT_EQ(number("RealTimePowersMem", "SysPwrDc", "_id=0"), 65535);
    EXPECT_EQ(number("RealTimePowersMem", "MemPwrDc", "_id=0"), 65535);
    EXPECT_EQ(number("RealTimePowersMem", "IOPctg", "_id=0"), 255);
}

TEST_F(TablesTest, RowsAreNumberedByTheirTime) {
    const std::array rows{row(kMidnight - 30, 5), row(kMidnight, 6)};

    EXPECT_EQ(tables.append(rows), 2U);

    EXPECT_THAT(rows_of("HistPowers24HrMem"),
                ElementsAre(Pair(kMidnight - 30, 2879), Pair(kMidnight, 0)));
    EXPECT_EQ(number("HistPowers24HrMem", "SysMaxAc", "_id=2879"), 5);
}

TEST_F(TablesTest, TheNewestRowIsFoundByItsTimeNotItsNumber) {
    const std::array rows{row(kMidnight - 30, 5), row(kMidnight, 6)};
    tables.append(rows);
    std::optional<std::int64_t> newest_s;

    EXPECT_TRUE(tables.read_newest(newest_s));

    EXPECT_EQ(newest_s, kMidnight);
}

TEST_F(TablesTest, AnEmptyHistoryHasNoNewestRow) {
    std::optional<std::int64_t> newest_s = 1;

    EXPECT_TRUE(tables.read_newest(newest_s));

    EXPECT_EQ(newest_s, std::nullopt);
}

TEST_F(TablesTest, ASaveCopiesItsSlotsAcrossMidnight) {
    const std::array rows{row(kMidnight - 60, 4), row(kMidnight - 30, 5), row(kMidnight, 6),
                          row(kMidnight + 30, 7)};
    tables.append(rows);

    EXPECT_TRUE(tables.save(kMidnight - 30, kMidnight));

    EXPECT_THAT(rows_of("HistPowers24Hr"),
                ElementsAre(Pair(kMidnight - 30, 2879), Pair(kMidnight, 0)));
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(TablesTest, ASaveReplacesTheSlotOfTheDayBefore) {
    const std::array yesterday{row(kMidnight - 86400, 1)};
    tables.append(yesterday);
    tables.save(kMidnight - 86400, kMidnight - 86400);
    const std::array today{row(kMidnight, 2)};
    tables.append(today);
    ASSERT_TRUE(tables.trim(kMidnight + 30));

    EXPECT_TRUE(tables.save(kMidnight, kMidnight));

    EXPECT_THAT(rows_of("HistPowers24Hr"), ElementsAre(Pair(kMidnight, 0)));
}

TEST_F(TablesTest, ATrimOfTheWorkingTablesLeavesTheDiskAlone) {
    const std::array rows{row(kMidnight - 30, 1), row(kMidnight, 2)};
    tables.append(rows);
    tables.save(kMidnight - 30, kMidnight);
    const std::array ahead{row(kMidnight + 86400, 3)};
    tables.append(ahead);
    const auto log_size = persistent_log_size();

    EXPECT_TRUE(tables.trim_working(kMidnight + 86400));

    EXPECT_THAT(rows_of("HistPowers24HrMem"), ElementsAre(Pair(kMidnight, 0)));
    EXPECT_THAT(rows_of("HistExtraPowers24HrMem"), ElementsAre(Pair(kMidnight, 0)));
    EXPECT_EQ(rows_of("HistPowers24Hr").size(), 2U);
    EXPECT_EQ(persistent_log_size(), log_size);
}

TEST_F(TablesTest, ATrimOfTheWorkingTablesThatTheDatabaseRefusesIsReported) {
    ASSERT_EQ(raw("DROP TABLE HistExtraPowers24HrMem"), 0);

    EXPECT_FALSE(tables.trim_working(kMidnight));

    EXPECT_EQ(log.count("trimming the working tables: the database refused"), 1U);
}

TEST_F(TablesTest, ASaveTrimsWhatIsSavedToo) {
    const std::array rows{row(kMidnight - 30, 1), row(kMidnight, 2)};
    tables.append(rows);
    tables.save(kMidnight - 30, kMidnight);
    const std::array today{row(kMidnight + 86370, 3)};
    tables.append(today);

    EXPECT_TRUE(tables.trim_and_save(kMidnight + 86370, kMidnight + 86370, kMidnight + 86400));

    EXPECT_THAT(rows_of("HistPowers24Hr"),
                ElementsAre(Pair(kMidnight, 0), Pair(kMidnight + 86370, 2879)));
    EXPECT_EQ(rows_of("HistExtraPowers24Hr"), rows_of("HistPowers24Hr"));
    EXPECT_EQ(rows_of("HistPowers24HrMem"), rows_of("HistPowers24Hr"));
}

TEST_F(TablesTest, AWholeDayIsAppendedAndSaved) {
    std::vector<Row> day;
    for (int slot = 0; slot < 2880; ++slot) {
        day.push_back(row(kMidnight + 600 + 30 * slot, 9));
    }

    EXPECT_EQ(tables.append(day), 2880U);
    EXPECT_TRUE(tables.save(kMidnight + 600, kMidnight + 600 + 86370));

    EXPECT_EQ(rows_of("HistPowers24HrMem").size(), 2880U);
    EXPECT_EQ(rows_of("HistPowers24Hr"), rows_of("HistPowers24HrMem"));
}

TEST_F(TablesTest, ASaveThatTheDatabaseRefusesIsReported) {
    const std::array rows{row(kMidnight, 6)};
    tables.append(rows);
    ASSERT_EQ(raw("DROP TABLE HistPowers24Hr"), 0);

    EXPECT_FALSE(tables.save(kMidnight, kMidnight));

    EXPECT_EQ(log.count("pwrmgt_update_hist_persist_db: status"), 1U);
}

TEST_F(TablesTest, ASlotThatDidNotArriveIsNoticedThoughTheLastOneDid) {
    const std::array rows{row(kMidnight, 6), row(kMidnight + 30, 7)};
    tables.append(rows);
    ASSERT_EQ(raw("CREATE TRIGGER lose BEFORE INSERT ON HistPowers24Hr WHEN NEW._id = 0 "
                  "BEGIN SELECT RAISE(IGNORE); END"),
              0);

    EXPECT_FALSE(tables.save(kMidnight, kMidnight + 30));

    EXPECT_EQ(log.count("saved rows: status 1"), 1U);
}

TEST_F(TablesTest, ARefusedRowIsReportedAndNotCounted) {
    ASSERT_EQ(raw("CREATE TRIGGER mem.refuse BEFORE INSERT ON HistPowers24HrMem WHEN NEW._id = 1 "
                  "BEGIN SELECT RAISE(FAIL, 'no'); END"),
              0);
    const std::array rows{row(kMidnight, 6), row(kMidnight + 30, 7), row(kMidnight + 60, 8)};

    EXPECT_EQ(tables.append(rows), 1U);

    EXPECT_THAT(rows_of("HistPowers24HrMem"), ElementsAre(Pair(kMidnight, 0)));
    EXPECT_EQ(log.count("pwrmgt_update_hist_table: status"), 1U);
}

TEST_F(TablesTest, SlotsThatFindNoRoomAreUndoneInEveryHistory) {
    std::vector<Row> day;
    for (int slot = 0; slot < 2880; ++slot)
        day.push_back(row(kMidnight + 30 * slot, 9));
    ASSERT_EQ(raw("PRAGMA mem.max_page_count=100"), 0);

    EXPECT_EQ(tables.append(day), 0U);

    EXPECT_THAT(rows_of("HistPowers24HrMem"), IsEmpty());
    EXPECT_THAT(rows_of("HistExtraPowers24HrMem"), IsEmpty());
    EXPECT_EQ(log.count("status 4, no space is left"), 1U);
    ASSERT_EQ(raw("PRAGMA mem.max_page_count=10000"), 0);
    EXPECT_EQ(tables.append(day), 2880U);
    EXPECT_EQ(rows_of("HistExtraPowers24HrMem").size(), 2880U);
    EXPECT_EQ(log.count("works again"), 1U);
}

TEST_F(TablesTest, AnExtraHistoryThatRefusesARowCostsTheMainOneNothing) {
    ASSERT_EQ(raw("DROP TABLE HistExtraPowers24HrMem"), 0);
    const std::array rows{row(kMidnight, 6), row(kMidnight + 30, 7)};

    EXPECT_EQ(tables.append(rows), 2U);

    EXPECT_EQ(rows_of("HistPowers24HrMem").size(), 2U);
    EXPECT_EQ(log.count("pwrmgt_update_hist_extra_table: status 2"), 1U);
}

TEST_F(TablesTest, FilesThatStayAreInPlace) {
    const std::array rows{row(kMidnight, 6)};
    tables.append(rows);
    tables.save(kMidnight, kMidnight);

    EXPECT_EQ(tables.displaced(), "");
}

TEST_F(TablesTest, AWorkingFileThatIsGoneIsNamedAndItsRowsAreSaved) {
    const std::array rows{row(kMidnight, 6)};
    tables.append(rows);
    for (const auto& file : std::filesystem::directory_iterator(place_.directory() + "/run"))
        std::filesystem::remove(file);

    EXPECT_EQ(tables.displaced(), place_.directory() + "/run/vek_pwr_db-mem.sqlite is gone");
    EXPECT_TRUE(tables.save(kMidnight, kMidnight));

    EXPECT_THAT(rows_of("HistPowers24Hr"), ElementsAre(Pair(kMidnight, 0)));
}

TEST_F(TablesTest, APersistentFileThatWasReplacedIsNamedAndSavesFail) {
    const std::array rows{row(kMidnight, 6)};
    tables.append(rows);
    const std::string file = place_.directory() + "/state/vek_pwr_db.sqlite";
    std::filesystem::copy(file, file + ".copy");
    std::filesystem::rename(file + ".copy", file);

    EXPECT_EQ(tables.displaced(), file + " is another file by now");
    EXPECT_FALSE(tables.save(kMidnight, kMidnight));

    EXPECT_EQ(log.count("persistent tables: " + file + " is another file by now"), 1U);
}

TEST_F(TablesTest, ALogThatIsGoneIsNamed) {
    const std::string log_file = place_.directory() + "/run/vek_pwr_db-mem.sqlite-wal";
    std::filesystem::remove(log_file);

    EXPECT_EQ(tables.displaced(), log_file + " is gone");
}

TEST_F(TablesTest, TablesThatWereEmptiedAreStartedAgainOnce) {
    std::vector<std::int64_t> starts;
    tables.when_emptied([&](std::int64_t now_s) {
        starts.push_back(now_s);
        return true;
    });
    const std::array rows{row(kMidnight, 5)};

    EXPECT_FALSE(tables.refill(kMidnight)) << "nothing was appended yet";
    tables.append(rows);
    EXPECT_FALSE(tables.refill(kMidnight + 30)) << "nothing was emptied";
    vek_db_delete(tables.connection(), "HistPowers24HrMem", "1=1");
    EXPECT_TRUE(tables.refill(kMidnight + 60));
    EXPECT_FALSE(tables.refill(kMidnight + 90)) << "started again already";

    EXPECT_THAT(starts, ElementsAre(kMidnight + 60));
    EXPECT_EQ(log.count("the working tables were emptied"), 1U);
}

TEST_F(TablesTest, NoRowIsAppendedToATableThatMayHaveBeenEmptied) {
    bool starts = false;
    tables.when_emptied([&](std::int64_t) { return starts; });
    const std::array rows{row(kMidnight, 5)};
    tables.append(rows);
    vek_db_delete(tables.connection(), "HistPowers24HrMem", "1=1");

    EXPECT_FALSE(tables.refill(kMidnight + 60)) << "the start failed";
    EXPECT_EQ(tables.append(rows), 0U);
    starts = true;
    EXPECT_TRUE(tables.refill(kMidnight + 90));
    EXPECT_EQ(tables.append(rows), 1U);
}

TEST_F(TablesTest, EmptiedFilesAreLeftAloneWithoutAStart) {
    const std::array rows{row(kMidnight, 5)};
    tables.append(rows);
    vek_db_delete(tables.connection(), "HistPowers24HrMem", "1=1");

    EXPECT_FALSE(tables.refill(kMidnight + 60));
    EXPECT_EQ(tables.append(rows), 1U);
}

TEST_F(TablesTest, RemovingTakesBothTablesFromAStampOn) {
    const std::array rows{row(kMidnight, 6), row(kMidnight + 30, 7), row(kMidnight + 60, 8)};
    tables.append(rows);
    tables.save(kMidnight, kMidnight + 60);

    EXPECT_TRUE(tables.remove_from(kMidnight + 30));

    EXPECT_THAT(rows_of("HistPowers24HrMem"), ElementsAre(Pair(kMidnight, 0)));
    EXPECT_THAT(rows_of("HistPowers24Hr"), ElementsAre(Pair(kMidnight, 0)));
}

TEST_F(TablesTest, ATableThatIsGoneHasNoExtent) {
    ASSERT_EQ(raw("DROP TABLE HistPowers24HrMem"), 0);
    std::optional<std::int64_t> newest_s;

    EXPECT_FALSE(tables.read_newest(newest_s));

    EXPECT_EQ(log.count("newest row: status 3"), 1U);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
