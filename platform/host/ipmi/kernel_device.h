// SPDX-License-Identifier: Apache-2.0
// Exchanges with this machine's controller, through the kernel's IPMI driver.
#pragma once

#include <string>

#include "frame.h"
#include "transport.h"

namespace pwrmgt::ipmi {

// `setting` is /dev/ipmiN; `reason` is what the log should tell, or stays empty.
Send ask_kernel(const std::string& setting, const Request& request, Response& response,
                std::string& reason);

}  // namespace pwrmgt::ipmi
