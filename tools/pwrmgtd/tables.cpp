// SPDX-License-Identifier: Apache-2.0
#include "tables.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>

#include "state_dir.h"
#include "status_words.h"
#include "vekdb_client.h"

namespace pwrmgt::pwrmgtd {
namespace {

constexpr int kRowReady = 9;
constexpr std::int64_t kCpuHistory_s = 600;
constexpr const char* kSaving = "saving slots";

// A result of the database client, handed back in the end.
class Rows {
public:
    Rows() = default;
    ~Rows() {
        if (handle_ != 0) vek_db_free_result(handle_);
    }
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;

    // The stamps in `table`; false when there is no result.
    bool select_stamps(std::uint32_t connection, const char* table, const char* where, int limit,
                       const char* order) {
        static constexpr std::array kColumns{"Timestamp"};
        return vek_db_query(connection, table, kColumns.data(), 1, where, limit, 0, order,
                            &handle_) == 0 &&
               handle_ != 0;
    }

    int count() const { return vek_db_result_row_count(handle_); }

    std::optional<std::int64_t> next_stamp() {
        std::uint32_t stamp_s = 0;
        if (vek_db_result_step(handle_) != kRowReady) return std::nullopt;
        if (vek_db_result_column_uint(handle_, 0, &stamp_s) != 0) return std::nullopt;
        return stamp_s;
    }

private:
    std::uint32_t handle_ = 0;
};

// A table may refuse a row for itself; any other trouble is one of the whole database, and passes.
bool fails(const std::optional<std::uint32_t>& status) {
    constexpr std::uint32_t kRefused = 2;
    return status && *status != 0 && *status != kRefused;
}

std::string within(std::int64_t first_s, std::int64_t last_s) {
    return "Timestamp>=" + std::to_string(first_s) + " AND Timestamp<=" + std::to_string(last_s);
}

}  // namespace

DatabaseTables::DatabaseTables(Log& log) : log_(log), temperatures_(log), bays_(log) {}

DatabaseTables::~DatabaseTables() {
    if (connection_ != 0) vek_db_close(connection_);
}

bool DatabaseTables::open() {
    if (connection_ == 0) connection_ = pwrmgt_get_db_handle();
    if (const vekdb::Directories in = vekdb::choose_directories(); vekdb::choose_server().empty())
        files_.note(in.persistent_path(), in.memory_path());
    temperatures_.resume(connection_, 0);
    return note_status(log_, "pwrmgt_get_db_handle", connection_ == 0 ? 1 : 0);
}

bool DatabaseTables::show(const Reading& reading, std::int64_t now_s) {
    pwrmgt_realtime_pwr_t row{};
    row.sys_ac_w = stored(reading.sys_ac_w);
    row.sys_dc_w = stored(reading.sys_dc_w);
    row.cpu_dc_w = stored(reading.cpu_w);
    row.mem_dc_w = stored(reading.mem_w);
    row.sys_pct = stored(reading.sys_pct);
    row.cpu_pct = stored(reading.cpu_pct);
    row.mem_pct = stored(reading.mem_pct);
    row.io_pct = stored(reading.io_pct);
    bays_.take(reading);
    if (is_recordable(now_s)) temperatures_.take(reading, now_s);
    return note_status(
        log_, "pwrmgt_update_realtime_table",
        pwrmgt_update_realtime_table(connection_, row, static_cast<std::uint32_t>(now_s)));
}

std::uint32_t DatabaseTables::append_cpus(const Row& row) {
    pwrmgt_cpu_pwr_sample_t sample{};
    sample.id = slot_number(row.stamp_s);
    sample.timestamp = static_cast<std::uint32_t>(row.stamp_s);
    std::copy(row.each_cpu_w.begin(), row.each_cpu_w.end(), sample.cpu_w);
    return pwrmgt_update_cpu_pwr_hist_table(connection_, sample);
}

// Up to the first row that the main history refuses, or that fails for the others.
DatabaseTables::Appended DatabaseTables::append_each(std::span<const Row> rows) {
    Appended done;
    for (const Row& row : rows) {
        const auto stamp_s = static_cast<std::int32_t>(row.stamp_s);
        const std::uint16_t slot = slot_number(row.stamp_s);
        done.main = pwrmgt_update_hist_table(connection_, slot, stamp_s, row.sample);
        if (done.main != 0) break;
        done.extra = pwrmgt_update_hist_extra_table(connection_, slot, stamp_s, row.extra);
        if (row.stamp_s > rows.back().stamp_s - kCpuHistory_s) done.cpus = append_cpus(row);
        if (fails(done.extra) || fails(done.cpus)) break;
        ++done.rows;
    }
    return done;
}

// What was not kept may have found the database at work, which is no end of its troubles.
void DatabaseTables::note_appended(const Appended& done, bool kept) {
    const auto note = [&](const char* function, const std::optional<std::uint32_t>& status) {
        if (status && (kept || *status != 0)) note_status(log_, function, *status);
    };
    note("pwrmgt_update_hist_table", done.main);
    note("pwrmgt_update_hist_extra_table", done.extra);
    note("pwrmgt_update_cpu_pwr_hist_table", done.cpus);
}

std::size_t DatabaseTables::append(std::span<const Row> rows) {
    const bool begun = statement("BEGIN") == 0;
    const Appended done = append_each(rows);
    if (!begun) {
        note_appended(done, true);
        return done.rows;
    }
    const bool whole = !fails(done.extra) && !fails(done.cpus);
    const std::uint32_t ended = statement(whole ? "COMMIT" : "ROLLBACK");
    if (ended != 0) statement("ROLLBACK");
    const bool kept = whole && ended == 0;
    note_appended(done, kept);
    if (kept || (whole && done.main == 0U)) note_status(log_, "storing slots", ended);
    return kept ? done.rows : 0;
}

// One transaction: all of the work or none, and one write to the flash instead of one per
// statement. When work has failed before, how its transaction ends says nothing more.
template <class Work>
bool DatabaseTables::together(const char* what, Work work) {
    const bool begun = statement("BEGIN") == 0;
    const bool done = work();
    if (!begun) return done;
    const std::uint32_t ended = statement("COMMIT");
    if (ended != 0) statement("ROLLBACK");
    if (done || ended == 0) note_status(log_, what, ended);
    return done && ended == 0;
}

// The library's own trims take the persistent tables along, and these are worth a write with the
// next save only.
bool DatabaseTables::trim_working(std::int64_t now_s) {
    constexpr const char* kWhat = "trimming the working tables";
    const std::string old = "Timestamp<" + std::to_string(now_s - kDay_s);
    const std::string now = std::to_string(now_s);
    const bool trimmed = together(kWhat, [&] {
        bool done = trim_cpus(now_s);
        for (const char* table : {kWorkingHistory, kWorkingExtra}) {
            const std::string outside = old + " OR Timestamp>=" + now;
            done &= vek_db_delete(connection_, table, outside.c_str()) == 0;
        }
        const std::string outside = old + " OR Timestamp>" + now;
        done &= vek_db_delete(connection_, kWorkingThermal, outside.c_str()) == 0;
        if (!done) log_.state(kWhat, "the database refused");
        return done;
    });
    follow_trimmed_temperatures(now_s);
    return trimmed;
}

bool DatabaseTables::trim(std::int64_t now_s) {
    const bool trimmed = together("trimming the tables", [&] {
        const bool power = trim_power(now_s);
        trim_temperatures();
        return power;
    });
    follow_trimmed_temperatures(now_s);
    return trimmed;
}

bool DatabaseTables::trim_cpus(std::int64_t now_s) {
    return note_status(
        log_, "pwrmgt_cleanup_cpu_pwr_hist_table",
        pwrmgt_cleanup_cpu_pwr_hist_table(connection_, static_cast<std::uint32_t>(now_s)));
}

bool DatabaseTables::trim_power(std::int64_t now_s) {
    const auto now = static_cast<std::int32_t>(now_s);
    const bool extra = note_status(log_, "pwrmgt_cleanup_extra_hist_mem_table",
                                   pwrmgt_cleanup_extra_hist_mem_table(connection_, now));
    const bool cpus = trim_cpus(now_s);
    return note_status(log_, "pwrmgt_cleanup_hist_mem_table",
                       pwrmgt_cleanup_hist_mem_table(connection_, now)) &&
           extra && cpus;
}

// Slot by slot, as the library saves the main history: its own save of this table copies every row
// above a slot number, on a wrapped ring yesterday's with it, and a stamp that stands twice hides
// all older rows.
bool DatabaseTables::save_extra(std::int64_t first_s, std::int64_t last_s) {
    bool saved = true;
    for (std::int64_t stamp_s = first_s; stamp_s <= last_s; stamp_s += kSlot_s) {
        const std::string this_slot = " where _id=" + std::to_string(slot_number(stamp_s));
        saved &= 0 == statement(std::string("delete from ") + kPersistentExtra + this_slot);
        saved &= 0 == statement(std::string("insert into ") + kPersistentExtra + " select * from " +
                                kWorkingExtra + this_slot);
    }
    return note_status(log_, "saving supplies 5 to 12", saved ? 0 : 4);
}

// The statuses tell of the last slot only.
bool DatabaseTables::is_saved(const char* what, const char* working, const char* persistent,
                              const std::string& range) {
    const int wanted = count(working, range);
    const int there = count(persistent, range);
    const bool readable = wanted >= 0 && there >= 0;
    return note_status(log_, what, !readable ? 3 : there >= wanted ? 0 : 1);
}

bool DatabaseTables::copy_slots(std::int64_t first_s, std::int64_t last_s) {
    const std::int64_t slots = (last_s - first_s) / kSlot_s + 1;
    const std::uint32_t status = pwrmgt_update_hist_persist_db(connection_, slot_number(first_s),
                                                               static_cast<std::uint32_t>(slots));
    const bool main = note_status(log_, "pwrmgt_update_hist_persist_db", status);
    const bool extra = save_extra(first_s, last_s);
    return save_temperatures() && main && extra;
}

bool DatabaseTables::is_safe(std::int64_t first_s, std::int64_t last_s) {
    const std::string displaced = files_.displaced_persistent();
    log_.state("persistent tables", displaced);
    if (!displaced.empty()) return false;
    const std::string range = within(first_s, last_s);
    const bool main = is_saved("saved rows", kWorkingHistory, kPersistentHistory, range);
    const bool extra = is_saved("saved extra rows", kWorkingExtra, kPersistentExtra, range);
    return main && extra && flush_saved();
}

bool DatabaseTables::save(std::int64_t first_s, std::int64_t last_s) {
    const bool saved = together(kSaving, [&] { return copy_slots(first_s, last_s); });
    return is_safe(first_s, last_s) && saved;
}

bool DatabaseTables::trim_and_save(std::int64_t first_s, std::int64_t last_s, std::int64_t now_s) {
    const bool saved = together(kSaving, [&] {
        const bool power = trim_power(now_s);
        const bool temperatures = trim_temperatures();
        return copy_slots(first_s, last_s) && power && temperatures;
    });
    follow_trimmed_temperatures(now_s);
    return is_safe(first_s, last_s) && saved;
}

// The database answers before a save has reached the disk: what it appended to its log could still
// be lost with the power. A server has no such file here.
bool DatabaseTables::flush_saved() {
    const std::string log_file = vekdb::choose_directories().persistent_path() + "-wal";
    const int file = ::open(log_file.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return true;
    const bool flushed = fdatasync(file) == 0;
    const std::string reason = flushed ? "" : std::strerror(errno);
    close(file);
    log_.state("flushing saved slots", reason);
    return flushed;
}

bool DatabaseTables::save_temperatures() {
    return note_status(log_, "thermal_save_hist_mem_table",
                       thermal_save_hist_mem_table(connection_));
}

bool DatabaseTables::trim_temperatures() {
    return note_status(log_, "thermal_cleanup_hist_mem_table",
                       thermal_cleanup_hist_mem_table(connection_));
}

// A clock that went back took the records of the future with it.
void DatabaseTables::follow_trimmed_temperatures(std::int64_t now_s) {
    if (temperatures_.newest_s() <= now_s) return;
    const std::optional<Extent> history = extent(kWorkingThermal);
    if (history) temperatures_.resume(connection_, history->newest_s);
}

// What an earlier run left unsaved is saved before the working table is filled afresh.
bool DatabaseTables::start_temperatures() {
    const bool saved = save_temperatures();
    const bool started = note_status(log_, "thermal_init_thermal_hist_table",
                                     thermal_init_thermal_hist_table(connection_));
    const std::optional<Extent> history = extent(kWorkingThermal);
    temperatures_.resume(connection_, history ? history->newest_s : 0);
    return saved && started && history;
}

bool DatabaseTables::start_bays(const BaySetup& setup) {
    return bays_.start(connection_, setup);
}

bool DatabaseTables::record_temperatures(const Reading& reading, std::int64_t minute_s) {
    return temperatures_.record(reading, minute_s);
}

bool DatabaseTables::read_newest(std::optional<std::int64_t>& stamp_s) {
    const std::optional<Extent> history = extent(kWorkingHistory);
    if (!note_status(log_, "newest row", history ? 0 : 3)) return false;
    stamp_s.reset();
    if (history->rows > 0) stamp_s = history->newest_s;
    return true;
}

bool DatabaseTables::remove_from(std::int64_t first_s) {
    const std::string filter = "Timestamp>=" + std::to_string(first_s);
    bool removed = true;
    for (const char* table : {kWorkingHistory, kPersistentHistory, kWorkingExtra, kPersistentExtra,
                              kCpuHistory, kWorkingThermal, kPersistentThermal}) {
        removed &= vek_db_delete(connection_, table, filter.c_str()) == 0;
    }
    log_.state("removing replaced rows", removed ? "" : "refused");
    temperatures_.resume(connection_, 0);
    return removed;
}

std::optional<DatabaseTables::Extent> DatabaseTables::extent(const char* table) {
    Rows rows;
    if (!rows.select_stamps(connection_, table, nullptr, 0, "Timestamp DESC")) return std::nullopt;
    Extent found;
    found.rows = rows.count();
    if (found.rows < 0) return std::nullopt;
    const std::optional<std::int64_t> first = rows.next_stamp();
    if (!first) return found.rows == 0 ? std::optional(found) : std::nullopt;
    found.newest_s = found.oldest_s = *first;
    while (const std::optional<std::int64_t> stamp = rows.next_stamp()) {
        found.oldest_s = *stamp;
    }
    return found;
}

int DatabaseTables::count(const char* table, const std::string& filter) {
    Rows rows;
    if (!rows.select_stamps(connection_, table, filter.c_str(), 0, nullptr)) return -1;
    return rows.count();
}

// 0, or the database client's own number of what went wrong.
std::uint32_t DatabaseTables::statement(const std::string& sql) {
    return static_cast<std::uint32_t>(vek_db_raw_query(
        connection_, sql.c_str(), static_cast<std::uint32_t>(sql.size()), nullptr));
}

}  // namespace pwrmgt::pwrmgtd
