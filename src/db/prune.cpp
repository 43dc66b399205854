// SPDX-License-Identifier: Apache-2.0
// Runs the trims.
#include "db/prune.h"

#include "db/columns.h"
#include "db/session.h"
#include "db/text.h"

namespace pwrmgt::db {

namespace {

Statement trim_text(const Prune& rule, uint32_t now) {
    const auto oldest = static_cast<int32_t>(now - rule.keep_s);
    if (rule.upper == UpperBound::none) {
        return Statement("DELETE FROM %s where %s < %d", rule.table, kTimestamp, oldest);
    }
    const char* const late = rule.upper == UpperBound::from_now ? ">=" : ">";
    return Statement("DELETE FROM %s where %s < %d or %s %s %d", rule.table, kTimestamp, oldest,
                     kTimestamp, late, static_cast<int32_t>(now));
}

}  // namespace

Status prune(uint32_t db, const Prune& rule, uint32_t now) {
    return statement(db, trim_text(rule, now)) == 0 ? Status::ok : Status::statement_failed;
}

}  // namespace pwrmgt::db
