// SPDX-License-Identifier: Apache-2.0
// Period arithmetic of the thermal history: one reading per minute.
#include "db/tables.h"
#include "vekdb_pwrmgt.h"

using pwrmgt::db::kPeriods;

extern "C" int32_t thermal_get_default_total_count() {
    return 60;
}

extern "C" int32_t thermal_get_secs_per_index(int32_t period, int32_t count) {
    if (count == 0 || static_cast<uint32_t>(period) >= kPeriods.size()) return 0;
    return static_cast<int32_t>(60 * kPeriods[static_cast<uint32_t>(period)].minutes) / count;
}

extern "C" uint32_t thermal_get_secs_per_period(uint32_t period) {
    return period < kPeriods.size() ? static_cast<uint32_t>(kPeriods[period].seconds) : 0;
}
