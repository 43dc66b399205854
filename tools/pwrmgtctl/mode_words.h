// SPDX-License-Identifier: Apache-2.0
// Redundancy modes in words.
#pragma once

#include <string>

#include "missing.h"

namespace pwrmgt::pwrmgtctl {

// "4, one supply in reserve"; "not set" for none.
std::string redundancy_words(const Value& mode);

// The modes that can be stored, one per line, for a help text.
std::string redundancy_modes_help();

}  // namespace pwrmgt::pwrmgtctl
