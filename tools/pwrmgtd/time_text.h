// SPDX-License-Identifier: Apache-2.0
// Points in time as text, in UTC, and back.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace pwrmgt::pwrmgtd {

// "2025-06-04 00:00:00Z".
std::string time_text(std::int64_t t_s);

// Reads "2025-06-04 00:00:00", with a T for the blank and a Z at the end if you like, or seconds
// since the epoch. Nothing for any other text and for a date that the calendar does not have.
std::optional<std::int64_t> parse_time(const std::string& text);

}  // namespace pwrmgt::pwrmgtd
