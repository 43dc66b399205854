// SPDX-License-Identifier: Apache-2.0
// Table names, the ring's size, and the history periods.
#pragma once

#include <array>
#include <cstdint>

namespace pwrmgt::db {

// A working table in memory and the persistent one that it is copied to and from.
struct Twin {
    const char* working;
    const char* persistent;
};

inline constexpr const char* kRealTimePowers = "RealTimePowersMem";
inline constexpr const char* kPowerPolicy = "PowerPolicy";
inline constexpr Twin kHistPowers{"HistPowers24HrMem", "HistPowers24Hr"};
inline constexpr Twin kHistExtraPowers{"HistExtraPowers24HrMem", "HistExtraPowers24Hr"};

inline constexpr Twin kHistThermal{"HistThermal24HrMem", "HistThermal24Hr"};
inline constexpr const char* kRealTimeThermal = "RealTimeThermalMem";
inline constexpr const char* kPsuProperty = "PsuPropertyMem";
inline constexpr const char* kHistCpuPowers = "HistCpuPowersMem";

inline constexpr int32_t kDaySeconds = 86400;
inline constexpr uint32_t kSlotSeconds = 30;
inline constexpr uint32_t kRingSlots = 2880;

struct Period {
    int32_t seconds;
    uint32_t minutes;
    uint32_t samples_per_entry;
};

inline constexpr std::array<Period, 4> kPeriods{{
    {3600, 60, 1},
    {21600, 360, 6},
    {43200, 720, 12},
    {86400, 1440, 24},
}};

}  // namespace pwrmgt::db
