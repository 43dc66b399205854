// SPDX-License-Identifier: Apache-2.0
// What happens when: a reading every sample interval, a row per 30-second slot, a save every few
// slots, and how the history goes on after missed slots, a clock that was set, and writes that
// failed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "clock.h"
#include "log.h"
#include "slot.h"
#include "source.h"
#include "tables.h"

namespace pwrmgt::pwrmgtd {

struct Rhythm {
    std::int64_t sample_interval_s = 1;  // 1..30
    std::int64_t persist_slots = 10;     // 1..2880
    std::int64_t clock_wait_s = 3600;    // for a clock that is behind at the start
};

class Schedule;

// Who is told how it goes, and may change the source and the rhythm when a reload is asked for.
class Supervisor {
public:
    Supervisor() = default;
    virtual ~Supervisor() = default;
    Supervisor(const Supervisor&) = delete;
    Supervisor& operator=(const Supervisor&) = delete;

    virtual void started() {}  // the first reading has been taken
    virtual void goes_on() {}  // each time the schedule wakes
    virtual void recorded(const std::string&) {}
    virtual void reload(Schedule&) {}
    virtual void stopping() {}
};

struct Station {
    Clock& clock;
    Source& source;
    Tables& tables;
    Log& log;
    Supervisor& supervisor;
};

class Schedule {
public:
    // The tables have been started and hold what was saved.
    Schedule(const Station& station, Rhythm rhythm);

    // Until the clock says stop, or the tables are displaced; what is not saved yet is saved then.
    // False when that failed.
    bool run();

    // The tables have to be opened anew.
    bool is_displaced() const { return displaced_; }

    // From the next reading on, which is due at once.
    void use(Source& source, Rhythm rhythm);

private:
    void serve();
    void save_on_request();
    bool find_displaced();
    void tick(std::int64_t now_s);
    bool advance(std::int64_t now_s);
    bool enter_slot(std::int64_t now_s);
    bool is_behind(std::int64_t now_s);
    bool is_believed() const;
    std::string why_behind(std::int64_t now_s) const;
    void start_over(std::int64_t now_s);
    void queue_lost_slots();
    void queue_slots_before(std::int64_t slot_s, std::int64_t now_s);
    void write_queued(std::int64_t now_s);
    bool save(std::int64_t now_s);
    bool save_slots(std::int64_t first_s, std::int64_t last_s, std::int64_t now_s);
    std::int64_t unsaved_slots() const;
    void take_reading(std::int64_t now_s);

    Station station_;
    Source* source_;
    Rhythm rhythm_;

    // The open slot: readings that do not make a row yet.
    std::optional<std::int64_t> open_s_;
    SlotReadings readings_;

    // Rows on their way. A stamp is given out once: `newest_s_` is the last one queued or stored.
    std::vector<Row> queued_;
    std::optional<std::int64_t> newest_s_;
    std::optional<std::int64_t> first_unsaved_s_;
    std::int64_t last_written_s_ = 0;

    // At a start the clock may not have been set yet; later it has stood behind the newest row.
    bool has_been_ahead_ = false;
    std::int64_t started_at_;  // elapsed seconds

    bool displaced_ = false;
    std::optional<std::int64_t> last_sample_;  // number of the interval of the last reading
};

}  // namespace pwrmgt::pwrmgtd
