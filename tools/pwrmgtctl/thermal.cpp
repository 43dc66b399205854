// SPDX-License-Identifier: Apache-2.0
// The commands `thermal history` and `thermal realtime`: temperatures of a past period or a span,
// and the latest ones.
#include <algorithm>
#include <cstring>
#include <ctime>
#include <memory>

#include "answer.h"
#include "layout_options.h"
#include "plot_options.h"
#include "span_options.h"
#include "status_text.h"
#include "thermal_document.h"
#include "thermal_latest.h"
#include "time_argument.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr uint32_t kIndexesOfAnHour = 60;
constexpr SpanWording kWording{"Entries to divide the period into, 1 to 1440, for an hour to 60",
                               1440, "--minutes-per-entry",
                               "Width of an entry of the window in minutes, 1 to 12", 12};

struct Options : CommonOptions {
    SpanOptions span;
    bool csv = false;
    PlotOptions plot;
    std::vector<std::string> sensors;
    bool local = false;
};

struct LatestOptions : CommonOptions {
    bool local = false;
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

Asked resolve(const SpanOptions& options, int64_t now_s) {
    Asked asked{};
    const std::optional<int32_t> end_s =
        parse_time(options.minutes == 0 ? "now" : options.end, now_s);
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
                        {thermal_headline(answer),
                         options.timing ? timing_text(answer.answer.query_ms) : std::string()});
}

Outcome show_as(const ThermalHistory& answer, const Options& options) {
    if (options.plot.wanted()) return show_plot(answer, options);
    if (options.csv) return succeed(thermal_csv(answer));
    if (options.json) return succeed(thermal_json(answer, options));
    return succeed(thermal_table(answer, options.local ? Zone::local : Zone::utc, options));
}

Outcome show_history(const Options& options) {
    if (!options.sensors.empty() && !options.plot.wanted()) {
        return fail(Exit::usage, "--sensor requires --plot, --svg or --png");
    }
    const int64_t asked_at_s = std::time(nullptr);
    const Asked asked = resolve(options.span, asked_at_s);
    if (!asked.mistake.empty()) return fail(Exit::usage, asked.mistake);
    ThermalHistory answer{{"thermal.history/1", Origin::working_tables, {}, asked_at_s, 0},
                          asked.span,
                          std::vector<pwrmgt_therm_sample_t>(asked.count)};
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
    answer.answer.query_ms = done.query_ms;
    fill_times(answer.samples, asked.span);
    return show_as(answer, options);
}

Outcome show_realtime(const LatestOptions& options) {
    const int64_t asked_at_s = std::time(nullptr);
    std::vector<LatestTemperature> temperatures;
    const Timed done = timed([&] { return read_latest_temperatures(temperatures); });
    if (done.status != 0) return explain(Call::thermal_realtime, done.status, "");
    if (temperatures.empty()) return fail(Exit::no_data, "no temperature is stored");
    int64_t newest_s = 0;
    Table table({"Sensor", "C", "Age"});
    Json body;
    body["readings"] = Json::array();
    for (const LatestTemperature& sensor : temperatures) {
        const Age age = age_of(sensor.taken_s, asked_at_s, asked_at_s);
        newest_s = std::max(newest_s, sensor.taken_s);
        table.add({sensor.heading, std::to_string(sensor.value_c), age_words(age)});
        Json reading{{"sensor", sensor.name}, {"temperature_c", sensor.value_c}};
        add_taken(reading, sensor.taken_s, age);
        body["readings"].push_back(std::move(reading));
    }
    const Age age = age_of(newest_s, asked_at_s, asked_at_s);
    add_taken(body, newest_s, age);
    const std::string time = time_text(newest_s, options.local ? Zone::local : Zone::utc);
    return live_view(
        answer_document({"thermal.realtime/1", Origin::working_tables,
                         "Latest temperatures, the newest of " + time + ", " + age_words(age),
                         asked_at_s, done.query_ms},
                        options, table.text(), body),
        age);
}

void add_history_options(cli::Command command, Options& options) {
    options.span.entries = kIndexesOfAnHour;
    add_span_options(command, options.span, kWording);
    add_local_option(command, options.local);
    add_csv_option(command, options.csv);
    add_plot_options(
        command, options.plot,
        {command.option("--json"), command.option("--csv"), command.option("--local")});
    command
        .add_option("--sensor", options.sensors,
                    "A sensor to draw, such as cpu2 or exhaust1; may be repeated")
        .check(cli::one_of(sensor_names()))
        .type_name("SENSOR")
        .may_be_repeated();
}

}  // namespace

void add_thermal(cli::Command thermal, Action& chosen) {
    const auto past = std::make_shared<Options>();
    cli::Command history = add_command(
        thermal, chosen,
        {"history", "Temperatures of a past period or window",
         "Examples:\n"
         "  pwrmgtctl thermal history --period 6h --entries 12\n"
         "  pwrmgtctl thermal history --period 24h --plot --sensor cpu2\n"
         "  pwrmgtctl thermal history --end now --minutes 60 --minutes-per-entry 5 --json"},
        past, show_history);
    add_history_options(history, *past);

    const auto latest = std::make_shared<LatestOptions>();
    cli::Command realtime = add_command(
        thermal, chosen,
        {"realtime", "The latest temperatures",
         "Examples:\n"
         "  pwrmgtctl thermal realtime --watch\n"
         "  pwrmgtctl thermal realtime --json | jq '.readings[] | select(.sensor == \"cpu1\")'"},
        latest, show_realtime);
    add_local_option(realtime, latest->local);
    let_watch(realtime, chosen, latest, show_realtime);
}

}  // namespace pwrmgt::pwrmgtctl
