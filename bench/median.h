// SPDX-License-Identifier: Apache-2.0
// The middle of a list of figures, which one disturbed round does not move.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace pwrmgt::bench {

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace pwrmgt::bench
