// SPDX-License-Identifier: Apache-2.0
#include "plot_history.h"

#include <optional>

#include "missing.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

// Columns of one group: a mean, and the range around it where there is one.
struct Lines {
    size_t mean;
    std::optional<size_t> low;
    std::optional<size_t> high;
};

std::optional<size_t> column_of(const History& history, std::string_view group,
                                std::string_view key) {
    for (size_t at = 0; at < history.columns.size(); ++at) {
        const Column& column = history.columns[at];
        if (column.group == group && column.key.starts_with(key)) return at;
    }
    return std::nullopt;
}

std::vector<Lines> lines_of(const History& history) {
    std::vector<Lines> lines;
    for (size_t at = 0; at < history.columns.size(); ++at) {
        const std::string_view group = history.columns[at].group;
        if (!history.columns[at].key.starts_with("avg_")) continue;
        lines.push_back({at, column_of(history, group, "min_"), column_of(history, group, "max_")});
    }
    return lines;
}

// "DC avg W" is the line "DC", "CPU 3 W" the line "CPU 3".
std::string name_of(std::string_view heading) {
    for (const std::string_view ending : {" W", " %", " avg"}) {
        if (heading.ends_with(ending)) heading.remove_suffix(ending.size());
    }
    return std::string(heading);
}

PlotValue value_at(const Reading& reading, std::optional<size_t> column) {
    if (!column) return std::nullopt;
    const Value& value = reading.values[*column];
    return value ? PlotValue{static_cast<int32_t>(*value)} : PlotValue{};
}

PlotSeries series_of(const History& history, const Lines& lines) {
    PlotSeries series{name_of(history.columns[lines.mean].heading), {}};
    for (auto reading = history.readings.rbegin(); reading != history.readings.rend(); ++reading) {
        series.points.push_back({reading->timestamp_s, value_at(*reading, lines.mean),
                                 value_at(*reading, lines.low), value_at(*reading, lines.high)});
    }
    return series;
}

bool has_reading(const PlotSeries& series) {
    for (const PlotPoint& point : series.points) {
        if (point.mean) return true;
    }
    return false;
}

}  // namespace

Plot plot_of(const History& history, Value cap_w) {
    Plot plot{};
    plot.title = history.answer.title + ", " + span_text(history.period_s) +
                 (history.entry_s == 0 ? "" : ", entries of " + span_text(history.entry_s));
    plot.unit = history.columns.front().key.ends_with("_pct") ? PlotUnit::percent : PlotUnit::watts;
    plot.start_s = history.end_s - history.period_s;
    plot.end_s = history.end_s;
    for (const Lines& lines : lines_of(history)) {
        PlotSeries series = series_of(history, lines);
        if (has_reading(series)) plot.series.push_back(std::move(series));
    }
    if (cap_w) {
        plot.level =
            PlotLevel{"Cap " + std::to_string(*cap_w) + " W", static_cast<int32_t>(*cap_w)};
    }
    return plot;
}

Value cap_in_force() {
    pwrmgt_power_policy_t policy{};
    const bool on = pwrmgt_get_pwrpolicy_tbl(&policy) == 0 && policy.cap_enable == 1;
    return on ? watts(policy.cap_value) : Value{};
}

}  // namespace pwrmgt::pwrmgtctl
