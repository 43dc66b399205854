// SPDX-License-Identifier: Apache-2.0
#include "startup.h"

#include <gmock/gmock.h>

#include <array>

#include "database_fixture.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

using testing::ElementsAre;
using testing::Pair;

class StartupTest : public DatabaseTest {
protected:
    bool start(std::int64_t now_s) { return start_tables({tables, log, now_s, 255, {2, {}, {}}}); }
};

TEST_F(StartupTest, AnEmptyDatabaseIsReadyAndHasAPolicy) {
    EXPECT_TRUE(start(kMidnight));

    EXPECT_THAT(log.lines,
                ElementsAre("power history: empty", "power policy: redundancy mode 1, capping off",
                            "supplies: 2 bays"));
    EXPECT_EQ(bays_with("Present=15"), 2);
    EXPECT_EQ(number("PowerPolicy", "RedunMode", "_id=0"), 1);
    EXPECT_EQ(number("PowerPolicy", "IsBlade", "_id=0"), 0);
}

TEST_F(StartupTest, AStoredPolicyWinsOverTheOption) {
    start_tables({tables, log, kMidnight, 3, {2, {}, {}}});
    start_tables({tables, log, kMidnight, 2, {2, {}, {}}});

    EXPECT_EQ(number("PowerPolicy", "RedunMode", "_id=0"), 3);
    EXPECT_EQ(log.count("redundancy mode 3"), 2U);
}

TEST_F(StartupTest, TheSavedDayIsLoadedAndTheRestTrimmed) {
    const std::array rows{row(kMidnight - 86430, 1), row(kMidnight - 86400, 2), row(kMidnight, 3)};
    tables.append(rows);
    tables.save(kMidnight - 86430, kMidnight - 86400);
    tables.save(kMidnight, kMidnight);
    ASSERT_EQ(raw("DELETE FROM HistPowers24HrMem"), 0);

    EXPECT_TRUE(start(kMidnight));

    EXPECT_THAT(rows_of("HistPowers24HrMem"), ElementsAre(Pair(kMidnight - 86400, 0)));
    EXPECT_EQ(log.count("power history: 1 rows"), 1U);
}

TEST_F(StartupTest, SlotsThatAKilledDaemonDidNotSaveAreSavedFirst) {
    const std::array rows{row(kMidnight - 60, 1), row(kMidnight - 30, 2), row(kMidnight, 3)};
    tables.append(rows);
    tables.save(kMidnight - 60, kMidnight - 60);

    EXPECT_TRUE(start(kMidnight + 45));

    EXPECT_THAT(
        rows_of("HistPowers24Hr"),
        ElementsAre(Pair(kMidnight - 60, 2878), Pair(kMidnight - 30, 2879), Pair(kMidnight, 0)));
    EXPECT_EQ(rows_of("HistPowers24HrMem"), rows_of("HistPowers24Hr"));
}

TEST_F(StartupTest, SlotsThatWereNeverSavedAreSavedToo) {
    const std::array rows{row(kMidnight - 30, 2), row(kMidnight, 3)};
    tables.append(rows);

    EXPECT_TRUE(start(kMidnight + 45));

    EXPECT_EQ(rows_of("HistPowers24Hr").size(), 2U);
}

TEST_F(StartupTest, LeftOverSlotsOfAnEarlierDayAreNotSaved) {
    const std::array rows{row(kMidnight - 30, 2), row(kMidnight, 3)};
    tables.append(rows);

    EXPECT_TRUE(start(kMidnight + 2 * 86400));

    EXPECT_TRUE(rows_of("HistPowers24HrMem").empty());
    EXPECT_TRUE(rows_of("HistPowers24Hr").empty());
}

TEST_F(StartupTest, AClockThatIsNotSetCostsNothing) {
    const std::array rows{row(kMidnight, 3)};
    tables.append(rows);
    tables.save(kMidnight, kMidnight);

    EXPECT_TRUE(start(100));

    EXPECT_THAT(rows_of("HistPowers24HrMem"), ElementsAre(Pair(kMidnight, 0)));
}

TEST_F(StartupTest, TheTablesAreNotStartedBeforeTheirNewestRow) {
    EXPECT_EQ(time_to_start_at(tables, 100), 100);
    const std::array rows{row(kMidnight - 30, 2), row(kMidnight, 3)};
    tables.append(rows);
    tables.save(kMidnight - 30, kMidnight - 30);

    EXPECT_EQ(time_to_start_at(tables, 100), kMidnight + 1);
    EXPECT_EQ(time_to_start_at(tables, kMidnight), kMidnight + 1);
    EXPECT_EQ(time_to_start_at(tables, kMidnight + 45), kMidnight + 45);
    ASSERT_EQ(raw("DELETE FROM HistPowers24HrMem"), 0);
    EXPECT_EQ(time_to_start_at(tables, 100), kMidnight - 29);
}

TEST_F(StartupTest, AClockYearsBehindCostsNothing) {
    const std::array rows{row(kMidnight - 30, 2), row(kMidnight, 3)};
    tables.append(rows);
    tables.save(kMidnight - 30, kMidnight - 30);

    EXPECT_TRUE(start(time_to_start_at(tables, 946684800)));

    EXPECT_THAT(rows_of("HistPowers24Hr"),
                ElementsAre(Pair(kMidnight - 30, 2879), Pair(kMidnight, 0)));
    EXPECT_EQ(rows_of("HistPowers24HrMem"), rows_of("HistPowers24Hr"));
}

TEST_F(StartupTest, RowsOffTheGridAreReported) {
    const std::array rows{row(kMidnight + 7, 3), row(kMidnight + 30, 3)};
    tables.append(rows);

    EXPECT_TRUE(start(kMidnight + 60));

    EXPECT_EQ(log.count("1 rows do not start at a multiple of 30 seconds"), 1U);
}

TEST_F(StartupTest, AHistoryThatCannotBeStartedIsAFailure) {
    ASSERT_EQ(raw("DROP TABLE HistPowers24Hr"), 0);

    EXPECT_FALSE(start(kMidnight));

    EXPECT_EQ(log.count("pwrmgt_init_hist_table: status 6"), 1U);
}

TEST_F(StartupTest, APolicyThatCannotBeStoredStopsNothing) {
    ASSERT_EQ(raw("DROP TABLE PowerPolicy"), 0);

    EXPECT_TRUE(start(kMidnight));

    EXPECT_EQ(log.count("pwrmgt_init_power_policy_table: status 3"), 1U);
}

TEST_F(StartupTest, BaysThatCannotBeMadeStopNothing) {
    ASSERT_EQ(raw("DROP TABLE PsuPropertyMem"), 0);

    EXPECT_TRUE(start(kMidnight));

    EXPECT_EQ(log.count("pwrmgt_init_psu_property_table: status 3"), 1U);
    EXPECT_EQ(log.count("supplies:"), 0U);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
