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

}  // namespace

extern "C" uint32_t pwrmgt_get_history_power(pwrmgt_pwr_domain domain, uint32_t period,
                                             pwrmgt_hist_pwr_sample_t* entries, uint32_t count) {
    const Status refused = refusal(entries, count, "pwrmgt_get_history_power");
    if (refused != Status::ok) return code(refused);
    return code(by_period(source_of_domain(domain), period, count, Status::no_rows,
                          [=](uint32_t rows, uint32_t per_entry) {
                              return pwrmgt_get_powerSamples(rows, static_cast<int32_t>(count),
                                                             per_entry, entries, domain);
                          }));
}

// Kept: supplies and performance ask the gate with the empty name, power with its own.
// [GateIsAskedWithTheEmptyName]
extern "C" uint32_t pwrmgt_get_history_psu_powers(uint32_t psu, uint32_t period,
                                                  pwrmgt_hist_psu_sample_t* entries,
                                                  uint32_t count) {
    const Status refused = refusal(entries, count, "");
    if (refused != Status::ok) return code(refused);
    return code(by_period(source_of_psu(psu), period, count, Status::no_rows,
                          [=](uint32_t rows, uint32_t per_entry) {
                              return pwrmgt_get_psuPowerSamples(rows, static_cast<int32_t>(count),
                                                                per_entry, entries);
                          }));
}

extern "C" uint32_t pwrmgt_get_history_performance(uint32_t period,
                                                   pwrmgt_hist_perf_sample_t* entries,
                                                   uint32_t count) {
    const Status refused = refusal(entries, count, "");
    if (refused != Status::ok) return code(refused);
    // Kept: an empty window is 31 here, 8 in the other two. [EmptyPerformanceWindowIs31]
    return code(by_period(source_of_percentages(), period, count, Status::empty_window,
                          [=](uint32_t rows, uint32_t per_entry) {
                              return pwrmgt_get_perfSample_perIndex(
                                  rows, static_cast<int32_t>(count), per_entry, entries);
                          }));
}
