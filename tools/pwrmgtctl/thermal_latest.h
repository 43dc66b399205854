// SPDX-License-Identifier: Apache-2.0
// The latest temperatures, each with the time of its row.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace pwrmgt::pwrmgtctl {

struct LatestTemperature {
    std::string name;     // as it is typed: "cpu2"
    std::string heading;  // "CPU 2"
    int32_t value_c;
    int64_t taken_s;
};

// Statuses as pwrmgt_get_therm_realtime(); sensors in the order inlet, processor, memory module.
uint32_t read_latest_temperatures(std::vector<LatestTemperature>& temperatures);

}  // namespace pwrmgt::pwrmgtctl
