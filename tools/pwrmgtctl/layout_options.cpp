// SPDX-License-Identifier: Apache-2.0
#include "layout_options.h"

namespace pwrmgt::pwrmgtctl {

void add_layout_options(CLI::App& command, LayoutOptions& options) {
    CLI::Option* json =
        command.add_flag("--json", options.json, "One JSON document instead of a table");
    CLI::Option* chart = command.add_flag("--chart", options.chart,
                                          "A chart of the first column instead of a table");
    command.add_flag("--ascii", options.ascii, "Draw the chart with ASCII characters")
        ->needs(chart);
    command.add_flag("--local", options.local, "Local time instead of UTC")->excludes(json);
    command.add_flag("--oldest-first", options.oldest_first, "Oldest entry on top")
        ->excludes(chart);
    command.add_flag("--timing", options.timing, "Tell how long the query took");
    json->excludes(chart);
}

std::string history_document(const History& history, const LayoutOptions& options) {
    const Layout layout{options.local ? Zone::local : Zone::utc,
                        options.oldest_first ? Order::oldest_first : Order::newest_first,
                        options.timing ? Timing::on : Timing::off,
                        options.ascii ? Charset::ascii : Charset::utf8};
    if (options.json) return history_json(history, layout);
    return options.chart ? history_chart(history, layout) : history_table(history, layout);
}

}  // namespace pwrmgt::pwrmgtctl
