// SPDX-License-Identifier: Apache-2.0
// Keeps standard output for the tool's own document: the library traces there.
#pragma once

#include <string_view>

namespace pwrmgt::common {

// From construction on descriptor 1 leads to /dev/null; write() reaches what it led to before.
class StdoutGuard {
public:
    StdoutGuard();
    ~StdoutGuard();
    StdoutGuard(const StdoutGuard&) = delete;
    StdoutGuard& operator=(const StdoutGuard&) = delete;

    // Writes the whole text: 0, or the error number.
    int add(std::string_view text);
    // As add(), and closes the real standard output. Once only, and last.
    int write(std::string_view text);
    // Whether somebody looks on at a terminal.
    [[nodiscard]] bool is_terminal() const;
    // The descriptor of the process's real standard output, whether or not a guard stands.
    static int real_output();

private:
    int document_;
};

}  // namespace pwrmgt::common
