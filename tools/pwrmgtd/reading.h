// SPDX-License-Identifier: Apache-2.0
// One moment's readings of the machine, whatever source they come from; an empty value is a missing
// reading.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtd {

using Watts = std::optional<std::uint16_t>;
using Percent = std::optional<std::uint8_t>;
using Celsius = std::optional<std::int16_t>;

inline constexpr std::size_t kSupplies = PWRMGT_MAX_PSU;
inline constexpr std::size_t kCpus = 8;

struct SupplyReading {
    Watts ac_w;
    Watts dc_w;
};

// What a source tells of a supply beside its power. An empty value is not told: what was known of
// it stays, so a source that falls silent changes nothing.
struct SupplyState {
    std::optional<bool> present;
    std::optional<bool> ac_lost;
    std::optional<bool> fault;
    std::optional<std::uint8_t> voltage_class;
    Watts input_label_w;
    Watts output_label_w;
};

struct Reading {
    Watts sys_ac_w;
    Watts sys_dc_w;
    Watts cpu_w;
    Watts mem_w;
    std::array<SupplyReading, kSupplies> supplies;     // place 0 is supply 1
    std::array<SupplyState, kSupplies> supply_states;  // as above
    std::array<Watts, kCpus> each_cpu_w;               // place 0 is processor 1
    Percent sys_pct;
    Percent cpu_pct;
    Percent mem_pct;
    Percent io_pct;
    Celsius ambient_c;
    Celsius exhaust_c;
    std::array<Celsius, kCpus> each_cpu_c;  // place 0 is processor 1
};

inline std::uint16_t stored(const Watts& watts) {
    return watts.value_or(static_cast<std::uint16_t>(PWRMGT_NO_POWER));
}

inline std::uint8_t stored(const Percent& percent) {
    return percent.value_or(static_cast<std::uint8_t>(PWRMGT_NO_PERCENT));
}

}  // namespace pwrmgt::pwrmgtd
