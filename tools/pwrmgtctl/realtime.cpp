// SPDX-License-Identifier: Apache-2.0
// The command `realtime`: the reading that the daemon stored last, or the one the firmware gives
// now.
#include <array>
#include <ctime>
#include <memory>

#include "command.h"
#include "database.h"
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

struct Options {
    bool live = false;
    bool json = false;
    bool local = false;
    bool timing = false;
};

struct Snapshot {
    int64_t taken_s = 0;
    int64_t asked_at_s = 0;
    ReadingValues values;
    Value firmware_word;  // of a live reading only
    double query_ms = 0;
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
    snapshot.taken_s = snapshot.asked_at_s;
    snapshot.values = {watts(reading.sys_ac_w),  watts(reading.sys_dc_w),  watts(reading.cpu_dc_w),
                       watts(reading.mem_dc_w),  percent(reading.sys_pct), percent(reading.cpu_pct),
                       percent(reading.mem_pct), percent(reading.io_pct)};
    snapshot.firmware_word = reading.lead1;
    return 0;
}

std::string age_words(int64_t age_s) {
    if (age_s < 0) return std::to_string(-age_s) + " s in the future";
    return std::to_string(age_s) + " s old";
}

std::string text_document(const Snapshot& snapshot, const Options& options) {
    const std::string time = time_text(snapshot.taken_s, options.local ? Zone::local : Zone::utc);
    std::string text = options.live ? "Live reading of the firmware at " + time
                                    : "Stored reading of " + time + ", " +
                                          age_words(snapshot.asked_at_s - snapshot.taken_s) +
                                          "; database " + working_database();
    Table table({"Reading", "Value"});
    for (size_t at = 0; at < kFields.size(); ++at) {
        table.add({kFields[at].heading, cell(snapshot.values[at])});
    }
    text += '\n' + table.text();
    return options.timing ? text + timing_text(snapshot.query_ms) : text;
}

std::string json_document(const Snapshot& snapshot, const Options& options) {
    Json document;
    document["schema"] = "pwrmgtctl.realtime/1";
    document["source"] = options.live ? "firmware" : "stored";
    document["timestamp_s"] = snapshot.taken_s;
    document["time_utc"] = time_text(snapshot.taken_s, Zone::utc);
    document["age_s"] = snapshot.asked_at_s - snapshot.taken_s;
    if (options.live) {
        document["firmware_word"] = json_value(snapshot.firmware_word);
    } else {
        document["database"] = working_database();
    }
    if (options.timing) document["query_ms"] = rounded_ms(snapshot.query_ms);
    for (size_t at = 0; at < kFields.size(); ++at) {
        document[kFields[at].group][kFields[at].key] = json_value(snapshot.values[at]);
    }
    return json_text(document);
}

Outcome show(const Options& options) {
    Snapshot snapshot;
    snapshot.asked_at_s = std::time(nullptr);
    const Timed done =
        timed([&] { return options.live ? read_live(snapshot) : read_stored(snapshot); });
    snapshot.query_ms = done.query_ms;
    if (done.status != 0) {
        return explain(options.live ? Call::realtime_live : Call::realtime_stored, done.status, "");
    }
    return succeed(options.json ? json_document(snapshot, options)
                                : text_document(snapshot, options));
}

}  // namespace

void add_realtime(CLI::App& app, Action& chosen) {
    CLI::App* command = app.add_subcommand("realtime", "The latest power reading, with its age");
    const auto options = std::make_shared<Options>();
    command->add_flag("--live", options->live,
                      "Ask the firmware instead of reading the stored row");
    CLI::Option* json =
        command->add_flag("--json", options->json, "One JSON document instead of a table");
    command->add_flag("--local", options->local, "Local time instead of UTC")->excludes(json);
    command->add_flag("--timing", options->timing, "Tell how long the query took");
    command->footer(
        "Examples:\n  pwrmgtctl realtime\n  pwrmgtctl realtime --live --json | jq .system.dc_w");
    command->callback([&chosen, options] { chosen = [options] { return show(*options); }; });
}

}  // namespace pwrmgt::pwrmgtctl
