// SPDX-License-Identifier: Apache-2.0
// A read-write lock: operations share it, fork() takes it alone.
#include "fork_gate.h"

#include <pthread.h>

#include <atomic>

namespace pwrmgt::vekdb {

namespace {

// A waiting fork goes before new operations.
pthread_rwlock_t gate = PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP;
std::atomic<void (*)()> child_action{nullptr};

void before_fork() {
    pthread_rwlock_wrlock(&gate);
}

void after_fork_in_parent() {
    pthread_rwlock_unlock(&gate);
}

void after_fork_in_child() {
    // The lock names its holder by a thread number that the child does not have: make it anew.
    gate = PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP;
    if (void (*action)() = child_action.load(); action != nullptr) action();
}

// From the start: a fork may come in the middle of the very first operation.
[[maybe_unused]] const int watching =
    pthread_atfork(before_fork, after_fork_in_parent, after_fork_in_child);

}  // namespace

Operation::Operation() noexcept {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state_);
    pthread_rwlock_rdlock(&gate);
}

Operation::~Operation() {
    pthread_rwlock_unlock(&gate);
    pthread_setcancelstate(cancel_state_, nullptr);
}

void watch_forks(void (*in_child)()) noexcept {
    child_action.store(in_child);
}

}  // namespace pwrmgt::vekdb
