// SPDX-License-Identifier: Apache-2.0
// A sum of power of which every part has to be known.
#pragma once

#include <cstdint>

#include "reading.h"

namespace pwrmgt::pwrmgtd {

class WattSum {
public:
    void add(const Watts& part) {
        known_ = known_ && part;
        if (part) sum_w_ += *part;
        any_ = true;
    }

    // Nothing without a part, with an unknown one, and above what a table holds.
    Watts watts() const {
        if (!any_ || !known_ || sum_w_ >= PWRMGT_NO_POWER) return std::nullopt;
        return static_cast<std::uint16_t>(sum_w_);
    }

private:
    bool any_ = false;
    bool known_ = true;
    std::uint32_t sum_w_ = 0;
};

}  // namespace pwrmgt::pwrmgtd
