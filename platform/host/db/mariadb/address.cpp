// SPDX-License-Identifier: Apache-2.0
#include "address.h"

#include <charconv>

namespace pwrmgt::vekdb::mariadb {

namespace {

constexpr std::string_view kScheme = "mariadb://";
constexpr const char* kDatabase = "vek_pwr_db";

// False when a percent sign stands without two hexadecimal digits, or for a zero byte.
bool decode(std::string_view text, std::string& decoded) {
    decoded.clear();
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            decoded += text[at];
            continue;
        }
        unsigned byte = 0;
        const std::string_view digits = text.substr(at + 1, 2);
        const char* const end = digits.data() + digits.size();
        const auto [stop, error] = std::from_chars(digits.data(), end, byte, 16);
        if (digits.size() != 2 || error != std::errc{} || stop != end || byte == 0) return false;
        decoded += static_cast<char>(byte);
        at += 2;
    }
    return true;
}

// Takes `text` up to the last at sign; the user ends at the first colon.
bool take_user(std::string_view& text, Address& address) {
    const std::size_t at = text.rfind('@');
    if (at == std::string_view::npos) return true;
    const std::string_view who = text.substr(0, at);
    text.remove_prefix(at + 1);
    const std::size_t colon = who.find(':');
    std::string part;
    if (!decode(who.substr(0, colon), part)) return false;
    if (!part.empty()) address.user = part;
    if (colon == std::string_view::npos) return true;
    if (!decode(who.substr(colon + 1), part)) return false;
    address.password = part;
    return true;
}

bool take_port(std::string_view text, Address& address) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, address.port);
    return error == std::errc{} && stop == end && address.port >= 1 && address.port <= 65535;
}

// A host, in square brackets when it is an IPv6 address, and its port.
bool take_host(std::string_view text, Address& address) {
    const bool bracketed = text.starts_with('[');
    const std::size_t bracket = bracketed ? text.find(']') : 0;
    if (bracket == std::string_view::npos) return false;
    const std::size_t colon = text.find(':', bracket);
    std::string_view host = text.substr(0, colon);
    if (bracketed) {
        if (host.size() != bracket + 1) return false;
        host = host.substr(1, bracket - 1);
    }
    if (!decode(host, address.host) || address.host.empty()) return false;
    if (address.host.front() == '/') {
        address.socket.swap(address.host);
        return colon == std::string_view::npos;
    }
    return colon == std::string_view::npos || take_port(text.substr(colon + 1), address);
}

}  // namespace

std::optional<Address> parse_address(std::string_view setting, std::string& why) {
    Address address;
    address.database = kDatabase;
    if (setting.starts_with('/')) {
        address.socket = setting;
        return address;
    }
    why = "not mariadb://[user[:password]@]host[:port][/database], with %XX for other characters";
    if (!setting.starts_with(kScheme)) return std::nullopt;
    std::string_view rest = setting.substr(kScheme.size());
    const std::size_t slash = rest.find('/');
    if (slash != std::string_view::npos) {
        std::string database;
        if (!decode(rest.substr(slash + 1), database)) return std::nullopt;
        if (!database.empty()) address.database = database;
        rest = rest.substr(0, slash);
    }
    if (!take_user(rest, address) || !take_host(rest, address)) return std::nullopt;
    why.clear();
    return address;
}

}  // namespace pwrmgt::vekdb::mariadb
