// SPDX-License-Identifier: Apache-2.0
// A working history and its persistent twin, kept in step: what every 24-hour history shares.
#pragma once

#include <cstdint>

#include "db/columns.h"
#include "db/prune.h"
#include "db/status.h"
#include "db/tables.h"

namespace pwrmgt::db {

struct TwinHistory {
    Twin tables;
    Prune trim_at_start;  // of the persistent table
    Prune trim_working;
    Prune trim_persistent;
    const char* newest_by;  // the column whose largest value marks the last saved row
};

inline constexpr TwinHistory kMainHistory{kHistPowers, kHistPersistent, kHistWorking,
                                          kHistPersistent, kId};
inline constexpr TwinHistory kExtraHistory{kHistExtraPowers, kExtraPersistent, kExtraWorking,
                                           kExtraPersistent, kId};
inline constexpr TwinHistory kThermalHistory{kHistThermal, kThermalAtStart, kThermalWorking,
                                             kThermalPersistent, kTimestamp};

// Trims the persistent table and empties the working one, ready for the copy.
Status ready_for_copy(uint32_t db, const TwinHistory& history, int32_t now);

// Trims the working table, then the persistent one, once a day has passed since the epoch.
Status trim_both(uint32_t db, const TwinHistory& history, int32_t now);

// Copies the working rows above the last saved one; `last` becomes that one's mark, 0 without any.
Status save_new_rows(uint32_t db, const TwinHistory& history, int32_t& last);

}  // namespace pwrmgt::db
