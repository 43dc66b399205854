// SPDX-License-Identifier: Apache-2.0
#include "tables.h"

#include <algorithm>
#include <array>
#include <string>

#include "state_dir.h"
#include "status_words.h"
#include "vekdb_client.h"

namespace pwrmgt::pwrmgtd {
namespace {

constexpr int kRowReady = 9;
constexpr std::int64_t kCpuHistory_s = 600;

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
    const bool fits = now_s >= 0 && now_s <= std::int64_t{UINT32_MAX};
    log_.state("real-time row", fits ? "" : "its time does not hold the clock's");
    if (!fits) return false;
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
    if (unseen_) return 0;
    const bool begun = statement("BEGIN") == 0;
    const Appended done = append_each(rows);
    if (!begun) {
        note_appended(done, true);
        has_rows_ |= done.rows > 0;
        return done.rows;
    }
    const bool whole = !fails(done.extra) && !fails(done.cpus);
    const std::uint32_t ended = statement(whole ? "COMMIT" : "ROLLBACK");
    if (ended != 0) statement("ROLLBACK");
    const bool kept = whole && ended == 0;
    note_appended(done, kept);
    if (kept || (whole && done.main == 0U)) note_status(log_, "storing slots", ended);
    has_rows_ |= kept && done.rows > 0;
    return kept ? done.rows : 0;
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

// A row that is appended to a table that was emptied would make it look as if it had not been: none
// is before the table has been seen.
bool DatabaseTables::refill(std::int64_t now_s) {
    if (!start_ || !has_rows_) return false;
    const std::optional<Extent> history = extent(kWorkingHistory);
    unseen_ = !note_status(log_, "newest row", history ? 0 : 3);
    if (unseen_ || history->rows > 0) return false;
    log_.warning("the working tables were emptied; filling them from the persistent ones");
    unseen_ = !start_(now_s);
    has_rows_ = unseen_;
    return !unseen_;
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
