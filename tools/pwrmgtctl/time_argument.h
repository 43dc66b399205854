// SPDX-License-Identifier: Apache-2.0
// A point in time as the command line takes it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli.h"

namespace pwrmgt::pwrmgtctl {

// "now" (which is `now_s`), seconds since the epoch, or ISO 8601 in UTC to the second:
// "2026-11-20T20:25:00Z". None for any other text, and for a time that the library's signed 32
// bits do not hold.
std::optional<int32_t> parse_time(const std::string& text, int64_t now_s);

// Refuses on the command line what parse_time() does not take.
cli::Check time_argument();

// The part of a window option's help that says how a TIME is written.
inline constexpr const char* kTimeForms = "now, seconds since 1970, or 2026-11-20T20:25:00Z";

}  // namespace pwrmgt::pwrmgtctl
