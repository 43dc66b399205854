// SPDX-License-Identifier: Apache-2.0
// A simulated platform firmware: answers the OEM commands in its table from a measured trace.
#pragma once

#include <ctime>

#include "frame.h"
#include "transport.h"

namespace pwrmgt::ipmi::sim {

// One request at wall-clock time `now`. Commands that the firmware does not have are answered as
// real firmware does, with a completion code; only another responder's address gets no answer.
Send answer(const Request& request, std::time_t now, Response& response);

}  // namespace pwrmgt::ipmi::sim
