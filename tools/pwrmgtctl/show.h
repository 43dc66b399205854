// SPDX-License-Identifier: Apache-2.0
// Runs a parsed command and shows what it hands back, once or as a view that is watched.
#pragma once

#include "command.h"
#include "common/stdout_guard.h"

namespace pwrmgt::pwrmgtctl {

// The exit code of the process.
int show(const Action& action, common::StdoutGuard& standard_output);

}  // namespace pwrmgt::pwrmgtctl
