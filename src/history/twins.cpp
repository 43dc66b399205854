// SPDX-License-Identifier: Apache-2.0
// Trims that the main and the extra power history share.
#include "history/twins.h"

#include "db/session.h"

namespace pwrmgt::history {

using db::Status;

Status ready_for_copy(uint32_t db, const TwinHistory& history, int32_t now) {
    if (db::day_has_passed(now)) {
        const Status trimmed = db::prune(db, history.trim_persistent, static_cast<uint32_t>(now));
        if (trimmed != Status::ok) return trimmed;
    }
    return db::truncate(db, history.tables.working) == 0 ? Status::ok : Status::statement_failed;
}

Status trim_both(uint32_t db, const TwinHistory& history, int32_t now) {
    if (!db::day_has_passed(now)) return Status::ok;
    const Status trimmed = db::prune(db, history.trim_working, static_cast<uint32_t>(now));
    if (trimmed != Status::ok) return trimmed;
    return db::prune(db, history.trim_persistent, static_cast<uint32_t>(now));
}

}  // namespace pwrmgt::history
