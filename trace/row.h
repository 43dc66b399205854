// SPDX-License-Identifier: Apache-2.0
// One row of a trace: how its cells become a reading.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "columns.h"
#include "measured_trace.h"

namespace pwrmgt::trace {

// Which columns a file has.
struct Given {
    std::array<bool, kPlaces> present{};

    // Whether any supply has the kind of column that starts at `first`.
    bool any(std::size_t first) const;
};

Reading make_reading(const Given& given, const Cells& cells, std::int64_t epoch_s);

}  // namespace pwrmgt::trace
