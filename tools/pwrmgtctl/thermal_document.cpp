// SPDX-License-Identifier: Apache-2.0
// Lays a thermal history out: an entry per line, a sensor per column, triples of degrees.
#include "thermal_document.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <span>

#include "database.h"
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
    {"Inlet", "ambient", [](const pwrmgt_therm_sample_t& s) { return s.ambient; }, 2},
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

std::string thermal_headline(const std::string& title, const ThermalHistory& history, Zone zone) {
    return title + ", " + span_text(history.span.length_s) + " up to " +
           time_text(history.span.end_s, zone) + ": " + std::to_string(history.samples.size()) +
           " entries of " + span_text(history.span.entry_s);
}

std::string thermal_table(const ThermalHistory& history, const ThermalLayout& layout) {
    const Zone zone = layout.zone;
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
    const std::string text = thermal_headline("Temperatures in C (min/avg/max)", history, zone) +
                             ", oldest first; database " + working_database() + '\n' + table.text();
    return layout.timing ? text + timing_text(history.query_ms) : text;
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

std::string thermal_json(const ThermalHistory& history, const ThermalLayout& layout) {
    Json document;
    document["schema"] = "pwrmgtctl.thermal.history/1";
    document["period_s"] = history.span.length_s;
    document["entry_width_s"] = history.span.entry_s;
    document["order"] = "oldest_first";
    document["end_s"] = history.span.end_s;
    document["end_utc"] = time_text(history.span.end_s, Zone::utc);
    document["database"] = working_database();
    if (layout.timing) document["query_ms"] = rounded_ms(history.query_ms);
    document["entries"] = Json::array();
    for (const pwrmgt_therm_sample_t& sample : history.samples) {
        Json entry;
        entry["timestamp_s"] = sample.tm;
        entry["time_utc"] = time_text(sample.tm, Zone::utc);
        for (const Group& group : kGroups) {
            for (size_t place = 0; place < group.count; ++place) {
                entry[group.key].push_back(triple_json(Sensor{&group, place}.read(sample)));
            }
        }
        document["entries"].push_back(std::move(entry));
    }
    return json_text(document);
}

}  // namespace pwrmgt::pwrmgtctl
