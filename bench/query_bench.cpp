// SPDX-License-Identifier: Apache-2.0
// What a query costs, against the same rows in plain SQLite, in an RRDtool file and in memory.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>

#include "plain_sqlite.h"
#include "queries.h"
#include "rounds.h"
#include "rrd_file.h"

using namespace pwrmgt::bench;

namespace {

// The day in every store. The files go at the end of the program.
struct Stores {
    Scratch place;
    std::vector<Row> day = measured_day();
    PlainSqlite plain{{place.disk().file("plain.sqlite"), place.memory().file("plain-mem.sqlite")}};
    Files library_files{place.disk().file("vek_pwr_db.sqlite"),
                        place.memory().file("vek_pwr_db-mem.sqlite")};
    RrdFile rrd{place.memory().file("day.rrd"), kNow_s - kDay_s};
    std::vector<PowerSlot> slots;  // newest first

    Stores() {
        fill_library(day);
        for (const Row& row : day) {
            plain.insert(row);
            rrd.update(RrdFile::update_text(row));
        }
        for (auto row = day.rbegin(); row != day.rend() && row->time_s >= kPeriodStart_s; ++row) {
            const auto& v = row->values;
            slots.push_back(
                {static_cast<std::uint32_t>(row->time_s), {v[0], v[1], v[2], v[3], v[4], v[5]}});
        }
        require_same_answers();
    }

    void query_library() { query_period(PWRMGT_PERIOD_24_HOURS, entries); }
    void query_plain() { plain.query(kPeriodStart_s, kNow_s, entries); }
    void query_rrd() { rrd.query(kPeriodStart_s - kSlot_s, kNow_s, entries); }
    void fold_structs() {
        fold_newest_first(
            slots.size(), [this](std::size_t at) { return slots[at]; }, entries);
        benchmark::DoNotOptimize(entries);
    }

    // A comparison of different answers would compare nothing.
    void require_same_answers() {
        query_library();
        const Entries expected = entries;
        entries.fill({});
        query_plain();
        require_equal(expected, entries, "plain SQLite answers otherwise");
        entries.fill({});
        query_rrd();
        require_equal(expected, entries, "RRDtool answers otherwise");
        entries.fill({});
        fold_structs();
        require_equal(expected, entries, "the inlined fold answers otherwise");
    }

    Entries entries{};
    std::vector<pwrmgt_hist_pwr_sample_t> window_entries;
};

Stores& stores() {
    static Stores the_stores;
    return the_stores;
}

void day_against_plain_sqlite(benchmark::State& state) {
    Stores& s = stores();
    compare(state, Side{[&] { s.query_library(); }, 1}, Side{[&] { s.query_plain(); }, 1});
}

void day_against_rrd_fetch(benchmark::State& state) {
    Stores& s = stores();
    compare(state, Side{[&] { s.query_library(); }, 1}, Side{[&] { s.query_rrd(); }, 5});
}

void day_against_inlined_fold(benchmark::State& state) {
    Stores& s = stores();
    compare(state, Side{[&] { s.query_library(); }, 1}, Side{[&] { s.fold_structs(); }, 50});
}

void window_of_2880_entries_against_120(benchmark::State& state) {
    Stores& s = stores();
    compare(state, Side{[&] { query_window(kDayMinutes, 1, s.window_entries); }, 1},
            Side{[&] { query_window(kDayMinutes, 24, s.window_entries); }, 1});
}

void hour_against_day(benchmark::State& state) {
    Stores& s = stores();
    compare(state, Side{[&] { query_period(PWRMGT_PERIOD_1_HOUR, s.entries); }, 10},
            Side{[&] { s.query_library(); }, 1});
}

void policy_against_unpooled(benchmark::State& state) {
    Stores& s = stores();
    compare(state, Side{[] { query_policy(); }, 20},
            Side{[&] { benchmark::DoNotOptimize(query_policy_once(s.library_files)); }, 5});
}

void available_power_against_unpooled(benchmark::State& state) {
    Stores& s = stores();
    compare(state, Side{[] { query_available_power(); }, 20},
            Side{[&] { benchmark::DoNotOptimize(query_policy_once(s.library_files)); }, 5});
}

BENCHMARK(day_against_plain_sqlite)->UseManualTime()->Iterations(301);
BENCHMARK(day_against_rrd_fetch)->UseManualTime()->Iterations(101);
BENCHMARK(day_against_inlined_fold)->UseManualTime()->Iterations(101);
BENCHMARK(window_of_2880_entries_against_120)->UseManualTime()->Iterations(301);
BENCHMARK(hour_against_day)->UseManualTime()->Iterations(101);
BENCHMARK(policy_against_unpooled)->UseManualTime()->Iterations(101);
BENCHMARK(available_power_against_unpooled)->UseManualTime()->Iterations(101);

}  // namespace

int main(int argc, char** argv) try {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    stores();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
} catch (const std::exception& trouble) {
    std::fprintf(stderr, "query_bench: %s\n", trouble.what());
    return 1;
}
