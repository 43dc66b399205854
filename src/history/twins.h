// SPDX-License-Identifier: Apache-2.0
// A working history and its persistent twin, kept in step: what the main and the extra power
// history share.
#pragma once

#include <cstdint>

#include "db/prune.h"
#include "db/status.h"
#include "db/tables.h"

namespace pwrmgt::history {

struct TwinHistory {
    db::Twin tables;
    db::Prune trim_working;
    db::Prune trim_persistent;
};

inline constexpr TwinHistory kMain{db::kHistPowers, db::kHistWorking, db::kHistPersistent};
inline constexpr TwinHistory kExtra{db::kHistExtraPowers, db::kExtraWorking, db::kExtraPersistent};

// Trims the persistent table and empties the working one, ready for the copy.
db::Status ready_for_copy(uint32_t db, const TwinHistory& history, int32_t now);

// Trims the working table, then the persistent one, once a day has passed since the epoch.
db::Status trim_both(uint32_t db, const TwinHistory& history, int32_t now);

}  // namespace pwrmgt::history
