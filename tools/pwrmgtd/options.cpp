// SPDX-License-Identifier: Apache-2.0
#include "options.h"

#include <CLI/CLI.hpp>
#include <limits>
#include <map>

#include "time_text.h"

namespace pwrmgt::pwrmgtd {
namespace {

// A mode that the library does not know makes it choose: 1, or 15 on a blade.
constexpr std::uint32_t kLibraryChooses = 255;

// From 8192 W on no available power is told.
constexpr int kHighestLabel_w = 8191;

constexpr const char* kDescription =
    "Records the power history of this server.\n\n"
    "Every second pwrmgtd reads the power of the system, its processors and its memory, and\n"
    "makes it the real-time row of the database. Every 30 seconds it stores average, maximum\n"
    "and minimum as a row of the 24-hour history, and every few rows it saves them where they\n"
    "outlive a reboot. It stays in the foreground. SIGTERM or SIGINT saves the rest and ends it.";

constexpr const char* kFooter =
    "Examples:\n"
    "  pwrmgtd                                         record from the firmware\n"
    "  pwrmgtd --source trace --trace day.csv          play a measured trace as if it were live\n"
    "  pwrmgtd --replay day.csv                        fill the past 24 hours at once, and end\n"
    "  pwrmgtd --replay day.csv --until 2025-06-04T00:00:00Z\n"
    "  pwrmgtd --replay day.csv --then-run             fill them, then record\n\n"
    "Environment: VEKDB_STATE_DIR and VEKDB_RUNTIME_DIR say where the database is.\n\n"
    "Exit codes: 0 ended as asked, everything saved; 1 failure (database, trace or lock file);\n"
    "2 wrong command line; 3 another pwrmgtd works on this database.";

constexpr const char* kUntilText = "SECONDS or \"YYYY-MM-DD HH:MM:SS\" (UTC) or now";

void add_live_options(CLI::App& app, Options& options) {
    static const std::map<std::string, SourceKind> kSources{{"firmware", SourceKind::firmware},
                                                            {"trace", SourceKind::trace}};
    app.add_option_function<std::string>(
           "--source", [&options](const std::string& name) { options.source = kSources.at(name); },
           "Where readings come from: firmware (over IPMI, the default) or trace")
        ->check(CLI::IsMember(kSources).description(""))
        ->type_name("SOURCE");
    app.add_option("--trace", options.trace_file, "CSV file that --source trace plays")
        ->type_name("FILE");
    app.add_option("--sample-interval", options.rhythm.sample_interval_s,
                   "Seconds between readings, 1 to 30")
        ->check(CLI::Range(1, 30).description(""))
        ->type_name("SECONDS")
        ->capture_default_str();
    app.add_option("--persist-every", options.rhythm.persist_slots,
                   "Rows between saves, 1 to 2880; a power cut loses at most these")
        ->check(CLI::Range(1, static_cast<int>(PWRMGT_RING_SLOTS)).description(""))
        ->type_name("ROWS")
        ->capture_default_str();
    app.add_option(
           "--redundancy-mode", options.redundancy_mode,
           "Supply redundancy mode, 0 to 4, of a policy that is not stored yet; the library's "
           "default otherwise")
        ->check(CLI::Range(0, 4).description(""))
        ->type_name("MODE");
}

void add_supply_options(CLI::App& app, Options& options) {
    app.add_option("--bays", options.bays,
                   "Supply bays of the machine, 1 to 12; what platform and source tell otherwise")
        ->check(CLI::Range(1, static_cast<int>(PWRMGT_MAX_PSU)).description(""))
        ->type_name("N");
    app.add_option("--psu-label", options.psu_label_w,
                   "Label output power of a supply whose source tells none, 1 to 8191")
        ->check(CLI::Range(1, kHighestLabel_w).description(""))
        ->type_name("WATTS");
    app.add_option("--psu-input-label", options.psu_input_label_w,
                   "Label input power of such a supply, 1 to 8191")
        ->check(CLI::Range(1, kHighestLabel_w).description(""))
        ->type_name("WATTS");
}

void add_replay_options(CLI::App& app, Options& options) {
    auto* const replay =
        app.add_option("--replay", options.replay_file,
                       "Fill the past 24 hours from this CSV file, replacing what is stored there")
            ->type_name("FILE");
    app.add_option("--until", options.until,
                   std::string("With --replay: the end of those 24 hours, ") + kUntilText)
        ->needs(replay)
        ->type_name("TIME")
        ->capture_default_str();
    app.add_flag("--then-run", options.then_run, "With --replay: go on recording afterwards")
        ->needs(replay);
}

// What CLI11 cannot say; the reason, or nothing.
std::string check(const CLI::App& app, Options& options) {
    if (options.source == SourceKind::trace && options.trace_file.empty()) {
        return "--source trace needs --trace FILE";
    }
    if (options.source != SourceKind::trace && app.count("--trace") > 0) {
        return "--trace needs --source trace";
    }
    if (app.count("--replay") > 0 && options.replay_file.empty()) return "--replay needs a file";
    if (options.until == "now") return {};
    options.until_s = parse_time(options.until);
    if (!options.until_s) return "--until: '" + options.until + "' is not " + kUntilText;
    if (!is_recordable(*options.until_s)) {
        return "--until: the database cannot hold the day before " + options.until;
    }
    return {};
}

}  // namespace

Parsed parse_options(int argc, const char* const* argv) {
    Options options;
    options.redundancy_mode = kLibraryChooses;
    CLI::App app(kDescription, "pwrmgtd");
    app.footer(kFooter);
    app.set_version_flag("--version", "pwrmgtd " PWRMGTD_VERSION);
    add_live_options(app, options);
    add_supply_options(app, options);
    add_replay_options(app, options);
    app.add_flag("--verbose", options.verbose, "Say everything on standard error");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return {std::nullopt, Exit::ok, app.help()};
    } catch (const CLI::CallForVersion& version) {
        return {std::nullopt, Exit::ok, std::string(version.what()) + "\n"};
    } catch (const CLI::ParseError& error) {
        return {std::nullopt, Exit::usage, error.what() + std::string("; --help tells more")};
    }
    const std::string reason = check(app, options);
    if (!reason.empty()) return {std::nullopt, Exit::usage, reason + "; --help tells more"};
    return {options, Exit::ok, {}};
}

}  // namespace pwrmgt::pwrmgtd
