// SPDX-License-Identifier: Apache-2.0
// The tables of the power database: their names, columns and the statements that create them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace pwrmgt::vekdb {

inline constexpr int kSchemaVersion = 1;

enum class Store { persistent, memory };

// The statements that create the tables of one store, as one text.
const char* schema_of(Store store) noexcept;

// The stored name of a table; null when there is no such table. Names are compared exactly.
const char* known_table(std::string_view name) noexcept;

// A small number for a column name that some table has, and back.
std::optional<std::uint16_t> column_number(std::string_view name) noexcept;
std::string_view column_name(std::uint16_t number) noexcept;

}  // namespace pwrmgt::vekdb
