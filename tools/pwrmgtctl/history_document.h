// SPDX-License-Identifier: Apache-2.0
// A history of any kind as a table, a JSON document or CSV.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "answer.h"
#include "print.h"

namespace pwrmgt::pwrmgtctl {

// One value of every entry: its heading for people, its key and the object that holds the key in
// JSON.
struct Column {
    std::string_view heading;
    std::string_view group;
    std::string_view key;
};

struct Reading {
    uint16_t index;
    uint32_t timestamp_s;
    std::vector<Value> values;  // one per column
};

struct History {
    Answer answer;
    Json subject = Json::object();  // what it tells of: {"domain": "system"}, {"psu": 3}, {}
    std::span<const Column> columns;
    bool capped = false;  // power that the power cap holds down
    // Newest first; entries after the end of the data are not among them.
    std::vector<Reading> readings;
    size_t available = 0;  // how many there were before only the newest were kept
    uint32_t period_s = 0;
    uint32_t entry_s = 0;  // 0: rows as they were stored
    int64_t end_s = 0;     // of the period: another time than that of asking in a window
};

enum class Order { newest_first, oldest_first };

struct Layout {
    Zone zone;
    Order order;
};

// How old the newest entry with a reading is; none when no entry has one.
std::optional<Age> age_of(const History& history);

std::string history_table(const History& history, const Layout& layout,
                          const CommonOptions& options);
std::string history_json(const History& history, const Layout& layout,
                         const CommonOptions& options);
std::string history_csv(const History& history, const Layout& layout);

// The line on top of a picture.
std::string history_headline(const History& history, Zone zone);

}  // namespace pwrmgt::pwrmgtctl
