// SPDX-License-Identifier: Apache-2.0
// Reading out: period arithmetic, and the ordering and filter texts of the history queries.
#include "query/window.h"

#include <cstdio>
#include <cstring>

#include "db/session.h"

namespace pwrmgt::query {

void Window::span(int32_t start, int32_t end) {
    std::snprintf(order, sizeof order, "%s DESC", db::kTimestamp);
    std::snprintf(filter, sizeof filter, "Timestamp>=%d AND Timestamp<=%d", start, end);
}

}  // namespace pwrmgt::query

using namespace pwrmgt::db;
using namespace pwrmgt::query;

extern "C" uint32_t pwrmgt_oldest_ts_per_period(uint32_t period, int32_t now, uint32_t count,
                                                uint32_t* oldest) {
    if (oldest == nullptr || now <= 0) return code(Status::bad_time);
    if (period >= kPeriods.size()) return code(Status::out_of_range);
    if (count > PWRMGT_MAX_PERIOD_ENTRIES) return code(Status::out_of_range);
    const Period& past = kPeriods[period];
    const uint32_t entry_width = count == 0 ? 0 : past.minutes * 60 / count;
    *oldest = static_cast<uint32_t>(cut_to(60, now - past.seconds)) + entry_width;
    return code(Status::ok);
}

extern "C" uint32_t pwrmgt_hist_query_string(char* order, char* filter, uint32_t period,
                                             uint32_t count) {
    if (filter == nullptr || order == nullptr) return code(Status::null_argument);
    const int32_t end = now();
    if (end < 0) return code(Status::clock_failed);
    uint32_t start = 0;
    const uint32_t refused = pwrmgt_oldest_ts_per_period(period, end, count, &start);
    if (refused != 0) return refused;

    Window window;
    window.span(static_cast<int32_t>(start), end);
    // Kept: copied whole, where the duration clauses are bounded by the caller's sizes.
    // [ClausesAreCopiedWhole]
    std::strcpy(order, window.order);
    std::strcpy(filter, window.filter);
    return code(Status::ok);
}

extern "C" uint32_t pwrmgt_duration_summary_query_string(char* order, uint32_t order_size,
                                                         char* filter, uint32_t filter_size,
                                                         int32_t minutes) {
    if (filter == nullptr || order == nullptr) return code(Status::null_argument);
    const int32_t end = now();
    if (end < 0) return code(Status::clock_failed);
    int32_t start = cut_to(kSlotSeconds, before(end, 60U * static_cast<uint32_t>(minutes)));
    if (start == end) start = before(end, kSlotSeconds);

    Window window;
    window.span(start, end);
    std::snprintf(order, order_size, "%s", window.order);
    std::snprintf(filter, filter_size, "%s", window.filter);
    return code(Status::ok);
}

extern "C" uint32_t pwrmgt_get_samples_perIndex(uint32_t period) {
    return period < kPeriods.size() ? kPeriods[period].samples_per_entry : 1;
}
