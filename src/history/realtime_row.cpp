// SPDX-License-Identifier: Apache-2.0
// Reading in: the latest reading becomes the one row of the real-time table.
#include <array>
#include <utility>

#include "db/session.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;

namespace {

void put_reading(uint32_t row, const pwrmgt_realtime_pwr_t& reading, uint32_t timestamp) {
    // Kept: percentages are bytes, yet put with the 16-bit put. [PercentagesArePutIn16Bits]
    const std::array<std::pair<const char*, uint16_t>, 8> values{{
        {"SysPwrAc", reading.sys_ac_w},
        {"SysPwrDc", reading.sys_dc_w},
        {"CpuPwrDc", reading.cpu_dc_w},
        {"MemPwrDc", reading.mem_dc_w},
        {"SysPctg", reading.sys_pct},
        {"CpuPctg", reading.cpu_pct},
        {"MemPctg", reading.mem_pct},
        {"IOPctg", reading.io_pct},
    }};
    vek_db_content_put_short_uint(row, kId, 0);
    vek_db_content_put_uint(row, kTimestamp, timestamp);
    for (const auto& [column, value] : values) {
        vek_db_content_put_short_uint(row, column, value);
    }
}

}  // namespace

extern "C" uint32_t pwrmgt_update_realtime_table(uint32_t db, pwrmgt_realtime_pwr_t reading,
                                                 uint32_t timestamp) {
    const RowFilter only_row("%s=%d", kId, 0);
    Content row;
    Result rows;
    const Status found = select(db, {.table = kRealTimePowers, .where = only_row.c_str()}, rows);
    if (found != Status::ok) return code(found);
    vek_db_result_step(rows.get());
    const int count = vek_db_result_row_count(rows.get());
    if (count > 1) return code(Status::many_rows);

    // Kept: a failed content is not tested for here, unlike by the history writer.
    // [MissingContentIsUsedAllTheSame]
    row.own(vek_db_get_content_values());
    put_reading(row.get(), reading, timestamp);
    if (count < 1) {
        const int failed = vek_db_insert(db, kRealTimePowers, row.get(), 0, 0);
        return code(failed == 0 ? Status::ok : Status::insert_failed);
    }
    const int failed = vek_db_update(db, kRealTimePowers, row.get(), only_row.c_str(), 0, 0);
    return code(failed == 0 ? Status::ok : Status::update_failed);
}
