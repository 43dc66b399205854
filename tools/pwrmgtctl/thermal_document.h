// SPDX-License-Identifier: Apache-2.0
// A thermal history as a table or a JSON document.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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
    ThermalSpan span;
    std::vector<pwrmgt_therm_sample_t> samples;  // oldest first
    double query_ms;
};

struct ThermalLayout {
    Zone zone;
    bool timing;
};

// Names that thermal_plot() takes: inlet1, inlet2, cpu1 to cpu8, memory1 to memory8, exhaust1,
// exhaust2.
std::vector<std::string> sensor_names();

// True when any sensor has a reading in the entry.
bool has_reading(const pwrmgt_therm_sample_t& sample);

// What it tells of, without the end of its line.
std::string thermal_headline(const std::string& title, const ThermalHistory& history, Zone zone);
std::string thermal_table(const ThermalHistory& history, const ThermalLayout& layout);
// The sensors named, or every one that has a reading. Nothing when none of them has one.
std::optional<Plot> thermal_plot(const ThermalHistory& history,
                                 const std::vector<std::string>& wanted);
std::string thermal_json(const ThermalHistory& history, const ThermalLayout& layout);

}  // namespace pwrmgt::pwrmgtctl
