// SPDX-License-Identifier: Apache-2.0
#include "time_text.h"

#include <time.h>

#include <array>
#include <charconv>

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
    const auto seconds = static_cast<time_t>(t_s);
    tm utc{};
    std::array<char, 40> text{};
    if (gmtime_r(&seconds, &utc) == nullptr) return std::to_string(t_s);
    strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%SZ", &utc);
    return text.data();
}

std::optional<std::int64_t> parse_time(const std::string& text) {
    if (const auto seconds = parse_seconds(text)) return seconds;
    for (const char* const format : {"%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S"}) {
        tm utc{};
        const char* const rest = strptime(text.c_str(), format, &utc);
        if (rest == nullptr || (*rest != '\0' && std::string(rest) != "Z")) continue;
        const tm wanted = utc;
        const time_t seconds = timegm(&utc);
        // timegm() turns the 31st of June into the 1st of July.
        if (utc.tm_mday != wanted.tm_mday || utc.tm_sec != wanted.tm_sec) return std::nullopt;
        return seconds;
    }
    return std::nullopt;
}

}  // namespace pwrmgt::pwrmgtd
