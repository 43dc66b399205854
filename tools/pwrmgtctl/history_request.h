// SPDX-License-Identifier: Apache-2.0
// Which stretch of the histories is asked for: a past period by its name, or a window that the
// command line places.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli.h"
#include "span_options.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {

struct Window {
    int32_t end_s;
    int32_t minutes;
    int32_t samples_per_entry;
};

struct Request {
    std::optional<Window> window;  // none: the period counts
    Period period = period_named("1h");
    uint32_t length_s = 0;
    uint32_t entry_s = 0;
    int64_t asked_at_s = 0;

    // Room that the library needs.
    [[nodiscard]] uint32_t room() const;
    [[nodiscard]] int64_t end_s() const { return window ? window->end_s : asked_at_s; }
    // "in the last 6 hours", "in the 30 min up to 2026-11-20T20:25:00Z".
    [[nodiscard]] std::string words() const;
};

void add_request_options(cli::Command command, SpanOptions& options);

// The request at this moment, or what is wrong with it in words.
struct Resolved {
    Request request;
    std::string mistake;
};
Resolved resolve(const SpanOptions& options, int64_t now_s);

}  // namespace pwrmgt::pwrmgtctl
