// SPDX-License-Identifier: Apache-2.0
#include "measured_trace.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <tuple>

#include "columns.h"
#include "csv_lines.h"

namespace pwrmgt::trace {
namespace {

constexpr std::size_t kMaxRows = 1'000'000;
constexpr std::int64_t kDay_s = 86400;

// What the header line says: which cell goes where, and how a row's system power comes about.
struct Header {
    std::vector<std::optional<Column>> columns;
    std::vector<std::string> names;
    std::size_t time_index = 0;
    std::array<bool, kPlaces> present{};

    bool any(std::size_t first) const {
        const auto from = present.begin() + static_cast<std::ptrdiff_t>(first);
        return std::any_of(from, from + kSupplies, [](bool has) { return has; });
    }
};

template <class Whole>
std::optional<Whole> narrowed(const std::optional<std::int32_t>& cell) {
    if (!cell) return std::nullopt;
    return static_cast<Whole>(*cell);
}

// The sum over the supplies of one kind that have a column, all of them known to hold a value.
std::int32_t sum(const Cells& cells, std::size_t first) {
    std::int32_t watts = 0;
    for (std::size_t i = 0; i < kSupplies; ++i) {
        watts += cells[first + i].value_or(0);
    }
    return watts;
}

Watts as_watts(std::int32_t watts) {
    if (watts > std::numeric_limits<std::uint16_t>::max() - 1) return std::nullopt;
    return static_cast<std::uint16_t>(watts);
}

// AC and DC of the whole system. History rows hold both or neither, so one number that stands for
// the system counts as both, and a sum over supplies needs every one of them.
std::pair<Watts, Watts> system_power(const Header& header, const Cells& cells) {
    for (std::size_t place = kSupplyAc; place < kPlaces; ++place) {
        if (header.present[place] && !cells[place]) return {};
    }
    for (std::size_t i = 0; i < kSupplies; ++i) {
        const bool dc_unknown = header.present[kSupplyAc + i] && !header.present[kSupplyDc + i];
        if (header.any(kSupplyDc) && dc_unknown) return {};
    }
    const bool metered = header.any(kProbeAc) && !header.present[kSystemW];
    const Watts ac =
        metered ? as_watts(sum(cells, kProbeAc)) : narrowed<std::uint16_t>(cells[kSystemW]);
    const Watts dc = header.any(kSupplyDc) ? as_watts(sum(cells, kSupplyDc)) : ac;
    if (!ac || !dc) return {};
    return {ac, dc};
}

Reading make_reading(const Header& header, const Cells& cells, std::int64_t epoch_s) {
    Reading reading;
    reading.epoch_s = epoch_s;
    if (cells[kAnswers] == 0) {
        reading.answered = false;
        return reading;
    }
    std::tie(reading.system_ac_w, reading.system_dc_w) = system_power(header, cells);
    reading.cpu_w = narrowed<std::uint16_t>(cells[kCpuW]);
    reading.mem_w = narrowed<std::uint16_t>(cells[kMemoryW]);
    const std::size_t ac_place = header.any(kProbeAc) ? kProbeAc : kSupplyAc;
    for (std::size_t i = 0; i < kSupplies; ++i) {
        reading.supplies[i].ac_in_w = narrowed<std::uint16_t>(cells[ac_place + i]);
        reading.supplies[i].dc_out_w = narrowed<std::uint16_t>(cells[kSupplyDc + i]);
    }
    reading.sys_pct = narrowed<std::uint8_t>(cells[kSystemPct]);
    reading.cpu_pct = narrowed<std::uint8_t>(cells[kCpuPct]);
    reading.mem_pct = narrowed<std::uint8_t>(cells[kMemoryPct]);
    reading.io_pct = narrowed<std::uint8_t>(cells[kIoPct]);
    reading.ambient_c = narrowed<std::int16_t>(cells[kAmbientC]);
    reading.exhaust_c = narrowed<std::int16_t>(cells[kExhaustC]);
    for (std::size_t i = 0; i < kCpus; ++i) {
        reading.cpu_c[i] = narrowed<std::int16_t>(cells[kCpuC + i]);
    }
    return reading;
}

// Reads one file; every step returns the reason it failed, or "".
class Parser {
public:
    std::string parse(std::string_view text) {
        // A spreadsheet program marks its UTF-8 files.
        constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
        if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
        Lines lines(text);
        std::string reason = lines.next() ? header(lines.line()) : "no header line";
        while (reason.empty() && lines.next()) {
            reason = row(lines.line());
        }
        if (reason.empty() && readings_.empty()) reason = "no rows after the header";
        line_number_ = std::max<std::size_t>(lines.number(), 1);
        return reason;
    }

