// SPDX-License-Identifier: Apache-2.0
#include "span_options.h"

#include <algorithm>
#include <array>

#include "command.h"
#include "time_argument.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr std::array<Period, 4> kPeriods{{
    {"1h", PWRMGT_PERIOD_1_HOUR, 3600, "in the last hour"},
    {"6h", PWRMGT_PERIOD_6_HOURS, 21600, "in the last 6 hours"},
    {"12h", PWRMGT_PERIOD_12_HOURS, 43200, "in the last 12 hours"},
    {"24h", PWRMGT_PERIOD_24_HOURS, 86400, "in the last 24 hours"},
}};

}  // namespace

const Period& period_named(std::string_view name) {
    const auto* found = std::find_if(kPeriods.begin(), kPeriods.end(),
                                     [&](const Period& period) { return period.name == name; });
    return found == kPeriods.end() ? kPeriods.front() : *found;
}

void add_span_options(cli::Command command, SpanOptions& options, const SpanWording& wording) {
    cli::Option period =
        command.add_option("--period", options.period, "How far back: 1h, 6h, 12h or 24h")
            .check(cli::one_of({"1h", "6h", "12h", "24h"}))
            .type_name("PERIOD")
            .show_default();
    cli::Option entries = command.add_option("--entries", options.entries, wording.entries_help)
                              .check(cli::whole_number(1, wording.most_entries))
                              .type_name("N")
                              .show_default();
    cli::Option minutes = command
                              .add_option("--minutes", options.minutes,
                                          "A window of N minutes, 1 to 1440, instead of a period")
                              .check(cli::whole_number(1, kMaxMinutes))
                              .type_name("N")
                              .excludes(period)
                              .excludes(entries);
    command.add_option("--end", options.end, std::string("End of the window: ") + kTimeForms)
        .check(time_argument())
        .type_name("TIME")
        .show_default()
        .needs(minutes);
    command.add_option(wording.per_entry_name, options.per_entry, wording.per_entry_help)
        .check(cli::whole_number(1, wording.most_per_entry))
        .type_name("N")
        .show_default()
        .needs(minutes);
}

}  // namespace pwrmgt::pwrmgtctl
