// SPDX-License-Identifier: Apache-2.0
// Takes over the C library's allocator for the whole program and counts, while asked to.
#pragma once

#include <cstddef>

namespace pwrmgt::test {

void start_counting();
size_t stop_counting();

// Allocations made anywhere in the process, shared libraries included, while `act` runs.
template <class Act>
size_t allocations_of(const Act& act) {
    start_counting();
    act();
    return stop_counting();
}

}  // namespace pwrmgt::test
