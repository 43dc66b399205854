// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "schedule_fixture.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

TEST_F(ScheduleTest, EverySecondBecomesTheRealTimeRow) {
    run(kNoon, kNoon + 3, {});

    ASSERT_THAT(tables.shown, SizeIs(3));
    EXPECT_EQ(tables.shown[0].first, kNoon);
    EXPECT_EQ(tables.shown[2].first, kNoon + 2);
    EXPECT_EQ(tables.shown[2].second.sys_dc_w, 2);
}

TEST_F(ScheduleTest, ASlotIsRecordedUnderItsStartOnceItIsOver) {
    run(kNoon, kNoon + 60, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon, kNoon + 30));
    EXPECT_EQ(tables.watts_at(kNoon), 14);
    EXPECT_EQ(tables.working.find(kNoon)->second.system.max, 29);
    EXPECT_EQ(tables.working.find(kNoon)->second.system.min, 0);
}

TEST_F(ScheduleTest, TheOpenSlotIsNotRecordedAtTheEnd) {
    run(kNoon, kNoon + 59, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon));
}

TEST_F(ScheduleTest, TheFirstSlotHoldsTheReadingsSinceTheStart) {
    run(kNoon + 28, kNoon + 30, {});

    EXPECT_EQ(tables.working.find(kNoon)->second.system.min, 28);
}

TEST_F(ScheduleTest, ReadingsComeOnceAnInterval) {
    run(kNoon + 1, kNoon + 31, {.sample_interval_s = 10});

    EXPECT_THAT(source.read_at_s, ElementsAre(kNoon + 1, kNoon + 10, kNoon + 20, kNoon + 30));
}

TEST_F(ScheduleTest, SlotsEndOnTimeWhateverTheInterval) {
    run(kNoon, kNoon + 90, {.sample_interval_s = 29});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon, kNoon + 30, kNoon + 60));
}

TEST_F(ScheduleTest, ASourceWithoutReadingsGivesEmptyRows) {
    ScriptedSource silent([](std::int64_t) { return Reading{}; });
    SimulatedClock clock(kNoon, kNoon + 30);

    Schedule({clock, silent, tables, log, supervisor}, {}).run();

    EXPECT_EQ(tables.watts_at(kNoon), 65535);
}

TEST_F(ScheduleTest, ADayFillsTheRingWithoutAGapOrADouble) {
    run(kNoon, kNoon + 2 * 86400 + 60, {.sample_interval_s = 15});

    const std::vector<std::int64_t> stamps = tables.stamps();
    ASSERT_THAT(stamps, SizeIs(2880));
    EXPECT_EQ(stamps.front(), kNoon + 86400 + 60);
    EXPECT_EQ(stamps.back(), kNoon + 2 * 86400 + 30);
    for (std::size_t i = 1; i < stamps.size(); ++i) {
        ASSERT_EQ(stamps[i] - stamps[i - 1], 30);
    }
}

TEST_F(ScheduleTest, AReaderNeverFindsMoreThanADay) {
    store(kNoon - 86400);
    for (std::int64_t stamp_s = kNoon - 86370; stamp_s < kNoon; stamp_s += 30) {
        store(stamp_s);
    }

    run(kNoon, kNoon + 180, {});

    EXPECT_THAT(tables.stamps(), SizeIs(2880));
    EXPECT_EQ(tables.most_rows, 2880U);
}

TEST_F(ScheduleTest, SlotsAreSavedInBatches) {
    run(kNoon, kNoon + 125, {.persist_slots = 2});

    EXPECT_THAT(tables.saves, ElementsAre(Pair(kNoon, kNoon + 30), Pair(kNoon + 60, kNoon + 90)));
}

TEST_F(ScheduleTest, TheDiskIsTrimmedWithASaveOnly) {
    tables.persistent.insert({kNoon - 86400, {}});

    run(kNoon, kNoon + 95, {.persist_slots = 2});

    EXPECT_THAT(tables.trims_with_save, ElementsAre(kNoon + 60, kNoon + 95));
    EXPECT_EQ(tables.persistent.count(kNoon - 86400), 0U);
}

TEST_F(ScheduleTest, WithoutASaveTheWorkingTablesAreTrimmedAlone) {
    store(kNoon - 86400);
    store(kNoon - 30);
    tables.refuse_saves = true;

    run(kNoon, kNoon + 35, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon - 30, kNoon));
    EXPECT_EQ(tables.persistent.count(kNoon - 86400), 1U);
}

TEST_F(ScheduleTest, TheEndSavesWhatIsLeft) {
    EXPECT_TRUE(run(kNoon, kNoon + 95, {.persist_slots = 2}));

    EXPECT_THAT(tables.saves, ElementsAre(Pair(kNoon, kNoon + 30), Pair(kNoon + 60, kNoon + 60)));
    EXPECT_EQ(tables.persistent.size(), 3U);
}

TEST_F(ScheduleTest, AnEndWithoutNewRowsSavesNothing) {
    run(kNoon, kNoon + 20, {});

    EXPECT_THAT(tables.saves, IsEmpty());
}

