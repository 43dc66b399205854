// SPDX-License-Identifier: Apache-2.0
// A picture as a script of the plotting program, data included.
#pragma once

#include <string>

#include "plot.h"

namespace pwrmgt::pwrmgtctl {

enum class PlotFormat { text, coloured_text, svg, png };

struct PlotDevice {
    PlotFormat format;
    int columns = 0;  // of text; pictures in files have a size of their own
    int rows = 0;
};

// The line above a picture on a screen, where the program has no room for words: quantity, unit,
// and what bars are.
std::string screen_caption(const Plot& plot);

std::string plot_script(const Plot& plot, const PlotDevice& device);

}  // namespace pwrmgt::pwrmgtctl
