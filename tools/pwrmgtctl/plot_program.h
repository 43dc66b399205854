// SPDX-License-Identifier: Apache-2.0
// The plotting program, gnuplot, as a child process: a script goes in, a picture comes out.
#pragma once

#include <string>

#include "command.h"

namespace pwrmgt::pwrmgtctl {

struct Drawn {
    std::string picture;
    Exit exit = Exit::ok;
    std::string mistake;  // in words, unless `exit` is ok
};

inline constexpr int kPlotSilenceMs = 30000;

// No shell is involved and no file is written; found on $PATH. Ended when it neither reads nor
// writes for `silence_ms`.
Drawn draw(const std::string& script, int silence_ms);

}  // namespace pwrmgt::pwrmgtctl
