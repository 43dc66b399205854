// SPDX-License-Identifier: Apache-2.0
// The operations whose instructions are counted. Run under callgrind with --instr-atstart=no: each
// operation is run to warm up, then once between two marks, and dumped under its name.
#include <valgrind/callgrind.h>

#include <cstddef>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "plain_sqlite.h"
#include "queries.h"
#include "vekdb_client.h"

using namespace pwrmgt::bench;

namespace {

constexpr std::ptrdiff_t kWarmUps = 3;

template <class Body>
void counted(const char* name, Body body) {
    for (std::ptrdiff_t i = 0; i < kWarmUps; ++i) {
        body();
    }
    CALLGRIND_START_INSTRUMENTATION;
    body();
    CALLGRIND_STOP_INSTRUMENTATION;
    CALLGRIND_DUMP_STATS_AT(name);
}

// The rows of the whole day, open for a reader.
class DayResult {
public:
    DayResult() {
        static constexpr const char* kColumns[] = {"Timestamp", "SysAvgDc", "SysMaxDc", "SysMinDc",
                                                   "SysAvgAc",  "SysMaxAc", "SysMinAc"};
        const LibraryConnection db;
        require_ok(
            static_cast<std::uint32_t>(vek_db_query(db.get(), "HistPowers24HrMem", kColumns, 7,
                                                    nullptr, 0, 0, "Timestamp DESC", &handle_)),
            "vek_db_query");
    }
    ~DayResult() { vek_db_free_result(handle_); }
    DayResult(const DayResult&) = delete;
    DayResult& operator=(const DayResult&) = delete;

    std::uint32_t get() const { return handle_; }

private:
    std::uint32_t handle_ = 0;
};

// Only the reader is counted, not the select before it.
void count_reader(const char* name, std::uint32_t samples_per_entry) {
    Entries entries{};
    const DayResult rows;
    CALLGRIND_START_INSTRUMENTATION;
    pwrmgt_get_powerSamples(rows.get(), static_cast<std::int32_t>(entries.size()),
                            samples_per_entry, entries.data(), PWRMGT_DOMAIN_SYSTEM);
    CALLGRIND_STOP_INSTRUMENTATION;
    CALLGRIND_DUMP_STATS_AT(name);
}

void count_queries() {
    Entries entries{};
    std::vector<pwrmgt_hist_pwr_sample_t> window;
    counted("day", [&] { query_period(PWRMGT_PERIOD_24_HOURS, entries); });
    counted("hour", [&] { query_period(PWRMGT_PERIOD_1_HOUR, entries); });
    counted("window-120", [&] { query_window(kDayMinutes, 24, window); });
    counted("window-2880", [&] { query_window(kDayMinutes, 1, window); });
    counted("window-half", [&] { query_window(kDayMinutes / 2, 24, window); });
    counted("window-quarter", [&] { query_window(kDayMinutes / 4, 24, window); });
    counted("policy", [] { query_policy(); });
    counted("available-power", [] { query_available_power(); });
    count_reader("reader-2880-samples", 2880);
    count_reader("reader-2^31-samples", 1U << 31U);
}

void count_writes(const Scratch& place, const std::vector<Row>& day) {
    PlainSqlite plain{{place.disk().file("plain.sqlite"), place.memory().file("plain-mem.sqlite")}};
    for (const Row& row : day) {
        plain.insert(row);
    }
    std::vector<Row> later{day.begin(), day.begin() + 2 * (kWarmUps + 1)};
    auto next = later.begin();
    for (Row& row : later) {
        row.time_s += kDay_s;
    }
    const LibraryConnection db;
    counted("insert", [&] { db.insert(*next++); });
    counted("insert-plain", [&] { plain.insert(*next++); });
    counted("save-20", [&] { db.save(0, 20); });
    Entries entries{};
    counted("day-plain", [&] { plain.query(kPeriodStart_s, kNow_s, entries); });
}

}  // namespace

int main() try {
    const Scratch place;
    const std::vector<Row> day = measured_day();
    fill_library(day);
    count_queries();
    count_writes(place, day);
    return 0;
} catch (const std::exception& trouble) {
    std::fprintf(stderr, "instructions: %s\n", trouble.what());
    return 1;
}
