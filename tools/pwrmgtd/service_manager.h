// SPDX-License-Identifier: Apache-2.0
// The service manager that started the daemon, told over the socket it named how the daemon is.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace pwrmgt::pwrmgtd {

// Speaks the notification protocol of systemd: one datagram of VARIABLE=value lines. Without
// $NOTIFY_SOCKET nothing is sent. That nobody listens is no failure of the daemon's.
class ServiceManager {
public:
    ServiceManager();
    ~ServiceManager();
    ServiceManager(const ServiceManager&) = delete;
    ServiceManager& operator=(const ServiceManager&) = delete;

    void ready(const std::string& status);
    void status(const std::string& status);
    void reloading();
    void stopping();

    // Tells a watchdog that it still runs: three times within the interval that was set up, however
    // often this is called.
    void alive();

private:
    using Clock = std::chrono::steady_clock;

    void send(const std::string& message) const;

    int socket_ = -1;
    std::string address_;
    std::optional<Clock::duration> alive_every_;
    Clock::time_point last_alive_;
};

}  // namespace pwrmgt::pwrmgtd
