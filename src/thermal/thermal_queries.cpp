// SPDX-License-Identifier: Apache-2.0
// Reading out: temperatures of a period, or of a span that the caller places, on a grid of indexes.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "db/session.h"
#include "thermal/sensors.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;
using namespace pwrmgt::thermal;

namespace {

constexpr uint32_t kMaxIndexes = 1440;
constexpr uint32_t kIndexesOfAnHour = 60;
constexpr int32_t kMaxMinutes = 1440;
constexpr int32_t kMaxMinutesPerIndex = 12;

// The grid of one query, and the rows it takes.
struct Grid {
    pwrmgt_therm_sample_t* samples;
    uint32_t count;
    int32_t step;
    uint32_t start;
    int32_t now;
    int32_t per_socket;
};

void clear(pwrmgt_therm_sample_t* samples, uint32_t count) {
    std::memset(samples, 0xFF, size_t{count} * sizeof *samples);
}

Statement text_of(const Grid& grid, const SensorKind& kind, int number) {
    const auto start = static_cast<int32_t>(grid.start);
    if (kind.asks == Asks::one_instance) {
        return Statement(
            "select * from %s where Type=%d and InstNum=%d and Timestamp>=%d and Timestamp<=%d "
            "order by Timestamp ASC",
            kHistThermal.working, kind.type, number, start, grid.now);
    }
    return Statement(
        "select * from %s where Type=%d and InstNum>=%d and InstNum<=%d and Timestamp>=%d and "
        "Timestamp<=%d order by Timestamp ASC",
        kHistThermal.working, kind.type, (number - 1) * grid.per_socket + 1,
        number * grid.per_socket, start, grid.now);
}

pwrmgt_therm_triple_t first_triple(const Grid& grid, const SensorKind& kind) {
    if (grid.count == 0) return {-1, -1, -1};
    return *slot_of(grid.samples[0], kind.type, 1, grid.per_socket);
}

// Kept: the ambient queries set the caller's count, the others only raise it.
// [AmbientSetsTheCountAndTheOthersRaiseIt]
void tell_count(const Grid& grid, const SensorKind& kind, uint32_t reached, uint32_t& count) {
    if (kind.type == kAmbient) {
        count = reached;
        const uint32_t first_tm = grid.count > 0 ? grid.samples[0].tm : UINT32_MAX;
        std::printf("--->sample_counts %d first tm %d\n", static_cast<int>(count),
                    static_cast<int>(first_tm));
        return;
    }
    count = std::max(count, reached);
    const pwrmgt_therm_triple_t first = first_triple(grid, kind);
    std::printf("index 0 %d %d %d\n", first.max, first.avg, first.min);
}

Status query_one(uint32_t db, const Grid& grid, const SensorKind& kind, int number,
                 uint32_t& count) {
    Result rows;
    if (statement(db, text_of(grid, kind, number), rows) != 0 || !rows) {
        return Status::query_failed;
    }
    const int found = vek_db_result_row_count(rows.get());
    std::printf("--->%s%d%s table_rows %d\n", kind.label_before, number, kind.label_after, found);
    if (found < 1) return Status::ok;
    uint32_t reached = grid.count;
    thermal_get_samples(rows.get(), grid.step, kind.type, &reached, grid.samples);
    tell_count(grid, kind, reached, count);
    return Status::ok;
}

Status query_all(uint32_t db, const Grid& grid, uint32_t& count) {
    for (const SensorKind& kind : kSensorKinds) {
        if (kind.announcement != nullptr) std::printf("%s\n", kind.announcement);
        for (int number = 1; number <= kind.queries; ++number) {
            const Status asked = query_one(db, grid, kind, number, count);
            if (asked != Status::ok) return asked;
        }
    }
    std::printf("returned sample count %d\n", static_cast<int>(count));
    return count != 0 ? Status::ok : Status::no_rows;
}

// Start of a span cut to a whole minute, wrapping in 32 bits.
constexpr uint32_t whole_minute(uint32_t time) {
    return time / 60 * 60;
}

}  // namespace

extern "C" uint32_t pwrmgt_get_therm_hist(uint32_t period, pwrmgt_therm_sample_t* samples,
                                          uint32_t* count) {
    if (samples == nullptr) return code(Status::null_argument);
    uint32_t unwanted = 0;
    uint32_t& told = count != nullptr ? *count : unwanted;
    if (told > kMaxIndexes) return code(Status::out_of_range);
    if (period == 0 && told > kIndexesOfAnHour) return code(Status::out_of_range);
    const uint32_t wanted =
        told != 0 ? told : static_cast<uint32_t>(thermal_get_default_total_count());
    std::printf("--->%s enter %d %d\n", "pwrmgt_get_therm_hist", static_cast<int>(period),
                static_cast<int>(wanted));
    clear(samples, wanted);

    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return code(Status::no_connection);
    const int32_t end = now();
    const uint32_t start =
        whole_minute(static_cast<uint32_t>(end) - thermal_get_secs_per_period(period));
    const int32_t step =
        thermal_get_secs_per_index(static_cast<int32_t>(period), static_cast<int32_t>(wanted));
    samples[0].tm = start + static_cast<uint32_t>(step);
    return code(
        query_all(db.get(), {samples, wanted, step, start, end, modules_per_socket()}, told));
}

extern "C" uint32_t pwrmgt_get_therm_hist_by_timestamp(uint32_t end, int32_t minutes,
                                                       int32_t minutes_per_index,
                                                       pwrmgt_therm_sample_t* samples,
                                                       uint32_t* count) {
    if (samples == nullptr) return code(Status::null_argument);
    if (minutes_per_index < 1 || minutes_per_index > kMaxMinutesPerIndex || minutes > kMaxMinutes) {
        return code(Status::bad_window);
    }
    uint32_t unwanted = 0;
    uint32_t& told = count != nullptr ? *count : unwanted;
    told = 0;
    const uint32_t wanted = minutes > 0 ? static_cast<uint32_t>(minutes / minutes_per_index) : 0;
    std::printf("--->%s enter %d %d\n", "pwrmgt_get_therm_hist_by_timestamp", minutes,
                minutes_per_index);
    clear(samples, wanted);

    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return code(Status::no_connection);
    // Kept: rows are taken up to the clock, not up to `end`. [RowsAreTakenUpToTheClock]
    const int32_t clock = now();
    const uint32_t start = whole_minute(end - 60U * static_cast<uint32_t>(minutes));
    const int32_t step = 60 * minutes_per_index;
    if (wanted > 0) samples[0].tm = start + static_cast<uint32_t>(step);
    return code(
        query_all(db.get(), {samples, wanted, step, start, clock, modules_per_socket()}, told));
}
