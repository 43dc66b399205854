// SPDX-License-Identifier: Apache-2.0
#include "time_text.h"

#include <time.h>

#include <array>
#include <charconv>

#include "common/utc_time.h"

namespace pwrmgt::pwrmgtd {
namespace {

std::optional<std::int64_t> parse_seconds(const std::string& text) {
    std::int64_t seconds = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, seconds);
    if (error != std::errc() || stop != end || seconds < 0) return std::nullopt;
    return seconds;
}

}  // namespace

std::string time_text(std::int64_t t_s) {
    const auto utc = common::utc_parts(t_s);
    if (!utc) return std::to_string(t_s);
    std::array<char, 40> text{};
    strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%SZ", &*utc);
    return text.data();
}

std::optional<std::int64_t> parse_time(const std::string& text) {
    if (const auto seconds = parse_seconds(text)) return seconds;
    for (const char* const format : {"%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S"}) {
        tm utc{};
        const char* const rest = strptime(text.c_str(), format, &utc);
        if (rest == nullptr || (*rest != '\0' && std::string(rest) != "Z")) continue;
        return common::utc_seconds(utc);
    }
    return std::nullopt;
}

}  // namespace pwrmgt::pwrmgtd
