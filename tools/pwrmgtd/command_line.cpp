// SPDX-License-Identifier: Apache-2.0
#include "command_line.h"

#include <limits>
#include <map>

#include "configuration.h"

namespace pwrmgt::pwrmgtd {
namespace {

// A mode that the library does not know makes it choose: 1, or 15 on a blade.
constexpr std::uint32_t kLibraryChooses = 255;

constexpr int kLongestWait_s = 7 * 86400;

// From 8192 W on no available power is told.
constexpr int kHighestLabel_w = 8191;

// The options that a file and the environment may set too.
constexpr const char* kConfigurable = "Recording";
constexpr const char* kReplaying = "Replay";

constexpr const char* kFooter =
    "Examples:\n"
    "  pwrmgtd                                         record from the firmware\n"
    "  pwrmgtd --source kernel                         record what this machine's kernel measures\n"
    "  pwrmgtd --source trace --trace day.csv          play a measured trace as if it were live\n"
    "  pwrmgtd --replay day.csv                        fill the past 24 hours at once, and end\n"
    "  pwrmgtd --replay day.csv --until 2025-06-04T00:00:00Z\n"
    "  pwrmgtd --replay day.csv --then-run             fill them, then record\n\n"
    "Configuration: name = value lines in /etc/vekdb/pwrmgtd.conf or --config FILE, the names "
    "those\n"
    "of the options under Recording without the dashes. The environment (PWRMGTD_TRACE, ...)\n"
    "wins over the file, the command line over both. --check-config shows what comes of it.\n\n"
    "Signals: SIGTERM and SIGINT save and end, SIGHUP reads the configuration and the trace "
    "again,\n"
    "SIGUSR1 saves what is recorded.\n\n"
    "Environment: VEKDB_STATE_DIR and VEKDB_RUNTIME_DIR say where the database is, VEKDB_SERVER\n"
    "names a MariaDB server to keep it on; VEKDB_IPMI and VEKDB_PROPS say where firmware and\n"
    "properties are. See pwrmgtd(8).\n\n"
    "Exit codes: 0 ended as asked, everything saved; 1 failure (database, trace or lock file);\n"
    "2 wrong command line or configuration; 3 another pwrmgtd works on this database.";

void add_source_options(CLI::App& app, Options& options) {
    static const std::map<std::string, SourceKind> kSources{{"firmware", SourceKind::firmware},
                                                            {"kernel", SourceKind::kernel},
                                                            {"trace", SourceKind::trace}};
    app.add_option_function<std::string>(
           "--source", [&options](const std::string& name) { options.source = kSources.at(name); },
           "Where readings come from: firmware (over IPMI), kernel (sysfs) or trace")
        ->check(CLI::IsMember(kSources).description(""))
        ->type_name("SOURCE")
        ->default_str("firmware");
    app.add_option("--trace", options.trace_file, "CSV file that --source trace plays")
        ->type_name("FILE");
    app.add_option("--kernel-root", options.kernel_root,
                   "Directory that --source kernel finds sys/ and proc/ in, in place of /")
        ->type_name("DIR");
    app.add_option("--supply-devices", options.supply_devices,
                   "With --source kernel: devices of supplies 1, 2, ..., such as 7-0058,7-0059; "
                   "found by themselves otherwise")
        ->type_name("LIST");
}

void add_recording_options(CLI::App& app, Options& options) {
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
    app.add_option("--clock-wait", options.rhythm.clock_wait_s,
                   "Seconds to wait at the start for a clock that is days behind the newest row; "
                   "after that, rows ahead of it are dropped")
        ->check(CLI::Range(0, kLongestWait_s).description(""))
        ->type_name("SECONDS")
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
    app.option_defaults()->group(kReplaying);
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

}  // namespace

void add_options(CLI::App& app, Options& options, CLI::MultiOptionPolicy repeated) {
    options.redundancy_mode = kLibraryChooses;
    app.option_defaults()->multi_option_policy(repeated)->group(kConfigurable);
    add_source_options(app, options);
    add_recording_options(app, options);
    add_supply_options(app, options);
    app.add_flag("--verbose", options.verbose, "Say everything on standard error");
    add_replay_options(app, options);
    app.option_defaults()->group("Options");
    app.add_option("--config", options.config_file,
                   std::string("Configuration file in place of ") + kUsualConfigFile)
        ->type_name("FILE");
    app.add_flag("--check-config", options.check_config,
                 "Print the configuration in force and where each setting comes from, and end");
    app.footer(kFooter);
    app.set_version_flag("--version", "pwrmgtd " PWRMGTD_VERSION);
}

std::vector<const CLI::Option*> configurable_options(const CLI::App& app) {
    return app.get_options([](const CLI::Option* o) { return o->get_group() == kConfigurable; });
}

std::vector<std::string> configurable_names() {
    Options ignored;
    CLI::App app;
    add_options(app, ignored, CLI::MultiOptionPolicy::Throw);
    std::vector<std::string> names;
    for (const CLI::Option* option : configurable_options(app)) {
        names.push_back(option->get_lnames().front());
    }
    return names;
}

}  // namespace pwrmgt::pwrmgtd