TEST_F(ScheduleTest, ARestartGoesOnAfterTheNewestRow) {
    run(kNoon, kNoon + 65, {});
    run(kNoon + 70, kNoon + 120, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon, kNoon + 30, kNoon + 60, kNoon + 90));
    EXPECT_EQ(tables.persistent.size(), 4U);
}

TEST_F(ScheduleTest, ARestartFillsTheTimeItWasDown) {
    run(kNoon, kNoon + 30, {});
    run(kNoon + 100, kNoon + 120, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon, kNoon + 30, kNoon + 60, kNoon + 90));
    EXPECT_EQ(tables.watts_at(kNoon + 30), 65535);
    EXPECT_EQ(tables.watts_at(kNoon + 60), 65535);
}

TEST_F(ScheduleTest, ARestartInTheSlotOfTheNewestRowWaitsForTheNext) {
    store(kNoon);

    run(kNoon + 10, kNoon + 60, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon, kNoon + 30));
    EXPECT_EQ(tables.watts_at(kNoon), 1);
}

TEST_F(ScheduleTest, AnEmptyHistoryIsNotFilledWithThePast) {
    run(kNoon, kNoon + 30, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon));
}

TEST_F(ScheduleTest, ARowOfAnotherProgramOffTheGridIsFollowedOnTheGrid) {
    store(kNoon - 50);

    run(kNoon, kNoon + 30, {});

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon - 50, kNoon - 30, kNoon));
}

TEST_F(ScheduleTest, RowsThatWereRefusedAreWrittenLater) {
    SimulatedClock clock(kNoon, kNoon + 150);
    tables.refuse_appends = true;
    ScriptedSource recovering([&](std::int64_t now_s) {
        if (now_s == kNoon + 80) tables.refuse_appends = false;
        return system_reading(5);
    });

    const bool saved = Schedule({clock, recovering, tables, log, supervisor}, {}).run();

    EXPECT_TRUE(saved);
    EXPECT_THAT(tables.stamps(),
                ElementsAre(kNoon, kNoon + 30, kNoon + 60, kNoon + 90, kNoon + 120));
    EXPECT_EQ(tables.watts_at(kNoon), 5);
    EXPECT_EQ(tables.persistent.size(), 5U);
}

TEST_F(ScheduleTest, RowsThatAreNeverTakenMakeTheEndAFailure) {
    tables.refuse_appends = true;

    EXPECT_FALSE(run(kNoon, kNoon + 60, {}));
}

TEST_F(ScheduleTest, ASaveThatFailsIsTriedAgainWithTheNextSlot) {
    SimulatedClock clock(kNoon, kNoon + 155);
    tables.refuse_saves = true;
    ScriptedSource recovering([&](std::int64_t now_s) {
        if (now_s == kNoon + 100) tables.refuse_saves = false;
        return system_reading(5);
    });

    Schedule({clock, recovering, tables, log, supervisor}, {.persist_slots = 2}).run();

    EXPECT_THAT(tables.saves, ElementsAre(Pair(kNoon, kNoon + 30), Pair(kNoon, kNoon + 60),
                                          Pair(kNoon, kNoon + 90), Pair(kNoon + 120, kNoon + 120)));
    EXPECT_EQ(tables.persistent.size(), 5U);
}

TEST_F(ScheduleTest, DisplacedTablesAreTheEndAfterASave) {
    SimulatedClock clock(kNoon, kNoon + 3600);
    ScriptedSource emptying([&](std::int64_t now_s) {
        if (now_s == kNoon + 100) tables.displaced_file = "/run/a.sqlite is gone";
        return system_reading(5);
    });
    Schedule schedule({clock, emptying, tables, log, supervisor}, {});

    EXPECT_TRUE(schedule.run());

    EXPECT_TRUE(schedule.is_displaced());
    EXPECT_EQ(clock.now(), kNoon + 101);
    EXPECT_EQ(tables.persistent.size(), 3U);
    EXPECT_EQ(log.count("/run/a.sqlite is gone: ending"), 1U);
}

TEST_F(ScheduleTest, TablesThatSomebodyEmptiedHoldWhatWasSavedAndEmptyRowsForTheRest) {
    ScriptedSource emptying([&](std::int64_t now_s) {
        if (now_s == kNoon + 100) {
            tables.working.clear();
            tables.emptied = true;
        }
        return system_reading(5);
    });
    SimulatedClock clock(kNoon, kNoon + 185);

    EXPECT_TRUE(Schedule({clock, emptying, tables, log, supervisor}, {1, 2, 3600}).run());

    EXPECT_THAT(tables.stamps(),
                ElementsAre(kNoon, kNoon + 30, kNoon + 60, kNoon + 90, kNoon + 120, kNoon + 150));
    EXPECT_EQ(tables.watts_at(kNoon + 30), 5);
    EXPECT_EQ(tables.watts_at(kNoon + 60), 65535);
    EXPECT_EQ(tables.watts_at(kNoon + 90), 5);
    EXPECT_EQ(tables.persistent.size(), 6U);
    EXPECT_EQ(log.count("1 slots that were not saved yet are lost"), 1U);
}

