// SPDX-License-Identifier: Apache-2.0
// The calendar in UTC for every second that a record can hold, also where the C library's time has
// 32 bits.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>

namespace pwrmgt::common {

// Year, month, day, hour, minute and second of a second since 1970; nothing outside the years 0 to
// 9999.
std::optional<std::tm> utc_parts(std::int64_t since_1970_s);

// The second since 1970 that these six fields of `parts` name; nothing when there is no such day or
// time of day.
std::optional<std::int64_t> utc_seconds(const std::tm& parts);

}  // namespace pwrmgt::common
