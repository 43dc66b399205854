// SPDX-License-Identifier: Apache-2.0
// How long a query took: the library call alone, without parsing and printing.
#pragma once

#include <chrono>
#include <cstdint>

namespace pwrmgt::pwrmgtctl {

struct Timed {
    uint32_t status;
    double query_ms;
};

template <class Query>
Timed timed(const Query& query) {
    const auto start = std::chrono::steady_clock::now();
    const uint32_t status = query();
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    return {status, took.count()};
}

}  // namespace pwrmgt::pwrmgtctl
