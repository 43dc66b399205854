// SPDX-License-Identifier: Apache-2.0
// Reading out: histories of the last hour, 6, 12 or 24 hours.
#include "query/pipeline.h"

using namespace pwrmgt::db;
using namespace pwrmgt::query;

namespace {

// The checks that all three share, in their order.
Status refusal(const void* entries, uint32_t count, const char* gate_name) {
    if (entries == nullptr) return Status::null_argument;
    if (count > PWRMGT_MAX_PERIOD_ENTRIES) return Status::out_of_range;
    return pwrmgt_unsupport_check(gate_name) != 0 ? Status::unsupported : Status::ok;
}

// Folds the period with `read(result, count, samples per entry)`.
template <class Read>
Status by_period(const std::optional<Source>& source, uint32_t period, uint32_t count,
                 Status when_empty, Read read) {
    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return Status::no_connection;
    Window window;
    if (pwrmgt_hist_query_string(window.order, window.filter, period, count) != 0) {
        return Status::no_window;
    }
    return fold_window(db.get(), source, window, when_empty, [&](uint32_t rows) {
        return read(rows, static_cast<int32_t>(count), pwrmgt_get_samples_perIndex(period));
    });
}

}  // namespace

extern "C" uint32_t pwrmgt_get_history_power(pwrmgt_pwr_domain domain, uint32_t period,
                                             pwrmgt_hist_pwr_sample_t* entries, uint32_t count) {
    const Status refused = refusal(entries, count, "pwrmgt_get_history_power");
    if (refused != Status::ok) return code(refused);
    const auto read = [=](uint32_t rows, int32_t wanted, uint32_t per_entry) {
        return pwrmgt_get_powerSamples(rows, wanted, per_entry, entries, domain);
    };
    return code(by_period(source_of_domain(domain), period, count, Status::no_rows, read));
}

// Kept: supplies and performance ask the gate with the empty name, power with its own.
// [GateIsAskedWithTheEmptyName]
extern "C" uint32_t pwrmgt_get_history_psu_powers(uint32_t psu, uint32_t period,
                                                  pwrmgt_hist_psu_sample_t* entries,
                                                  uint32_t count) {
    const Status refused = refusal(entries, count, "");
    if (refused != Status::ok) return code(refused);
    const auto read = [=](uint32_t rows, int32_t wanted, uint32_t per_entry) {
        return pwrmgt_get_psuPowerSamples(rows, wanted, per_entry, entries);
    };
    return code(by_period(source_of_psu(psu), period, count, Status::no_rows, read));
}

extern "C" uint32_t pwrmgt_get_history_performance(uint32_t period,
                                                   pwrmgt_hist_perf_sample_t* entries,
                                                   uint32_t count) {
    const Status refused = refusal(entries, count, "");
    if (refused != Status::ok) return code(refused);
    const auto read = [=](uint32_t rows, int32_t wanted, uint32_t per_entry) {
        return pwrmgt_get_perfSample_perIndex(rows, wanted, per_entry, entries);
    };
    // Kept: an empty window is 31 here, 8 in the other two. [EmptyPerformanceWindowIs31]
    return code(by_period(source_of_percentages(), period, count, Status::empty_window, read));
}
