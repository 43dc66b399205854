// SPDX-License-Identifier: Apache-2.0
// Runs the trims.
#include "db/prune.h"

#include "db/columns.h"
#include "db/session.h"
#include "db/text.h"

namespace pwrmgt::db {

Status prune(uint32_t db, const Prune& rule, uint32_t now) {
    const char* const upper = rule.upper == UpperBound::from_now ? ">=" : ">";
    const Statement text("DELETE FROM %s where %s < %d or %s %s %d", rule.table, kTimestamp,
                         static_cast<int32_t>(now - rule.keep_s), kTimestamp, upper,
                         static_cast<int32_t>(now));
    return statement(db, text) == 0 ? Status::ok : Status::statement_failed;
}

}  // namespace pwrmgt::db
