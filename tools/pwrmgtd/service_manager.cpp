// SPDX-License-Identifier: Apache-2.0
#include "service_manager.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "clock.h"

namespace pwrmgt::pwrmgtd {
namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::optional<std::int64_t> number(const std::string& text) {
    std::int64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
    return value;
}

// A watchdog that waits for another process is none of ours.
std::optional<std::chrono::microseconds> watchdog_interval() {
    const std::string waits_for = variable("WATCHDOG_PID");
    if (!waits_for.empty() && number(waits_for) != getpid()) return std::nullopt;
    const auto interval_us = number(variable("WATCHDOG_USEC"));
    if (!interval_us || *interval_us <= 0) return std::nullopt;
    return std::chrono::microseconds(*interval_us);
}

// A value must stay on its line.
std::string status_line(std::string status) {
    for (char& c : status) {
        if (c == '\n') c = ' ';
    }
    return "STATUS=" + status;
}

}  // namespace

ServiceManager::ServiceManager() : address_(variable("NOTIFY_SOCKET")) {
    const bool named = address_.starts_with('/') || address_.starts_with('@');
    if (!named || address_.size() >= sizeof(sockaddr_un::sun_path)) return;
    socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (const auto interval = watchdog_interval()) alive_every_ = *interval / 3;
}

ServiceManager::~ServiceManager() {
    if (socket_ >= 0) close(socket_);
}

void ServiceManager::ready(const std::string& status) {
    send("READY=1\n" + status_line(status));
    last_alive_ = Clock::now();
}

void ServiceManager::status(const std::string& status) {
    send(status_line(status));
}

void ServiceManager::reloading() {
    send("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(monotonic_us()));
}

void ServiceManager::stopping() {
    send("STOPPING=1\nSTATUS=saving the last slots");
}

void ServiceManager::alive() {
    const Clock::time_point now = Clock::now();
    if (!alive_every_ || now - last_alive_ < *alive_every_) return;
    last_alive_ = now;
    send("WATCHDOG=1");
}

void ServiceManager::send(const std::string& message) const {
    if (socket_ < 0) return;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, address_.data(), address_.size());
    if (address.sun_path[0] == '@') address.sun_path[0] = '\0';  // a name without a file
    const auto length = offsetof(sockaddr_un, sun_path) + address_.size();
    sendto(socket_, message.data(), message.size(), MSG_NOSIGNAL,
           reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(length));
}

}  // namespace pwrmgt::pwrmgtd
