// SPDX-License-Identifier: Apache-2.0
// Where a power cap may lie.
#pragma once

#include <string>

#include "missing.h"

namespace pwrmgt::pwrmgtctl {

enum class Side { ac, dc };

struct CapRange {
    Value lowest_w;
    Value highest_w;

    [[nodiscard]] bool holds(uint32_t cap_w) const;
};

// The library's status; the range is untouched unless 0.
uint32_t read_cap_range(Side side, CapRange& range);

// "200 to 800 W", "at least 200 W", "not limited".
std::string range_words(const CapRange& range);

}  // namespace pwrmgt::pwrmgtctl
