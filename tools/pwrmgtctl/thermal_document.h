// SPDX-License-Identifier: Apache-2.0
// A thermal history as a table, a JSON document, CSV or a picture.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "answer.h"
#include "plot.h"
#include "print.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {

struct ThermalSpan {
    int64_t end_s;
    uint32_t length_s;
    uint32_t entry_s;
};

struct ThermalHistory {
    Answer answer;
    ThermalSpan span;
    std::vector<pwrmgt_therm_sample_t> samples;  // oldest first
};

// Names that thermal_plot() takes: inlet1, inlet2, cpu1 to cpu8, memory1 to memory8, exhaust1,
// exhaust2.
std::vector<std::string> sensor_names();

// True when any sensor has a reading in the entry.
bool has_reading(const pwrmgt_therm_sample_t& sample);

std::string thermal_table(const ThermalHistory& history, Zone zone, const CommonOptions& options);
// The line on top of a picture.
std::string thermal_headline(const ThermalHistory& history);
// The sensors named, or every one that has a reading. Nothing when none of them has one.
std::optional<Plot> thermal_plot(const ThermalHistory& history,
                                 const std::vector<std::string>& wanted);
std::string thermal_json(const ThermalHistory& history, const CommonOptions& options);
// Three columns for every sensor that has a reading.
std::string thermal_csv(const ThermalHistory& history);

}  // namespace pwrmgt::pwrmgtctl
