// SPDX-License-Identifier: Apache-2.0
// The daemon from its options to its end.
#pragma once

#include <functional>
#include <string>

#include "clock.h"
#include "log.h"
#include "options.h"
#include "supervision.h"

namespace pwrmgt::pwrmgtd {

// Writes a document to standard output; false when that failed.
using Print = std::function<bool(const std::string& document)>;

// What ties the daemon to its process.
struct Process {
    Clock& clock;
    Log& log;
    Print print;
    Reread reread;
};

// Runs until it is done or the clock says stop. Whatever goes wrong is in the log.
Exit run_daemon(const Options& options, const Process& process);

}  // namespace pwrmgt::pwrmgtd
