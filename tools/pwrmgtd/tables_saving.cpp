// SPDX-License-Identifier: Apache-2.0
// How the histories are trimmed, and saved where they outlive a reboot: the disk is written with a
// save only, once for all of it.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "state_dir.h"
#include "status_words.h"
#include "tables.h"
#include "vekdb_client.h"

namespace pwrmgt::pwrmgtd {
namespace {

constexpr const char* kSaving = "saving slots";

std::string within(std::int64_t first_s, std::int64_t last_s) {
    return "Timestamp>=" + std::to_string(first_s) + " AND Timestamp<=" + std::to_string(last_s);
}

}  // namespace

// One transaction, and one write to the flash instead of one per statement. When the work has
// failed, how its transaction ends says nothing more.
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

}  // namespace pwrmgt::pwrmgtd
