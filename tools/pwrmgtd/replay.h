// SPDX-License-Identifier: Apache-2.0
// Fills the past day from a measured trace at once.
#pragma once

#include <cstdint>
#include <vector>

#include "measured_trace.h"
#include "slot.h"
#include "tables.h"

namespace pwrmgt::pwrmgtd {

// Where a trace comes to lie when its last row is to stand in the newest slot that is over at
// `until_s`. The shift is a multiple of 30 seconds, so every row keeps its place within its slot.
struct ReplayPlan {
    std::int64_t shift_s;
    std::int64_t first_s;  // stamp of the first row that is written: at most a day is
    std::int64_t last_s;   // stamp of the last
};

ReplayPlan plan_replay(const trace::Trace& trace, std::int64_t until_s);

// The rows of the planned slots, one per slot.
std::vector<Row> replay_rows(const trace::Trace& trace, const ReplayPlan& plan);

// Records the temperatures of each whole minute of the planned slots.
bool record_minutes(const trace::Trace& trace, const ReplayPlan& plan, DatabaseTables& tables);

// Replaces everything from the first planned slot on, saves it, and makes the trace's last row the
// real-time row. False when a step failed; the log says which.
bool replay(const trace::Trace& trace, const ReplayPlan& plan, std::int64_t until_s,
            DatabaseTables& tables);

}  // namespace pwrmgt::pwrmgtd
