// SPDX-License-Identifier: Apache-2.0
// Folds the points into columns, chooses a round scale, and draws row by row from the top.
#include "chart.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr size_t kMaxColumns = 60;
constexpr uint32_t kRows = 8;
constexpr uint32_t kSteps = 8;  // heights that one cell can show

struct Glyphs {
    std::array<std::string_view, kSteps + 1> fill;
    std::string_view wall;
    std::string_view tick;
    std::string_view corner;
    std::string_view floor;
};

constexpr Glyphs kUtf8{{" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"}, "│", "┤", "└", "─"};
constexpr Glyphs kAscii{{" ", ".", ".", ".", ":", ":", "|", "|", "#"}, "|", "+", "+", "-"};

// Oldest column first. The newest point always starts a column of its own group, so that columns
// keep their places while the day moves on.
std::vector<Value> fold_columns(const std::vector<ChartPoint>& newest_first) {
    const size_t per_column = (newest_first.size() + kMaxColumns - 1) / kMaxColumns;
    std::vector<Value> columns;
    for (size_t first = 0; first < newest_first.size(); first += per_column) {
        uint32_t sum = 0;
        uint32_t count = 0;
        for (size_t at = first; at < std::min(first + per_column, newest_first.size()); ++at) {
            if (!newest_first[at].value) continue;
            sum += *newest_first[at].value;
            ++count;
        }
        columns.push_back(count == 0 ? Value{} : Value{(sum + count / 2) / count});
    }
    std::reverse(columns.begin(), columns.end());
    return columns;
}

// What the axis runs over: `low` at the bottom, `step` more with every row.
struct Scale {
    uint32_t low;
    uint32_t step;

    [[nodiscard]] uint32_t at_row(uint32_t row) const { return low + row * step; }
};

// Round steps that hold every value. Zero is the bottom unless all values lie in the upper half:
// their differences would vanish, so the axis then starts a row below the lowest, and spans at
// least a tenth of the highest.
Scale round_scale(uint32_t lowest, uint32_t highest) {
    constexpr std::array<uint32_t, 7> kMantissas{1, 2, 3, 4, 5, 6, 8};
    const bool from_zero = lowest < highest / 2;
    for (uint32_t power = 1;; power *= 10) {
        for (const uint32_t mantissa : kMantissas) {
            const uint32_t step = mantissa * power;
            if (step * kRows * 10 < highest && !from_zero) continue;
            const uint32_t low = from_zero || lowest < step ? 0 : (lowest - step) / step * step;
            if (low + kRows * step >= highest) return {low, step};
        }
    }
}

std::string_view glyph(const Glyphs& glyphs, const Value& value, const Scale& scale, uint32_t row) {
    if (!value) return glyphs.fill[0];
    // A reading never vanishes: the bottom of the axis still has the lowest mark, apart from the
    // blank of a gap.
    const uint32_t height = std::max<uint32_t>(
        1, ((*value - std::min(*value, scale.low)) * kSteps + scale.step / 2) / scale.step);
    const uint32_t below = row * kSteps;
    return glyphs.fill[height <= below ? 0 : std::min(kSteps, height - below)];
}

// Rows that carry a number: the top and the middle; it belongs to the row's upper edge.
bool labelled(uint32_t row) {
    return row == kRows - 1 || row == kRows / 2 - 1;
}

std::string label(const Scale& scale, uint32_t row, size_t width) {
    const std::string text = labelled(row) ? std::to_string(scale.at_row(row + 1)) : "";
    return std::string(width - text.size(), ' ') + text;
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
    const std::vector<Value> columns = fold_columns(newest_first);
    Value lowest;
    Value highest;
    for (const ChartPoint& point : newest_first) {
        if (!point.value) continue;
        lowest = std::min(lowest.value_or(*point.value), *point.value);
        highest = std::max(highest.value_or(*point.value), *point.value);
    }
    const Scale scale = round_scale(lowest.value_or(0), highest.value_or(0));
    const size_t width = std::to_string(scale.at_row(kRows)).size();

    std::string text;
    for (uint32_t row = kRows; row-- > 0;) {
        std::string line = label(scale, row, width) + ' ';
        line += labelled(row) ? glyphs.tick : glyphs.wall;
        for (const Value& value : columns) {
            line += glyph(glyphs, value, scale, row);
        }
        trim_end(line);
        text += line + '\n';
    }
    const std::string bottom = std::to_string(scale.low);
    text += std::string(width - bottom.size(), ' ') + bottom + ' ';
    text += glyphs.corner;
    for (size_t column = 0; column < columns.size(); ++column) {
        text += glyphs.floor;
    }
    text += '\n' + footer(newest_first, style, width + 2, columns.size());
    return text + "Lowest " + cell(lowest) + ", highest " + cell(highest) +
           "; blank = no reading.\n";
}

}  // namespace pwrmgt::pwrmgtctl
