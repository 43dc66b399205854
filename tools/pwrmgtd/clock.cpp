// SPDX-License-Identifier: Apache-2.0
#include "clock.h"

#include <poll.h>
#include <time.h>

#include <algorithm>
#include <array>

namespace pwrmgt::pwrmgtd {
namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::array kEnding{SIGTERM, SIGINT, SIGHUP};

volatile std::sig_atomic_t g_stop = 0;

void ask_to_stop(int) {
    g_stop = 1;
}

// Under nohup the end of the terminal is not the daemon's.
bool is_ignored(int signal) {
    struct sigaction current {};
    return sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_IGN;
}

timespec wall_clock() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now;
}

}  // namespace

SystemClock::SystemClock() {
    sigset_t held{};
    sigemptyset(&held);
    g_stop = 0;
    for (const int signal : kEnding) {
        if (signal == SIGHUP && is_ignored(signal)) continue;
        sigaddset(&held, signal);
    }
    sigprocmask(SIG_BLOCK, &held, &mask_before_);
    mask_waiting_ = mask_before_;
    for (const int signal : kEnding) {
        if (sigismember(&held, signal) == 0) continue;
        struct sigaction action {};
        action.sa_handler = ask_to_stop;
        sigaction(signal, &action, nullptr);
        sigdelset(&mask_waiting_, signal);
    }
}

SystemClock::~SystemClock() {
    sigprocmask(SIG_SETMASK, &mask_before_, nullptr);
}

std::int64_t SystemClock::now() {
    return wall_clock().tv_sec;
}

Wake SystemClock::wait_until(std::int64_t t_s) {
    const timespec now = wall_clock();
    std::int64_t wait_ns = 0;
    if (t_s > now.tv_sec) {
        const std::int64_t whole_s = std::min<std::int64_t>(t_s - now.tv_sec, 2);
        wait_ns = std::min(whole_s * kNanosecondsPerSecond - now.tv_nsec, kNanosecondsPerSecond);
    }
    timespec wait{};
    wait.tv_sec = static_cast<decltype(wait.tv_sec)>(wait_ns / kNanosecondsPerSecond);
    wait.tv_nsec = static_cast<decltype(wait.tv_nsec)>(wait_ns % kNanosecondsPerSecond);
    ppoll(nullptr, 0, &wait, &mask_waiting_);
    return g_stop != 0 ? Wake::stop : Wake::time;
}

}  // namespace pwrmgt::pwrmgtd
