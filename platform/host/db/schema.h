// SPDX-License-Identifier: Apache-2.0
// The tables of the power database: their names, columns and keys, which every engine makes them
// by.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace pwrmgt::vekdb {

inline constexpr int kSchemaVersion = 1;

enum class Store { persistent, memory };

struct TableIndex {
    std::string_view suffix;  // of the index's name, behind the table's
    std::string_view columns;
};

// Columns stand apart by commas, without blanks.
struct TableShape {
    const char* name;
    Store store;
    std::string_view columns;  // in the order of the table
    std::string_view key;      // a row equal to a stored one in these replaces it; empty: none does
    std::array<TableIndex, 2> indices;  // those without a name are none
};

std::span<const TableShape> tables() noexcept;

// Null when there is no such table. Names are compared exactly.
const TableShape* find_table(std::string_view name) noexcept;

// "a type,b type" of the columns "a,b".
std::string typed_columns(std::string_view names, std::string_view type);

// The stored name of a table; null when there is no such table.
const char* known_table(std::string_view name) noexcept;

// A small number for a column name that some table has, and back.
std::optional<std::uint16_t> column_number(std::string_view name) noexcept;
std::string_view column_name(std::uint16_t number) noexcept;

}  // namespace pwrmgt::vekdb
