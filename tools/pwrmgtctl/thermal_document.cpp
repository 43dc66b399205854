// SPDX-License-Identifier: Apache-2.0
// Lays a thermal history out: an entry per line, a sensor per column, triples of degrees.
#include "thermal_document.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <span>

#include "csv.h"
#include "missing.h"

namespace pwrmgt::pwrmgtctl {
namespace {

// A group of sensors: how its columns are headed, its key in JSON, and where its triples start.
struct Group {
    std::string heading;
    std::string key;
    const pwrmgt_therm_triple_t* (*triples)(const pwrmgt_therm_sample_t&);
    size_t count;
};

const std::array<Group, 4> kGroups{{
    {"Inlet", "inlet", [](const pwrmgt_therm_sample_t& s) { return s.ambient; }, 2},
    {"CPU", "cpu", [](const pwrmgt_therm_sample_t& s) { return s.cpu; }, 8},
    {"Memory", "memory", [](const pwrmgt_therm_sample_t& s) { return s.memory; }, 8},
    {"Exhaust", "exhaust", [](const pwrmgt_therm_sample_t& s) { return s.exhaust; }, 2},
}};

// The sensors that any index has a reading of: a column each.
struct Sensor {
    const Group* group;
    size_t place;

    [[nodiscard]] std::optional<pwrmgt_therm_triple_t> read(
        const pwrmgt_therm_sample_t& sample) const {
        return degrees(group->triples(sample)[place]);
    }
};

std::string title_of(const Sensor& sensor) {
    return sensor.group->heading + ' ' + std::to_string(sensor.place + 1);
}

// As it is typed.
std::string name_of(const Sensor& sensor) {
    std::string name = sensor.group->heading + std::to_string(sensor.place + 1);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return name;
}

std::vector<Sensor> sensors_of(const std::vector<pwrmgt_therm_sample_t>& samples) {
    std::vector<Sensor> sensors;
    for (const Group& group : kGroups) {
        for (size_t place = 0; place < group.count; ++place) {
            const Sensor sensor{&group, place};
            const bool seen = std::any_of(samples.begin(), samples.end(), [&](const auto& sample) {
                return sensor.read(sample).has_value();
            });
            if (seen) sensors.push_back(sensor);
        }
    }
    return sensors;
}

std::string triple_text(const std::optional<pwrmgt_therm_triple_t>& triple) {
    if (!triple) return "-";
    return std::to_string(triple->min) + "/" + std::to_string(triple->avg) + "/" +
           std::to_string(triple->max);
}

// How long ago the newest index with a reading ended.
std::optional<Age> newest_age(const ThermalHistory& history) {
    const auto newest = std::find_if(history.samples.rbegin(), history.samples.rend(), has_reading);
    if (newest == history.samples.rend()) return std::nullopt;
    return age_of(newest->tm, history.answer.asked_at_s, history.span.end_s);
}

Answer titled(const ThermalHistory& history, const std::string& title, const char* order,
              Zone zone) {
    Answer answer = history.answer;
    answer.title = title + ", " + span_text(history.span.length_s) + " up to " +
                   time_text(history.span.end_s, zone) + ": " +
                   std::to_string(history.samples.size()) + " entries of " +
                   span_text(history.span.entry_s) + ", " + order;
    if (const std::optional<Age> age = newest_age(history)) {
        answer.title += "; newest reading " + age_words(*age);
    }
    return answer;
}

Json triple_json(const std::optional<pwrmgt_therm_triple_t>& triple) {
    if (!triple) return {{"min_c", nullptr}, {"avg_c", nullptr}, {"max_c", nullptr}};
    return {{"min_c", triple->min}, {"avg_c", triple->avg}, {"max_c", triple->max}};
}

}  // namespace

bool has_reading(const pwrmgt_therm_sample_t& sample) {
    return std::any_of(kGroups.begin(), kGroups.end(), [&](const Group& group) {
        const std::span triples(group.triples(sample), group.count);
        return std::any_of(triples.begin(), triples.end(), [](const pwrmgt_therm_triple_t& triple) {
            return degrees(triple).has_value();
        });
    });
}

std::string thermal_table(const ThermalHistory& history, Zone zone, const CommonOptions& options) {
    const std::vector<Sensor> sensors = sensors_of(history.samples);
    std::vector<std::string> headers{time_header(zone)};
    for (const Sensor& sensor : sensors) {
        headers.push_back(title_of(sensor));
    }
    Table table(std::move(headers));
    for (const pwrmgt_therm_sample_t& sample : history.samples) {
        std::vector<std::string> cells{time_text(sample.tm, zone)};
        for (const Sensor& sensor : sensors) {
            cells.push_back(triple_text(sensor.read(sample)));
        }
        table.add(std::move(cells));
    }
    return answer_text(titled(history, "Temperatures in C (min/avg/max)", "oldest first", zone),
                       options, table.text());
}

std::vector<std::string> sensor_names() {
    std::vector<std::string> names;
    for (const Group& group : kGroups) {
        for (size_t place = 0; place < group.count; ++place) {
            names.push_back(name_of({&group, place}));
        }
    }
    return names;
}

std::string thermal_headline(const ThermalHistory& history) {
    return answer_text(titled(history, "Temperatures in C", "oldest on the left", Zone::utc), {},
                       "");
}

std::optional<Plot> thermal_plot(const ThermalHistory& history,
                                 const std::vector<std::string>& wanted) {
    Plot plot{};
    plot.title = "Temperatures, " + span_text(history.span.length_s) + ", entries of " +
                 span_text(history.span.entry_s);
    plot.unit = PlotUnit::degrees;
    plot.start_s = history.span.end_s - history.span.length_s;
    plot.end_s = history.span.end_s;
    for (const Sensor& sensor : sensors_of(history.samples)) {
        const bool chosen =
            std::find(wanted.begin(), wanted.end(), name_of(sensor)) != wanted.end();
        if (!wanted.empty() && !chosen) continue;
        PlotSeries series{title_of(sensor), {}};
        for (const pwrmgt_therm_sample_t& sample : history.samples) {
            const auto triple = sensor.read(sample);
            series.points.push_back(
                triple ? PlotPoint{sample.tm, triple->avg, triple->min, triple->max}
                       : PlotPoint{sample.tm, {}, {}, {}});
        }
        plot.series.push_back(std::move(series));
    }
    return plot.series.empty() ? std::nullopt : std::optional(plot);
}

std::string thermal_json(const ThermalHistory& history, const CommonOptions& options) {
    Json body;
    body["period_s"] = history.span.length_s;
    body["entry_width_s"] = history.span.entry_s;
    body["end_s"] = history.span.end_s;
    body["end_utc"] = time_text(history.span.end_s, Zone::utc);
    add_age(body, newest_age(history));
    body["order"] = "oldest_first";
    body["entries"] = Json::array();
    for (const pwrmgt_therm_sample_t& sample : history.samples) {
        Json entry;
        entry["timestamp_s"] = sample.tm;
        entry["time_utc"] = time_text(sample.tm, Zone::utc);
        for (const Group& group : kGroups) {
            for (size_t place = 0; place < group.count; ++place) {
                entry[group.key].push_back(triple_json(Sensor{&group, place}.read(sample)));
            }
        }
        body["entries"].push_back(std::move(entry));
    }
    return answer_json(history.answer, options, body);
}

std::string thermal_csv(const ThermalHistory& history) {
    const std::vector<Sensor> sensors = sensors_of(history.samples);
    std::vector<std::vector<std::string>> lines{{"time_utc", "timestamp_s"}};
    for (const Sensor& sensor : sensors) {
        for (const char* value : {"_min_c", "_avg_c", "_max_c"}) {
            lines.front().push_back(name_of(sensor) + value);
        }
    }
    for (const pwrmgt_therm_sample_t& sample : history.samples) {
        std::vector<std::string>& line = lines.emplace_back();
        line = {time_text(sample.tm, Zone::utc), std::to_string(sample.tm)};
        for (const Sensor& sensor : sensors) {
            const auto triple = sensor.read(sample);
            for (const auto value : {&pwrmgt_therm_triple_t::min, &pwrmgt_therm_triple_t::avg,
                                     &pwrmgt_therm_triple_t::max}) {
                line.push_back(triple ? std::to_string((*triple).*value) : std::string());
            }
        }
    }
    return csv_text(lines);
}

}  // namespace pwrmgt::pwrmgtctl
