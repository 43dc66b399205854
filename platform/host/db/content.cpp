// SPDX-License-Identifier: Apache-2.0
// Collecting pairs, and the statements made of them.
#include "content.h"

#include <algorithm>

#include "schema.h"

namespace pwrmgt::vekdb {

void Content::clear() noexcept {
    columns_.clear();
    values_.clear();
}

bool Content::put(std::string_view column, std::int64_t value) {
    const auto number = column_number(column);
    if (!number) return false;
    const auto found = std::find(columns_.begin(), columns_.end(), *number);
    if (found != columns_.end()) {
        values_[static_cast<std::size_t>(found - columns_.begin())] = value;
        return true;
    }
    // A row of the widest table: no growing in between.
    if (columns_.empty()) {
        columns_.reserve(32);
        values_.reserve(32);
    }
    values_.push_back(value);
    try {
        columns_.push_back(*number);
    } catch (...) {
        values_.pop_back();
        throw;
    }
    return true;
}

std::string Content::insert_text(const char* table) const {
    std::string text;
    text.reserve(64 + columns_.size() * 14);
    text.append("INSERT INTO ").append(table).append(" (");
    std::string marks;
    for (const std::uint16_t column : columns_) {
        if (!marks.empty()) {
            text += ',';
            marks += ',';
        }
        text.append(column_name(column));
        marks += '?';
    }
    return text.append(") VALUES (").append(marks).append(")");
}

std::string Content::update_text(const char* table) const {
    std::string text;
    text.reserve(64 + columns_.size() * 16);
    text.append("UPDATE ").append(table).append(" SET ");
    const char* between = "";
    for (const std::uint16_t column : columns_) {
        text.append(between).append(column_name(column)).append("=?");
        between = ",";
    }
    return text;
}

}  // namespace pwrmgt::vekdb
