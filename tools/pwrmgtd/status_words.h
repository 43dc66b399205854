// SPDX-License-Identifier: Apache-2.0
// What a library call's status means, for the log: the same number has other causes elsewhere.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "log.h"

namespace pwrmgt::pwrmgtd {

// "4, the row could not be inserted"; any non-zero status of any function has words.
std::string status_words(std::string_view function, std::uint32_t status);

// Tells the log how the call went; true when it succeeded.
bool note_status(Log& log, std::string_view function, std::uint32_t status);

}  // namespace pwrmgt::pwrmgtd
