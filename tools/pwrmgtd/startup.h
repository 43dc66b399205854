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

// Runs every step, also after one that failed. False when a step failed that the history cannot do
// without.
bool start_tables(const Startup& start);

}  // namespace pwrmgt::pwrmgtd
