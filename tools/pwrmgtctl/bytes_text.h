// SPDX-License-Identifier: Apache-2.0
// Bytes for people and for JSON.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace pwrmgt::pwrmgtctl {

using Bytes = std::span<const uint8_t>;

// "00 a1 ff": sixteen bytes a line, each line after its offset and before its characters.
std::string hex_dump(Bytes bytes);

// "00a1ff".
std::string hex_digits(Bytes bytes);

// Whether a terminal or a text reader can take them: printable ASCII, tabs and ends of line.
bool is_plain_text(Bytes bytes);

}  // namespace pwrmgt::pwrmgtctl
