// SPDX-License-Identifier: Apache-2.0
#include "history_request.h"

#include "print.h"
#include "time_argument.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr SpanWording kWording{"Show the newest N entries only, 1 to 120",
                               PWRMGT_MAX_PERIOD_ENTRIES, "--samples-per-entry",
                               "30-second slots that an entry of the window folds, 1 to 24", 24};

}  // namespace

uint32_t Request::room() const {
    return window ? uint32_t{PWRMGT_MAX_WINDOW_ENTRIES} : uint32_t{PWRMGT_MAX_PERIOD_ENTRIES};
}

std::string Request::words() const {
    if (!window) return std::string(period.words);
    return "in the " + span_text(length_s) + " up to " + time_text(window->end_s, Zone::utc);
}

void add_request_options(cli::Command command, SpanOptions& options) {
    options.entries = PWRMGT_MAX_PERIOD_ENTRIES;
    add_span_options(command, options, kWording);
}

Resolved resolve(const SpanOptions& options, int64_t now_s) {
    Resolved resolved;
    Request& request = resolved.request;
    request.asked_at_s = now_s;
    if (options.minutes == 0) {
        request.period = period_named(options.period);
        request.length_s = request.period.length_s;
        request.entry_s = pwrmgt_get_samples_perIndex(request.period.code) * PWRMGT_SLOT_SECONDS;
        return resolved;
    }
    request.length_s = static_cast<uint32_t>(options.minutes) * 60;
    request.entry_s = static_cast<uint32_t>(options.per_entry) * PWRMGT_SLOT_SECONDS;
    const auto end_s = parse_time(options.end, now_s);
    if (!end_s) {
        resolved.mistake = "--end: the clock does not show a time from 1970 to 2038";
    } else if (request.entry_s > request.length_s) {
        resolved.mistake = "--samples-per-entry: an entry of " + span_text(request.entry_s) +
                           " does not fit into " + span_text(request.length_s);
    } else {
        request.window = Window{*end_s, options.minutes, options.per_entry};
    }
    return resolved;
}

}  // namespace pwrmgt::pwrmgtctl
