// SPDX-License-Identifier: Apache-2.0
// The schedule when time does not go on second by second.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "schedule_fixture.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using ScheduleClockTest = ScheduleTest;

TEST_F(ScheduleClockTest, MissedSlotsAreRecordedAsEmpty) {
    SimulatedClock clock(kNoon, kNoon + 180);
    clock.set_at(kNoon + 45, kNoon + 130);

    run(clock, {});

    EXPECT_THAT(tables.stamps(),
                ElementsAre(kNoon, kNoon + 30, kNoon + 60, kNoon + 90, kNoon + 120, kNoon + 150));
    EXPECT_EQ(tables.watts_at(kNoon + 30), 7);
    EXPECT_EQ(tables.watts_at(kNoon + 60), 65535);
    EXPECT_EQ(tables.watts_at(kNoon + 90), 65535);
    EXPECT_NE(tables.watts_at(kNoon + 120), 65535);
    EXPECT_EQ(log.count("2 missed slots"), 1U);
}

TEST_F(ScheduleClockTest, ALeapOfDaysLeavesNoMoreThanADayOfEmptySlots) {
    SimulatedClock clock(kNoon, kNoon + 10 * 86400 + 30);
    clock.set_at(kNoon + 45, kNoon + 10 * 86400);

    run(clock, {});

    EXPECT_EQ(tables.stamps().front(), kNoon + 9 * 86400 + 30);
    EXPECT_THAT(tables.stamps(), SizeIs(2880));
}

TEST_F(ScheduleClockTest, AStepBackRecordsNoStampTwice) {
    SimulatedClock clock(kNoon, kNoon + 120);
    clock.set_at(kNoon + 70, kNoon + 20);

    run(clock, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon, kNoon + 30, kNoon + 60, kNoon + 90));
    EXPECT_EQ(log.count("recording waits"), 1U);
    EXPECT_EQ(log.count("works again"), 1U);
}

TEST_F(ScheduleClockTest, AStepBackDropsTheReadingsOfTheOpenSlot) {
    SimulatedClock clock(kNoon, kNoon + 120);
    clock.set_at(kNoon + 89, kNoon + 20);

    run(clock, {});

    EXPECT_EQ(tables.watts_at(kNoon + 60), 14);
}

TEST_F(ScheduleClockTest, ReadingsStayLiveWhileRecordingWaits) {
    SimulatedClock clock(kNoon, kNoon + 25);
    clock.set_at(kNoon + 70, kNoon + 20);

    run(clock, {});

    ASSERT_THAT(tables.shown, SizeIs(75));
    EXPECT_EQ(tables.shown.back().first, kNoon + 24);
}

TEST_F(ScheduleClockTest, AStepBackWithinTheSlotGoesUnnoticed) {
    SimulatedClock clock(kNoon, kNoon + 60);
    clock.set_at(kNoon + 20, kNoon + 5);

    run(clock, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon, kNoon + 30));
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(ScheduleClockTest, AStepBackOverADayStartsOver) {
    SimulatedClock clock(kNoon + 30 * 86400, kNoon + 60);
    clock.set_at(kNoon + 30 * 86400 + 70, kNoon);
    store(kNoon - 60);

    run(clock, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon, kNoon + 30));
    EXPECT_EQ(log.count("the clock went back"), 1U);
}

TEST_F(ScheduleClockTest, AStartWithAClockDaysBehindWaitsForItToBeSet) {
    store(kNoon - 60);
    SimulatedClock clock(kNoon - 9000 * 86400, kNoon + 60);
    clock.set_at(kNoon - 9000 * 86400 + 3000, kNoon);

    run(clock, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon - 60, kNoon - 30, kNoon, kNoon + 30));
    EXPECT_EQ(tables.persistent.count(kNoon - 60), 1U);
    EXPECT_EQ(log.count("days behind the newest slot, 2025-06-03 11:59:00Z"), 1U);
    EXPECT_EQ(log.count("slots: works again"), 1U);
}

TEST_F(ScheduleClockTest, AClockThatIsNotSetInTimeIsBelievedLoudly) {
    store(kNoon + 9000 * 86400);
    SimulatedClock clock(kNoon, kNoon + 150);

    run(clock, {.clock_wait_s = 60});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon + 60, kNoon + 90, kNoon + 120));
    EXPECT_EQ(log.count("the clock has not been set past"), 1U);
    EXPECT_EQ(log.count("rows from then on are dropped"), 1U);
}

TEST_F(ScheduleClockTest, AClockThatIsBelievedAtOnceIsNotWaitedFor) {
    store(kNoon + 9000 * 86400);

    run(kNoon, kNoon + 30, {.clock_wait_s = 0});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon));
}

TEST_F(ScheduleClockTest, AStartWithAClockHoursBehindKeepsEveryRow) {
    store(kNoon);
    SimulatedClock clock(kNoon - 7200, kNoon + 60);

    run(clock, {.clock_wait_s = 60});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon, kNoon + 30));
    EXPECT_EQ(log.count("is recorded already"), 1U);
}

TEST_F(ScheduleClockTest, AStepBackOfADayWaits) {
    SimulatedClock clock(kNoon + 86400, kNoon + 60);
    clock.set_at(kNoon + 86400 + 70, kNoon + 30);

    run(clock, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon + 86400, kNoon + 86400 + 30));
}

TEST_F(ScheduleClockTest, AClockThatIsNotSetRecordsNothing) {
    run(100, 200, {});

    EXPECT_THAT(tables.stamps(), IsEmpty());
    EXPECT_THAT(tables.shown, SizeIs(100));
    EXPECT_EQ(log.count("cannot be right"), 1U);
}

TEST_F(ScheduleClockTest, AClockThatIsSetLaterCostsNothingOfTheHistory) {
    store(kNoon - 60);
    SimulatedClock clock(100, kNoon + 60);
    clock.set_at(200, kNoon);

    run(clock, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon - 60, kNoon - 30, kNoon, kNoon + 30));
}

TEST_F(ScheduleClockTest, AnEndWithAClockThatIsBehindSavesAndTrimsNothing) {
    store(kNoon - 60);
    SimulatedClock clock(kNoon, 1100);
    clock.set_at(kNoon + 65, 1000);

    EXPECT_TRUE(run(clock, {}));

    EXPECT_THAT(tables.trims_with_save, IsEmpty());
    EXPECT_EQ(tables.persistent.count(kNoon - 60), 1U);
    EXPECT_EQ(tables.persistent.count(kNoon + 30), 1U);
}

TEST_F(ScheduleClockTest, TheLastSecondThatTheTablesHoldEndsRecording) {
    run(2147483620, 2147483680, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(2147483610));
    EXPECT_THAT(log.lines, ElementsAre("clock: is past 2038-01-19 03:14:07Z, the last second that "
                                       "the tables hold; recording waits until it is set"));
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
