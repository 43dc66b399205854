// SPDX-License-Identifier: Apache-2.0
#include "target.h"

#include <netdb.h>
#include <sys/socket.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <memory>
#include <vector>

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

struct Lookup {
    explicit Lookup(const Target& target) : host(target.host), port(target.port) {
        hints.ai_socktype = SOCK_DGRAM;
        hints.ai_flags = AI_NUMERICSERV;
        question.ar_name = host.c_str();
        question.ar_service = port.c_str();
        question.ar_request = &hints;
    }
    ~Lookup() {
        if (question.ar_result != nullptr) freeaddrinfo(question.ar_result);
    }
    Lookup(const Lookup&) = delete;
    Lookup& operator=(const Lookup&) = delete;

    std::string host;
    std::string port;
    addrinfo hints{};
    gaicb question{};
};

bool answered(Lookup& lookup, Clock::time_point until) {
    gaicb* list[] = {&lookup.question};
    if (getaddrinfo_a(GAI_NOWAIT, list, 1, nullptr) != 0) return false;
    const gaicb* waiting[] = {&lookup.question};
    while (gai_error(&lookup.question) == EAI_INPROGRESS && Clock::now() < until) {
        const auto left = until - Clock::now();
        const auto whole = std::chrono::duration_cast<std::chrono::seconds>(left);
        timespec timeout{};
        timeout.tv_sec = static_cast<time_t>(whole.count());
        timeout.tv_nsec = static_cast<long>(std::chrono::nanoseconds(left - whole).count());
        const Outside outside;
        gai_suspend(waiting, 1, &timeout);
    }
    return gai_error(&lookup.question) == 0;
}

std::optional<std::string> numeric(const addrinfo* found) {
    const addrinfo* chosen = found;
    for (const addrinfo* each = found; each != nullptr; each = each->ai_next) {
        if (each->ai_family == AF_INET && chosen->ai_family != AF_INET) chosen = each;
    }
    std::array<char, NI_MAXHOST> text{};
    if (chosen == nullptr || getnameinfo(chosen->ai_addr, chosen->ai_addrlen, text.data(),
                                         text.size(), nullptr, 0, NI_NUMERICHOST) != 0) {
        return std::nullopt;
    }
    return std::string(text.data());
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
    // An address needs no resolver, and no thread to wait for it in.
    Lookup address(target);
    address.hints.ai_flags |= AI_NUMERICHOST;
    if (getaddrinfo(address.host.c_str(), address.port.c_str(), &address.hints,
                    &address.question.ar_result) == 0) {
        return numeric(address.question.ar_result);
    }
    auto lookup = std::make_unique<Lookup>(target);
    if (answered(*lookup, until)) return numeric(lookup->question.ar_result);
    if (gai_error(&lookup->question) == EAI_INPROGRESS &&
        gai_cancel(&lookup->question) == EAI_NOTCANCELED) {
        // The resolver still writes into it.
        static auto& given_up = *new std::vector<std::unique_ptr<Lookup>>;
        given_up.push_back(std::move(lookup));
    }
    return std::nullopt;
}

}  // namespace pwrmgt::ipmi::openipmi
