// SPDX-License-Identifier: Apache-2.0
// Turns values into the text that people and programs read.
#include "print.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <utility>

#include "common/utc_time.h"

namespace pwrmgt::pwrmgtctl {
namespace {

std::string format_time(const char* format, const std::tm& parts) {
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), format, &parts)};
}

}  // namespace

Table::Table(std::vector<std::string> headers) {
    lines_.push_back(std::move(headers));
}

void Table::add(std::vector<std::string> cells) {
    cells.resize(lines_.front().size());
    lines_.push_back(std::move(cells));
}

std::string Table::text() const {
    std::vector<size_t> widths(lines_.front().size());
    for (const auto& line : lines_) {
        for (size_t column = 0; column < widths.size(); ++column) {
            widths[column] = std::max(widths[column], line[column].size());
        }
    }
    std::string text;
    for (const auto& line : lines_) {
        text += line[0] + std::string(widths[0] - line[0].size(), ' ');
        for (size_t column = 1; column < widths.size(); ++column) {
            text += "  " + std::string(widths[column] - line[column].size(), ' ') + line[column];
        }
        text += '\n';
    }
    return text;
}

std::string cell(const Value& value) {
    return value ? std::to_string(*value) : "-";
}

Json json_value(const Value& value) {
    return value ? Json(*value) : Json(nullptr);
}

std::string time_text(int64_t time_s, Zone zone) {
    // A time that the C library cannot tell in the zone of this place is told in UTC.
    const auto seconds = static_cast<std::time_t>(time_s);
    if (zone == Zone::utc || seconds != time_s) {
        const auto utc = common::utc_parts(time_s);
        return utc ? format_time("%Y-%m-%dT%H:%M:%SZ", *utc) : std::to_string(time_s);
    }
    std::tm parts{};
    localtime_r(&seconds, &parts);
    // strftime writes the offset as +0100; ISO 8601 with colons in the time wants one here too.
    std::string text = format_time("%Y-%m-%dT%H:%M:%S%z", parts);
    return text.insert(text.size() - 2, ":");
}

std::string time_header(Zone zone) {
    return zone == Zone::utc ? "Time (UTC)" : "Time (local)";
}

std::string span_text(uint32_t span_s) {
    if (span_s >= 3600 && span_s % 3600 == 0) return std::to_string(span_s / 3600) + " h";
    if (span_s >= 60 && span_s % 60 == 0) return std::to_string(span_s / 60) + " min";
    return std::to_string(span_s) + " s";
}

std::string json_text(const Json& document, JsonForm form) {
    // A path of the environment may be no UTF-8; its odd bytes are replaced rather than the
    // document lost.
    return document.dump(form == JsonForm::indented ? 2 : -1, ' ', false,
                         Json::error_handler_t::replace) +
           '\n';
}

std::string timing_text(double query_ms) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "The query took %.2f ms.\n", query_ms);
    return text.data();
}

double rounded_ms(double query_ms) {
    return std::round(query_ms * 1000) / 1000;
}

}  // namespace pwrmgt::pwrmgtctl
