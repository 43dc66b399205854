// SPDX-License-Identifier: Apache-2.0
// Which database the queries read, for the line on top of every document.
#pragma once

#include <string>

namespace pwrmgt::pwrmgtctl {

// The directory of the working tables or of the persistent ones, or the server's address without a
// password.
std::string working_database();
std::string persistent_database();

}  // namespace pwrmgt::pwrmgtctl
