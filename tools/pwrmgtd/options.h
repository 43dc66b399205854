// SPDX-License-Identifier: Apache-2.0
// What the daemon is told: by its command line, by the environment and by a configuration file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "schedule.h"

namespace pwrmgt::pwrmgtd {

// Service managers and scripts rely on the numbers; --help and docs/pwrmgtd.md list them.
enum class Exit : int { ok = 0, failure = 1, usage = 2, already_running = 3 };

enum class SourceKind { firmware, kernel, trace };

struct Options {
    std::string config_file;
    bool check_config = false;
    SourceKind source = SourceKind::firmware;
    std::string trace_file;
    std::string kernel_root;     // empty: the real one
    std::string supply_devices;  // with commas between; empty: found by themselves
    Rhythm rhythm;
    std::uint32_t redundancy_mode = 0;
    std::optional<int> bays;  // nothing: what platform and source tell
    Watts psu_input_label_w;
    Watts psu_label_w;
    std::string replay_file;  // empty: no replay
    std::string until = "now";
    std::optional<std::int64_t> until_s;  // nothing: now
    bool then_run = false;
    bool verbose = false;
};

// What it comes to: options to run with, or a text to print and the exit code to end with.
struct Parsed {
    std::optional<Options> options;
    Exit exit = Exit::ok;
    std::string text;
};

// The command line wins over the environment, that over the file, and that over what is built in.
Parsed parse_options(int argc, const char* const* argv);

}  // namespace pwrmgt::pwrmgtd
