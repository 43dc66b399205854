// SPDX-License-Identifier: Apache-2.0
// What recording and saving cost, against plain SQLite and RRDtool.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>

#include "plain_sqlite.h"
#include "rounds.h"
#include "rrd_file.h"
#include "scratch.h"
#include "vekdb_client.h"

using namespace pwrmgt::bench;

namespace {

// Enough rows that every round pays for the log's copy into its file, on both sides.
constexpr int kRowsPerRound = 500;
constexpr std::int32_t kSlotsPerSave = 20;

// The day in the library and in plain tables, and rows for the time behind it.
struct Stores {
    Scratch place;
    std::vector<Row> day = measured_day();
    PlainSqlite plain{{place.disk().file("plain.sqlite"), place.memory().file("plain-mem.sqlite")}};
    RrdFile rrd{place.memory().file("day.rrd"), kNow_s - kDay_s};
    LibraryConnection db;
    std::vector<Row> later;

    Stores() {
        fill_library(day);
        for (const Row& row : day) {
            plain.insert(row);
            rrd.update(RrdFile::update_text(row));
        }
        for (const Row& row : day) {
            plain.save(row.slot);
        }
        later.assign(day.begin(), day.begin() + kRowsPerRound);
        for (Row& row : later) {
            row.time_s += kDay_s;
        }
    }

    void forget_later() {
        const std::string text =
            "DELETE FROM HistPowers24HrMem WHERE Timestamp>" + std::to_string(kNow_s);
        require_ok(static_cast<std::uint32_t>(vek_db_raw_query(
                       db.get(), text.c_str(), static_cast<std::uint32_t>(text.size()), nullptr)),
                   "vek_db_raw_query");
        plain.erase_newer_than(kNow_s);
    }
};

Stores& stores() {
    static Stores the_stores;
    return the_stores;
}

// Goes through rows again and again.
class Cycle {
public:
    explicit Cycle(std::size_t length) : length_{length} {}
    std::size_t next() { return at_++ % length_; }

private:
    std::size_t length_;
    std::size_t at_ = 0;
};

void insert_against_plain_sqlite(benchmark::State& state) {
    Stores& s = stores();
    Cycle mine{s.later.size()};
    Cycle theirs{s.later.size()};
    compare(state, Side{[&] { s.db.insert(s.later[mine.next()]); }, kRowsPerRound},
            Side{[&] { s.plain.insert(s.later[theirs.next()]); }, kRowsPerRound},
            [&] { s.forget_later(); });
}

void insert_against_rrd_update(benchmark::State& state) {
    Stores& s = stores();
    Cycle mine{s.later.size()};
    std::vector<std::string> updates;
    std::size_t next_update = 0;
    // The file's own clock only goes forward: every round brings the rows behind the last round's.
    static std::int32_t behind_s = 0;
    const auto make_updates = [&] {
        updates.clear();
        next_update = 0;
        for (Row row : s.later) {
            row.time_s += behind_s;
            updates.push_back(RrdFile::update_text(row));
        }
        behind_s += kRowsPerRound * kSlot_s;
    };
    make_updates();
    compare(state, Side{[&] { s.db.insert(s.later[mine.next()]); }, kRowsPerRound},
            Side{[&] { s.rrd.update(updates[next_update++]); }, kRowsPerRound}, [&] {
                s.forget_later();
                make_updates();
            });
}

// Twenty slots as the daemon saves them. The figure is a rate: more is better.
void save_against_plain_sqlite(benchmark::State& state) {
    Stores& s = stores();
    Cycle mine{kSlots / kSlotsPerSave};
    Cycle theirs{kSlots};
    compare(state,
            Side{[&] {
                     s.db.save(static_cast<std::int32_t>(mine.next()) * kSlotsPerSave,
                               kSlotsPerSave);
                 },
                 5},
            Side{[&] {
                     for (std::int32_t slot = 0; slot < kSlotsPerSave; ++slot) {
                         s.plain.save(static_cast<std::int32_t>(theirs.next()));
                     }
                 },
                 5});
    state.counters["rate_ratio"] = 1 / state.counters["ratio"];
}

BENCHMARK(insert_against_plain_sqlite)->UseManualTime()->Iterations(61);
BENCHMARK(insert_against_rrd_update)->UseManualTime()->Iterations(61);
BENCHMARK(save_against_plain_sqlite)->UseManualTime()->Iterations(201);

}  // namespace

int main(int argc, char** argv) try {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    stores();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
} catch (const std::exception& trouble) {
    std::fprintf(stderr, "write_bench: %s\n", trouble.what());
    return 1;
}
