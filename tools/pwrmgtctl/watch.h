// SPDX-License-Identifier: Apache-2.0
// A view that is shown again and again until somebody has seen enough.
#pragma once

#include <cstdint>

namespace pwrmgt::pwrmgtctl {

struct Watch {
    double every_s = 2;
    uint32_t times = 0;  // 0: until interrupted
    bool lines = false;  // each showing is a line
};

}  // namespace pwrmgt::pwrmgtctl
