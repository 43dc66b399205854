// SPDX-License-Identifier: Apache-2.0
// The range in which a power cap may lie, from the policy row and the available power.
#include "db/limits.h"
#include "db/session.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;

namespace {

constexpr int kFirstAc = 0;
constexpr int kFirstDc = 3;
constexpr int kAdapter = 6;
constexpr int kHdd = 7;

struct Range {
    uint16_t* soft;
    uint16_t* max;
    uint16_t* min;
};

Status read_range(uint32_t db, int32_t domain, const Range& range) {
    Result rows;
    const Status found = select(db, {.table = kPowerPolicy, .columns = kCappingRangeColumns}, rows);
    if (found != Status::ok) return found;
    if (vek_db_result_row_count(rows.get()) < 1) return Status::no_rows;

    *range.soft = *range.max = *range.min = kNoPower;
    Unstress extra;
    const int first = domain == 0 ? kFirstAc : kFirstDc;
    vek_db_result_step(rows.get());
    vek_db_result_column_short_uint(rows.get(), first, range.soft);
    vek_db_result_column_short_uint(rows.get(), first + 1, range.min);
    vek_db_result_column_short_uint(rows.get(), first + 2, range.max);
    vek_db_result_column_short_uint(rows.get(), kAdapter, &extra.adapter_w);
    vek_db_result_column_short_uint(rows.get(), kHdd, &extra.hdd_w);
    if (extra.counts()) {
        widen_if_set(*range.max, extra);
        widen_if_set(*range.min, extra);
    }
    return Status::ok;
}

}  // namespace

extern "C" uint32_t pwrmgt_get_power_capping_ranges(int32_t domain, uint16_t* soft, uint16_t* max,
                                                    uint16_t* min) {
    if (soft == nullptr || max == nullptr || min == nullptr) return code(Status::null_argument);
    if (pwrmgt_unsupport_check("") != 0) return code(Status::unsupported);
    // Kept: opens the database itself, not through pwrmgt_get_db_handle. [OpensTheDatabaseItself]
    const Connection db{open_database()};
    if (!db) return code(Status::no_connection);
    const Status found = read_range(db.get(), domain, {soft, max, min});
    if (found != Status::ok) return code(found);

    // Kept: the soft limit that was read is not handed back. [SoftIsAlwaysZero]
    *soft = 0;
    uint32_t available_w = 0;
    // Kept: the available power is cut to 16 bits. [MaximumIsCutTo16Bits]
    if (pwrmgt_get_sys_avail_power(&available_w) == 0) *max = static_cast<uint16_t>(available_w);
    return code(Status::ok);
}
