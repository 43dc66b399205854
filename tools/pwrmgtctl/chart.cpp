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

// The smallest round number that is not below `highest`, always even, so that half of it is a label
// too.
uint32_t round_scale(uint32_t highest) {
    constexpr std::array<uint32_t, 10> kMantissas{10, 12, 16, 20, 24, 30, 40, 50, 60, 80};
    for (uint32_t power = 1;; power *= 10) {
        for (const uint32_t mantissa : kMantissas) {
            if (mantissa * power >= highest) return mantissa * power;
        }
    }
}

std::string_view glyph(const Glyphs& glyphs, const Value& value, uint32_t scale, uint32_t row) {
    if (!value) return glyphs.fill[0];
    // A reading never vanishes: zero still stands as the lowest mark, apart from the blank of a
    // gap.
    const uint32_t height = std::max<uint32_t>(1, (*value * kRows * kSteps + scale / 2) / scale);
    const uint32_t below = row * kSteps;
    return glyphs.fill[height <= below ? 0 : std::min(kSteps, height - below)];
}

std::string label(uint32_t scale, uint32_t row, size_t width) {
    std::string text;
    if (row == kRows - 1) text = std::to_string(scale);
    if (row == kRows / 2 - 1) text = std::to_string(scale / 2);
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
    const uint32_t scale = round_scale(highest.value_or(0));
    const size_t width = std::to_string(scale).size();

    std::string text;
    for (uint32_t row = kRows; row-- > 0;) {
        const bool labelled = row == kRows - 1 || row == kRows / 2 - 1;
        std::string line = label(scale, row, width) + ' ';
        line += labelled ? glyphs.tick : glyphs.wall;
        for (const Value& value : columns) {
            line += glyph(glyphs, value, scale, row);
        }
        trim_end(line);
        text += line + '\n';
    }
    text += std::string(width - 1, ' ') + "0 ";
    text += glyphs.corner;
    for (size_t column = 0; column < columns.size(); ++column) {
        text += glyphs.floor;
    }
    text += '\n' + footer(newest_first, style, width + 2, columns.size());
    return text + "Lowest " + cell(lowest) + ", highest " + cell(highest) +
           "; blank = no reading.\n";
}

}  // namespace pwrmgt::pwrmgtctl
