// SPDX-License-Identifier: Apache-2.0
#include "daemon.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <utility>

#include "lock.h"
#include "replay.h"
#include "source.h"
#include "startup.h"
#include "state_dir.h"
#include "supervision.h"
#include "tables.h"
#include "time_text.h"

namespace pwrmgt::pwrmgtd {
namespace {

constexpr const char* kLockFile = "/pwrmgtd.lock";

// One lock per file of the database: they can be combined anew with two environment variables.
class DatabaseLock {
public:
    Exit take(const vekdb::Directories& directories, Log& log) {
        const std::array paths{directories.runtime, directories.state};
        for (std::size_t i = 0; i < paths.size(); ++i) {
            if (i > 0 && paths[i] == paths[0]) break;
            std::error_code ignored;
            std::filesystem::create_directories(paths[i], ignored);
            std::string reason;
            const auto outcome = locks_[i].take(paths[i] + kLockFile, reason);
            if (outcome == InstanceLock::Outcome::taken) continue;
            log.error(reason);
            return outcome == InstanceLock::Outcome::held_by_another ? Exit::already_running
                                                                     : Exit::failure;
        }
        return Exit::ok;
    }

private:
    std::array<InstanceLock, 2> locks_;
};

// A server's tables are in no directory, but the locks are.
std::string database_in(const vekdb::Directories& directories) {
    const std::string server = vekdb::choose_server();
    if (!server.empty()) return vekdb::without_password(server);
    return directories.state + " and " + directories.runtime;
}

// The database client tells the system log why it refuses; most often it is one of these.
std::string reason_not_open(const vekdb::Directories& directories) {
    if (!vekdb::choose_server().empty()) return "the system log tells why";
    for (const std::string& path : {directories.state, directories.runtime}) {
        if (access(path.c_str(), R_OK | W_OK | X_OK) != 0) {
            return path + ": " + std::strerror(errno);
        }
    }
    return "the system log tells why";
}

std::string summary(const std::string& file, const ReplayPlan& plan,
                    const vekdb::Directories& directories,
                    std::chrono::steady_clock::duration took) {
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(took).count();
    std::array<char, 32> seconds{};
    std::snprintf(seconds.data(), seconds.size(), "%.3f",
                  static_cast<double>(milliseconds) / 1000.0);
    return "replayed " + file + ": " + std::to_string((plan.last_s - plan.first_s) / kSlot_s + 1) +
           " rows, " + time_text(plan.first_s) + " to " + time_text(plan.last_s) + ", database " +
           database_in(directories) + ", " + seconds.data() + " s\n";
}

bool fill_past(const trace::Trace& past, std::int64_t until_s, std::int64_t now_s,
               DatabaseTables& tables, Log& log) {
    if (!is_recordable(until_s)) {
        log.error("the clock is wrong: " + time_text(until_s));
        return false;
    }
    if (until_s > now_s) log.warning("--until is ahead of the clock: queries look back from now");
    const bool filled = replay(past, plan_replay(past, until_s), until_s, tables);
    if (!filled) log.error("the replay is not complete");
    return filled;
}

bool record(Supervision& supervision, const Options& options, DatabaseTables& tables,
            const Process& process) {
    process.log.notice("recording from " + supervision.source().name());
    Schedule schedule({process.clock, supervision.source(), tables, process.log, supervision},
                      options.rhythm);
    const bool saved = schedule.run();
    if (saved) process.log.notice("ended, everything saved");
    if (!saved) process.log.error("ended with slots that could not be saved");
    return saved && !schedule.is_displaced();
}

// The host platform's client looks through both files then, and sets a damaged one aside.
bool open_checked(DatabaseTables& tables) {
    constexpr const char* kCheck = "VEKDB_CHECK";
    setenv(kCheck, "1", 1);
    const bool opened = tables.open();
    unsetenv(kCheck);
    return opened;
}

}  // namespace

Exit run_daemon(const Options& options, const Process& process) {
    Log& log = process.log;
    const auto started = std::chrono::steady_clock::now();
    const bool replays = !options.replay_file.empty();
    const bool records = !replays || options.then_run;
    const std::optional<trace::Trace> past =
        replays ? load_trace(options.replay_file, log) : std::nullopt;
    std::unique_ptr<Source> source = records ? make_source(options, log) : nullptr;
    if ((replays && !past) || (records && !source)) return Exit::failure;

    const vekdb::Directories directories = vekdb::choose_directories();
    log.notice("database " + database_in(directories));
    DatabaseTables tables(log);
    if (!open_checked(tables)) {
        log.error("the database did not open: " + reason_not_open(directories));
        return Exit::failure;
    }
    DatabaseLock lock;
    if (const Exit refused = lock.take(directories, log); refused != Exit::ok) return refused;

    const std::int64_t now_s = options.until_s.value_or(process.clock.now());
    const std::size_t supplies = source ? source->supplies() : past->supply_count();
    const std::int64_t start_s = past ? now_s : time_to_start_at(tables, now_s);
    if (!start_tables(
            {tables, log, start_s, options.redundancy_mode, bay_setup(options, supplies)})) {
        log.error("the power history could not be started");
        return Exit::failure;
    }
    if (past) {
        if (!fill_past(*past, now_s, process.clock.now(), tables, log)) return Exit::failure;
        const auto took = std::chrono::steady_clock::now() - started;
        const ReplayPlan plan = plan_replay(*past, now_s);
        if (!process.print(summary(options.replay_file, plan, directories, took)))
            return Exit::failure;
    }
    if (!records) return Exit::ok;
    if (!vekdb::choose_server().empty()) {
        tables.when_emptied([&](std::int64_t emptied_s) {
            return start_tables({tables, log, time_to_start_at(tables, emptied_s),
                                 options.redundancy_mode, bay_setup(options, supplies)});
        });
    }
    Supervision supervision(options, std::move(source), tables, log, process.reread);
    return record(supervision, options, tables, process) ? Exit::ok : Exit::failure;
}

}  // namespace pwrmgt::pwrmgtd
