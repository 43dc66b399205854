// SPDX-License-Identifier: Apache-2.0
// Reading in: the short, memory-only history of each processor's power.
#include <cstdint>

#include "db/prune.h"
#include "db/session.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;

extern "C" uint32_t pwrmgt_update_cpu_pwr_hist_table(uint32_t db, pwrmgt_cpu_pwr_sample_t sample) {
    // Kept: a timestamp of 0 is not refused, unlike in the 24-hour tables.
    // [TimestampZeroIsInserted]
    if (db == 0) return code(Status::null_argument);
    const Content row{vek_db_get_content_values()};
    if (!row) return code(Status::no_content);
    vek_db_content_clear(row.get());
    vek_db_content_put_uint(row.get(), kTimestamp, 0);
    const uint16_t* watts = sample.cpu_w;
    for (const char* column : kEachCpuColumns.values()) {
        vek_db_content_put_short_uint(row.get(), column, *watts++);
    }
    vek_db_content_put_short_uint(row.get(), kId, sample.id);
    vek_db_content_put_uint(row.get(), kTimestamp, sample.timestamp);
    return static_cast<uint32_t>(vek_db_insert(db, kHistCpuPowers, row.get(), 0, 0));
}

extern "C" uint32_t pwrmgt_cleanup_cpu_pwr_hist_table(uint32_t db, uint32_t now) {
    if (db == 0) return code(Status::null_argument);
    if (now <= kCpuWorking.keep_s) return code(Status::ok);
    return code(prune(db, kCpuWorking, now));
}
