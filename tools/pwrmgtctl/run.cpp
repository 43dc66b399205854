// SPDX-License-Identifier: Apache-2.0
// Puts the command families together, parses, and turns every end of parsing into an outcome.
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "command.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr const char* kDescription =
    "Shows the power and utilisation that the server's management controller has recorded.";

constexpr const char* kFooter =
    "Exit codes:\n"
    "  0  shown\n"
    "  1  failed: database, firmware, clock, or standard output\n"
    "  2  wrong usage, or a value out of range\n"
    "  3  not offered on this platform\n"
    "  4  nothing recorded\n"
    "\n"
    "Examples:\n"
    "  pwrmgtctl realtime\n"
    "  pwrmgtctl history power --period 24h --plot\n"
    "  pwrmgtctl history psu 1 --period 6h --entries 5\n"
    "  pwrmgtctl policy --json\n"
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

}  // namespace

Outcome run(int argc, const char* const* argv) {
    CLI::App app(kDescription, "pwrmgtctl");
    Action chosen;
    app.set_version_flag("--version", "pwrmgtctl " PWRMGTCTL_VERSION);
    app.require_subcommand(1);
    add_history(app, chosen);
    add_summary(app, chosen);
    add_cpu(app, chosen);
    add_realtime(app, chosen);
    add_policy(app, chosen);
    add_psu(app, chosen);
    add_redundancy(app, chosen);
    add_power(app, chosen);
    add_thermal(app, chosen);
    add_check(app, chosen);
    add_metrics(app, chosen);
    app.footer(kFooter);  // last: a family made after it would inherit it
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return parse_outcome(app, error);
    }
    return chosen();
}

}  // namespace pwrmgt::pwrmgtctl
