// SPDX-License-Identifier: Apache-2.0
// Where the readings of a sensor go.
#include "thermal/sensors.h"

#include <cstddef>
#include <span>

#include "vekdb_client.h"
#include "vekdb_prop.h"

namespace pwrmgt::thermal {

namespace {

constexpr const char* kModulesKey = "/dc/tavn/dm/planar/dimm_per_socket";
constexpr int32_t kDefaultModules = 16;

std::span<pwrmgt_therm_triple_t> slots_of(pwrmgt_therm_sample_t& sample, int16_t type) {
    switch (type) {
        case kAmbient:
            return sample.ambient;
        case kProcessor:
            return sample.cpu;
        case kMemory:
            return sample.memory;
        case kExhaust:
            return sample.exhaust;
        default:
            return {};
    }
}

}  // namespace

Reading read_row(uint32_t result) {
    Reading reading;
    vek_db_result_column_int(result, 0, &reading.time);
    vek_db_result_column_short_int(result, 1, &reading.type);
    vek_db_result_column_short_int(result, 2, &reading.instance);
    vek_db_result_column_short_int(result, 3, &reading.value);
    return reading;
}

int32_t modules_per_socket() {
    uint8_t modules = 0;
    if (propdb_get_byte(kModulesKey, &modules) != 0 || modules == 0) return kDefaultModules;
    return modules;
}

pwrmgt_therm_triple_t* slot_of(pwrmgt_therm_sample_t& sample, int16_t type, int16_t instance,
                               int32_t per_socket) {
    if (instance < 1) return nullptr;
    const int32_t slot = type == kMemory ? (instance - 1) / per_socket : instance - 1;
    const std::span<pwrmgt_therm_triple_t> slots = slots_of(sample, type);
    const auto place = static_cast<size_t>(slot);
    return place < slots.size() ? &slots[place] : nullptr;
}

}  // namespace pwrmgt::thermal
