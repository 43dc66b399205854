// SPDX-License-Identifier: Apache-2.0
// A thermal history as a table or a JSON document.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "chart.h"
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
    Charset charset = Charset::utf8;
};

// Names that thermal_chart() takes: inlet1, inlet2, cpu1 to cpu8, memory1 to memory8, exhaust1,
// exhaust2.
std::vector<std::string> sensor_names();

// True when any sensor has a reading in the entry.
bool has_reading(const pwrmgt_therm_sample_t& sample);

std::string thermal_table(const ThermalHistory& history, const ThermalLayout& layout);
// The averages of one sensor, or of the first that has a reading when none is named. Nothing when
// that sensor has none.
std::optional<std::string> thermal_chart(const ThermalHistory& history, const ThermalLayout& layout,
                                         const std::string& sensor);
std::string thermal_json(const ThermalHistory& history, const ThermalLayout& layout);

}  // namespace pwrmgt::pwrmgtctl
