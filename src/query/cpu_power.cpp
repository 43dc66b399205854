// SPDX-License-Identifier: Apache-2.0
// Reading out: rows of the processor history as they are, without grid, fold or gate.
#include "db/session.h"
#include "query/window.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;
using namespace pwrmgt::query;

namespace {

constexpr uint32_t kCpus = 8;
constexpr uint32_t kSlackSeconds = 90;

// Fills the entries row by row; those beyond the last row are zeroed.
template <class Entry, class ReadPower>
void copy_rows(uint32_t rows, Entry* entries, uint32_t count, ReadPower read_power) {
    bool ended = false;
    for (uint32_t at = 0; at < count; ++at) {
        Entry& entry = entries[at];
        entry = {};
        ended = ended || vek_db_result_step(rows) != kRowReady;
        if (ended) continue;
        entry.index = static_cast<uint16_t>(at);
        vek_db_result_column_uint(rows, 0, &entry.timestamp);
        read_power(entry);
    }
}

void copy_one(uint32_t rows, void* entries, uint32_t count, uint32_t cpu) {
    copy_rows(rows, static_cast<pwrmgt_hist_cpu_pwr_t*>(entries), count, [=](auto& entry) {
        vek_db_result_column_short_uint(rows, static_cast<int>(cpu), &entry.cpu_pwr);
    });
}

void copy_all_cpus(uint32_t rows, void* entries, uint32_t count) {
    copy_rows(rows, static_cast<pwrmgt_hist_entire_cpu_pwr_t*>(entries), count, [=](auto& entry) {
        int column = 1;
        for (uint16_t& watts : entry.cpu_pwr) {
            vek_db_result_column_short_uint(rows, column++, &watts);
        }
    });
}

}  // namespace

extern "C" uint32_t pwrmgt_get_cpu_power_per_index(uint32_t cpu, void* entries, uint32_t count) {
    if (entries == nullptr) return code(Status::null_argument);
    const bool one_cpu = cpu >= 1 && cpu <= kCpus;
    if (!one_cpu && cpu != PWRMGT_ALL_CPUS) return code(Status::out_of_range);
    if (count > PWRMGT_MAX_CPU_ROWS) return code(Status::out_of_range);

    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return code(Status::no_connection);
    const int32_t end = now();
    Window window;
    window.span(before(end, kSlackSeconds + kSlotSeconds * count), end);
    Result rows;
    const Status found =
        select(db.get(), {kHistCpuPowers, kEachCpuColumns, window.filter, window.order}, rows);
    if (found != Status::ok) return code(found);
    if (vek_db_result_row_count(rows.get()) < 1) return code(Status::no_rows);
    if (one_cpu) {
        copy_one(rows.get(), entries, count, cpu);
    } else {
        copy_all_cpus(rows.get(), entries, count);
    }
    return code(Status::ok);
}

extern "C" uint32_t pwrmgt_get_history_cpu_power(uint32_t cpu, void* entries, uint32_t count) {
    return pwrmgt_get_cpu_power_per_index(cpu, entries, count);
}

extern "C" uint32_t pwrmgt_get_history_entire_cpu_power(pwrmgt_hist_entire_cpu_pwr_t* entries,
                                                        uint32_t count) {
    return pwrmgt_get_cpu_power_per_index(PWRMGT_ALL_CPUS, entries, count);
}

extern "C" uint32_t pwrmgt_get_latest_cpu_power(uint32_t cpu, void* entries) {
    return pwrmgt_get_cpu_power_per_index(cpu, entries, 1);
}

extern "C" uint32_t pwrmgt_get_latest_entire_cpu_power(pwrmgt_hist_entire_cpu_pwr_t* entries) {
    return pwrmgt_get_cpu_power_per_index(PWRMGT_ALL_CPUS, entries, 1);
}
