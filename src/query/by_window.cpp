// SPDX-License-Identifier: Apache-2.0
// Reading out: histories of a window that the caller places.
#include "query/pipeline.h"
#include "vekdb_prop.h"

using namespace pwrmgt::db;
using namespace pwrmgt::query;

namespace {

constexpr int32_t kMaxSamplesPerEntry = 24;
constexpr int32_t kMaxMinutes = 1440;
constexpr const char* kBayCountKey = "/dc/tavn/dm/planar/0/psu/maxcount";

struct Span {
    int32_t end_time;
    int32_t minutes;
    int32_t samples_per_entry;

    int32_t entries() const { return minutes < 0 ? 0 : 2 * minutes / samples_per_entry; }
};

// The checks that all three share, in their order.
Status refusal(const void* entries, const Span& span) {
    if (entries == nullptr) return Status::null_argument;
    if (pwrmgt_unsupport_check("") != 0) return Status::unsupported;
    const bool good_fold =
        span.samples_per_entry >= 1 && span.samples_per_entry <= kMaxSamplesPerEntry;
    return good_fold && span.minutes <= kMaxMinutes ? Status::ok : Status::bad_window;
}

// True when the machine has no such bay.
bool beyond_machine(int32_t psu) {
    uint8_t bays = 4;
    if (propdb_get_byte(kBayCountKey, &bays) != 0) return psu > 4;
    // Kept: bay 3 passes on a machine with two bays. [BayThreePassesOnATwoBayMachine]
    if (bays == 2) return psu > 3;
    return bays == 4 && psu > 4;
}

// Folds the span with `read(result, entries, samples per entry)`. The row count is not asked for.
template <class Read>
Status by_window(const std::optional<Source>& source, const Span& span, uint32_t* count_out,
                 Read read) {
    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return Status::no_connection;
    Window window;
    const int32_t back = before(span.end_time, 60U * static_cast<uint32_t>(span.minutes));
    window.span(cut_to(kSlotSeconds, back), span.end_time);
    return fold_window(db.get(), source, window, std::nullopt, [&](uint32_t rows) {
        const int32_t count = span.entries();
        const int32_t any = read(rows, count, static_cast<uint32_t>(span.samples_per_entry));
        if (count_out != nullptr) *count_out = static_cast<uint32_t>(count);
        return any;
    });
}

}  // namespace

extern "C" uint32_t pwrmgt_get_history_power_by_tm(pwrmgt_pwr_domain domain, int32_t end_time,
                                                   int32_t minutes, int32_t samples_per_entry,
                                                   pwrmgt_hist_pwr_sample_t* entries,
                                                   uint32_t* count_out) {
    const Span span{end_time, minutes, samples_per_entry};
    const Status refused = refusal(entries, span);
    if (refused != Status::ok) return code(refused);
    const auto read = [=](uint32_t rows, int32_t count, uint32_t per_entry) {
        return pwrmgt_get_powerSamples(rows, count, per_entry, entries, domain);
    };
    return code(by_window(source_of_domain(domain), span, count_out, read));
}

extern "C" uint32_t pwrmgt_get_history_psu_power_by_tm(int32_t psu, int32_t end_time,
                                                       int32_t minutes, int32_t samples_per_entry,
                                                       pwrmgt_hist_psu_sample_t* entries,
                                                       uint32_t* count_out) {
    const Span span{end_time, minutes, samples_per_entry};
    const Status refused = refusal(entries, span);
    if (refused != Status::ok) return code(refused);
    if (beyond_machine(psu)) return code(Status::no_such_bay);
    const auto read = [=](uint32_t rows, int32_t count, uint32_t per_entry) {
        return pwrmgt_get_psuPowerSamples(rows, count, per_entry, entries);
    };
    return code(by_window(source_of_psu(static_cast<uint32_t>(psu)), span, count_out, read));
}

extern "C" uint32_t pwrmgt_get_history_performance_by_tm(int32_t end_time, int32_t minutes,
                                                         int32_t samples_per_entry,
                                                         pwrmgt_hist_perf_sample_t* entries,
                                                         uint32_t* count_out) {
    const Span span{end_time, minutes, samples_per_entry};
    const Status refused = refusal(entries, span);
    if (refused != Status::ok) return code(refused);
    const auto read = [=](uint32_t rows, int32_t count, uint32_t per_entry) {
        return pwrmgt_get_perfSample_perIndex(rows, count, per_entry, entries);
    };
    return code(by_window(source_of_percentages(), span, count_out, read));
}
