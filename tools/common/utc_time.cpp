// SPDX-License-Identifier: Apache-2.0
#include "utc_time.h"

#include <chrono>

namespace pwrmgt::common {

namespace {

using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year_month_day;

constexpr sys_seconds kFirst = sys_days{std::chrono::January / 1 / 0};
constexpr sys_seconds kLast = sys_days{std::chrono::January / 1 / 10000} - seconds{1};

}  // namespace

std::optional<std::tm> utc_parts(std::int64_t since_1970_s) {
    const sys_seconds time{seconds{since_1970_s}};
    if (time < kFirst || time > kLast) return std::nullopt;
    const sys_days day = std::chrono::floor<std::chrono::days>(time);
    const year_month_day date{day};
    const std::chrono::hh_mm_ss clock{time - day};
    std::tm parts{};
    parts.tm_year = static_cast<int>(date.year()) - 1900;
    parts.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    parts.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    parts.tm_hour = static_cast<int>(clock.hours().count());
    parts.tm_min = static_cast<int>(clock.minutes().count());
    parts.tm_sec = static_cast<int>(clock.seconds().count());
    return parts;
}

std::optional<std::int64_t> utc_seconds(const std::tm& parts) {
    const year_month_day date{std::chrono::year{parts.tm_year + 1900},
                              std::chrono::month{static_cast<unsigned>(parts.tm_mon) + 1},
                              std::chrono::day{static_cast<unsigned>(parts.tm_mday)}};
    const bool in_day = parts.tm_hour >= 0 && parts.tm_hour < 24 && parts.tm_min >= 0 &&
                        parts.tm_min < 60 && parts.tm_sec >= 0 && parts.tm_sec < 60;
    if (!date.ok() || !in_day) return std::nullopt;
    const sys_seconds time = sys_days{date} + std::chrono::hours{parts.tm_hour} +
                             std::chrono::minutes{parts.tm_min} + seconds{parts.tm_sec};
    return time.time_since_epoch().count();
}

}  // namespace pwrmgt::common
