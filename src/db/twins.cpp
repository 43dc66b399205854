// SPDX-License-Identifier: Apache-2.0
// Trims and copies that every 24-hour history shares.
#include "db/twins.h"

#include "db/session.h"

namespace pwrmgt::db {

Status ready_for_copy(uint32_t db, const TwinHistory& history, int32_t now) {
    if (day_has_passed(now)) {
        const Status trimmed = prune(db, history.trim_at_start, static_cast<uint32_t>(now));
        if (trimmed != Status::ok) return trimmed;
    }
    return truncate(db, history.tables.working) == 0 ? Status::ok : Status::statement_failed;
}

Status trim_both(uint32_t db, const TwinHistory& history, int32_t now) {
    if (!day_has_passed(now)) return Status::ok;
    const Status trimmed = prune(db, history.trim_working, static_cast<uint32_t>(now));
    if (trimmed != Status::ok) return trimmed;
    return prune(db, history.trim_persistent, static_cast<uint32_t>(now));
}

Status save_new_rows(uint32_t db, const TwinHistory& history, int32_t& last) {
    last = 0;
    {
        Result rows;
        const Statement newest_first("SELECT * FROM %s order by %s DESC", history.tables.persistent,
                                     history.newest_by);
        if (statement(db, newest_first, rows) != 0 || !rows) return Status::statement_failed;
        if (vek_db_result_step(rows.get()) == kRowReady) {
            vek_db_result_column_int(rows.get(), 0, &last);
        }
    }
    const int failed = copy_above(db, history.tables, history.newest_by, last);
    return failed == 0 ? Status::ok : Status::copy_failed;
}

}  // namespace pwrmgt::db
