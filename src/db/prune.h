// SPDX-License-Identifier: Apache-2.0
// Trims of every table: "keep the last seconds" as data.
#pragma once

#include <cstdint>

#include "db/status.h"
#include "db/tables.h"

namespace pwrmgt::db {

// What happens to rows stamped late.
enum class UpperBound { from_now, after_now, none };

struct Prune {
    const char* table;
    uint32_t keep_s;
    UpperBound upper;
};

// Kept: a row stamped exactly `now` goes from the 24-hour power tables. [RowStampedNowIsTrimmed]
inline constexpr Prune kHistWorking{kHistPowers.working, kDaySeconds, UpperBound::from_now};
inline constexpr Prune kHistPersistent{kHistPowers.persistent, kDaySeconds, UpperBound::from_now};
inline constexpr Prune kExtraWorking{kHistExtraPowers.working, kDaySeconds, UpperBound::from_now};
inline constexpr Prune kExtraPersistent{kHistExtraPowers.persistent, kDaySeconds,
                                        UpperBound::from_now};

// Kept: a row stamped exactly `now` stays in the processor table. [ProcessorRowStampedNowStays]
inline constexpr Prune kCpuWorking{kHistCpuPowers, 600, UpperBound::after_now};

// Kept: a row stamped exactly `now` stays in the thermal tables too, and at start only the lower
// bound is trimmed. [ThermalRowStampedNowStays] [StartTrimsTheLowerBoundOnly]
inline constexpr Prune kThermalWorking{kHistThermal.working, kDaySeconds, UpperBound::after_now};
inline constexpr Prune kThermalPersistent{kHistThermal.persistent, kDaySeconds,
                                          UpperBound::after_now};
inline constexpr Prune kThermalAtStart{kHistThermal.persistent, kDaySeconds, UpperBound::none};

// True when `now` lies far enough after the epoch for the lower bound to be a time.
constexpr bool day_has_passed(int32_t now) {
    return now > kDaySeconds;
}

// Deletes the rows outside the rule's span. statement_failed when the client refuses.
Status prune(uint32_t db, const Prune& rule, uint32_t now);

}  // namespace pwrmgt::db
