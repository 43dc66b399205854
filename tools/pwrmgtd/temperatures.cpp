// SPDX-License-Identifier: Apache-2.0
#include "temperatures.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "status_words.h"
#include "vekdb_client.h"

namespace pwrmgt::pwrmgtd {
namespace {

constexpr const char* kLatest = "RealTimeThermalMem";

constexpr std::uint8_t kAmbient = 1;
constexpr std::uint8_t kProcessor = 2;
constexpr std::uint8_t kExhaust = 4;

// The library's record with room for every sensor that a reading has.
struct Record {
    std::uint32_t timestamp;
    std::uint16_t count;
    thermal_hist_entry_t entries[2 + kCpus];
};
static_assert(offsetof(Record, entries) == offsetof(thermal_hist_update_t, entries));

bool equal(const thermal_hist_entry_t& a, const thermal_hist_entry_t& b) {
    return a.type == b.type && a.instance == b.instance && a.value == b.value;
}

bool statement(std::uint32_t connection, std::string_view sql) {
    return vek_db_raw_query(connection, sql.data(), static_cast<std::uint32_t>(sql.size()),
                            nullptr) == 0;
}

}  // namespace

void Temperatures::resume(std::uint32_t connection, std::int64_t newest_s) {
    connection_ = connection;
    newest_s_ = newest_s;
    shown_.clear();
}

Temperatures::Entries Temperatures::entries_of(const Reading& reading) {
    Entries entries;
    const auto add = [&](std::uint8_t type, std::uint8_t instance, const Celsius& value) {
        if (value) entries.push_back({type, instance, *value});
    };
    add(kAmbient, 1, reading.ambient_c);
    add(kExhaust, 1, reading.exhaust_c);
    std::uint8_t instance = 0;
    for (const Celsius& value : reading.each_cpu_c) {
        add(kProcessor, ++instance, value);
    }
    return entries;
}

void Temperatures::take(const Reading& reading, std::int64_t now_s) {
    const Entries entries = entries_of(reading);
    const std::int64_t minute_s = now_s / kMinute_s * kMinute_s;
    const bool new_minute = minute_s > newest_s_;
    const bool changed =
        !std::equal(entries.begin(), entries.end(), shown_.begin(), shown_.end(), equal);
    if ((new_minute || changed) && show(entries, now_s)) shown_ = entries;
    if (new_minute) write_record(entries, minute_s);
}

bool Temperatures::record(const Reading& reading, std::int64_t minute_s) {
    return write_record(entries_of(reading), minute_s);
}

bool Temperatures::write_record(const Entries& entries, std::int64_t minute_s) {
    newest_s_ = minute_s;
    if (entries.empty()) return true;
    Record record{};
    record.timestamp = static_cast<std::uint32_t>(minute_s);
    record.count = static_cast<std::uint16_t>(entries.size());
    std::copy(entries.begin(), entries.end(), record.entries);
    return note_status(log_, "thermal_update_thermal_hist_table",
                       thermal_update_thermal_hist_table(
                           connection_, reinterpret_cast<const thermal_hist_update_t*>(&record)));
}

// No exported function writes this table. A sensor that is silent has no row.
bool Temperatures::show(const Entries& entries, std::int64_t now_s) {
    const bool together = statement(connection_, "BEGIN");
    bool done = vek_db_delete(connection_, kLatest, nullptr) == 0 && insert_latest(entries, now_s);
    if (together && !statement(connection_, done ? "COMMIT" : "ROLLBACK")) done = false;
    log_.state("latest temperatures", done ? "" : "the database refused");
    return done;
}

bool Temperatures::insert_latest(const Entries& entries, std::int64_t now_s) {
    const std::uint32_t row = vek_db_get_content_values();
    if (row == 0) return false;
    bool done = true;
    for (const thermal_hist_entry_t& entry : entries) {
        vek_db_content_clear(row);
        vek_db_content_put_int(row, "Timestamp", static_cast<std::int32_t>(now_s));
        vek_db_content_put_short_int(row, "Type", entry.type);
        vek_db_content_put_short_int(row, "InstNum", entry.instance);
        vek_db_content_put_short_int(row, "Value", entry.value);
        done &= vek_db_insert(connection_, kLatest, row, 0, 0) == 0;
    }
    vek_db_free_content_values(row);
    return done;
}

}  // namespace pwrmgt::pwrmgtd
