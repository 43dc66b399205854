// SPDX-License-Identifier: Apache-2.0
// The rated power that another process leaves in a text file.
#pragma once

#include <cstdint>

namespace pwrmgt::psu {

// The last number in the file, watts; 0 when the file is missing, empty or holds anything else.
// Complains on standard error.
uint32_t read_rated_power_file(const char* path);

}  // namespace pwrmgt::psu
