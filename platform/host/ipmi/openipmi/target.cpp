// SPDX-License-Identifier: Apache-2.0
#include "target.h"

#include <netdb.h>
#include <pthread.h>
#include <sys/socket.h>

#include <array>
#include <charconv>
#include <csignal>
#include <cstdint>
#include <future>
#include <thread>
#include <utility>

namespace pwrmgt::ipmi::openipmi {
namespace {

constexpr std::string_view kRemote = "lan://";
constexpr std::string_view kStandardPort = "623";
// What a log-in has room for.
constexpr std::size_t kMaxUser = 16;
constexpr std::size_t kMaxPassword = 20;

std::optional<unsigned> number(std::string_view text, unsigned most) {
    unsigned value = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stopped != end || value > most) return std::nullopt;
    return value;
}

// host, host:port, [address] or [address]:port
bool split_place(std::string_view place, Target& target) {
    std::string_view port = kStandardPort;
    if (place.starts_with('[')) {
        const std::size_t end = place.find(']');
        if (end == std::string_view::npos) return false;
        target.host = place.substr(1, end - 1);
        place.remove_prefix(end + 1);
        if (!place.empty() && !place.starts_with(':')) return false;
        if (!place.empty()) port = place.substr(1);
    } else {
        const std::size_t colon = place.find(':');
        target.host = place.substr(0, colon);
        if (colon != std::string_view::npos) port = place.substr(colon + 1);
    }
    target.port = port;
    return !target.host.empty() && number(port, 65535).value_or(0) > 0;
}

// The numeric address of a host: the first IPv4 one, or else the first. `flags`: AI_NUMERICHOST
// asks no resolver.
std::optional<std::string> looked_up(const std::string& host, int flags) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_DGRAM;
    hints.ai_flags = flags;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return std::nullopt;
    const addrinfo* chosen = found;
    for (const addrinfo* each = found; each != nullptr; each = each->ai_next) {
        if (each->ai_family == AF_INET && chosen->ai_family != AF_INET) chosen = each;
    }
    std::array<char, NI_MAXHOST> text{};
    const int failed = getnameinfo(chosen->ai_addr, chosen->ai_addrlen, text.data(), text.size(),
                                   nullptr, 0, NI_NUMERICHOST);
    freeaddrinfo(found);
    if (failed != 0) return std::nullopt;
    return std::string(text.data());
}

// A thread for a moment, in which no handler of the program's ever runs.
template <class Task>
std::thread started(Task task) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread thread(std::move(task));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

}  // namespace

std::optional<Target> parse_target(std::string_view setting) {
    Target target;
    if (!setting.starts_with(kRemote)) return std::nullopt;
    setting.remove_prefix(kRemote.size());
    // A password may hold both signs, a user's name no colon, a host no at sign.
    const std::size_t at = setting.rfind('@');
    const std::size_t colon = setting.find(':');
    if (at == std::string_view::npos || colon > at) return std::nullopt;
    target.user = setting.substr(0, colon);
    target.password = setting.substr(colon + 1, at - colon - 1);
    if (target.user.size() > kMaxUser || target.password.size() > kMaxPassword) return std::nullopt;
    if (!split_place(setting.substr(at + 1), target)) return std::nullopt;
    return target;
}

std::optional<std::string> address_of(const Target& target, Clock::time_point until) {
    if (auto address = looked_up(target.host, AI_NUMERICHOST)) return address;
    // Resolvers wait as long as their configuration says.
    std::packaged_task<std::optional<std::string>()> task(
        [host = target.host] { return looked_up(host, 0); });
    auto answer = task.get_future();
    std::thread resolver = started(std::move(task));
    const Outside outside;
    if (answer.wait_until(until) != std::future_status::ready) {
        resolver.detach();
        return std::nullopt;
    }
    resolver.join();
    return answer.get();
}

}  // namespace pwrmgt::ipmi::openipmi
