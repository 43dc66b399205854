// SPDX-License-Identifier: Apache-2.0
#include "quiet_pipe.h"

#include <pthread.h>

#include <ctime>

namespace pwrmgt::vekdb::mariadb {

namespace {

bool is_pending() {
    sigset_t pending{};
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
}

sigset_t only_pipe() {
    sigset_t set{};
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    return set;
}

}  // namespace

QuietPipe::QuietPipe() noexcept {
    const sigset_t pipe = only_pipe();
    pthread_sigmask(SIG_BLOCK, &pipe, &before_);
    was_pending_ = is_pending();
}

QuietPipe::~QuietPipe() {
    if (!was_pending_ && is_pending()) {
        const sigset_t pipe = only_pipe();
        const timespec at_once{};
        sigtimedwait(&pipe, nullptr, &at_once);
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace pwrmgt::vekdb::mariadb
