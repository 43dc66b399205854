// SPDX-License-Identifier: Apache-2.0
#include "steady_clock.h"

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

std::atomic<std::int64_t> clock_ahead_s{0};

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
    const long result = syscall(SYS_clock_gettime, clock, now);
    if (result == 0 && clock == CLOCK_MONOTONIC) now->tv_sec += static_cast<time_t>(clock_ahead_s);
    return static_cast<int>(result);
}
