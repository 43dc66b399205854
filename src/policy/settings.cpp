// SPDX-License-Identifier: Apache-2.0
// Settings: single columns of the policy row.
#include "db/session.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;

namespace {

// Selects one column of the policy and goes to its first row.
Status select_setting(uint32_t db, const Columns& column, Result& rows) {
    const Status found = select(db, {.table = kPowerPolicy, .columns = column}, rows);
    if (found != Status::ok) return found;
    if (vek_db_result_row_count(rows.get()) < 1) return Status::no_rows;
    vek_db_result_step(rows.get());
    return Status::ok;
}

// Every row: there is one.
Status update_setting(uint32_t db, const Content& row) {
    const int failed = vek_db_update(db, kPowerPolicy, row.get(), nullptr, 0, 0);
    return failed == 0 ? Status::ok : Status::update_failed;
}

Status get_unstress(const Columns& column, uint16_t* watts) {
    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return Status::no_connection;
    Result rows;
    const Status found = select_setting(db.get(), column, rows);
    if (found != Status::ok) return found;
    uint16_t unwanted = 0;
    vek_db_result_column_short_uint(rows.get(), 0, watts != nullptr ? watts : &unwanted);
    return Status::ok;
}

using Getter = uint32_t (*)(uint16_t*);

uint32_t set_unstress(const Columns& column, uint16_t watts, Getter get_stored) {
    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return code(Status::no_connection);
    uint16_t stored = 0;
    if (const uint32_t failed = get_stored(&stored); failed != 0) return failed;
    // Kept: the content is made before the values are compared; the maximizer setter compares
    // first. [UnstressContentIsMadeBeforeTheComparison]
    const Content row{vek_db_get_content_values()};
    if (!row) return code(Status::no_content);
    if (stored == watts) return code(Status::ok);
    vek_db_content_put_short_uint(row.get(), column[0], watts);
    return code(update_setting(db.get(), row));
}

}  // namespace

extern "C" uint32_t pwrmgt_get_power_maximzer_status(uint8_t* status) {
    if (status == nullptr) return code(Status::null_argument);
    if (pwrmgt_unsupport_check("") != 0) return code(Status::unsupported);
    pwrmgt_power_policy_t policy{};
    if (const uint32_t failed = pwrmgt_get_pwrpolicy_tbl(&policy); failed != 0) return failed;
    *status = policy.maxim_status;
    return code(Status::ok);
}

extern "C" uint32_t pwrmgt_set_maximzer_status(uint8_t status) {
    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return code(Status::no_connection);
    uint8_t stored = 0;
    {
        Result rows;
        const Status found = select_setting(db.get(), kMaximStatusColumn, rows);
        if (found != Status::ok) return code(found);
        vek_db_result_column_uchar(rows.get(), 0, &stored);
    }
    if (stored == status) return code(Status::ok);
    const Content row{vek_db_get_content_values()};
    if (!row) return code(Status::no_content);
    // Kept: the signed put, where the row was made with the unsigned one.
    // [MaximizerStatusIsPutSigned]
    vek_db_content_put_char(row.get(), kMaximStatusColumn[0], static_cast<int8_t>(status));
    return code(update_setting(db.get(), row));
}

extern "C" uint32_t pwrmgt_get_unstress_adapter_power(uint16_t* watts) {
    return code(get_unstress(kUnstressAdapterColumn, watts));
}

extern "C" uint32_t pwrmgt_get_unstress_hdd_power(uint16_t* watts) {
    return code(get_unstress(kUnstressHddColumn, watts));
}

extern "C" uint32_t pwrmgt_set_unstress_adapter_power(uint16_t watts) {
    return set_unstress(kUnstressAdapterColumn, watts, pwrmgt_get_unstress_adapter_power);
}

extern "C" uint32_t pwrmgt_set_unstress_hdd_power(uint16_t watts) {
    return set_unstress(kUnstressHddColumn, watts, pwrmgt_get_unstress_hdd_power);
}
