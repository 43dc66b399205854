// SPDX-License-Identifier: Apache-2.0
// The options that say how a history is shown.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "history_document.h"

namespace pwrmgt::pwrmgtctl {

struct LayoutOptions {
    bool json = false;
    bool chart = false;
    bool ascii = false;
    bool local = false;
    bool oldest_first = false;
    bool timing = false;
};

void add_layout_options(CLI::App& command, LayoutOptions& options);

// The history as table, JSON document or chart, whichever was chosen.
std::string history_document(const History& history, const LayoutOptions& options);

}  // namespace pwrmgt::pwrmgtctl
