// SPDX-License-Identifier: Apache-2.0
// The command family `thermal`: temperatures of a past period or a span, and the latest ones.
#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <memory>
#include <span>

#include "command.h"
#include "database.h"
#include "missing.h"
#include "plot_options.h"
#include "print.h"
#include "span_options.h"
#include "status_text.h"
#include "thermal_document.h"
#include "time_argument.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr uint32_t kIndexesOfAnHour = 60;
constexpr SpanWording kWording{"Entries to divide the period into, 1 to 1440, for an hour to 60",
                               1440, "--minutes-per-entry",
                               "Width of an entry of the window in minutes, 1 to 12", 12};

struct Options {
    SpanOptions span;
    bool json = false;
    PlotOptions plot;
    std::vector<std::string> sensors;
    bool local = false;
    bool timing = false;
};

// What every index's time is: the library writes it only where a walk passed it.
void fill_times(std::vector<pwrmgt_therm_sample_t>& samples, const ThermalSpan& span) {
    const auto start = static_cast<uint32_t>(span.end_s - span.length_s) / 60 * 60;
    for (size_t at = 0; at < samples.size(); ++at) {
        samples[at].tm = start + static_cast<uint32_t>(at + 1) * span.entry_s;
    }
}

struct Asked {
    ThermalSpan span;
    uint32_t count;
    uint32_t period;
    std::string mistake;
};

Asked resolve(const SpanOptions& options) {
    Asked asked{};
    const std::optional<int32_t> end_s =
        parse_time(options.minutes == 0 ? "now" : options.end, std::time(nullptr));
    if (!end_s) {
        asked.mistake = "the clock does not show a time from 1970 to 2038";
        return asked;
    }
    asked.span.end_s = *end_s;
    if (options.minutes == 0) {
        asked.period = period_named(options.period).code;
        asked.count = options.entries;
        asked.span.length_s = thermal_get_secs_per_period(asked.period);
        asked.span.entry_s = asked.span.length_s / asked.count;
        if (asked.period == PWRMGT_PERIOD_1_HOUR && asked.count > kIndexesOfAnHour) {
            asked.mistake = "--entries: an hour has 60 entries at most";
        }
        return asked;
    }
    asked.count = static_cast<uint32_t>(options.minutes / options.per_entry);
    asked.span.length_s = static_cast<uint32_t>(options.minutes) * 60;
    asked.span.entry_s = static_cast<uint32_t>(options.per_entry) * 60;
    if (asked.count == 0) asked.mistake = "--minutes-per-entry: no entry fits into the span";
    return asked;
}

Outcome show_plot(const ThermalHistory& answer, const Options& options) {
    const std::optional<Plot> plot = thermal_plot(answer, options.sensors);
    if (!plot) return fail(Exit::no_data, "no reading of the sensors asked for in the span");
    return plot_outcome(*plot, options.plot,
                        {thermal_headline("Temperatures in C", answer, Zone::utc) +
                             ", oldest on the left; database " + working_database() + '\n',
                         options.timing ? timing_text(answer.query_ms) : std::string()});
}

Outcome show_history(const Options& options) {
    if (!options.sensors.empty() && !options.plot.wanted()) {
        return fail(Exit::usage, "--sensor requires --plot, --svg or --png");
    }
    const Asked asked = resolve(options.span);
    if (!asked.mistake.empty()) return fail(Exit::usage, asked.mistake);
    ThermalHistory answer{asked.span, std::vector<pwrmgt_therm_sample_t>(asked.count), 0};
    // The library tells a missing reading by 0xFF bytes; nothing else may look like one.
    std::memset(answer.samples.data(), 0xFF, asked.count * sizeof answer.samples.front());
    uint32_t count = asked.count;

    const Timed done = timed([&] {
        if (options.span.minutes == 0) {
            return pwrmgt_get_therm_hist(asked.period, answer.samples.data(), &count);
        }
        return pwrmgt_get_therm_hist_by_timestamp(static_cast<uint32_t>(asked.span.end_s),
                                                  options.span.minutes, options.span.per_entry,
                                                  answer.samples.data(), &count);
    });

    if (done.status != 0) return explain(Call::thermal_history, done.status, "");
    // By period the library answers 0 also when nothing was recorded.
    if (std::none_of(answer.samples.begin(), answer.samples.end(), has_reading)) {
        return fail(Exit::no_data, "no temperature recorded in the span");
    }
    answer.query_ms = done.query_ms;
    fill_times(answer.samples, asked.span);
    const ThermalLayout layout{options.local ? Zone::local : Zone::utc, options.timing};
    if (options.plot.wanted()) return show_plot(answer, options);
    return succeed(options.json ? thermal_json(answer, layout) : thermal_table(answer, layout));
}

