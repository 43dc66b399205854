// SPDX-License-Identifier: Apache-2.0
#include "schedule.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "time_text.h"

namespace pwrmgt::pwrmgtd {
namespace {

std::string why_not_recordable(std::int64_t now_s) {
    if (is_recordable(now_s)) return {};
    const std::string reason = now_s > INT32_MAX ? "is past " + time_text(INT32_MAX) +
                                                       ", the last second that the tables hold"
                                                 : "cannot be right";
    return reason + "; recording waits until it is set";
}

}  // namespace

Schedule::Schedule(const Station& station, Rhythm rhythm)
    : station_(station),
      source_(&station.source),
      rhythm_(rhythm),
      started_at_(station.clock.elapsed()) {}

void Schedule::use(Source& source, Rhythm rhythm) {
    source_ = &source;
    rhythm_ = rhythm;
    last_sample_.reset();
}

// What is recorded to a file that was deleted is lost with the last one who has it open.
bool Schedule::find_displaced() {
    const std::string displaced = station_.tables.displaced();
    if (displaced.empty()) return false;
    station_.log.error(displaced + ": ending, so that the next start opens what is there");
    displaced_ = true;
    return true;
}

// Until it is told to stop.
void Schedule::serve() {
    std::int64_t wake_s = station_.clock.now();
    for (bool first = true;; first = false) {
        const Wake wake = station_.clock.wait_until(wake_s);
        if (wake == Wake::stop || find_displaced()) return;
        if (wake == Wake::reload) station_.supervisor.reload(*this);
        const std::int64_t now_s = station_.clock.now();
        tick(now_s);
        if (wake == Wake::save) save_on_request();
        if (first) station_.supervisor.started();
        station_.supervisor.goes_on();
        const std::int64_t next_sample_s =
            (now_s / rhythm_.sample_interval_s + 1) * rhythm_.sample_interval_s;
        wake_s = std::min(next_sample_s, slot_start(now_s) + kSlot_s);
    }
}

bool Schedule::run() {
    if (!station_.tables.read_newest(newest_s_)) return false;
    serve();
    station_.supervisor.stopping();
    const std::int64_t end_s = station_.clock.now();
    if (!advance(end_s)) write_queued(end_s);
    return save(end_s) && queued_.empty();
}

// A late wake-up is an ordinary one: everything follows from the time it is now.
void Schedule::tick(std::int64_t now_s) {
    if (advance(now_s) && unsaved_slots() >= rhythm_.persist_slots) save(now_s);
    const std::int64_t sample = now_s / rhythm_.sample_interval_s;
    if (last_sample_ == sample) return;
    last_sample_ = sample;
    take_reading(now_s);
}

// Records what is over at `now_s`; true when that was the time to do so.
bool Schedule::advance(std::int64_t now_s) {
    if (!enter_slot(now_s) || queued_.empty()) return false;
    // In this order a reader never finds more than a day in them.
    station_.tables.trim_working(now_s);
    write_queued(now_s);
    return true;
}

// True when `now_s` has just begun a slot. Without an open slot afterwards nothing can be recorded
// now.
bool Schedule::enter_slot(std::int64_t now_s) {
    const std::int64_t slot_s = slot_start(now_s);
    if (open_s_ == slot_s) return false;
    if (station_.tables.refill(now_s)) queue_lost_slots();
    station_.log.state("clock", why_not_recordable(now_s));
    if (!is_recordable(now_s) || is_behind(now_s)) {
        open_s_.reset();
        readings_ = {};
        return false;
    }
    queue_slots_before(slot_s, now_s);
    open_s_ = slot_s;
    readings_ = {};
    return true;
}

// A clock that goes back by more than a day was wrong before. At the start it may as well be wrong
// now, and somebody about to set it.
bool Schedule::is_believed() const {
    return has_been_ahead_ || station_.clock.elapsed() - started_at_ >= rhythm_.clock_wait_s;
}

bool Schedule::is_behind(std::int64_t now_s) {
    const auto is_far_behind = [&] { return newest_s_ && *newest_s_ - now_s > kDay_s; };
    if (is_far_behind() && is_believed() && station_.tables.trim(now_s)) start_over(now_s);
    const bool behind = newest_s_ && slot_start(now_s) <= *newest_s_;
    has_been_ahead_ |= !behind;
    station_.log.state("slots", behind ? why_behind(now_s) : "");
    return behind;
}

std::string Schedule::why_behind(std::int64_t now_s) const {
    if (*newest_s_ - now_s > kDay_s && !is_believed()) {
        return "the clock is days behind the newest slot, " + time_text(*newest_s_) +
               "; recording waits until it is set, for " + std::to_string(rhythm_.clock_wait_s) +
               " s at most";
    }
    return "the slot of " + time_text(*newest_s_) +
           " is recorded already; recording waits for its end";
}

// No query would see what is stamped so far ahead, and waiting for that time to come could take
// years.
void Schedule::start_over(std::int64_t now_s) {
    std::optional<std::int64_t> newest_s;
    if (!station_.tables.read_newest(newest_s)) return;
    station_.log.warning(
        (has_been_ahead_ ? "the clock went back from " : "the clock has not been set past ") +
        time_text(*newest_s_) + (has_been_ahead_ ? " to " : ", it is ") + time_text(now_s) +
        ": rows from then on are dropped");
    queued_.clear();
    first_unsaved_s_.reset();
    newest_s_ = newest_s;
}

// What was not saved yet went with the working tables: empty rows take its place.
void Schedule::queue_lost_slots() {
    if (const std::int64_t lost = unsaved_slots(); lost > 0) {
        station_.log.warning(std::to_string(lost) + " slots that were not saved yet are lost");
    }
    first_unsaved_s_.reset();
    std::optional<std::int64_t> kept_s;
    if (!newest_s_ || !station_.tables.read_newest(kept_s) || !kept_s) return;
    const SlotReadings none;
    const std::int64_t next_s = queued_.empty() ? *newest_s_ + kSlot_s : queued_.front().stamp_s;
    std::vector<Row> lost;
    for (std::int64_t at_s = slot_start(*kept_s) + kSlot_s; at_s < next_s; at_s += kSlot_s) {
        lost.push_back(none.row(at_s));
    }
    queued_.insert(queued_.begin(), lost.begin(), lost.end());
}

// The open slot and those that passed without a reading, at most those that a trim would leave.
void Schedule::queue_slots_before(std::int64_t slot_s, std::int64_t now_s) {
    const SlotReadings none;
    std::int64_t missed = 0;
    // A row that another program stamped may be off the grid.
    std::int64_t stamp_s = newest_s_ ? slot_start(*newest_s_) + kSlot_s : open_s_.value_or(slot_s);
    stamp_s = std::max(stamp_s, oldest_kept(now_s));
    for (; stamp_s < slot_s; stamp_s += kSlot_s) {
        const bool has_readings = open_s_ == stamp_s;
        queued_.push_back((has_readings ? readings_ : none).row(stamp_s));
        newest_s_ = stamp_s;
        if (!has_readings) ++missed;
    }
    if (missed > 0) {
        station_.log.notice(std::to_string(missed) + " missed slots before " + time_text(slot_s) +
                            " recorded as empty");
    }
}

void Schedule::write_queued(std::int64_t now_s) {
    std::erase_if(queued_, [&](const Row& row) { return row.stamp_s < oldest_kept(now_s); });
    if (queued_.empty()) return;
    const std::size_t written = station_.tables.append(queued_);
    if (written == 0) return;
    if (!first_unsaved_s_) first_unsaved_s_ = queued_.front().stamp_s;
    last_written_s_ = queued_[written - 1].stamp_s;
    queued_.erase(queued_.begin(), queued_.begin() + static_cast<std::ptrdiff_t>(written));
    const std::string far = "recorded up to the slot of " + time_text(last_written_s_) + ", " +
                            std::to_string(unsaved_slots()) + " not saved yet";
    station_.log.detail(far);
    station_.supervisor.recorded(far);
}

bool Schedule::save(std::int64_t now_s) {
    if (!first_unsaved_s_) return true;
    const std::int64_t first_s =
        std::max({*first_unsaved_s_, oldest_kept(now_s), last_written_s_ - kDay_s + kSlot_s});
    if (first_s <= last_written_s_ && !save_slots(first_s, last_written_s_, now_s)) return false;
    first_unsaved_s_.reset();
    station_.log.detail("saved up to the slot of " + time_text(last_written_s_));
    return true;
}

// A clock that recording waits for is none to trim by.
bool Schedule::save_slots(std::int64_t first_s, std::int64_t last_s, std::int64_t now_s) {
    if (!open_s_) return station_.tables.save(first_s, last_s);
    return station_.tables.trim_and_save(first_s, last_s, now_s);
}

void Schedule::save_on_request() {
    const std::int64_t unsaved = unsaved_slots();
    const bool saved = save(station_.clock.now());
    station_.log.notice("asked to save: " + (saved ? std::to_string(unsaved) + " slots saved"
                                                   : std::string("not everything was saved")));
}

std::int64_t Schedule::unsaved_slots() const {
    return first_unsaved_s_ ? (last_written_s_ - *first_unsaved_s_) / kSlot_s + 1 : 0;
}

void Schedule::take_reading(std::int64_t now_s) {
    const Reading reading = source_->read(now_s);
    station_.tables.show(reading, now_s);
    if (open_s_) readings_.add(reading);
}

}  // namespace pwrmgt::pwrmgtd
