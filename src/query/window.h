// SPDX-License-Identifier: Apache-2.0
// The window of a query: which rows, and in which order, as the texts that the client takes.
#pragma once

#include <cstdint>

#include "vekdb_pwrmgt.h"

namespace pwrmgt::query {

// Cut toward zero to a whole number of steps.
constexpr int32_t cut_to(int32_t step, int32_t time) {
    return time / step * step;
}

// `time` less some seconds, wrapping in 32 bits.
constexpr int32_t before(int32_t time, uint32_t seconds) {
    return static_cast<int32_t>(static_cast<uint32_t>(time) - seconds);
}

struct Window {
    char order[PWRMGT_ORDER_SIZE];
    char filter[PWRMGT_FILTER_SIZE];

    // Formats both texts for rows from `start` to `end`.
    void span(int32_t start, int32_t end);
};

}  // namespace pwrmgt::query
