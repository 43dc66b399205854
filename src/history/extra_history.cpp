// SPDX-License-Identifier: Apache-2.0
// Reading in: the 24-hour history of supplies 5 to 12 and its persistent twin.
#include <cstdint>

#include "db/session.h"
#include "db/twins.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;

namespace {

constexpr uint32_t kFirstExtraPsu = 5;

}  // namespace

extern "C" uint32_t pwrmgt_init_hist_extra_table(uint32_t db, int32_t now) {
    if (db == 0) return code(Status::null_argument);
    const Status ready = ready_for_copy(db, kExtraHistory, now);
    if (ready != Status::ok) return code(ready);

    // Kept: the copy's own result goes back; the main history maps it to 4.
    // [CopyResultIsReturnedUnmapped]
    return static_cast<uint32_t>(
        copy_all(db, kExtraHistory.tables.working, kExtraHistory.tables.persistent));
}

extern "C" uint32_t pwrmgt_update_hist_extra_table(uint32_t db, uint16_t id, int32_t timestamp,
                                                   pwrmgt_hist_extra_sample_t sample) {
    if (db == 0 || timestamp <= 0) return code(Status::bad_time);
    const Content row{vek_db_get_content_values()};
    if (!row) return code(Status::no_content);
    vek_db_content_clear(row.get());
    uint32_t psu = kFirstExtraPsu;
    for (const pwrmgt_hist_psu_sample_t& supply : sample.psu) {
        const Columns columns = psu_columns(psu++).values();
        vek_db_content_put_short_uint(row.get(), columns[0], supply.avg_ac);
        vek_db_content_put_short_uint(row.get(), columns[1], supply.avg_dc);
    }
    vek_db_content_put_short_uint(row.get(), kId, id);
    vek_db_content_put_uint(row.get(), kTimestamp, static_cast<uint32_t>(timestamp));
    return static_cast<uint32_t>(vek_db_insert(db, kExtraHistory.tables.working, row.get(), 0, 0));
}

extern "C" uint32_t pwrmgt_cleanup_extra_hist_mem_table(uint32_t db, int32_t now) {
    if (db == 0) return code(Status::null_argument);
    return code(trim_both(db, kExtraHistory, now));
}

extern "C" uint32_t pwrmgt_save_extra_hist_mem_table(uint32_t db, int32_t last_saved) {
    // Kept: the last saved slot is the caller's, never looked up here. [LastSavedSlotIsTheCallers]
    const int failed = copy_above(db, kExtraHistory.tables, kId, last_saved);
    return code(failed == 0 ? Status::ok : Status::copy_failed);
}
