// SPDX-License-Identifier: Apache-2.0
// A whole day that the daemon records from the simulated firmware alone: every slot, through the
// library, its frames, the firmware's answers and the database, beside the same day read straight
// from the trace that the firmware plays.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ipmi/sim_state_file.h"
#include "pwrmgtd/database_fixture.h"
#include "schedule.h"
#include "stopped_clock.h"
#include "vekdb_client.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

using testing::ElementsAreArray;
using testing::SizeIs;

constexpr std::int64_t kMidnight = 1748995200;  // 2025-06-04 00:00:00 UTC
constexpr std::int64_t kHour_s = 3600;
// Three readings a slot; every second would be the same, only longer.
constexpr std::int64_t kSample_s = 10;

// A simulated clock that time() follows, and that does what a test planned when its second comes.
class PlannedClock final : public Clock {
public:
    PlannedClock() { stopped_clock_s = kMidnight; }

    void plan(std::int64_t when_s, std::function<void()> action) {
        plan_.emplace(when_s, std::move(action));
    }

    std::int64_t now() override { return clock_.now(); }
    std::int64_t elapsed() override { return clock_.elapsed(); }
    Wake wait_until(std::int64_t t_s) override {
        Wake wake = Wake::time;
        do {
            wake = clock_.wait_until(t_s);
        } while (wake == Wake::time && clock_.now() < t_s);
        stopped_clock_s = clock_.now();
        while (!plan_.empty() && plan_.begin()->first <= stopped_clock_s) {
            plan_.begin()->second();
            plan_.erase(plan_.begin());
        }
        return wake;
    }

private:
    SimulatedClock clock_{kMidnight, kMidnight + kDay_s};
    std::multimap<std::int64_t, std::function<void()>> plan_;
};

// The columns that a firmware can fill, in one order for both days.
const std::vector<const char*> kColumns{
    "SysAvgDc",  "SysMaxDc",  "SysMinDc",  "SysAvgAc",  "SysMaxAc",  "SysMinAc",
    "CpuAvgPwr", "CpuMaxPwr", "CpuMinPwr", "MemAvgPwr", "MemMaxPwr", "MemMinPwr",
    "SysAvgPtg", "SysMaxPtg", "SysMinPtg", "CpuAvgPtg", "MemAvgPtg", "IOAvgPtg"};
using Values = std::vector<int>;

Values values_of(const pwrmgt_hist_sample_t& row) {
    return {row.system.avg,   row.system.max,   row.system.min,   row.system.avg2,
            row.system.max2,  row.system.min2,  row.cpu.avg,      row.cpu.max,
            row.cpu.min,      row.memory.avg,   row.memory.max,   row.memory.min,
            row.perf.sys_avg, row.perf.sys_max, row.perf.sys_min, row.perf.cpu_avg,
            row.perf.mem_avg, row.perf.io_avg};
}

const Values kNothing{65535, 65535, 65535, 65535, 65535, 65535, 65535, 65535, 65535,
                      65535, 65535, 65535, 255,   255,   255,   255,   255,   255};

class FirmwareDay : public DatabaseTest {
protected:
    // The rows that the daemon stored, by stamp.
    std::map<std::int64_t, Values> recorded() {
        std::vector<const char*> columns{"Timestamp"};
        columns.insert(columns.end(), kColumns.begin(), kColumns.end());
        std::map<std::int64_t, Values> rows;
        std::uint32_t result = 0;
        EXPECT_EQ(vek_db_query(tables.connection(), "HistPowers24Hr", columns.data(),
                               static_cast<int>(columns.size()), nullptr, 0, 0, nullptr, &result),
                  0);
        while (vek_db_result_step(result) == 9) {
            std::vector<std::int32_t> cells(columns.size());
            for (std::size_t i = 0; i < cells.size(); ++i)
                vek_db_result_column_int(result, static_cast<int>(i), &cells[i]);
            rows.emplace(cells[0], Values(cells.begin() + 1, cells.end()));
        }
        vek_db_free_result(result);
        return rows;
    }