    std::size_t line_number() const { return line_number_; }

    Trace take() {
        std::size_t supplies = 0;
        for (std::size_t i = 0; i < kSupplies; ++i) {
            const auto has = [&](std::size_t first) { return header_.present[first + i]; };
            if (has(kSupplyAc) || has(kSupplyDc) || has(kProbeAc)) supplies = i + 1;
        }
        return Trace(std::move(readings_), supplies, ignored_values_);
    }

private:
    std::string header(std::string_view line) {
        bool timed = false;
        split(line, cells_);
        for (std::size_t i = 0; i < cells_.size(); ++i) {
            const std::string_view name = cells_[i];
            const std::optional<Column> column = find_column(name);
            const bool is_time = name == kTimeColumn;
            if ((is_time && timed) || (column && header_.present[column->place])) {
                return "column " + quoted(name) + " stands twice";
            }
            if (is_time) header_.time_index = i;
            timed = timed || is_time;
            if (column) header_.present[column->place] = true;
            header_.columns.push_back(column);
            header_.names.emplace_back(name);
        }
        if (!timed) return "no epoch_s column";
        if (header_.any(kProbeAc) && header_.any(kSupplyAc)) {
            return "AC power of supplies from both psuN and probeN columns";
        }
        return {};
    }

    std::string row(std::string_view line) {
        split(line, cells_);
        if (cells_.size() != header_.columns.size()) {
            return std::to_string(cells_.size()) + " cells where the header has " +
                   std::to_string(header_.columns.size());
        }
        if (readings_.size() == kMaxRows) return "more than 1000000 rows";
        std::int64_t epoch_s = 0;
        std::string reason = time(cells_[header_.time_index], epoch_s);
        Cells values{};
        for (std::size_t i = 0; reason.empty() && i < cells_.size(); ++i) {
            if (header_.columns[i] && !cells_[i].empty()) reason = value(i, values);
        }
        if (reason.empty()) readings_.push_back(make_reading(header_, values, epoch_s));
        return reason;
    }

    std::string time(std::string_view cell, std::int64_t& epoch_s) {
        const std::optional<double> seconds = number(cell);
        if (!seconds) return "epoch_s: " + quoted(cell) + " is not a number";
        // Timestamps of the power tables are 32 bits wide.
        if (*seconds < 0 || *seconds > std::numeric_limits<std::uint32_t>::max()) {
            return "epoch_s: " + quoted(cell) + " is not a time of 32 bits";
        }
        if (*seconds < previous_s_) return "epoch_s: " + quoted(cell) + " is before the row above";
        previous_s_ = *seconds;
        epoch_s = static_cast<std::int64_t>(std::floor(*seconds));
        return {};
    }

    std::string value(std::size_t index, Cells& values) {
        const Column& column = *header_.columns[index];
        const std::optional<double> exact = number(cells_[index]);
        if (!exact) return header_.names[index] + ": " + quoted(cells_[index]) + " is not a number";
        values[column.place] = rounded(*exact, column);
        if (!values[column.place]) ++ignored_values_;
        return {};
    }

    Header header_;
    std::vector<std::string_view> cells_;
    std::vector<Reading> readings_;
    double previous_s_ = 0;
    std::size_t ignored_values_ = 0;
    std::size_t line_number_ = 1;
};

}  // namespace

const Reading* Trace::reading_at(std::int64_t t_s, std::int64_t hold_s) const {
    const auto later = std::upper_bound(
        readings_.begin(), readings_.end(), t_s,
        [](std::int64_t t, const Reading& reading) { return t < reading.epoch_s; });
    if (later == readings_.begin()) return nullptr;
    const Reading& row = *std::prev(later);
    if (!row.answered || t_s - row.epoch_s >= hold_s) return nullptr;
    return &row;
}

std::int64_t Trace::live_second(std::int64_t now_s) const {
    const std::int64_t second_of_day = ((now_s % kDay_s) + kDay_s) % kDay_s;
    return first_s() + second_of_day % (last_s() - first_s() + 1);
}

LoadResult load(const std::string& path) {
    LoadResult result;
    std::string text;
    const std::string unreadable = read_file(path, text);
    if (!unreadable.empty()) {
        result.error = path + ": " + unreadable;
        return result;
    }
    Parser parser;
    const std::string reason = parser.parse(text);
    if (!reason.empty()) {
        result.error = path + ":" + std::to_string(parser.line_number()) + ": " + reason;
        return result;
    }
    result.trace.emplace(parser.take());
    return result;
}

}  // namespace pwrmgt::trace
