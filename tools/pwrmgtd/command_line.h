// SPDX-License-Identifier: Apache-2.0
// The options that there are, and which of them may be configured.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "options.h"

namespace pwrmgt::pwrmgtd {

inline constexpr const char* kDescription =
    "Records the power history of this server.\n\n"
    "Every second pwrmgtd reads the power of the system, its processors and its memory, and\n"
    "makes it the real-time row of the database. Every 30 seconds it stores average, maximum\n"
    "and minimum as a row of the 24-hour history, and every few rows it saves them where they\n"
    "outlive a reboot. It stays in the foreground. SIGTERM or SIGINT saves the rest and ends it.";

inline constexpr const char* kUntilText = "SECONDS or \"YYYY-MM-DD HH:MM:SS\" (UTC) or now";

// Adds all of them; parsing fills `options`. `repeated`: what an option that stands twice means.
void add_options(CLI::App& app, Options& options, CLI::MultiOptionPolicy repeated);

// Those that a file and the environment may set too.
std::vector<const CLI::Option*> configurable_options(const CLI::App& app);
std::vector<std::string> configurable_names();

}  // namespace pwrmgt::pwrmgtd
