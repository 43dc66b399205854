// SPDX-License-Identifier: Apache-2.0
// Keeps standard output for the tool's own document: the library traces there.
#pragma once

#include <string_view>

namespace pwrmgt::pwrmgtctl {

// From construction on descriptor 1 leads to /dev/null; write() reaches what it led to before.
class StdoutGuard {
public:
    StdoutGuard();
    ~StdoutGuard();
    StdoutGuard(const StdoutGuard&) = delete;
    StdoutGuard& operator=(const StdoutGuard&) = delete;

    // Writes the whole text and closes the real standard output: 0, or the error number. Once only.
    int write(std::string_view text);

private:
    int document_;
};

}  // namespace pwrmgt::pwrmgtctl