    // The same day without firmware, library and database.
    std::map<std::int64_t, Values> told_by_the_trace() {
        auto trace = trace::load(kTrace).trace;
        TraceSource source(std::move(*trace), kTrace);
        MemoryTables memory;
        PlannedClock clock;
        EXPECT_TRUE(Schedule({clock, source, memory, log, supervisor_}, rhythm_).run());
        std::map<std::int64_t, Values> rows;
        for (const auto& [stamp_s, sample] : memory.working)
            rows.emplace(stamp_s, values_of(sample));
        return rows;
    }

    bool run(PlannedClock& clock) {
        FirmwareSource source(log);
        return Schedule({clock, source, tables, log, supervisor_}, rhythm_).run();
    }

    static void set_faults(const std::string& kind) {
        ipmi::sim::Transaction transaction;
        transaction.state().faults.clear();
        if (!kind.empty()) {
            ipmi::sim::Fault fault{0x32, 0x01, {}, {}, 0};
            EXPECT_TRUE(ipmi::sim::set_kind(fault, kind)) << kind;
            transaction.state().faults.push_back(fault);
        }
        EXPECT_EQ(transaction.commit().reason, "");
    }

    static constexpr const char* kTrace = MEASURED_DATA_DIR "/server_4socket_24h_60s.csv";
    EnvironmentVariable transport_{"VEKDB_IPMI", "sim"};
    EnvironmentVariable trace_{"VEKDB_SIM_TRACE", kTrace};
    EnvironmentVariable platform_{"VEKDB_PLATFORM"};
    Supervisor supervisor_;
    const Rhythm rhythm_{kSample_s, 10, 3600};
};

TEST_F(FirmwareDay, EverySlotHoldsWhatTheTraceSays) {
    PlannedClock clock;

    ASSERT_TRUE(run(clock));

    const auto rows = recorded();
    ASSERT_THAT(rows, SizeIs(2880));
    EXPECT_EQ(rows.begin()->first, kMidnight);
    EXPECT_EQ(rows.rbegin()->first, kMidnight + kDay_s - 30);
    EXPECT_EQ(rows, told_by_the_trace());
    // The file's first row: 270 W in, 80 and 145 W out of its supplies, processors 60 W, memory 30
    // W.
    EXPECT_THAT(rows.at(kMidnight), ElementsAreArray({225, 225, 225, 270, 270, 270, 60, 60, 60, 30,
                                                      30, 30, 0, 0, 0, 0, 0, 0}));
}

// Half an hour each, two hours apart. What comes in between is as without them.
const std::vector<std::pair<int, const char*>> kFaults{
    {2, "busy"},     {4, "no-answer"}, {6, "short"},     {8, "long"},
    {10, "late"},    {12, "short:1"},  {14, "long:256"}, {16, "completion:0xCB"},
    {18, "garbage"},
};

TEST_F(FirmwareDay, WhatTheFirmwareFailsToTellIsMissingAndNothingElseIs) {
    PlannedClock clock;
    for (const auto& [hour, kind] : kFaults) {
        const std::int64_t from_s = kMidnight + hour * kHour_s;
        const std::string fault = kind == std::string("late") ? "late:1" : kind;
        clock.plan(from_s, [fault] { set_faults(fault); });
        clock.plan(from_s + kHour_s / 2, [] { set_faults(""); });
    }

    ASSERT_TRUE(run(clock));

    auto expected = told_by_the_trace();
    for (const auto& [hour, kind] : kFaults) {
        const std::int64_t from_s = kMidnight + hour * kHour_s;
        for (std::int64_t stamp_s = from_s; stamp_s < from_s + kHour_s / 2; stamp_s += 30)
            expected[stamp_s] = kNothing;
    }
    EXPECT_EQ(recorded(), expected);
}

TEST_F(FirmwareDay, OneReadingThatFailsLeavesTheOthersOfItsSlot) {
    PlannedClock clock;
    clock.plan(kMidnight + 30, [] { set_faults("busy"); });
    clock.plan(kMidnight + 40, [] { set_faults(""); });

    ASSERT_TRUE(run(clock));

    EXPECT_THAT(
        recorded().at(kMidnight + 30),
        ElementsAreArray({225, 225, 225, 270, 270, 270, 60, 60, 60, 30, 30, 30, 0, 0, 0, 0, 0, 0}));
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
