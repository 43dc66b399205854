// SPDX-License-Identifier: Apache-2.0
// The property store: `key = number` lines of a text file, read afresh at every question.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace pwrmgt::prop {

enum class Lookup : int {
    found = 0,
    null_argument = 1,
    no_file = 2,
    no_key = 3,
    not_a_number = 4,
    too_wide = 5,
};

// A longer line is skipped as a whole, a longer file is no property file.
inline constexpr std::size_t kMaxLineBytes = 1024;
inline constexpr std::size_t kMaxFileBytes = std::size_t{1} << 20;

// The file that holds the properties: $VEKDB_PROPS, ignored in a set-uid program, or the default.
const char* file_path();

// Looks a key up, with `max` as the largest value wanted. Of several lines with the key the last
// one holds. `value` is written for `found` only.
Lookup look_up(const char* path, std::string_view key, std::uint32_t max, std::uint32_t& value);

}  // namespace pwrmgt::prop
