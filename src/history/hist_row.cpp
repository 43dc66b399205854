// SPDX-License-Identifier: Apache-2.0
// Reading in: one slot's sample becomes a row of the working 24-hour power history.
#include <array>
#include <cstddef>
#include <cstdint>

#include "db/session.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;

namespace {

constexpr size_t kPowerColumns = 20;
constexpr size_t kPercentCount = 6;

// The value columns of a row in their order; the numbers come from a sample or are the markers.
struct RowValues {
    std::array<uint16_t, kPowerColumns> watts;
    std::array<uint8_t, kPercentCount> percents;
};

constexpr std::array<Columns, 7> kPowerLists{
    kSystemColumns, kCpuColumns,    kMemoryColumns, psu_columns(1),
    psu_columns(2), psu_columns(3), psu_columns(4),
};

RowValues empty_values() {
    RowValues values;
    values.watts.fill(kNoPower);
    values.percents.fill(kNoPercent);
    return values;
}

RowValues values_of(const pwrmgt_hist_sample_t& sample) {
    const auto& [system, cpu, memory, psu, perf] = sample;
    // clang-format off
    return {{system.avg, system.max, system.min, system.avg2, system.max2, system.min2,
             cpu.avg, cpu.max, cpu.min, memory.avg, memory.max, memory.min,
             psu[0].avg_ac, psu[0].avg_dc, psu[1].avg_ac, psu[1].avg_dc,
             psu[2].avg_ac, psu[2].avg_dc, psu[3].avg_ac, psu[3].avg_dc},
            {perf.sys_avg, perf.sys_max, perf.sys_min, perf.cpu_avg, perf.mem_avg, perf.io_avg}};
    // clang-format on
}

int put_values(uint32_t row, const RowValues& values) {
    // Kept: a placeholder stamp goes first; the writer puts the real one last.
    // [TimestampIsPutTwiceFirstZeroThenReal]
    int failed = vek_db_content_put_uint(row, kTimestamp, 0);
    size_t at = 0;
    for (const Columns& list : kPowerLists) {
        for (const char* column : list.values()) {
            failed = vek_db_content_put_short_uint(row, column, values.watts[at++]);
        }
    }
    at = 0;
    for (const char* column : kPercentColumns.values()) {
        failed = vek_db_content_put_uchar(row, column, values.percents[at++]);
    }
    return failed;
}

}  // namespace

extern "C" uint32_t pwrmgt_prep_empty_hist_sample(uint32_t content) {
    return static_cast<uint32_t>(put_values(content, empty_values()));
}

extern "C" uint32_t pwrmgt_prep_valid_hist_sample(uint32_t content, pwrmgt_hist_sample_t sample) {
    return static_cast<uint32_t>(put_values(content, values_of(sample)));
}

extern "C" uint32_t pwrmgt_update_hist_table(uint32_t db, uint16_t id, int32_t timestamp,
                                             pwrmgt_hist_sample_t sample) {
    if (db == 0 || timestamp <= 0) return code(Status::bad_time);
    const Content row{vek_db_get_content_values()};
    if (!row) return code(Status::no_content);
    vek_db_content_clear(row.get());
    pwrmgt_prep_valid_hist_sample(row.get(), sample);
    vek_db_content_put_short_uint(row.get(), kId, id);
    vek_db_content_put_uint(row.get(), kTimestamp, static_cast<uint32_t>(timestamp));

    // Kept: the insert's own result goes back, not a status. [InsertResultIsReturnedUnmapped]
    return static_cast<uint32_t>(vek_db_insert(db, kHistPowers.working, row.get(), 0, 0));
}
