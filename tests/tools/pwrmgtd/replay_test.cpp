// SPDX-License-Identifier: Apache-2.0
#include "replay.h"

#include <gmock/gmock.h>

#include <array>
#include <utility>

#include "database_fixture.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

using testing::ElementsAre;
using testing::Pair;

trace::Trace trace_of(std::vector<std::pair<std::int64_t, std::uint16_t>> rows) {
    std::vector<trace::Reading> readings;
    for (const auto& [epoch_s, watts] : rows) {
        trace::Reading reading;
        reading.epoch_s = epoch_s;
        reading.system_ac_w = watts;
        reading.system_dc_w = watts;
        reading.cpu_w = watts;
        readings.push_back(reading);
    }
    return {std::move(readings), 0, 0};
}

TEST(ReplayPlan, TheLastRowComesToLieInTheNewestSlotThatIsOver) {
    const trace::Trace trace = trace_of({{1000, 1}, {1055, 2}});

    const ReplayPlan plan = plan_replay(trace, kMidnight + 29);

    EXPECT_EQ(plan.last_s, kMidnight - 30);
    EXPECT_EQ(plan.first_s, kMidnight - 90);
    EXPECT_EQ(plan.shift_s, kMidnight - 30 - 1050);
}

TEST(ReplayPlan, ASlotIsOverWithItsLastSecond) {
    const trace::Trace trace = trace_of({{1000, 1}});

    EXPECT_EQ(plan_replay(trace, kMidnight + 29).last_s, kMidnight - 30);
    EXPECT_EQ(plan_replay(trace, kMidnight + 30).last_s, kMidnight);
}

TEST(ReplayPlan, NoMoreThanADayIsWritten) {
    const trace::Trace trace = trace_of({{1000, 1}, {1000 + 3 * 86400, 2}});

    const ReplayPlan plan = plan_replay(trace, kMidnight + 15);

    EXPECT_EQ(plan.first_s, kMidnight - 86400 + 30);
    EXPECT_EQ(plan.last_s, kMidnight - 30);
}

TEST(ReplayRows, AreTheTracesSecondsFoldedBySlot) {
    const trace::Trace trace = trace_of({{1010, 100}, {1040, 200}});

    const std::vector<Row> rows = replay_rows(trace, plan_replay(trace, kMidnight));

    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].stamp_s, kMidnight - 60);
    EXPECT_EQ(rows[0].sample.system.avg, 100);
    EXPECT_EQ(rows[0].sample.system.max, 100);
    EXPECT_EQ(rows[1].stamp_s, kMidnight - 30);
    EXPECT_EQ(rows[1].sample.cpu.avg, 133);
    EXPECT_EQ(rows[1].sample.cpu.max, 200);
    EXPECT_EQ(rows[1].sample.cpu.min, 100);
    EXPECT_EQ(rows[1].sample.perf.sys_avg, 255);
}

TEST(ReplayRows, SecondsThatNoRowSpeaksForAreEmpty) {
    const trace::Trace trace = trace_of({{990, 100}, {1199, 200}});

    const std::vector<Row> rows = replay_rows(trace, plan_replay(trace, kMidnight));

    ASSERT_EQ(rows.size(), 7U);
    EXPECT_EQ(rows[2].sample.system.avg, 100);
    EXPECT_EQ(rows[3].sample.system.avg, 65535);
    EXPECT_EQ(rows[5].sample.system.avg, 65535);
    EXPECT_EQ(rows[6].sample.system.avg, 200);
}

class ReplayTest : public DatabaseTest {
protected:
    bool replay_until(const trace::Trace& trace, std::int64_t until_s) {
        return replay(trace, plan_replay(trace, until_s), until_s, tables);
    }

    const trace::Trace short_{trace_of({{1010, 100}, {1040, 200}})};
};

TEST_F(ReplayTest, FillsBothTablesAndTheRealTimeRow) {
    EXPECT_TRUE(replay_until(short_, kMidnight));

    EXPECT_THAT(rows_of("HistPowers24HrMem"),
                ElementsAre(Pair(kMidnight - 60, 2878), Pair(kMidnight - 30, 2879)));
    EXPECT_EQ(rows_of("HistPowers24Hr"), rows_of("HistPowers24HrMem"));
    EXPECT_EQ(number("RealTimePowersMem", "SysPwrDc", "_id=0"), 200);
    EXPECT_EQ(number("RealTimePowersMem", "Timestamp", "_id=0"), kMidnight - 10);
}

TEST_F(ReplayTest, TwiceGivesTheSameRows) {
    replay_until(short_, kMidnight);
    const auto once = rows_of("HistPowers24Hr");

    EXPECT_TRUE(replay_until(short_, kMidnight));

    EXPECT_EQ(rows_of("HistPowers24Hr"), once);
    EXPECT_EQ(rows_of("HistPowers24HrMem"), once);
}

TEST_F(ReplayTest, ReplacesWhatWasStoredThereAndLater) {
    const std::array rows{row(kMidnight - 90, 1), row(kMidnight - 60, 2), row(kMidnight - 47, 3),
                          row(kMidnight, 4)};
    tables.append(rows);
    tables.save(kMidnight - 90, kMidnight);

    EXPECT_TRUE(replay_until(short_, kMidnight));

    EXPECT_THAT(rows_of("HistPowers24HrMem"),
                ElementsAre(Pair(kMidnight - 90, 2877), Pair(kMidnight - 60, 2878),
                            Pair(kMidnight - 30, 2879)));
    EXPECT_EQ(rows_of("HistPowers24Hr"), rows_of("HistPowers24HrMem"));
    EXPECT_EQ(number("HistPowers24Hr", "SysAvgDc", "_id=2877"), 1);
    EXPECT_EQ(number("HistPowers24Hr", "SysAvgDc", "_id=2878"), 100);
}

TEST_F(ReplayTest, OfADayFillsTheRing) {
    const trace::Trace day = trace_of({{900, 7}, {900 + 86399, 8}});

    EXPECT_TRUE(replay_until(day, kMidnight));

    EXPECT_EQ(rows_of("HistPowers24Hr").size(), 2880U);
}

TEST_F(ReplayTest, IsAFailureWhenTheTablesRefuse) {
    ASSERT_EQ(raw("DROP TABLE HistPowers24Hr"), 0);

    EXPECT_FALSE(replay_until(short_, kMidnight));
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
