// SPDX-License-Identifier: Apache-2.0
// Everything that the metrics tell, read from the tables; no firmware is asked.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "missing.h"
#include "stored_reading.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {

// How reading a source went: it told something, it holds nothing, or it could not be read.
struct Source {
    const char* name;
    bool up;
    std::string failure;  // in words; empty unless it could not be read
};

struct SupplyPower {
    uint32_t bay;
    uint32_t timestamp_s;
    Value input_w;
    Value output_w;
};

struct Temperature {
    std::string sensor;
    int32_t degrees;
};

struct Snapshot {
    std::vector<Source> sources;
    std::optional<StoredReading> realtime;
    std::optional<pwrmgt_hist_entire_cpu_pwr_t> processors;
    std::vector<SupplyPower> supply_powers;
    std::optional<pwrmgt_psus_property_t> supplies;
    std::optional<pwrmgt_power_policy_t> policy;
    Value available_w;
    Value redundancy_level;
    std::vector<Temperature> temperatures;
    std::optional<int64_t> temperatures_s;  // when the newest of them was taken
};

Snapshot read_snapshot();

}  // namespace pwrmgt::pwrmgtctl
