// SPDX-License-Identifier: Apache-2.0
// A file that another program may read at any moment: it is the old one or the new one, never half
// of either.
#pragma once

#include <string>
#include <string_view>

namespace pwrmgt::pwrmgtctl {

// Writes beside the file and renames; its permissions are those of any new file. Refuses what is
// there and no regular file: a device, a directory, a link. Empty, or what went wrong in words.
std::string write_file(const std::string& path, std::string_view contents);

}  // namespace pwrmgt::pwrmgtctl
