// SPDX-License-Identifier: Apache-2.0
// What every command shares: exit codes, what a command hands back, and how it registers itself.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "cli.h"
#include "watch.h"

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

// The parsed command leaves its work here; main runs it after parsing has succeeded, again and
// again when it is to be watched.
struct Action {
    Action() = default;
    template <class Work, class = std::enable_if_t<std::is_invocable_r_v<Outcome, Work>>>
    Action(Work the_work) : work(std::move(the_work)) {}

    Outcome operator()() const { return work(); }

    std::function<Outcome()> work;
    std::optional<Watch> watch;
};

// The options of every command.
struct CommonOptions {
    bool json = false;
    bool timing = false;
    bool one_line = false;  // JSON that is one of many documents: each a line
};

struct CommandText {
    const char* name;
    const char* description;
    const char* examples;
};

// Makes a command of a family (or of the program itself) that runs `show` with its options.
template <class Options>
cli::Command add_command(cli::Command family, Action& chosen, const CommandText& text,
                         const std::shared_ptr<Options>& options, Outcome (*show)(const Options&)) {
    cli::Command command = family.add_command(text.name, text.description);
    command.add_flag("--json", options->json, "One JSON document instead of text");
    command.add_flag("--timing", options->timing, "Tell how long the query took");
    command.footer(text.examples);
    command.when_parsed(
        [&chosen, options, show] { chosen = [options, show] { return show(*options); }; });
    return command;
}

// The options of a view that can be watched.
struct WatchOptions {
    std::vector<double> seconds;  // none, also when --watch stands without a number
    uint32_t times = 0;
};

void add_watch_options(cli::Command command, WatchOptions& options);

// Lets a command that shows what is now be watched.
template <class Options>
void let_watch(cli::Command command, Action& chosen, const std::shared_ptr<Options>& options,
               Outcome (*show)(const Options&)) {
    const auto asked = std::make_shared<WatchOptions>();
    add_watch_options(command, *asked);
    command.when_parsed([command, &chosen, options, show, asked] {
        const bool watched = command.given("--watch") || command.given("--watch-count");
        options->one_line = watched;
        chosen = [options, show] { return show(*options); };
        if (!watched) return;
        chosen.watch = Watch{};
        if (!asked->seconds.empty()) chosen.watch->every_s = asked->seconds.front();
        chosen.watch->times = asked->times;
        chosen.watch->lines = options->json;
    });
}

// The commands, each added to its family.
void add_power_history(cli::Command power, Action& chosen);
void add_power_summary(cli::Command power, Action& chosen);
void add_power_realtime(cli::Command power, Action& chosen);
void add_power_available(cli::Command power, Action& chosen);
void add_performance(cli::Command performance, Action& chosen);
void add_psu(cli::Command psu, Action& chosen);
void add_psu_history(cli::Command psu, Action& chosen);
void add_psu_summary(cli::Command psu, Action& chosen);
void add_cpu(cli::Command cpu, Action& chosen);
void add_thermal(cli::Command thermal, Action& chosen);
void add_capping(cli::Command capping, Action& chosen);
void add_capping_ranges(cli::Command capping, Action& chosen);
void add_gpu(cli::Command gpu, Action& chosen);
void add_settings(cli::Command settings, Action& chosen);
void add_meter(cli::Command meter, Action& chosen);
void add_store(cli::Command store, Action& chosen);
void add_redundancy(cli::Command redundancy, Action& chosen);
void add_policy(cli::Command policy, Action& chosen);

void add_check(cli::Command app, Action& chosen);
void add_metrics(cli::Command app, Action& chosen);

// A command line that `check` cannot follow: told the way a monitoring plugin tells it.
Outcome check_mistake(const std::string& words);

// Adds all of them.
void add_commands(CLI::App& app, Action& chosen);

// What was asked for: help, a mistake, or a command's work.
Action parse(int argc, const char* const* argv);

}  // namespace pwrmgt::pwrmgtctl
