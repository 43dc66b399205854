// SPDX-License-Identifier: Apache-2.0
// A clock that a test moves, a source that a test scripts, tables in memory and a log to look into.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "clock.h"
#include "log.h"
#include "slot.h"
#include "source.h"
#include "tables.h"

namespace pwrmgt::pwrmgtd::test {

// Goes as far as it is asked to wait, in no time. `set_at` moves it when that second comes;
// `stop_s` is the end.
class SimulatedClock final : public Clock {
public:
    SimulatedClock(std::int64_t start_s, std::int64_t stop_s) : now_s_(start_s), stop_s_(stop_s) {}

    void set_at(std::int64_t when_s, std::int64_t new_s) { steps_.push_back({when_s, new_s}); }

    // Something is asked for when that second comes.
    void ask_at(std::int64_t when_s, Wake wake) { asked_[when_s] = wake; }

    std::int64_t now() override { return now_s_; }
    std::int64_t elapsed() override { return elapsed_s_; }
    Wake wait_until(std::int64_t t_s) override {
        if (t_s > now_s_) {
            now_s_ = std::min(t_s, now_s_ + 1);
            ++elapsed_s_;
        }
        if (!steps_.empty() && now_s_ >= steps_.front().first) {
            now_s_ = steps_.front().second;
            steps_.erase(steps_.begin());
        }
        if (const auto asked = asked_.extract(now_s_)) return asked.mapped();
        return steps_.empty() && now_s_ >= stop_s_ ? Wake::stop : Wake::time;
    }

private:
    std::int64_t now_s_;
    std::int64_t stop_s_;
    std::int64_t elapsed_s_ = 0;
    std::vector<std::pair<std::int64_t, std::int64_t>> steps_;
    std::map<std::int64_t, Wake> asked_;
};

class ScriptedSource final : public Source {
public:
    using Script = std::function<Reading(std::int64_t)>;
    explicit ScriptedSource(Script script) : script_(std::move(script)) {}

    Reading read(std::int64_t now_s) override {
        read_at_s.push_back(now_s);
        return script_(now_s);
    }
    std::string name() const override { return "a script"; }

    std::vector<std::int64_t> read_at_s;

private:
    Script script_;
};

// System DC and AC power of so many watts, and nothing else.
inline Reading system_reading(std::uint16_t watts) {
    Reading reading;
    reading.sys_dc_w = watts;
    reading.sys_ac_w = watts;
    return reading;
}

class CollectingLog final : public Log {
public:
    std::vector<std::string> lines;

    // Lines that hold `piece`.
    std::size_t count(const std::string& piece) const {
        return static_cast<std::size_t>(std::count_if(
            lines.begin(), lines.end(),
            [&](const std::string& line) { return line.find(piece) != std::string::npos; }));
    }

protected:
    void write(Severity severity, const std::string& line) override {
        if (severity != Severity::detail) lines.push_back(line);
    }
};

// Keeps the rules of the real ones: rows pile up, a trim drops what is out of the day, a save
// copies by slot.
class MemoryTables final : public Tables {
public:
    bool show(const Reading& reading, std::int64_t now_s) override {
        shown.emplace_back(now_s, reading);
        return true;
    }

    std::size_t append(std::span<const Row> rows) override {
        ++appends;
        if (refuse_appends) return 0;
        for (const Row& row : rows) {
            working.insert({row.stamp_s, row.sample});
        }
        most_rows = std::max(most_rows, working.size());
        return rows.size();
    }

    bool trim_working(std::int64_t now_s) override {
        trim(working, now_s);
        return true;
    }

    bool trim(std::int64_t now_s) override {
        trim(working, now_s);
        trim(persistent, now_s);
        return true;
    }

    bool save(std::int64_t first_s, std::int64_t last_s) override {
        saves.emplace_back(first_s, last_s);
        if (refuse_saves) return false;
        for (const auto& [stamp_s, sample] : working) {
            if (stamp_s >= first_s && stamp_s <= last_s) persistent.insert({stamp_s, sample});
        }
        return true;
    }

    bool trim_and_save(std::int64_t first_s, std::int64_t last_s, std::int64_t now_s) override {
        trims_with_save.push_back(now_s);
        return (refuse_saves || trim(now_s)) && save(first_s, last_s);
    }

    bool read_newest(std::optional<std::int64_t>& stamp_s) override {
        stamp_s.reset();
        if (!working.empty()) stamp_s = working.rbegin()->first;
        return true;
    }

    bool refill(std::int64_t) override {
        if (!emptied) return false;
        emptied = false;
        working = persistent;
        return true;
    }

    std::string displaced() override { return displaced_file; }

    std::vector<std::int64_t> stamps() const {
        std::vector<std::int64_t> found;
        for (const auto& row : working) {
            found.push_back(row.first);
        }
        return found;
    }

    // System DC average of a row; 65535 is missing.
    int watts_at(std::int64_t stamp_s) const {
        const auto row = working.find(stamp_s);
        return row == working.end() ? -1 : row->second.system.avg;
    }

    // Rows with one stamp stay side by side, so a doubled stamp is seen.
    using Rows = std::multimap<std::int64_t, pwrmgt_hist_sample_t>;
    Rows working;
    Rows persistent;
    std::vector<std::pair<std::int64_t, Reading>> shown;
    std::vector<std::pair<std::int64_t, std::int64_t>> saves;
    std::vector<std::int64_t> trims_with_save;
    int appends = 0;
    std::size_t most_rows = 0;  // that ever stood in the working table
    bool refuse_appends = false;
    bool refuse_saves = false;
    bool emptied = false;  // by somebody else
    std::string displaced_file;

private:
    static void trim(Rows& rows, std::int64_t now_s) {
        std::erase_if(
            rows, [&](const auto& row) { return row.first < now_s - 86400 || row.first >= now_s; });
    }
};

}  // namespace pwrmgt::pwrmgtd::test
