// SPDX-License-Identifier: Apache-2.0
#include "layout_options.h"

#include "plot_history.h"

namespace pwrmgt::pwrmgtctl {

void add_csv_option(cli::Command command, bool& csv) {
    cli::Option option = command.add_flag("--csv", csv, "Comma-separated values, a line per entry");
    for (const char* other : {"--json", "--local", "--timing"}) {
        if (command.has_option(other)) option.excludes(command.option(other));
    }
}

void add_local_option(cli::Command command, bool& local) {
    command.add_flag("--local", local, "Local time instead of UTC")
        .excludes(command.option("--json"));
}

void add_layout_options(cli::Command command, LayoutOptions& options) {
    cli::Option json = command.option("--json");
    add_local_option(command, options.local);
    cli::Option oldest =
        command.add_flag("--oldest-first", options.oldest_first, "Oldest entry on top");
    add_csv_option(command, options.csv);
    add_plot_options(command, options.plot,
                     {json, command.option("--csv"), command.option("--local"), oldest});
}

Outcome history_outcome(const History& history, const LayoutOptions& options) {
    const Layout layout{options.local ? Zone::local : Zone::utc,
                        options.oldest_first ? Order::oldest_first : Order::newest_first};
    if (options.plot.wanted()) {
        const Value cap_w = history.capped ? cap_in_force() : Value{};
        const std::string closing =
            options.timing ? timing_text(history.answer.query_ms) : std::string();
        return plot_outcome(plot_of(history, cap_w), options.plot,
                            {history_headline(history, layout.zone), closing});
    }
    if (options.json) return succeed(history_json(history, layout, options));
    return succeed(options.csv ? history_csv(history, layout)
                               : history_table(history, layout, options));
}

}  // namespace pwrmgt::pwrmgtctl
