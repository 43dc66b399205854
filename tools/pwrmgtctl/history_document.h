// SPDX-License-Identifier: Apache-2.0
// A history of any kind as a table or a JSON document.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "print.h"

namespace pwrmgt::pwrmgtctl {

// One value of every entry: its heading for people, its key and the object that holds the key in
// JSON.
struct Column {
    std::string_view heading;
    std::string_view group;  // empty: the key stands in the entry itself
    std::string_view key;
};

struct Reading {
    uint16_t index;
    uint32_t timestamp_s;
    std::vector<Value> values;  // one per column
};

struct History {
    std::string_view schema;
    std::string title;
    Json subject;  // what it tells of: {"domain": "system"}, {"psu": 3}, {}
    std::span<const Column> columns;
    bool capped;  // power that the power cap holds down
    // Newest first; entries after the end of the data are not among them.
    std::vector<Reading> readings;
    size_t available;  // how many there were before only the newest were kept
    uint32_t period_s;
    uint32_t entry_s;  // 0: rows as they were stored
    int64_t asked_at_s;
    int64_t end_s;  // of the period: another time than asked_at_s in a window
    double query_ms;
};

enum class Order { newest_first, oldest_first };
enum class Timing { off, on };

struct Layout {
    Zone zone;
    Order order;
    Timing timing;
};

// The line on top: what it tells of, and in which order.
std::string history_headline(const History& history, const Layout& layout, std::string_view order);
std::string history_table(const History& history, const Layout& layout);
std::string history_json(const History& history, const Layout& layout);

}  // namespace pwrmgt::pwrmgtctl
