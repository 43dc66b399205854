// SPDX-License-Identifier: Apache-2.0
// The event loop OpenIPMI runs in: timers and file descriptors, turned by whoever waits for an
// answer. The ready-made ones share a kernel object with forked children or take a signal; this one
// has neither, and lets fork() through while it waits.
#pragma once

#include <chrono>

extern "C" {
#include <OpenIPMI/os_handler.h>
}

namespace pwrmgt::ipmi::openipmi {

using Clock = std::chrono::steady_clock;

// What OpenIPMI is told about the system. Made once, kept as long as the process; null without
// memory.
os_handler_t* system_handler() noexcept;

// Does one thing that is due, or waits for one, but not beyond `until`.
void turn(Clock::time_point until) noexcept;

// As long as one lives, no other thread forks: the library is in the middle of something.
class InLibrary {
public:
    InLibrary() noexcept;
    ~InLibrary();
    InLibrary(const InLibrary&) = delete;
    InLibrary& operator=(const InLibrary&) = delete;
};

// Its opposite, for waiting within it: nothing is half done, a fork may come.
class Outside {
public:
    Outside() noexcept;
    ~Outside();
    Outside(const Outside&) = delete;
    Outside& operator=(const Outside&) = delete;
};

}  // namespace pwrmgt::ipmi::openipmi
