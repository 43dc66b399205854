// SPDX-License-Identifier: Apache-2.0
// Reading in: temperatures become rows; the thermal history from start to save.
#include "db/session.h"
#include "db/twins.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;

namespace {

// The entries lie one behind the other from the record's own first one on.
void insert_reading(uint32_t db, uint32_t row, uint32_t timestamp,
                    const thermal_hist_entry_t& reading) {
    vek_db_content_clear(row);
    vek_db_content_put_int(row, kTimestamp, static_cast<int32_t>(timestamp));
    vek_db_content_put_short_int(row, "Type", reading.type);
    vek_db_content_put_short_int(row, "InstNum", reading.instance);
    vek_db_content_put_short_int(row, "Value", reading.value);
    // Kept: a failed insert neither stops the loop nor changes the status.
    // [FailedInsertStopsNothing]
    vek_db_insert(db, kHistThermal.working, row, 0, 0);
}

}  // namespace

extern "C" uint32_t thermal_init_thermal_hist_table(uint32_t db) {
    const Status ready = ready_for_copy(db, kThermalHistory, now());
    if (ready != Status::ok) return code(ready);
    if (copy_all(db, kHistThermal.working, kHistThermal.persistent) != 0) {
        return code(Status::copy_failed);
    }
    const int failed = truncate(db, kRealTimeThermal);
    return code(failed == 0 ? Status::ok : Status::statement_failed);
}

extern "C" uint32_t thermal_update_thermal_hist_table(uint32_t db,
                                                      const thermal_hist_update_t* record) {
    if (record == nullptr || record->count == 0 || record->timestamp == 0) {
        return code(Status::bad_record);
    }
    const Content row{vek_db_get_content_values()};
    if (!row) return code(Status::no_content);
    const thermal_hist_entry_t* reading = record->entries;
    for (uint16_t left = record->count; left > 0; --left) {
        insert_reading(db, row.get(), record->timestamp, *reading++);
    }
    return code(Status::ok);
}

extern "C" uint32_t thermal_save_hist_mem_table(uint32_t db) {
    int32_t last = 0;
    return code(save_new_rows(db, kThermalHistory, last));
}

extern "C" uint32_t thermal_cleanup_hist_mem_table(uint32_t db) {
    return code(trim_both(db, kThermalHistory, now()));
}
