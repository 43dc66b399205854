// SPDX-License-Identifier: Apache-2.0
// The options that say how a history is shown.
#pragma once

#include <string>

#include "command.h"
#include "history_document.h"
#include "plot_options.h"

namespace pwrmgt::pwrmgtctl {

struct LayoutOptions : CommonOptions {
    bool csv = false;
    bool local = false;
    bool oldest_first = false;
    PlotOptions plot;
};

void add_layout_options(cli::Command command, LayoutOptions& options);

// --csv, in place of the other forms that the command has.
void add_csv_option(cli::Command command, bool& csv);

// --local, of text only.
void add_local_option(cli::Command command, bool& local);

// The history as table, JSON document, CSV or pictures, whichever was chosen.
Outcome history_outcome(const History& history, const LayoutOptions& options);

}  // namespace pwrmgt::pwrmgtctl
