// SPDX-License-Identifier: Apache-2.0
// Settings: a whole policy record goes into the one policy row.
#include "db/session.h"
#include "policy/policy_row.h"

using namespace pwrmgt::db;
using namespace pwrmgt::policy;

extern "C" uint32_t pwrmgt_update_power_policy_table(pwrmgt_power_policy_t policy) {
    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return code(Status::no_connection);
    const RowFilter only_row("%s=%d", kId, 0);
    Content row;
    Result rows;
    const Status found = select(db.get(), {.table = kPowerPolicy, .where = only_row.c_str()}, rows);
    if (found != Status::ok) return code(found);
    if (vek_db_result_row_count(rows.get()) > 1) return code(Status::many_rows);

    row.own(vek_db_get_content_values());
    if (!row) return code(Status::no_content);
    put_policy(row.get(), policy);
    if (vek_db_update(db.get(), kPowerPolicy, row.get(), only_row.c_str(), 0, 0) != 0) {
        return code(Status::update_failed);
    }
    // Kept: the flag follows the record, also when the table was empty.
    // [FlagIsSetEvenOnAnEmptyTable]
    cache_is_blade(policy.is_blade);
    return code(Status::ok);
}
