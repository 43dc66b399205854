// SPDX-License-Identifier: Apache-2.0
#include "measured_trace.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "columns.h"
#include "csv_lines.h"
#include "row.h"

namespace pwrmgt::trace {
namespace {

constexpr std::size_t kMaxRows = 1'000'000;
constexpr std::int64_t kDay_s = 86400;

// What the header line says: which cell goes where.
struct Header {
    std::vector<std::optional<Column>> columns;
    std::vector<std::string> names;
    std::size_t time_index = 0;
    Given given;
};

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
            const auto has = [&](std::size_t first) { return header_.given.present[first + i]; };
            if (has(kSupplyAc) || has(kSupplyDc) || has(kProbeAc) || has(kPresent)) {
                supplies = i + 1;
            }
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
            if ((is_time && timed) || (column && header_.given.present[column->place])) {
                return "column " + quoted(name) + " stands twice";
            }
            if (is_time) header_.time_index = i;
            timed = timed || is_time;
            if (column) header_.given.present[column->place] = true;
            header_.columns.push_back(column);
            header_.names.emplace_back(name);
        }
        if (!timed) return "no epoch_s column";
        if (header_.given.any(kProbeAc) && header_.given.any(kSupplyAc)) {
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
        if (reason.empty()) readings_.push_back(make_reading(header_.given, values, epoch_s));
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
