// SPDX-License-Identifier: Apache-2.0
// Keeps fork() and thread cancellation out of the middle of an operation.
#pragma once

namespace pwrmgt::vekdb {

// One exported operation. While it lives, a fork in another thread waits, so that no lock of ours
// or of the engine's is held in the child; and the thread is not cancelled, so that none stays held
// in this process.
class Operation {
public:
    Operation() noexcept;
    ~Operation();
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

private:
    int cancel_state_ = 0;
};

// Has `in_child` called in every child forked from now on, before anything else of ours runs there.
void watch_forks(void (*in_child)()) noexcept;

}  // namespace pwrmgt::vekdb
