// SPDX-License-Identifier: Apache-2.0
// A thermal history as a table or a JSON document.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

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

// True when any sensor has a reading in the entry.
bool has_reading(const pwrmgt_therm_sample_t& sample);

std::string thermal_table(const ThermalHistory& history, const ThermalLayout& layout);
std::string thermal_json(const ThermalHistory& history, const ThermalLayout& layout);

}  // namespace pwrmgt::pwrmgtctl
