// SPDX-License-Identifier: Apache-2.0
// What $VEKDB_IPMI names when it names a remote controller.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "loop.h"

namespace pwrmgt::ipmi::openipmi {

struct Target {
    std::string user;
    std::string password;
    std::string host;  // name or address, without brackets
    std::string port;
};

// Nothing when the setting is malformed, or holds more than IPMI has room for.
std::optional<Target> parse_target(std::string_view setting);

// The host as a numeric address: the first IPv4 one of a name, or else the first. Nothing when
// there is none, or none was found by then.
std::optional<std::string> address_of(const Target& target, Clock::time_point until);

}  // namespace pwrmgt::ipmi::openipmi
