// SPDX-License-Identifier: Apache-2.0
// A simulated platform firmware: answers the OEM commands in its table, from a measured trace and
// from a state that all processes share.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>

#include "frame.h"
#include "transport.h"

namespace pwrmgt::ipmi::sim {

// One request at wall-clock time `now`. Commands that the firmware does not have are answered as
// real firmware does, with a completion code; only another responder's address gets no answer.
Send answer(const Request& request, std::time_t now, Response& response);

// Whether any request with this command, and with this operation where one is given, is answered.
bool offers(std::uint8_t command, std::optional<std::uint8_t> operation);

}  // namespace pwrmgt::ipmi::sim
