// SPDX-License-Identifier: Apache-2.0
#include "layout_options.h"

#include "plot_history.h"

namespace pwrmgt::pwrmgtctl {

void add_layout_options(CLI::App& command, LayoutOptions& options) {
    CLI::Option* json =
        command.add_flag("--json", options.json, "One JSON document instead of a table");
    CLI::Option* local =
        command.add_flag("--local", options.local, "Local time instead of UTC")->excludes(json);
    CLI::Option* oldest =
        command.add_flag("--oldest-first", options.oldest_first, "Oldest entry on top");
    command.add_flag("--timing", options.timing, "Tell how long the query took");
    add_plot_options(command, options.plot, {json, local, oldest});
}

Outcome history_outcome(const History& history, const LayoutOptions& options) {
    const Layout layout{options.local ? Zone::local : Zone::utc,
                        options.oldest_first ? Order::oldest_first : Order::newest_first,
                        options.timing ? Timing::on : Timing::off};
    if (options.plot.wanted()) {
        const Value cap_w = history.capped ? cap_in_force() : Value{};
        return plot_outcome(plot_of(history, cap_w), options.plot,
                            {history_headline(history, layout, "oldest on the left"),
                             options.timing ? timing_text(history.query_ms) : std::string()});
    }
    return succeed(options.json ? history_json(history, layout) : history_table(history, layout));
}

}  // namespace pwrmgt::pwrmgtctl
