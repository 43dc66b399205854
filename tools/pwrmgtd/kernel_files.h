// SPDX-License-Identifier: Apache-2.0
// Small files of the kernel's, as numbers and words. What is missing, cannot be read or is no
// number is nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pwrmgt::pwrmgtd {

// The first line without its end.
std::optional<std::string> read_word(const std::string& path);

std::optional<std::int64_t> read_number(const std::string& path);

// Names in a directory in their natural order, so that 7-0058 stands before 10-0058.
std::vector<std::string> names_in(const std::string& directory);

// The last name of what a link leads to.
std::optional<std::string> link_name(const std::string& path);

// The place, below kCpus, of processor N in "package-N", "package-N-die-M" or "package id N", given
// what stands before the number; nothing for another text.
std::optional<std::size_t> place_after(std::string_view text, std::string_view prefix);

}  // namespace pwrmgt::pwrmgtd
