// SPDX-License-Identifier: Apache-2.0
// Exchanges with a remote controller, through a module that is loaded at the first of them.
#pragma once

#include <string>

#include "frame.h"
#include "transport.h"

namespace pwrmgt::ipmi {

// `setting` is lan://...; `reason` is what the log should tell, or stays empty.
Send ask_remote(const std::string& setting, const Request& request, Response& response,
                std::string& reason);

}  // namespace pwrmgt::ipmi
