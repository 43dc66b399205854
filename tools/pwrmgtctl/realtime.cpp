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
#include "timed.h"
#include "vekdb_client.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr int kRowReady = 9;
constexpr int kPowers = 4;

// clang-format off
struct Field { const char* heading; const char* group; const char* key; const char* column; };
constexpr std::array<Field, 8> kFields{{
    {"System AC power, W",       "system",    "ac_w",   "SysPwrAc"},
    {"System DC power, W",       "system",    "dc_w",   "SysPwrDc"},
    {"Processor DC power, W",    "cpu",       "dc_w",   "CpuPwrDc"},
    {"Memory DC power, W",       "memory",    "dc_w",   "MemPwrDc"},
    {"System utilisation, %",    "system",    "pct",    "SysPctg"},
    {"Processor utilisation, %", "cpu",       "pct",    "CpuPctg"},
    {"Memory utilisation, %",    "memory",    "pct",    "MemPctg"},
    {"I/O utilisation, %",       "io",        "pct",    "IOPctg"},
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
    std::array<Value, kFields.size()> values;
    Value firmware_word;  // of a live reading only
    double query_ms = 0;
};

// A connection and a result of the database client, handed back in this order's reverse.
struct Handles {
    uint32_t connection = 0;
    uint32_t result = 0;

    Handles() = default;
    Handles(const Handles&) = delete;
    Handles& operator=(const Handles&) = delete;
    ~Handles() {
        if (result != 0) vek_db_free_result(result);
        if (connection != 0) vek_db_close(connection);
    }
};

// Reads the row that pwrmgt_update_realtime_table() keeps. Its statuses follow the library's: 10
// not offered, 2 no connection, 3 no result, 8 no row, 31 more than one.
uint32_t read_stored(Snapshot& snapshot) {
    if (pwrmgt_unsupport_check("pwrmgt_get_realtime_powers") != 0) return 10;
    Handles handles;
    handles.connection = pwrmgt_get_db_handle();
    if (handles.connection == 0) return 2;
    std::array<const char*, kFields.size() + 1> columns{"Timestamp"};
    for (size_t at = 0; at < kFields.size(); ++at) {
        columns[at + 1] = kFields[at].column;
    }
    const int failed =
        vek_db_query(handles.connection, "RealTimePowersMem", columns.data(),
                     static_cast<int>(columns.size()), "_id=0", 0, 0, nullptr, &handles.result);
    if (failed != 0 || handles.result == 0) return 3;
    const int rows = vek_db_result_row_count(handles.result);
    if (rows < 1) return 8;
    if (rows > 1) return 31;
    if (vek_db_result_step(handles.result) != kRowReady) return 3;

    uint32_t taken_s = 0;
    if (vek_db_result_column_uint(handles.result, 0, &taken_s) != 0) return 3;
    snapshot.taken_s = taken_s;
    for (int at = 0; at < static_cast<int>(kFields.size()); ++at) {
        uint16_t stored = 0;
        if (vek_db_result_column_short_uint(handles.result, at + 1, &stored) != 0) return 3;
        snapshot.values[static_cast<size_t>(at)] =
            at < kPowers ? watts(stored) : wide_percent(stored);
    }
    return 0;
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