TEST_F(ScheduleTest, RowsThatWaitedWhileTheTablesWereEmptiedAreKept) {
    ScriptedSource emptying([&](std::int64_t now_s) {
        tables.refuse_appends = now_s >= kNoon + 70 && now_s < kNoon + 110;
        if (now_s == kNoon + 100) {
            tables.working.clear();
            tables.emptied = true;
        }
        return system_reading(5);
    });
    SimulatedClock clock(kNoon, kNoon + 155);

    EXPECT_TRUE(Schedule({clock, emptying, tables, log, supervisor}, {1, 2, 3600}).run());

    EXPECT_THAT(tables.stamps(),
                ElementsAre(kNoon, kNoon + 30, kNoon + 60, kNoon + 90, kNoon + 120));
    EXPECT_EQ(tables.watts_at(kNoon + 60), 5);
    EXPECT_EQ(tables.watts_at(kNoon + 90), 5);
    EXPECT_EQ(log.count("are lost"), 0U);
}

TEST_F(ScheduleTest, TablesThatWereEmptiedBeforeASaveBeginAnew) {
    ScriptedSource emptying([&](std::int64_t now_s) {
        if (now_s == kNoon + 70) {
            tables.working.clear();
            tables.emptied = true;
        }
        return system_reading(5);
    });
    SimulatedClock clock(kNoon, kNoon + 125);

    EXPECT_TRUE(Schedule({clock, emptying, tables, log, supervisor}, {}).run());

    EXPECT_THAT(tables.stamps(), ElementsAre(kNoon + 60, kNoon + 90));
    EXPECT_EQ(tables.persistent.size(), 2U);
}

TEST_F(ScheduleTest, ALastSaveThatFailsMakesTheEndAFailure) {
    tables.refuse_saves = true;

    EXPECT_FALSE(run(kNoon, kNoon + 60, {}));
}

TEST_F(ScheduleTest, ASaveThatIsAskedForTakesWhatIsRecorded) {
    SimulatedClock clock(kNoon, kNoon + 100);
    clock.ask_at(kNoon + 65, Wake::save);
    clock.ask_at(kNoon + 70, Wake::save);

    run(clock, {});

    EXPECT_THAT(tables.saves, ElementsAre(Pair(kNoon, kNoon + 30), Pair(kNoon + 60, kNoon + 60)));
    EXPECT_EQ(log.count("asked to save: 2 slots saved"), 1U);
    EXPECT_EQ(log.count("asked to save: 0 slots saved"), 1U);
}

TEST_F(ScheduleTest, ASaveThatIsAskedForAndFailsIsTold) {
    tables.refuse_saves = true;
    SimulatedClock clock(kNoon, kNoon + 60);
    clock.ask_at(kNoon + 45, Wake::save);

    run(clock, {});

    EXPECT_EQ(log.count("asked to save: not everything was saved"), 1U);
}

// Answers a reload with another source, and counts what it is told.
class Reloading : public Supervisor {
public:
    void started() override { calls.emplace_back("started"); }
    void goes_on() override { ++wakes; }
    void recorded(const std::string& how_far) override { calls.push_back(how_far); }
    void reload(Schedule& schedule) override {
        calls.emplace_back("reload");
        schedule.use(other, {.sample_interval_s = 10});
    }
    void stopping() override { calls.emplace_back("stopping"); }

    ScriptedSource other{[](std::int64_t) { return system_reading(500); }};
    std::vector<std::string> calls;
    int wakes = 0;
};

TEST_F(ScheduleTest, AReloadPutsAnotherSourceAndRhythmInPlaceAtOnce) {
    Reloading reloading;
    SimulatedClock clock(kNoon, kNoon + 60);
    clock.ask_at(kNoon + 33, Wake::reload);

    Schedule({clock, source, tables, log, reloading}, {}).run();

    EXPECT_THAT(reloading.other.read_at_s, ElementsAre(kNoon + 33, kNoon + 40, kNoon + 50));
    EXPECT_EQ(tables.watts_at(kNoon), 14);
    EXPECT_EQ(tables.working.find(kNoon + 30)->second.system.max, 500);
}

TEST_F(ScheduleTest, TheSupervisorHearsHowItGoes) {
    Reloading reloading;
    SimulatedClock clock(kNoon, kNoon + 35);

    Schedule({clock, source, tables, log, reloading}, {}).run();

    EXPECT_THAT(
        reloading.calls,
        ElementsAre("started", "recorded up to the slot of 2025-06-03 12:00:00Z, 1 not saved yet",
                    "stopping"));
    EXPECT_EQ(reloading.wakes, 35);
}

TEST_F(ScheduleTest, SlotsThatWereNeverSavedAgeOutAfterADay) {
    tables.refuse_saves = true;

    run(kNoon, kNoon + 86400 + 90, {.sample_interval_s = 30, .persist_slots = 2880});

    EXPECT_EQ(tables.saves.back(), std::pair(kNoon + 90, kNoon + 86400 + 60));
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
