// SPDX-License-Identifier: Apache-2.0
#include "history_request.h"

#include <array>
#include <string_view>

#include "print.h"
#include "time_argument.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr int32_t kMaxMinutes = 1440;
constexpr int32_t kMaxSamplesPerEntry = 24;

struct Period {
    std::string_view name;
    uint32_t code;
    uint32_t period_s;
    std::string_view words;
};

constexpr std::array<Period, 4> kPeriods{{
    {"1h", PWRMGT_PERIOD_1_HOUR, 3600, "in the last hour"},
    {"6h", PWRMGT_PERIOD_6_HOURS, 21600, "in the last 6 hours"},
    {"12h", PWRMGT_PERIOD_12_HOURS, 43200, "in the last 12 hours"},
    {"24h", PWRMGT_PERIOD_24_HOURS, 86400, "in the last 24 hours"},
}};

const Period& chosen_period(const std::string& name) {
    for (const Period& period : kPeriods) {
        if (period.name == name) return period;
    }
    return kPeriods[0];  // not reached: the parser accepts these names only
}

}  // namespace

uint32_t Request::room() const {
    return window ? uint32_t{PWRMGT_MAX_WINDOW_ENTRIES} : uint32_t{PWRMGT_MAX_PERIOD_ENTRIES};
}

std::string Request::words() const {
    if (!window) return std::string(kPeriods[period].words);
    return "in the " + span_text(length_s) + " up to " + time_text(window->end_s, Zone::utc);
}

void add_request_options(CLI::App& command, RequestOptions& options) {
    CLI::Option* period =
        command.add_option("--period", options.period, "How far back: 1h, 6h, 12h or 24h")
            ->check(CLI::IsMember({"1h", "6h", "12h", "24h"}).description(""))
            ->type_name("PERIOD")
            ->capture_default_str();
    CLI::Option* entries =
        command
            .add_option("--entries", options.entries, "Show the newest N entries only, 1 to 120")
            ->check(CLI::Range(1U, uint32_t{PWRMGT_MAX_PERIOD_ENTRIES}).description(""))
            ->type_name("N")
            ->capture_default_str();
    CLI::Option* minutes = command
                               .add_option("--minutes", options.minutes,
                                           "A window of N minutes, 1 to 1440, instead of a period")
                               ->check(CLI::Range(1, kMaxMinutes).description(""))
                               ->type_name("N")
                               ->excludes(period)
                               ->excludes(entries);
    command.add_option("--end", options.end, std::string("End of the window: ") + kTimeForms)
        ->check(time_argument())
        ->type_name("TIME")
        ->capture_default_str()
        ->needs(minutes);
    command
        .add_option("--samples-per-entry", options.samples_per_entry,
                    "30-second slots that an entry of the window folds, 1 to 24")
        ->check(CLI::Range(1, kMaxSamplesPerEntry).description(""))
        ->type_name("N")
        ->capture_default_str()
        ->needs(minutes);
}

Resolved resolve(const RequestOptions& options, int64_t now_s) {
    Resolved resolved;
    Request& request = resolved.request;
    request.asked_at_s = now_s;
    if (options.minutes == 0) {
        const Period& period = chosen_period(options.period);
        request.period = period.code;
        request.length_s = period.period_s;
        request.entry_s = pwrmgt_get_samples_perIndex(period.code) * PWRMGT_SLOT_SECONDS;
        return resolved;
    }
    request.length_s = static_cast<uint32_t>(options.minutes) * 60;
    request.entry_s = static_cast<uint32_t>(options.samples_per_entry) * PWRMGT_SLOT_SECONDS;
    const auto end_s = parse_time(options.end, now_s);
    if (!end_s) {
        resolved.mistake = "--end: the clock does not show a time from 1970 to 2038";
    } else if (request.entry_s > request.length_s) {
        resolved.mistake = "--samples-per-entry: an entry of " + span_text(request.entry_s) +
                           " does not fit into " + span_text(request.length_s);
    } else {
        request.window = Window{*end_s, options.minutes, options.samples_per_entry};
    }
    return resolved;
}

}  // namespace pwrmgt::pwrmgtctl
