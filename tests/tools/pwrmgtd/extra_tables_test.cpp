// SPDX-License-Identifier: Apache-2.0
// The histories beside the main one: supplies 5 to 12, and each processor.
#include <gmock/gmock.h>

#include <array>
#include <vector>

#include "database_fixture.h"
#include "startup.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class ExtraTablesTest : public DatabaseTest {
protected:
    // A row in which supply 12 and processor 8 have readings.
    static Row extra_row(std::int64_t stamp_s, std::uint16_t watts) {
        SlotReadings readings;
        Reading reading;
        reading.supplies[11] = {watts, static_cast<std::uint16_t>(watts - 1)};
        reading.each_cpu_w[7] = watts;
        readings.add(reading);
        return readings.row(stamp_s);
    }
};

TEST_F(ExtraTablesTest, SuppliesBeyondFourGoIntoTheExtraHistory) {
    const std::array rows{extra_row(kMidnightBefore + 30, 300)};

    EXPECT_EQ(tables.append(rows), 1U);

    EXPECT_THAT(rows_of("HistExtraPowers24HrMem"), ElementsAre(Pair(kMidnightBefore + 30, 1)));
    EXPECT_EQ(number("HistExtraPowers24HrMem", "Ps12AvgAc", "_id=1"), 300);
    EXPECT_EQ(number("HistExtraPowers24HrMem", "Ps12AvgDc", "_id=1"), 299);
    EXPECT_EQ(number("HistExtraPowers24HrMem", "Ps5AvgAc", "_id=1"), 65535);
}

TEST_F(ExtraTablesTest, EachProcessorGoesIntoTheProcessorHistory) {
    const std::array rows{extra_row(kMidnightBefore + 30, 90)};

    EXPECT_EQ(tables.append(rows), 1U);

    EXPECT_THAT(rows_of("HistCpuPowersMem"), ElementsAre(Pair(kMidnightBefore + 30, 1)));
    EXPECT_EQ(number("HistCpuPowersMem", "Cpu8AvgPwr", "_id=1"), 90);
    EXPECT_EQ(number("HistCpuPowersMem", "Cpu1AvgPwr", "_id=1"), 65535);
}

TEST_F(ExtraTablesTest, OfManyRowsTheProcessorHistoryTakesTheLastTenMinutes) {
    std::vector<Row> hour;
    for (int slot = 0; slot < 120; ++slot) {
        hour.push_back(extra_row(kMidnightBefore + 30 * slot, 90));
    }

    tables.append(hour);

    const auto rows = rows_of("HistCpuPowersMem");
    EXPECT_EQ(rows.size(), 20U);
    EXPECT_EQ(rows.begin()->first, kMidnightBefore + 3000);
    EXPECT_EQ(rows.rbegin()->first, kMidnightBefore + 3570);
}

TEST_F(ExtraTablesTest, ASaveReplacesTheSlotsOfYesterday) {
    const std::array yesterday{extra_row(kMidnightBefore - 86400, 1)};
    tables.append(yesterday);
    tables.save(kMidnightBefore - 86400, kMidnightBefore - 86400);
    const std::array today{extra_row(kMidnightBefore, 2)};
    tables.append(today);
    ASSERT_TRUE(tables.trim(kMidnightBefore + 30));

    EXPECT_TRUE(tables.save(kMidnightBefore, kMidnightBefore));

    EXPECT_THAT(rows_of("HistExtraPowers24Hr"), ElementsAre(Pair(kMidnightBefore, 0)));
}

TEST_F(ExtraTablesTest, ASaveOfTheExtraHistoryThatTheDatabaseRefusesIsReported) {
    const std::array rows{extra_row(kMidnightBefore, 6)};
    tables.append(rows);
    ASSERT_EQ(raw("DROP TABLE HistExtraPowers24Hr"), 0);

    EXPECT_FALSE(tables.save(kMidnightBefore, kMidnightBefore));

    EXPECT_EQ(log.count("saving supplies 5 to 12: status 4"), 1U);
}

TEST_F(ExtraTablesTest, ATrimReachesEveryHistory) {
    const std::array rows{extra_row(kMidnightBefore - 86400, 6)};
    tables.append(rows);
    tables.save(kMidnightBefore - 86400, kMidnightBefore - 86400);

    EXPECT_TRUE(tables.trim(kMidnightBefore + 1));

    EXPECT_THAT(rows_of("HistExtraPowers24HrMem"), IsEmpty());
    EXPECT_THAT(rows_of("HistExtraPowers24Hr"), IsEmpty());
    EXPECT_THAT(rows_of("HistCpuPowersMem"), IsEmpty());
}

TEST_F(ExtraTablesTest, ReplacedRowsGoFromEveryHistory) {
    const std::array rows{extra_row(kMidnightBefore, 6), extra_row(kMidnightBefore + 30, 7)};
    tables.append(rows);
    tables.save(kMidnightBefore, kMidnightBefore + 30);

    EXPECT_TRUE(tables.remove_from(kMidnightBefore + 30));

    EXPECT_THAT(rows_of("HistExtraPowers24HrMem"), ElementsAre(Pair(kMidnightBefore, 0)));
    EXPECT_THAT(rows_of("HistExtraPowers24Hr"), ElementsAre(Pair(kMidnightBefore, 0)));
    EXPECT_THAT(rows_of("HistCpuPowersMem"), ElementsAre(Pair(kMidnightBefore, 0)));
}

TEST_F(ExtraTablesTest, AStartFillsTheExtraHistoryFromWhatWasSaved) {
    const std::array rows{extra_row(kMidnightBefore, 6)};
    tables.append(rows);
    tables.save(kMidnightBefore, kMidnightBefore);
    ASSERT_EQ(raw("DELETE FROM HistExtraPowers24HrMem"), 0);

    EXPECT_TRUE(start_tables({tables, log, kMidnightBefore + 30, 0}));

    EXPECT_THAT(rows_of("HistExtraPowers24HrMem"), ElementsAre(Pair(kMidnightBefore, 0)));
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
