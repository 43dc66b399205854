// SPDX-License-Identifier: Apache-2.0
// What is done once before the first reading: the tables are brought in order, subsystem by
// subsystem.
#pragma once

#include <cstdint>

#include "log.h"
#include "tables.h"

namespace pwrmgt::pwrmgtd {

struct Startup {
    DatabaseTables& tables;
    Log& log;
    std::int64_t now_s;
    std::uint32_t redundancy_mode;  // of a policy row that is not there yet
    BaySetup bays{};
};

// The time to start the tables at: never before the newest row that is stored. The start trims what
// is stamped later, and the clock may not have been set yet.
std::int64_t time_to_start_at(DatabaseTables& tables, std::int64_t now_s);

// Runs every step, also after one that failed. False when a step failed that the history cannot do
// without.
bool start_tables(const Startup& start);

}  // namespace pwrmgt::pwrmgtd
