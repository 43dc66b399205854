// SPDX-License-Identifier: Apache-2.0
// The options that ask for pictures, and the pictures themselves.
#pragma once

#include <string>
#include <vector>

#include "command.h"
#include "plot.h"

namespace pwrmgt::pwrmgtctl {

struct PlotOptions {
    bool screen = false;
    std::string svg;  // files; "-" is standard output
    std::string png;

    [[nodiscard]] bool wanted() const { return screen || !svg.empty() || !png.empty(); }
};

// Each of them excludes `others`: what is shown otherwise, and what has no place in a picture.
void add_plot_options(cli::Command command, PlotOptions& options,
                      const std::vector<cli::Option>& others);

// What stands above and below a picture on the screen.
struct PlotText {
    std::string headline;
    std::string closing;
};

// Draws everything that was asked for; a picture that went to a file is told in a line.
Outcome plot_outcome(const Plot& plot, const PlotOptions& options, const PlotText& text);

}  // namespace pwrmgt::pwrmgtctl
