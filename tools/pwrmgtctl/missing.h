// SPDX-License-Identifier: Apache-2.0
// The one place where the library's no-reading values become "nothing": past it no marker exists.
#pragma once

#include <cstdint>
#include <optional>

#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {

using Value = std::optional<uint32_t>;

inline Value watts(uint16_t stored) {
    return stored == PWRMGT_NO_POWER ? Value{} : Value{stored};
}

inline Value percent(uint8_t stored) {
    return stored == PWRMGT_NO_PERCENT ? Value{} : Value{stored};
}

// A percentage kept in a column of 16 bits: anything a byte cannot hold is no percentage either.
inline Value wide_percent(uint16_t stored) {
    return stored >= PWRMGT_NO_PERCENT ? Value{} : Value{stored};
}

// A byte of the supply table.
inline Value supply_byte(uint8_t stored) {
    return stored == PWRMGT_PSU_UNKNOWN ? Value{} : Value{stored};
}

// Power that the supplies can deliver: a redundancy mode that their layout does not know leaves 0.
inline Value available_watts(uint32_t told) {
    return told == 0 || told == PWRMGT_NO_POWER ? Value{} : Value{told};
}

// A sensor group's triple: what was not read is -1 in all three, or 0xFF bytes, which are the same.
inline std::optional<pwrmgt_therm_triple_t> degrees(const pwrmgt_therm_triple_t& stored) {
    if (stored.max == -1 && stored.avg == -1 && stored.min == -1) return std::nullopt;
    return stored;
}

// What a caller puts where the library may write nothing: no sensor reads it.
inline constexpr int16_t kNoTemperature = INT16_MIN;

inline std::optional<int32_t> temperature(int16_t stored) {
    return stored == kNoTemperature ? std::nullopt : std::optional<int32_t>(stored);
}

// A byte that says a mode; 255 is one that was never set.
inline Value mode(uint8_t stored) {
    return percent(stored);
}

// 15 is what the policy of a blade starts with: no mode.
inline Value redundancy_mode(uint32_t stored) {
    constexpr uint32_t kNoMode = 15;
    return stored == kNoMode || stored >= PWRMGT_NO_PERCENT ? Value{} : Value{stored};
}

// The second group's mean: the library tests only the first group of a slot for "no reading", so a
// slot with DC and without AC counts 65535 W into the AC mean. The maximum tells: then there is no
// true mean to show.
inline Value second_mean(uint16_t mean, uint16_t max) {
    return max == PWRMGT_NO_POWER || mean > max ? Value{} : watts(mean);
}

}  // namespace pwrmgt::pwrmgtctl
