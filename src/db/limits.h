// SPDX-License-Identifier: Apache-2.0
// The unstress powers, and how they widen the capping limits.
#pragma once

#include <cstdint>

#include "db/status.h"

namespace pwrmgt::db {

struct Unstress {
    uint16_t adapter_w = 0;
    uint16_t hdd_w = 0;

    // Kept: the two bounds differ. [UnstressBoundsDiffer]
    constexpr bool counts() const { return adapter_w < 550 && hdd_w < 352; }
    constexpr uint16_t sum_w() const { return static_cast<uint16_t>(adapter_w + hdd_w); }
};

// Adds in 16 bits, whatever the limit is.
constexpr void widen(uint16_t& limit_w, const Unstress& extra) {
    limit_w = static_cast<uint16_t>(limit_w + extra.sum_w());
}

// Adds unless the limit is not set.
constexpr void widen_if_set(uint16_t& limit_w, const Unstress& extra) {
    if (limit_w != kNoPower) widen(limit_w, extra);
}

}  // namespace pwrmgt::db
