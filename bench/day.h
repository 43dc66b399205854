// SPDX-License-Identifier: Apache-2.0
// A day of 30-second samples from a measured trace: what every program here writes and reads.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "clock.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::bench {

inline constexpr std::int32_t kSlots = PWRMGT_RING_SLOTS;
inline constexpr std::int32_t kSlot_s = PWRMGT_SLOT_SECONDS;
inline constexpr std::int32_t kDay_s = kSlots * kSlot_s;

// The value columns of a history row, in the table's order.
inline constexpr std::array kValueColumns{
    "SysAvgDc",  "SysMaxDc",  "SysMinDc",  "SysAvgAc",  "SysMaxAc",  "SysMinAc", "CpuAvgPwr",
    "CpuMaxPwr", "CpuMinPwr", "MemAvgPwr", "MemMaxPwr", "MemMinPwr", "Ps1AvgAc", "Ps1AvgDc",
    "Ps2AvgAc",  "Ps2AvgDc",  "Ps3AvgAc",  "Ps3AvgDc",  "Ps4AvgAc",  "Ps4AvgDc", "SysAvgPtg",
    "SysMaxPtg", "SysMinPtg", "CpuAvgPtg", "MemAvgPtg", "IOAvgPtg",
};
inline constexpr std::size_t kValues = kValueColumns.size();

struct Row {
    std::uint16_t slot = 0;
    std::int32_t time_s = 0;
    std::array<std::uint16_t, kValues> values{};
};

// 2880 rows up to kNow_s, oldest first. Throws std::runtime_error without the trace.
std::vector<Row> measured_day();

// The row as the daemon hands it to the library.
pwrmgt_hist_sample_t sample_of(const Row& row);

}  // namespace pwrmgt::bench
