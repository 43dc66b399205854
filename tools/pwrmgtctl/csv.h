// SPDX-License-Identifier: Apache-2.0
// Comma-separated values as RFC 4180 has them: a line of headers, then a line per entry, each ended
// by CR and LF.
#pragma once

#include <string>
#include <vector>

#include "missing.h"

namespace pwrmgt::pwrmgtctl {

// A number, or the empty field for a missing one.
std::string csv_field(const Value& value);

std::string csv_text(const std::vector<std::vector<std::string>>& lines);

}  // namespace pwrmgt::pwrmgtctl
