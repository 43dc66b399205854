// SPDX-License-Identifier: Apache-2.0
// The command `power realtime`: the reading that the daemon stored last, or the one the firmware
// gives now.
#include <array>
#include <ctime>
#include <memory>

#include "answer.h"
#include "layout_options.h"
#include "missing.h"
#include "print.h"
#include "status_text.h"
#include "stored_reading.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

// clang-format off
struct Field { const char* heading; const char* group; const char* key; };
constexpr std::array<Field, place::count> kFields{{
    {"System AC power, W",       "system",    "ac_w"},
    {"System DC power, W",       "system",    "dc_w"},
    {"Processor DC power, W",    "cpu",       "dc_w"},
    {"Memory DC power, W",       "memory",    "dc_w"},
    {"System utilisation, %",    "system",    "pct"},
    {"Processor utilisation, %", "cpu",       "pct"},
    {"Memory utilisation, %",    "memory",    "pct"},
    {"I/O utilisation, %",       "io",        "pct"},
}};
// clang-format on

struct Options : CommonOptions {
    bool live = false;
    bool local = false;
};

struct Snapshot {
    int64_t taken_s = 0;
    ReadingValues values;
    Value firmware_word;  // of a live reading only
};

uint32_t read_stored(Snapshot& snapshot) {
    StoredReading reading;
    const uint32_t status = read_stored_reading(reading);
    snapshot.taken_s = reading.taken_s;
    snapshot.values = reading.values;
    return status;
}

uint32_t read_live(Snapshot& snapshot) {
    pwrmgt_realtime_pwr_t reading{};
    const uint32_t status = pwrmgt_get_realtime_powers(&reading);
    if (status != 0) return status;
    snapshot.values = {watts(reading.sys_ac_w),  watts(reading.sys_dc_w),  watts(reading.cpu_dc_w),
                       watts(reading.mem_dc_w),  percent(reading.sys_pct), percent(reading.cpu_pct),
                       percent(reading.mem_pct), percent(reading.io_pct)};
    snapshot.firmware_word = reading.lead1;
    return 0;
}

std::string document_of(const Options& options, Answer answer, const Snapshot& snapshot,
                        const Age& age) {
    const std::string time = time_text(snapshot.taken_s, options.local ? Zone::local : Zone::utc);
    answer.title =
        (options.live ? "Live reading of " : "Stored reading of ") + time + ", " + age_words(age);
    Json body;
    add_taken(body, snapshot.taken_s, age);
    body["firmware_word"] = json_value(snapshot.firmware_word);
    Table table({"Reading", "Value"});
    for (size_t at = 0; at < kFields.size(); ++at) {
        table.add({kFields[at].heading, cell(snapshot.values[at])});
        body[kFields[at].group][kFields[at].key] = json_value(snapshot.values[at]);
    }
    return answer_document(answer, options, table.text(), body);
}

Outcome show(const Options& options) {
    const int64_t asked_at_s = std::time(nullptr);
    Snapshot snapshot;
    snapshot.taken_s = asked_at_s;
    const Timed done =
        timed([&] { return options.live ? read_live(snapshot) : read_stored(snapshot); });
    if (done.status != 0) {
        return explain(options.live ? Call::firmware : Call::realtime_stored, done.status,
                       "the real-time reading");
    }
    const Age age = age_of(snapshot.taken_s, asked_at_s, asked_at_s);
    const Answer answer{"power.realtime/1",
                        options.live ? Origin::firmware : Origin::working_tables,
                        {},
                        asked_at_s,
                        done.query_ms};
    return live_view(document_of(options, answer, snapshot, age), age);
}

}  // namespace

void add_power_realtime(cli::Command power, Action& chosen) {
    const auto options = std::make_shared<Options>();
    cli::Command command =
        add_command(power, chosen,
                    {"realtime", "The latest reading, with its age",
                     "Examples:\n"
                     "  pwrmgtctl power realtime\n"
                     "  pwrmgtctl power realtime --watch 5\n"
                     "  pwrmgtctl power realtime --live --json | jq .system.dc_w"},
                    options, show);
    command.add_flag("--live", options->live, "Ask the firmware instead of reading the stored row");
    add_local_option(command, options->local);
    let_watch(command, chosen, options, show);
}

}  // namespace pwrmgt::pwrmgtctl
