// SPDX-License-Identifier: Apache-2.0
// Lays a history out; what the values are is the columns' business.
#include "history_document.h"

#include "database.h"

namespace pwrmgt::pwrmgtctl {
namespace {

std::string count_words(const History& history) {
    const size_t count = history.readings.size();
    if (history.entry_s == 0) return std::to_string(count) + (count == 1 ? " row" : " rows");
    if (count < history.available) {
        return std::to_string(count) + " of " + std::to_string(history.available) + " entries of ";
    }
    return std::to_string(count) + (count == 1 ? " entry of " : " entries of ");
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
        Json& holder = column.group.empty() ? entry : entry[std::string(column.group)];
        holder[std::string(column.key)] = json_value(reading.values[at]);
    }
    return entry;
}

std::string closing(const History& history, const Layout& layout) {
    return layout.timing == Timing::on ? timing_text(history.query_ms) : std::string();
}

}  // namespace

std::string history_headline(const History& history, const Layout& layout, std::string_view order) {
    const std::string_view last = history.end_s == history.asked_at_s ? ", last " : ", ";
    return history.title + std::string(last) + span_text(history.period_s) + " up to " +
           time_text(history.end_s, layout.zone) + ": " + count_words(history) +
           (history.entry_s == 0 ? std::string() : span_text(history.entry_s)) + ", " +
           std::string(order) + "; database " + working_database() + '\n';
}

std::string history_table(const History& history, const Layout& layout) {
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
    return history_headline(history, layout, order_words(layout.order)) + table.text() +
           closing(history, layout);
}

std::string history_json(const History& history, const Layout& layout) {
    Json document;
    document["schema"] = history.schema;
    document.update(history.subject);
    document["period_s"] = history.period_s;
    if (history.entry_s != 0) document["entry_width_s"] = history.entry_s;
    document["order"] = layout.order == Order::newest_first ? "newest_first" : "oldest_first";
    document["asked_at_s"] = history.asked_at_s;
    document["asked_at_utc"] = time_text(history.asked_at_s, Zone::utc);
    document["end_s"] = history.end_s;
    document["end_utc"] = time_text(history.end_s, Zone::utc);
    document["database"] = working_database();
    if (layout.timing == Timing::on) document["query_ms"] = rounded_ms(history.query_ms);
    document["entries"] = Json::array();
    for (const Reading* reading : ordered(history, layout.order)) {
        document["entries"].push_back(entry_json(*reading, history.columns));
    }
    return json_text(document);
}

}  // namespace pwrmgt::pwrmgtctl