struct Latest {
    const char* heading;
    const char* key;
    std::span<const int16_t> values;
};

Outcome show_realtime(const Options& options) {
    pwrmgt_therm_realtime_t record{};
    // Only sensors with a row are written; what keeps the marker has none.
    std::fill(std::begin(record.cpu), std::end(record.cpu), kNoTemperature);
    std::fill(std::begin(record.memory), std::end(record.memory), kNoTemperature);
    std::fill(std::begin(record.ambient), std::end(record.ambient), kNoTemperature);
    const Timed done = timed([&] { return pwrmgt_get_therm_realtime(&record); });
    if (done.status != 0) return explain(Call::thermal_realtime, done.status, "");

    const std::array<Latest, 3> kinds{{{"Inlet", "ambient_c", record.ambient},
                                       {"CPU", "cpu_c", record.cpu},
                                       {"Memory module", "memory_c", record.memory}}};
    Table table({"Sensor", "C"});
    Json document;
    document["schema"] = "pwrmgtctl.thermal.realtime/1";
    document["database"] = working_database();
    if (options.timing) document["query_ms"] = rounded_ms(done.query_ms);
    bool any = false;
    for (const Latest& kind : kinds) {
        document[kind.key] = Json::array();
        for (size_t at = 0; at < kind.values.size(); ++at) {
            const auto value = temperature(kind.values[at]);
            document[kind.key].push_back(value ? Json(*value) : Json(nullptr));
            if (!value) continue;
            any = true;
            table.add({kind.heading + (' ' + std::to_string(at + 1)), std::to_string(*value)});
        }
    }
    if (!any) return fail(Exit::no_data, "no temperature is stored");
    if (options.json) return succeed(json_text(document));
    const std::string text =
        "Latest temperatures; database " + working_database() + '\n' + table.text();
    return succeed(options.timing ? text + timing_text(done.query_ms) : text);
}

using Show = Outcome (*)(const Options&);

CLI::App& add_command(CLI::App& family, Action& chosen, const char* name, const char* description,
                      Show run_it, const std::shared_ptr<Options>& options) {
    CLI::App* command = family.add_subcommand(name, description);
    command->add_flag("--json", options->json, "One JSON document instead of a table");
    command->add_flag("--timing", options->timing, "Tell how long the query took");
    command->callback(
        [&chosen, options, run_it] { chosen = [options, run_it] { return run_it(*options); }; });
    return *command;
}

void add_history_options(CLI::App& command, Options& options) {
    options.span.entries = kIndexesOfAnHour;
    add_span_options(command, options.span, kWording);
    CLI::Option* json = command.get_option("--json");
    CLI::Option* local =
        command.add_flag("--local", options.local, "Local time instead of UTC")->excludes(json);
    add_plot_options(command, options.plot, {json, local});
    command
        .add_option("--sensor", options.sensors,
                    "A sensor to draw, such as cpu2 or exhaust1; may be repeated")
        ->check(CLI::IsMember(sensor_names()).description(""))
        ->type_name("SENSOR")
        ->expected(1)
        ->take_all();
}

}  // namespace

void add_thermal(CLI::App& app, Action& chosen) {
    CLI::App* family = app.add_subcommand("thermal", "Temperatures");
    family->require_subcommand(1);
    const auto options = std::make_shared<Options>();
    CLI::App& history = add_command(*family, chosen, "history", "Temperatures of a period or span",
                                    show_history, options);
    add_history_options(history, *options);
    history.footer(
        "Examples:\n"
        "  pwrmgtctl thermal history --period 6h --entries 12\n"
        "  pwrmgtctl thermal history --period 24h --plot --sensor cpu1 --sensor cpu2\n"
        "  pwrmgtctl thermal history --end now --minutes 60 --minutes-per-entry 5 --json");
    add_command(*family, chosen, "realtime", "The latest temperatures", show_realtime,
                std::make_shared<Options>())
        .footer("Example:\n  pwrmgtctl thermal realtime --json | jq '.cpu_c[0]'");
}

}  // namespace pwrmgt::pwrmgtctl
