// SPDX-License-Identifier: Apache-2.0
// vekdb-simctl: shows and changes the machine that the firmware simulator plays, and makes its
// exchanges fail.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <memory>
#include <sstream>

#include "simctl.h"

using namespace pwrmgt::ipmi::sim;
using namespace pwrmgt::ipmi::sim::ctl;

namespace {

constexpr const char* kFooter =
    "The state lies in $VEKDB_RUNTIME_DIR, or where the database keeps its working tables.\n"
    "\n"
    "Exit codes:\n"
    "  0  done or shown\n"
    "  1  failed: the state cannot be read or written, or standard output\n"
    "  2  wrong usage\n"
    "\n"
    "Examples:\n"
    "  vekdb-simctl status --json\n"
    "  vekdb-simctl cap-range 200 800\n"
    "  vekdb-simctl fault add --command 0x32 --operation 0x01 --kind busy --times 3\n"
    "  vekdb-simctl fault clear\n"
    "\n"
    "Each command has a --help of its own.";

constexpr const char* kFaultFooter =
    "Kinds:\n"
    "  busy            completion code 0xC0\n"
    "  no-answer       nothing comes back\n"
    "  late[:MS]       done, but the answer is given up after MS milliseconds (50)\n"
    "  short[:BYTES]   the answer cut to BYTES in all, or by one\n"
    "  long[:BYTES]    the answer stretched to BYTES in all, at most 256, or by one\n"
    "  garbage         as many bytes as it should have, none of them right\n"
    "  completion:CODE this completion code\n"
    "  status:CODE     this status byte, of command 0x32, operations 0x02 and 0x03\n"
    "\n"
    "Faults of one request befall it in the order in which they were added.\n"
    "\n"
    "Examples:\n"
    "  vekdb-simctl fault add --command 0x32 --operation 0x02 --kind status:2\n"
    "  vekdb-simctl fault add --command 0x90 --kind completion:0xC3 --times 2\n"
    "  vekdb-simctl fault add --command 0xDB --kind no-answer --always";

void add_shown(CLI::App& app, Action& chosen, const char* name, const char* what,
               Outcome (*show)(Form)) {
    CLI::App* command = app.add_subcommand(name, what);
    const auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "One JSON document instead of words");
    command->callback(
        [&chosen, json, show] { chosen = [=] { return show(*json ? Form::json : Form::words); }; });
}

void add_faults(CLI::App& app, Action& chosen) {
    CLI::App* fault = app.add_subcommand("fault", "Make exchanges fail");
    fault->require_subcommand(1);
    CLI::App* add = fault->add_subcommand("add", "Let a fault befall the next exchanges");
    const auto request = std::make_shared<FaultRequest>();
    add->add_option("--command", request->command, "Command byte")
        ->required()
        ->check(CLI::Range(0, 255));
    add->add_option("--operation", request->operation, "Operation byte; every operation without")
        ->check(CLI::Range(0, 255));
    add->add_option("--kind", request->kind, "What happens, see below")->required();
    CLI::Option* times = add->add_option("--times", request->times, "How many exchanges (1)")
                             ->check(CLI::Range(1, 1'000'000));
    add->add_flag("--always", request->always, "Until cleared")->excludes(times);
    add->footer(kFaultFooter);
    add->callback([&chosen, request] { chosen = [=] { return add_fault(*request); }; });
    fault->add_subcommand("clear", "Forget all faults that are waiting")->callback([&chosen] {
        chosen = clear_faults;
    });
}

void add_machine(CLI::App& app, Action& chosen) {
    CLI::App* gpus = app.add_subcommand("gpus", "Set how many GPUs the machine has");
    const auto count = std::make_shared<unsigned>(0);
    const auto draw = std::make_shared<std::optional<std::string>>();
    gpus->add_option("count", *count, "Number")->required()->check(CLI::Range(0, int{kMaxGpus}));
    gpus->add_option("--draw", *draw, "Watts that each draws, or none for no reading");
    gpus->callback([&chosen, count, draw] { chosen = [=] { return set_gpus(*count, *draw); }; });

    CLI::App* slots = app.add_subcommand("slots", "Set what the slot devices draw");
    const auto powers = std::make_shared<std::vector<std::string>>();
    slots->add_option("watts", *powers, "Up to five powers; none for no reading")
        ->required()
        ->expected(1, int{kSlotDevices});
    slots->callback([&chosen, powers] { chosen = [=] { return set_slots(*powers); }; });

    CLI::App* processors = app.add_subcommand("processors", "Set the processors and their caps");
    const auto cpus = std::make_shared<unsigned>(0);
    const auto caps = std::make_shared<std::vector<std::string>>();
    processors->add_option("count", *cpus, "Number")
        ->required()
        ->check(CLI::Range(1, int{kMaxCpus}));
    processors->add_option("--caps", *caps, "Watts for the first ones, or none; none without")
        ->expected(1, int{kMaxCpus});
    processors->callback([&chosen, cpus, caps] {
        chosen = [=] { return set_processors(static_cast<std::uint8_t>(*cpus), *caps); };
    });
}

void add_cap_range(CLI::App& app, Action& chosen) {
    CLI::App* range = app.add_subcommand("cap-range", "Set which caps the machine can keep to");
    const auto min_w = std::make_shared<unsigned>(0);
    const auto max_w = std::make_shared<unsigned>(0);
    range->add_option("min", *min_w, "Lowest, watts")->required()->check(CLI::Range(1, 65534));
    range->add_option("max", *max_w, "Highest, watts")->required()->check(CLI::Range(1, 65534));
    range->callback([&chosen, min_w, max_w] {
        chosen = [=] {
            return set_cap_range(static_cast<std::uint16_t>(*min_w),
                                 static_cast<std::uint16_t>(*max_w));
        };
    });
}

Outcome parsed_and_run(int argc, const char* const* argv) {
    CLI::App app("Controls the simulated platform firmware.", "vekdb-simctl");
    Action chosen;
    app.set_version_flag("--version", "vekdb-simctl " SIMCTL_VERSION);
    app.require_subcommand(1);
    add_shown(app, chosen, "status", "Show the state", show_status);
    add_shown(app, chosen, "audit", "Show who asked for a power cap", show_audit);
    add_faults(app, chosen);
    add_machine(app, chosen);
    add_cap_range(app, chosen);
    app.add_subcommand("reset", "Forget everything")->callback([&chosen] { chosen = reset; });
    app.footer(kFooter);  // last: a command made after it would inherit it
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream hint;
        if (app.exit(error, out, hint) == 0) return {Exit::ok, out.str()};
        return {Exit::usage, error.what()};
    }
    return chosen();
}

int finished(const Outcome& outcome) {
    if (outcome.exit != Exit::ok) {
        std::fprintf(stderr, "vekdb-simctl: %s\n", outcome.text.c_str());
        if (outcome.exit == Exit::usage) std::fputs("Try 'vekdb-simctl --help'.\n", stderr);
        return static_cast<int>(outcome.exit);
    }
    if (std::fputs(outcome.text.c_str(), stdout) < 0 || std::fflush(stdout) != 0) {
        std::perror("vekdb-simctl: standard output");
        return static_cast<int>(Exit::failure);
    }
    return static_cast<int>(Exit::ok);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return finished(parsed_and_run(argc, argv));
    } catch (const std::exception& failure) {
        return finished({Exit::failure, failure.what()});
    }
}
