// SPDX-License-Identifier: Apache-2.0
#include "clock.h"

#include <poll.h>
#include <time.h>

#include <algorithm>
#include <array>

namespace pwrmgt::pwrmgtd {
namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::array kHandled{SIGTERM, SIGINT, SIGHUP, SIGUSR1};

volatile std::sig_atomic_t g_stop = 0;
volatile std::sig_atomic_t g_reload = 0;
volatile std::sig_atomic_t g_save = 0;

void note(int signal) {
    if (signal == SIGHUP) {
        g_reload = 1;
    } else if (signal == SIGUSR1) {
        g_save = 1;
    } else {
        g_stop = 1;
    }
}

// The most urgent of what was asked for; an end stays asked for.
Wake asked_for() {
    if (g_stop != 0) return Wake::stop;
    if (g_reload != 0) {
        g_reload = 0;
        return Wake::reload;
    }
    if (g_save == 0) return Wake::time;
    g_save = 0;
    return Wake::save;
}

// Under nohup the end of the terminal is nothing to the daemon.
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

std::int64_t monotonic_us() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1'000'000 + now.tv_nsec / 1000;
}

SystemClock::SystemClock() {
    sigset_t held{};
    sigemptyset(&held);
    g_stop = 0;
    g_reload = 0;
    g_save = 0;
    for (const int signal : kHandled) {
        if (signal == SIGHUP && is_ignored(signal)) continue;
        sigaddset(&held, signal);
    }
    sigprocmask(SIG_BLOCK, &held, &mask_before_);
    mask_waiting_ = mask_before_;
    for (const int signal : kHandled) {
        if (sigismember(&held, signal) == 0) continue;
        struct sigaction action {};
        action.sa_handler = note;
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

std::int64_t SystemClock::elapsed() {
    return monotonic_us() / 1'000'000;
}

// The wait itself is relative, so a clock that is set during it changes nothing.
Wake SystemClock::wait_until(std::int64_t t_s) {
    // One wait may have brought several signals.
    if (const Wake asked = asked_for(); asked != Wake::time) return asked;
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
    return asked_for();
}

}  // namespace pwrmgt::pwrmgtd
