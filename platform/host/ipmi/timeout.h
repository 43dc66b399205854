// SPDX-License-Identifier: Apache-2.0
// How long an exchange with a real controller may take.
#pragma once

#include <chrono>

namespace pwrmgt::ipmi {

// $VEKDB_IPMI_TIMEOUT_MS, 100 to 60000. Anything else is the default, 5000: no exchange is
// unbounded.
std::chrono::milliseconds exchange_timeout();

}  // namespace pwrmgt::ipmi
