// SPDX-License-Identifier: Apache-2.0
// What every command family shares: exit codes, what a command hands back, and how a family
// registers itself.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <utility>

namespace pwrmgt::pwrmgtctl {

// Documented in --help and docs/pwrmgtctl.md; scripts rely on the numbers.
enum class Exit : int {
    ok = 0,
    failure = 1,
    usage = 2,
    unsupported = 3,
    no_data = 4,
    stale = 5,
    out_of_range = 6
};

// A document for standard output, an error in words for standard error, or a whole document and
// what is wrong with what it tells.
struct Outcome {
    Exit exit = Exit::ok;
    std::string document;
    std::string error;
    Exit unwritten = Exit::failure;  // when the document cannot be written
};

inline Outcome succeed(std::string document) {
    return {Exit::ok, std::move(document), {}, Exit::failure};
}

inline Outcome fail(Exit exit, std::string error) {
    return {exit, {}, std::move(error), Exit::failure};
}

// What is shown all the same.
inline Outcome succeed_but(Exit exit, std::string document, std::string error) {
    return {exit, std::move(document), std::move(error), Exit::failure};
}

// The parsed command leaves its work here; main runs it after parsing has succeeded.
using Action = std::function<Outcome()>;

void add_history(CLI::App& app, Action& chosen);
void add_summary(CLI::App& app, Action& chosen);
void add_cpu(CLI::App& app, Action& chosen);
void add_psu(CLI::App& app, Action& chosen);
void add_redundancy(CLI::App& app, Action& chosen);
void add_power(CLI::App& app, Action& chosen);
void add_thermal(CLI::App& app, Action& chosen);
void add_realtime(CLI::App& app, Action& chosen);
void add_policy(CLI::App& app, Action& chosen);
void add_check(CLI::App& app, Action& chosen);
void add_metrics(CLI::App& app, Action& chosen);

// A command line that `check` cannot follow: told the way a monitoring plugin tells it.
Outcome check_mistake(const std::string& words);

// Parses the command line and runs the command it names.
Outcome run(int argc, const char* const* argv);

}  // namespace pwrmgt::pwrmgtctl
