// SPDX-License-Identifier: Apache-2.0
#include "plot_data.h"

#include <algorithm>
#include <array>
#include <optional>

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr int64_t kLeastHeight = 10;

bool in_line(const PlotPoint& point) {
    return point.mean.has_value();
}

bool in_band(const PlotPoint& point) {
    return point.mean && point.low && point.high;
}

std::string line_row(const PlotPoint& point) {
    return std::to_string(point.time_s) + ' ' + std::to_string(*point.mean) + '\n';
}

std::string band_row(const PlotPoint& point) {
    return std::to_string(point.time_s) + ' ' + std::to_string(*point.low) + ' ' +
           std::to_string(*point.high) + '\n';
}

// Runs of entries without a gap: those of two and more, parted by empty rows, and the lone ones.
void part(const std::vector<PlotPoint>& points, bool (*belongs)(const PlotPoint&),
          std::string (*row)(const PlotPoint&), std::string& runs, std::string& lone) {
    for (size_t at = 0; at < points.size(); ++at) {
        if (!belongs(points[at])) continue;
        const bool before = at > 0 && belongs(points[at - 1]);
        const bool after = at + 1 < points.size() && belongs(points[at + 1]);
        if (!before && !after) {
            lone += row(points[at]);
            continue;
        }
        runs += row(points[at]);
        if (!after) runs += '\n';
    }
}

std::optional<PlotRange> readings_of(const Plot& plot) {
    std::optional<PlotRange> range;
    const auto include = [&range](int64_t value) {
        if (!range) range = PlotRange{value, value};
        range = PlotRange{std::min(range->low, value), std::max(range->high, value)};
    };
    for (const PlotSeries& series : plot.series) {
        for (const PlotPoint& point : series.points) {
            if (in_line(point)) include(*point.mean);
            if (!in_band(point)) continue;
            include(*point.low);
            include(*point.high);
        }
    }
    return range;
}

}  // namespace

PlotRows rows_of(const PlotSeries& series) {
    PlotRows rows;
    part(series.points, in_line, line_row, rows.lines, rows.lone);
    part(series.points, in_band, band_row, rows.bands, rows.lone_bands);
    return rows;
}

bool has_band(const PlotSeries& series) {
    return std::any_of(series.points.begin(), series.points.end(), in_band);
}

bool shows_level(const Plot& plot) {
    if (!plot.level) return false;
    const std::optional<PlotRange> readings = readings_of(plot);
    if (!readings) return true;
    const int64_t height = std::max(readings->high - readings->low, readings->high / kLeastHeight);
    return plot.level->value >= readings->low - 3 * height &&
           plot.level->value <= readings->high + 3 * height;
}

PlotRange value_axis(const Plot& plot) {
    if (plot.unit == PlotUnit::percent)
        return {-2, 102};  // so that 0 and 100 lie clear of the frame
    std::optional<PlotRange> range = readings_of(plot);
    if (shows_level(plot)) {
        const int64_t level = plot.level->value;
        range = range ? PlotRange{std::min(range->low, level), std::max(range->high, level)}
                      : PlotRange{level, level};
    }
    if (!range) return {0, 100};
    const int64_t height = range->high - range->low;
    const int64_t room =
        height < kLeastHeight ? (kLeastHeight + 1 - height) / 2 : std::max<int64_t>(1, height / 20);
    const PlotRange axis{range->low - room, range->high + room};
    // Degrees may be below zero, nothing else is.
    if (plot.unit == PlotUnit::degrees || axis.low >= 0) return axis;
    return {0, std::max(axis.high, kLeastHeight)};
}

int64_t time_step_s(int64_t span_s, int64_t most) {
    constexpr std::array<int64_t, 13> kSteps{10,   30,   60,   120,   300,   600,  900,
                                             1800, 3600, 7200, 10800, 14400, 21600};
    for (const int64_t step_s : kSteps) {
        if (span_s / step_s <= most) return step_s;
    }
    return 43200;
}

}  // namespace pwrmgt::pwrmgtctl
