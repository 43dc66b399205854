// SPDX-License-Identifier: Apache-2.0
// A schedule on a simulated clock and tables in memory.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

#include "schedule.h"
#include "stand_ins.h"

namespace pwrmgt::pwrmgtd::test {

inline constexpr std::int64_t kNoon = 1748952000;  // 2025-06-03 12:00:00, slot 1440

class ScheduleTest : public testing::Test {
protected:
    // Runs a daemon from one second to another on the tables as they are.
    bool run(SimulatedClock& clock, Rhythm rhythm) {
        return Schedule({clock, source, tables, log, supervisor}, rhythm).run();
    }
    bool run(std::int64_t from_s, std::int64_t to_s, Rhythm rhythm) {
        SimulatedClock clock(from_s, to_s);
        return run(clock, rhythm);
    }

    // One row with a reading per stamp, stored and saved.
    void store(std::int64_t stamp_s) {
        SlotReadings readings;
        readings.add(system_reading(1));
        tables.working.insert({stamp_s, readings.sample()});
        tables.persistent.insert({stamp_s, readings.sample()});
    }

    MemoryTables tables;
    CollectingLog log;
    Supervisor supervisor;
    // Power is the second within the slot, so every row of whole slots averages 14.
    ScriptedSource source{
        [](std::int64_t now_s) { return system_reading(static_cast<std::uint16_t>(now_s % 30)); }};
};

}  // namespace pwrmgt::pwrmgtd::test
