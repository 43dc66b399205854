// SPDX-License-Identifier: Apache-2.0
// The daemon's time, timer and signals in one piece, so that tests run a day in a moment.
#pragma once

#include <csignal>
#include <cstdint>

namespace pwrmgt::pwrmgtd {

// `reload`: read the configuration again. `save`: save what is recorded, now.
enum class Wake { time, stop, reload, save };

// Microseconds that no setting of the clock changes.
std::int64_t monotonic_us();

class Clock {
public:
    Clock() = default;
    virtual ~Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;

    // Seconds since the epoch.
    virtual std::int64_t now() = 0;

    // Seconds that no setting of the clock changes.
    virtual std::int64_t elapsed() = 0;

    // Waits for second `t_s`, but a second at most, so that a clock that is set meanwhile is
    // noticed; the caller looks at now(). Something else than `time` when that was asked for.
    virtual Wake wait_until(std::int64_t t_s) = 0;
};

// The wall clock; SIGTERM and SIGINT are the end, SIGHUP is a reload, SIGUSR1 a save. They are held
// back from construction on and arrive in wait_until() only, so nothing else is ever interrupted.
// One per process.
class SystemClock final : public Clock {
public:
    SystemClock();
    ~SystemClock() override;

    std::int64_t now() override;
    std::int64_t elapsed() override;
    Wake wait_until(std::int64_t t_s) override;

private:
    sigset_t mask_before_{};
    sigset_t mask_waiting_{};
};

}  // namespace pwrmgt::pwrmgtd
