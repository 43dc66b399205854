// SPDX-License-Identifier: Apache-2.0
// The library's queries that are measured, each for the day that fill_library() recorded.
#pragma once

#include <vector>

#include "fold.h"
#include "scratch.h"

namespace pwrmgt::bench {

inline constexpr std::int32_t kDayMinutes = 1440;

// Past day by period: 120 entries, from one entry's width after the point a day back.
inline void query_period(std::uint32_t period, Entries& entries) {
    require_ok(pwrmgt_get_history_power(PWRMGT_DOMAIN_SYSTEM, period, entries.data(),
                                        static_cast<std::uint32_t>(entries.size())),
               "pwrmgt_get_history_power");
}
inline constexpr std::int32_t kPeriodStart_s = kNow_s - kDay_s + 720;

// The last `minutes` by window.
inline void query_window(std::int32_t minutes, std::int32_t samples_per_entry,
                         std::vector<pwrmgt_hist_pwr_sample_t>& entries) {
    std::uint32_t count = 0;
    entries.resize(PWRMGT_MAX_WINDOW_ENTRIES);
    require_ok(pwrmgt_get_history_power_by_tm(PWRMGT_DOMAIN_SYSTEM, kNow_s, minutes,
                                              samples_per_entry, entries.data(), &count),
               "pwrmgt_get_history_power_by_tm");
}

inline void query_policy() {
    pwrmgt_power_policy_t policy{};
    require_ok(pwrmgt_get_pwrpolicy_tbl(&policy), "pwrmgt_get_pwrpolicy_tbl");
}

inline void query_available_power() {
    std::uint32_t watts = 0;
    require_ok(pwrmgt_get_sys_avail_power(&watts), "pwrmgt_get_sys_avail_power");
}

}  // namespace pwrmgt::bench
