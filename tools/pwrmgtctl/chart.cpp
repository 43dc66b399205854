// SPDX-License-Identifier: Apache-2.0
// Folds the points into columns, chooses a round scale, and draws row by row from the top.
#include "chart.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr size_t kMaxColumns = 60;
constexpr int64_t kRows = 8;
constexpr int64_t kSteps = 8;  // heights that one cell can show

struct Glyphs {
    std::array<std::string_view, kSteps + 1> fill;
    std::string_view wall;
    std::string_view tick;
    std::string_view corner;
    std::string_view floor;
};

constexpr Glyphs kUtf8{{" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"}, "│", "┤", "└", "─"};
constexpr Glyphs kAscii{{" ", ".", ".", ".", ":", ":", "|", "|", "#"}, "|", "+", "+", "-"};

int32_t rounded_mean(int64_t sum, int64_t count) {
    const int64_t half = sum < 0 ? -count / 2 : count / 2;
    return static_cast<int32_t>((sum + half) / count);
}

// Oldest column first. The newest point always starts a column of its own group, so that columns
// keep their places while the day moves on.
std::vector<ChartValue> fold_columns(const std::vector<ChartPoint>& newest_first) {
    const size_t per_column = (newest_first.size() + kMaxColumns - 1) / kMaxColumns;
    std::vector<ChartValue> columns;
    for (size_t first = 0; first < newest_first.size(); first += per_column) {
        int64_t sum = 0;
        int64_t count = 0;
        for (size_t at = first; at < std::min(first + per_column, newest_first.size()); ++at) {
            if (!newest_first[at].value) continue;
            sum += *newest_first[at].value;
            ++count;
        }
        columns.push_back(count == 0 ? ChartValue{} : ChartValue{rounded_mean(sum, count)});
    }
    std::reverse(columns.begin(), columns.end());
    return columns;
}

// What the axis runs over: `low` at the bottom, `step` more with every row.
struct Scale {
    int64_t low;
    int64_t step;

    [[nodiscard]] int64_t at_row(int64_t row) const { return low + row * step; }
};

// The bottom of an axis with these steps. Zero, unless all values lie in the upper half: their
// differences would vanish, so the axis then starts a row below the lowest. Below zero it starts at
// the step under the lowest.
int64_t bottom_of(int64_t lowest, int64_t highest, int64_t step) {
    if (lowest < 0) return -((step - 1 - lowest) / step) * step;
    const bool from_zero = lowest < highest / 2;
    return from_zero || lowest < step ? 0 : (lowest - step) / step * step;
}

// Round steps that hold every value. An axis that does not start at zero spans at least a tenth of
// the highest.
Scale round_scale(int64_t lowest, int64_t highest) {
    constexpr std::array<int64_t, 7> kMantissas{1, 2, 3, 4, 5, 6, 8};
    const bool from_zero = lowest < highest / 2;
    for (int64_t power = 1;; power *= 10) {
        for (const int64_t mantissa : kMantissas) {
            const int64_t step = mantissa * power;
            if (step * kRows * 10 < highest && !from_zero) continue;
            const int64_t low = bottom_of(lowest, highest, step);
            if (low + kRows * step >= highest) return {low, step};
        }
    }
}

std::string_view glyph(const Glyphs& glyphs, const ChartValue& value, const Scale& scale,
                       int64_t row) {
    if (!value) return glyphs.fill[0];
    // A reading never vanishes: the bottom of the axis still has the lowest mark, apart from the
    // blank of a gap.
    const int64_t above = std::max<int64_t>(0, *value - scale.low);
    const int64_t height = std::max<int64_t>(1, (above * kSteps + scale.step / 2) / scale.step);
    const int64_t mark = std::clamp<int64_t>(height - row * kSteps, 0, kSteps);
    return glyphs.fill[static_cast<size_t>(mark)];
}

// Rows that carry a number: the top and the middle; it belongs to the row's upper edge.
bool labelled(int64_t row) {
    return row == kRows - 1 || row == kRows / 2 - 1;
}

std::string label(const Scale& scale, int64_t row, size_t width) {
    const std::string text = labelled(row) ? std::to_string(scale.at_row(row + 1)) : "";
    return std::string(width - text.size(), ' ') + text;
}

std::string words(const ChartValue& value) {
    return value ? std::to_string(*value) : "-";
}

void trim_end(std::string& line) {
    line.erase(line.find_last_not_of(' ') + 1);
}

std::string footer(const std::vector<ChartPoint>& newest_first, const ChartStyle& style,
                   size_t indent, size_t columns) {
    const std::string left = time_text(newest_first.back().timestamp_s, style.zone);
    const std::string right = time_text(newest_first.front().timestamp_s, style.zone);
    const size_t used = left.size() + right.size();
    std::string text(indent, ' ');
    // A chart too narrow for both times has them on lines of their own.
    text += left + (used + 2 <= columns ? std::string(columns - used, ' ')
                                        : " ..\n" + std::string(indent, ' '));
    return text + right + '\n';
}

}  // namespace

std::string chart_text(const std::vector<ChartPoint>& newest_first, const ChartStyle& style) {
    if (newest_first.empty()) return {};
    const Glyphs& glyphs = style.charset == Charset::utf8 ? kUtf8 : kAscii;
    const std::vector<ChartValue> columns = fold_columns(newest_first);
    ChartValue lowest;
    ChartValue highest;
    for (const ChartPoint& point : newest_first) {
        if (!point.value) continue;
        lowest = std::min(lowest.value_or(*point.value), *point.value);
        highest = std::max(highest.value_or(*point.value), *point.value);
    }
    const Scale scale = round_scale(lowest.value_or(0), highest.value_or(0));
    const std::string bottom = std::to_string(scale.low);
    const size_t width = std::max(std::to_string(scale.at_row(kRows)).size(), bottom.size());

    std::string text;
    for (int64_t row = kRows - 1; row >= 0; --row) {
        std::string line = label(scale, row, width) + ' ';
        line += labelled(row) ? glyphs.tick : glyphs.wall;
        for (const ChartValue& value : columns) {
            line += glyph(glyphs, value, scale, row);
        }
        trim_end(line);
        text += line + '\n';
    }
    text += std::string(width - bottom.size(), ' ') + bottom + ' ';
    text += glyphs.corner;
    for (size_t column = 0; column < columns.size(); ++column) {
        text += glyphs.floor;
    }
    text += '\n' + footer(newest_first, style, width + 2, columns.size());
    return text + "Lowest " + words(lowest) + ", highest " + words(highest) +
           "; blank = no reading.\n";
}

}  // namespace pwrmgt::pwrmgtctl
