// SPDX-License-Identifier: Apache-2.0
// Puts the commands together, parses, and turns every end of parsing into an action.
#include <CLI/CLI.hpp>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "command.h"
#include "completion.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr const char* kDescription =
    "Shows and sets what the server's management controller knows of power and temperatures.\n"
    "A command is a noun and a verb: pwrmgtctl power history";

constexpr const char* kFooter =
    "Exit codes:\n"
    "  0  done or shown\n"
    "  1  failed: database, firmware, clock, or standard output\n"
    "  2  wrong usage\n"
    "  3  not offered on this platform\n"
    "  4  nothing recorded\n"
    "  5  shown, but the newest reading is more than 60 s old\n"
    "  6  refused: a value outside its permitted range\n"
    "\n"
    "Examples:\n"
    "  pwrmgtctl power realtime\n"
    "  pwrmgtctl power history --period 24h --plot\n"
    "  pwrmgtctl psu history 1 --period 6h --entries 5\n"
    "  pwrmgtctl policy get --json\n"
    "\n"
    "Each command has a --help of its own; check has exit codes of its own.";

std::string mistake(const CLI::App& app, const CLI::ParseError& error) {
    // A word that is no command is told as itself, not as the command that is missing.
    const std::vector<std::string> unknown = app.remaining(true);
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr && !unknown.empty()) {
        return "no command '" + unknown.front() + "'";
    }
    return error.what();
}

Outcome parse_outcome(const CLI::App& app, const CLI::ParseError& error) {
    std::ostringstream out;
    std::ostringstream hint;
    // Help and version are no errors; they come as their text on the stream for documents.
    if (app.exit(error, out, hint) != 0) {
        if (app.got_subcommand("check")) return check_mistake(mistake(app, error));
        return fail(Exit::usage, mistake(app, error) + "\nTry 'pwrmgtctl --help'.");
    }
    std::string text = out.str();
    if (!text.ends_with('\n')) text += '\n';
    return succeed(std::move(text));
}

// Options tell what they need; what they exclude is left to the error, which names it.
class HelpFormatter : public CLI::Formatter {
public:
    std::string make_option_opts(const CLI::Option* option) const override {
        std::string text;
        if (option->get_type_size() != 0) {
            if (option->nonpositional() && !option->get_type_name().empty()) {
                text += ' ' + option->get_type_name();
            }
            if (!option->get_default_str().empty()) text += " (" + option->get_default_str() + ')';
            if (option->get_required()) text += " REQUIRED";
        }
        for (const CLI::Option* needed : option->get_needs()) {
            text += " with " + needed->get_name();
        }
        return text;
    }
};

cli::Command add_family(CLI::App& app, const char* noun, const char* description) {
    CLI::App* family = app.add_subcommand(noun, description);
    family->require_subcommand(1);
    return cli::Command(family);
}

// Not in the help: what a package is made with.
void add_completion(CLI::App& app, Action& chosen) {
    CLI::App* family = app.add_subcommand("completion", "Completion of shells");
    family->group("")->require_subcommand(1);
    family->add_subcommand("bash", "The script for bash")->callback([&chosen] {
        chosen = [] { return succeed(bash_completion(completion_tree())); };
    });
}

}  // namespace

void add_commands(CLI::App& app, Action& chosen) {
    const cli::Command power =
        add_family(app, "power", "Power of the system, the processors, the memory");
    add_power_history(power, chosen);
    add_power_summary(power, chosen);
    add_power_realtime(power, chosen);
    add_power_available(power, chosen);
    const cli::Command performance = add_family(app, "performance", "Utilisation");
    add_performance(performance, chosen);
    const cli::Command cpu = add_family(app, "cpu", "Power of single processors");
    add_cpu(cpu, chosen);
    const cli::Command psu = add_family(app, "psu", "The supplies");
    add_psu(psu, chosen);
    add_psu_history(psu, chosen);
    add_psu_summary(psu, chosen);
    const cli::Command thermal = add_family(app, "thermal", "Temperatures");
    add_thermal(thermal, chosen);
    const cli::Command capping = add_family(app, "capping", "The power cap");
    add_capping(capping, chosen);
    add_capping_ranges(capping, chosen);
    const cli::Command gpu = add_family(app, "gpu", "Caps and power of GPUs");
    add_gpu(gpu, chosen);
    const cli::Command redundancy =
        add_family(app, "redundancy", "The redundancy mode of the supplies");
    add_redundancy(redundancy, chosen);
    const cli::Command policy = add_family(app, "policy", "The power policy");
    add_policy(policy, chosen);
    const cli::Command settings =
        add_family(app, "settings", "Single values of policy and firmware");
    add_settings(settings, chosen);
    const cli::Command meter = add_family(app, "meter", "The firmware's power meter");
    add_meter(meter, chosen);
    const cli::Command store = add_family(app, "store", "The firmware's data store");
    add_store(store, chosen);
    add_check(cli::Command(&app), chosen);
    add_metrics(cli::Command(&app), chosen);
    add_completion(app, chosen);
}

Action parse(int argc, const char* const* argv) {
    CLI::App app(kDescription, "pwrmgtctl");
    Action chosen;
    app.set_version_flag("--version", "pwrmgtctl " PWRMGTCTL_VERSION);
    app.require_subcommand(1);
    app.formatter(std::make_shared<HelpFormatter>());
    add_commands(app, chosen);
    app.footer(kFooter);  // last: a family made after it would inherit it
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return [outcome = parse_outcome(app, error)] { return outcome; };
    }
    return chosen;
}

}  // namespace pwrmgt::pwrmgtctl
