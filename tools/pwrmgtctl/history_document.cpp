// SPDX-License-Identifier: Apache-2.0
// Lays a history out; what the values are is the columns' business.
#include "history_document.h"

#include <algorithm>

#include "csv.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

std::string count_words(const History& history) {
    const size_t count = history.readings.size();
    if (history.entry_s == 0) return std::to_string(count) + (count == 1 ? " row" : " rows");
    const std::string width = " of " + span_text(history.entry_s);
    if (count < history.available) {
        return std::to_string(count) + " of " + std::to_string(history.available) + " entries" +
               width;
    }
    return std::to_string(count) + (count == 1 ? " entry" : " entries") + width;
}

// The history's answer with a first line that tells window, order and age.
Answer titled(const History& history, Zone zone, std::string_view order) {
    Answer answer = history.answer;
    const char* last = history.end_s == answer.asked_at_s ? ", last " : ", ";
    answer.title += last + span_text(history.period_s) + " up to " +
                    time_text(history.end_s, zone) + ": " + count_words(history) + ", " +
                    std::string(order);
    if (const std::optional<Age> age = age_of(history)) {
        answer.title += "; newest reading " + age_words(*age);
    }
    return answer;
}

std::string_view order_words(Order order) {
    return order == Order::newest_first ? "newest first" : "oldest first";
}

// The readings in the order asked for.
std::vector<const Reading*> ordered(const History& history, Order order) {
    std::vector<const Reading*> readings;
    for (const Reading& reading : history.readings) {
        readings.push_back(&reading);
    }
    if (order == Order::oldest_first) return {readings.rbegin(), readings.rend()};
    return readings;
}

Json entry_json(const Reading& reading, std::span<const Column> columns) {
    Json entry;
    entry["index"] = reading.index;
    entry["timestamp_s"] = reading.timestamp_s;
    entry["time_utc"] = time_text(reading.timestamp_s, Zone::utc);
    for (size_t at = 0; at < columns.size(); ++at) {
        const Column& column = columns[at];
        entry[std::string(column.group)][std::string(column.key)] = json_value(reading.values[at]);
    }
    return entry;
}

}  // namespace

std::optional<Age> age_of(const History& history) {
    for (const Reading& reading : history.readings) {
        const auto& values = reading.values;
        const bool any = std::any_of(values.begin(), values.end(),
                                     [](const Value& value) { return value.has_value(); });
        if (!any) continue;
        const int64_t slot_end_s = int64_t{reading.timestamp_s} + PWRMGT_SLOT_SECONDS;
        return age_of(slot_end_s, history.answer.asked_at_s, history.end_s);
    }
    return std::nullopt;
}

std::string history_table(const History& history, const Layout& layout,
                          const CommonOptions& options) {
    std::vector<std::string> headers{time_header(layout.zone)};
    for (const Column& column : history.columns) {
        headers.emplace_back(column.heading);
    }
    Table table(std::move(headers));
    for (const Reading* reading : ordered(history, layout.order)) {
        std::vector<std::string> cells{time_text(reading->timestamp_s, layout.zone)};
        for (const Value& value : reading->values) {
            cells.push_back(cell(value));
        }
        table.add(std::move(cells));
    }
    return answer_text(titled(history, layout.zone, order_words(layout.order)), options,
                       table.text());
}

std::string history_json(const History& history, const Layout& layout,
                         const CommonOptions& options) {
    Json body = history.subject;
    body["period_s"] = history.period_s;
    body["entry_width_s"] = history.entry_s == 0 ? Json(nullptr) : Json(history.entry_s);
    body["end_s"] = history.end_s;
    body["end_utc"] = time_text(history.end_s, Zone::utc);
    add_age(body, age_of(history));
    body["order"] = layout.order == Order::newest_first ? "newest_first" : "oldest_first";
    body["entries"] = Json::array();
    for (const Reading* reading : ordered(history, layout.order)) {
        body["entries"].push_back(entry_json(*reading, history.columns));
    }
    return answer_json(history.answer, options, body);
}

std::string history_csv(const History& history, const Layout& layout) {
    std::vector<std::vector<std::string>> lines{{"time_utc", "timestamp_s"}};
    for (const Column& column : history.columns) {
        lines.front().push_back(std::string(column.group) + '_' + std::string(column.key));
    }
    for (const Reading* reading : ordered(history, layout.order)) {
        std::vector<std::string>& line = lines.emplace_back();
        line = {time_text(reading->timestamp_s, Zone::utc), std::to_string(reading->timestamp_s)};
        for (const Value& value : reading->values) {
            line.push_back(csv_field(value));
        }
    }
    return csv_text(lines);
}

std::string history_headline(const History& history, Zone zone) {
    return answer_text(titled(history, zone, "oldest on the left"), {}, "");
}

}  // namespace pwrmgt::pwrmgtctl
