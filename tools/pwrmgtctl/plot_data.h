// SPDX-License-Identifier: Apache-2.0
// What of a picture is arithmetic: where lines break, and what the axes hold.
#pragma once

#include <cstdint>
#include <string>

#include "plot.h"

namespace pwrmgt::pwrmgtctl {

// Rows of the plotting program, "time value" or "time low high". An empty row breaks a line or a
// band; an entry between two gaps, which no line can show, is a lone one.
struct PlotRows {
    std::string lines;
    std::string lone;
    std::string bands;
    std::string lone_bands;
};

PlotRows rows_of(const PlotSeries& series);

bool has_band(const PlotSeries& series);

struct PlotRange {
    int64_t low;
    int64_t high;
};

// The axis of values: every percentage there is, else the readings with room above and below.
PlotRange value_axis(const Plot& plot);

// A level far from the readings would press them flat: it is then only told.
bool shows_level(const Plot& plot);

// Seconds between the marks of the time axis: a round step that leaves at most `most` of them.
int64_t time_step_s(int64_t span_s, int64_t most);

}  // namespace pwrmgt::pwrmgtctl
