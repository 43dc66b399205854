// SPDX-License-Identifier: Apache-2.0
// Keeps a server that went away from ending the process: the library writes to encrypted sessions
// without asking for an error in place of the signal.
#pragma once

#include <csignal>

namespace pwrmgt::vekdb::mariadb {

// While it lives, SIGPIPE does not reach this thread, and one that came is forgotten.
class QuietPipe {
public:
    QuietPipe() noexcept;
    ~QuietPipe();
    QuietPipe(const QuietPipe&) = delete;
    QuietPipe& operator=(const QuietPipe&) = delete;

private:
    sigset_t before_{};
    bool was_pending_ = false;
};

}  // namespace pwrmgt::vekdb::mariadb
