// SPDX-License-Identifier: Apache-2.0
// The real-time reading that the daemon stored last: the one row of `RealTimePowersMem`.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "missing.h"

namespace pwrmgt::pwrmgtctl {

// Places in a reading: watts first, then percentages.
namespace place {
enum : size_t {
    system_ac_w,
    system_dc_w,
    cpu_dc_w,
    memory_dc_w,
    system_pct,
    cpu_pct,
    memory_pct,
    io_pct,
    count
};
}  // namespace place

using ReadingValues = std::array<Value, place::count>;

struct StoredReading {
    int64_t taken_s = 0;
    ReadingValues values;
};

// Statuses follow the library's: 10 not offered, 2 no connection, 3 the query failed, 8 no row, 31
// more than one. Untouched unless 0.
uint32_t read_stored_reading(StoredReading& reading);

// When the newest row of `RealTimeThermalMem` was taken; none when there is none, or no telling.
std::optional<int64_t> newest_temperature_s();

}  // namespace pwrmgt::pwrmgtctl
