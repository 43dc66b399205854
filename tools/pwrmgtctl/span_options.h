// SPDX-License-Identifier: Apache-2.0
// The options that place a history in time: a past period by its name, or a window of minutes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "cli.h"

namespace pwrmgt::pwrmgtctl {

inline constexpr int32_t kMaxMinutes = 1440;

struct SpanOptions {
    std::string period = "1h";
    uint32_t entries = 0;
    std::string end = "now";
    int32_t minutes = 0;  // 0: by period
    int32_t per_entry = 1;
};

// What differs between the histories: what --entries counts, and the unit of a window's entry.
struct SpanWording {
    const char* entries_help;
    uint32_t most_entries;
    const char* per_entry_name;
    const char* per_entry_help;
    int32_t most_per_entry;
};

void add_span_options(cli::Command command, SpanOptions& options, const SpanWording& wording);

struct Period {
    std::string_view name;
    uint32_t code;
    uint32_t length_s;
    std::string_view words;  // "in the last 6 hours"
};

// The parser accepts the names of periods only.
const Period& period_named(std::string_view name);

}  // namespace pwrmgt::pwrmgtctl
