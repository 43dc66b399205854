// SPDX-License-Identifier: Apache-2.0
// The options that say how a history is shown.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "command.h"
#include "history_document.h"
#include "plot_options.h"

namespace pwrmgt::pwrmgtctl {

struct LayoutOptions {
    bool json = false;
    bool local = false;
    bool oldest_first = false;
    bool timing = false;
    PlotOptions plot;
};

void add_layout_options(CLI::App& command, LayoutOptions& options);

// The history as table, JSON document or pictures, whichever was chosen.
Outcome history_outcome(const History& history, const LayoutOptions& options);

}  // namespace pwrmgt::pwrmgtctl
