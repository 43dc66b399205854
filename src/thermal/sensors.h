// SPDX-License-Identifier: Apache-2.0
// Kinds of temperature sensors: how they are queried, announced, and where their readings go.
#pragma once

#include <array>
#include <cstdint>

#include "vekdb_pwrmgt.h"

namespace pwrmgt::thermal {

inline constexpr int16_t kAmbient = 1;
inline constexpr int16_t kProcessor = 2;
inline constexpr int16_t kMemory = 3;
inline constexpr int16_t kExhaust = 4;

// One row of a thermal table.
struct Reading {
    int32_t time = 0;
    int16_t type = 0;
    int16_t instance = 0;
    int16_t value = 0;
};

// The result's current row.
Reading read_row(uint32_t result);

// Which instances one query asks for.
enum class Asks { one_instance, one_socket };

struct SensorKind {
    int16_t type;
    Asks asks;
    int queries;
    const char* announcement;  // null: none
    const char* label_before;  // around the number of the query in the debug label
    const char* label_after;
};

// In the order in which they are queried.
inline constexpr std::array<SensorKind, 4> kSensorKinds{{
    {kAmbient, Asks::one_instance, 2, "--->query for ambient", "AMB ", ""},
    {kExhaust, Asks::one_instance, 2, nullptr, "EXH ", ""},
    {kProcessor, Asks::one_instance, 8, "--->query for cpu", "CPU ", ""},
    {kMemory, Asks::one_socket, 8, "--->query for dimm", "CPU", " DIMM"},
}};

// Memory modules per socket: the property, or 16.
int32_t modules_per_socket();

// The slot of a sensor in a sample; null for a type or an instance that has none.
pwrmgt_therm_triple_t* slot_of(pwrmgt_therm_sample_t& sample, int16_t type, int16_t instance,
                               int32_t per_socket);

}  // namespace pwrmgt::thermal
