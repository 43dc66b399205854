// SPDX-License-Identifier: Apache-2.0
#include "time_argument.h"

#include <charconv>
#include <ctime>
#include <limits>

#include "common/utc_time.h"
#include "print.h"

namespace pwrmgt::pwrmgtctl {
namespace {

std::optional<int64_t> from_seconds(const std::string& text) {
    const char* end = text.data() + text.size();
    int64_t seconds = 0;
    const auto [rest, error] = std::from_chars(text.data(), end, seconds);
    return error == std::errc{} && rest == end ? std::optional(seconds) : std::nullopt;
}

std::optional<int64_t> from_iso_8601(const std::string& text) {
    std::tm parts{};
    const char* rest = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    if (rest == nullptr || *rest != '\0') return std::nullopt;
    const std::optional<int64_t> seconds = common::utc_seconds(parts);
    // strptime is generous; only a time that is written back the same is the one that was meant.
    return seconds && time_text(*seconds, Zone::utc) == text ? seconds : std::nullopt;
}

}  // namespace

std::optional<int32_t> parse_time(const std::string& text, int64_t now_s) {
    std::optional<int64_t> seconds = text == "now" ? std::optional(now_s) : from_seconds(text);
    if (!seconds) seconds = from_iso_8601(text);
    if (!seconds || *seconds < 0 || *seconds > std::numeric_limits<int32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<int32_t>(*seconds);
}

cli::Check time_argument() {
    return cli::Check([](const std::string& text) {
        return parse_time(text, 0) ? std::string()
                                   : "'" + text + "' is no time; give " + kTimeForms;
    });
}

}  // namespace pwrmgt::pwrmgtctl
