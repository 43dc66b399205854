// SPDX-License-Identifier: Apache-2.0
// The tables as the schedule and the replay see them, and the real ones: the library's writers on a
// connection of the daemon's own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "log.h"
#include "open_files.h"
#include "reading.h"
#include "slot.h"
#include "supply_bays.h"
#include "temperatures.h"

namespace pwrmgt::pwrmgtd {

class Tables {
public:
    Tables() = default;
    virtual ~Tables() = default;
    Tables(const Tables&) = delete;
    Tables& operator=(const Tables&) = delete;

    // Makes `reading` the real-time row, the latest temperatures and the supply bays, and records
    // the temperatures once a minute.
    virtual bool show(const Reading& reading, std::int64_t now_s) = 0;

    // Appends rows to the working histories, in order, up to the first that the main one refuses.
    // Returns how many are in; none when the database fails on the way.
    virtual std::size_t append(std::span<const Row> rows) = 0;

    // Drops what is older than a day (processors: 600 seconds), or not before `now_s`: from the
    // working histories, which costs the disk nothing, or from the persistent ones too.
    virtual bool trim_working(std::int64_t now_s) = 0;
    virtual bool trim(std::int64_t now_s) = 0;

    // Copies the slots from `first_s` to `last_s` to the persistent histories, at most a day of
    // them; true when all of them are there.
    virtual bool save(std::int64_t first_s, std::int64_t last_s) = 0;

    // Trims all histories first, and writes both to the disk at once.
    virtual bool trim_and_save(std::int64_t first_s, std::int64_t last_s, std::int64_t now_s) = 0;

    // The newest stamp of the working history, nothing when that is empty. False when it cannot be
    // read.
    virtual bool read_newest(std::optional<std::int64_t>& stamp_s) = 0;

    // Fills the working tables from the persistent ones when somebody else emptied them since the
    // last row was appended; true when it did.
    virtual bool refill(std::int64_t now_s) = 0;

    // What is open and not there any more, in words: nobody who opens the tables now sees what is
    // written to it. The empty text when all is in place.
    virtual std::string displaced() = 0;
};

class DatabaseTables final : public Tables {
public:
    explicit DatabaseTables(Log& log);
    ~DatabaseTables() override;

    // False when the database cannot be opened.
    bool open();
    std::uint32_t connection() const { return connection_; }

    bool show(const Reading& reading, std::int64_t now_s) override;
    std::size_t append(std::span<const Row> rows) override;
    bool trim_working(std::int64_t now_s) override;
    bool trim(std::int64_t now_s) override;
    bool save(std::int64_t first_s, std::int64_t last_s) override;
    bool trim_and_save(std::int64_t first_s, std::int64_t last_s, std::int64_t now_s) override;
    bool read_newest(std::optional<std::int64_t>& stamp_s) override;
    bool refill(std::int64_t now_s) override;
    std::string displaced() override { return files_.displaced(); }

    // A server keeps the working tables in its memory: `start` fills them again after it was
    // started anew. Without it nothing is refilled.
    void when_emptied(std::function<bool(std::int64_t now_s)> start) { start_ = std::move(start); }

    // Brings the thermal tables in order; called once, before the first reading.
    bool start_temperatures();

    // Makes the rows of the supply bays; called once, before the first reading.
    bool start_bays(const BaySetup& setup);

    // Records the temperatures of a minute of the past.
    bool record_temperatures(const Reading& reading, std::int64_t minute_s);

    // Deletes the rows stamped `first_s` or later from every power history.
    bool remove_from(std::int64_t first_s);

    // Stamps of the rows at either end of a table, and their number. Nothing when the table cannot
    // be read.
    struct Extent {
        int rows = 0;
        std::int64_t oldest_s = 0;
        std::int64_t newest_s = 0;
    };
    std::optional<Extent> extent(const char* table);

    // Rows that pass a filter, -1 when the table cannot be read.
    int count(const char* table, const std::string& filter);

private:
    std::uint32_t statement(const std::string& sql);
    template <class Work>
    bool together(const char* what, Work work);
    bool save_temperatures();
    bool flush_saved();
    bool trim_cpus(std::int64_t now_s);
    bool trim_power(std::int64_t now_s);
    bool trim_temperatures();
    void follow_trimmed_temperatures(std::int64_t now_s);
    bool copy_slots(std::int64_t first_s, std::int64_t last_s);
    bool is_safe(std::int64_t first_s, std::int64_t last_s);

    // Statuses of the last row; nothing where none was tried.
    struct Appended {
        std::size_t rows = 0;
        std::optional<std::uint32_t> main;
        std::optional<std::uint32_t> extra;
        std::optional<std::uint32_t> cpus;
    };
    Appended append_each(std::span<const Row> rows);
    void note_appended(const Appended& done, bool kept);
    std::uint32_t append_cpus(const Row& row);

    bool save_extra(std::int64_t first_s, std::int64_t last_s);
    bool is_saved(const char* what, const char* working, const char* persistent,
                  const std::string& range);

    Log& log_;
    std::uint32_t connection_ = 0;
    OpenFiles files_;
    std::function<bool(std::int64_t)> start_;
    bool has_rows_ = false;  // appended since the tables were started
    bool unseen_ = false;    // may have been emptied
    Temperatures temperatures_;
    Bays bays_;
};

inline constexpr const char* kWorkingHistory = "HistPowers24HrMem";
inline constexpr const char* kPersistentHistory = "HistPowers24Hr";
inline constexpr const char* kWorkingExtra = "HistExtraPowers24HrMem";
inline constexpr const char* kPersistentExtra = "HistExtraPowers24Hr";
inline constexpr const char* kWorkingThermal = "HistThermal24HrMem";
inline constexpr const char* kPersistentThermal = "HistThermal24Hr";
inline constexpr const char* kCpuHistory = "HistCpuPowersMem";

}  // namespace pwrmgt::pwrmgtd
