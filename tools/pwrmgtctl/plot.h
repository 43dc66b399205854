// SPDX-License-Identifier: Apache-2.0
// What a picture shows: lines over time with their bands, and a level across all of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace pwrmgt::pwrmgtctl {

// Watts and percentages are never below zero, degrees may be.
using PlotValue = std::optional<int32_t>;

// One entry. Without a mean it is a gap: line and band are left open there.
struct PlotPoint {
    int64_t time_s;
    PlotValue mean;
    PlotValue low;  // both or none
    PlotValue high;
};

struct PlotSeries {
    std::string name;
    std::vector<PlotPoint> points;  // oldest first
};

struct PlotLevel {
    std::string name;
    int32_t value;
};

enum class PlotUnit { watts, percent, degrees };

struct Plot {
    std::string title;
    PlotUnit unit;
    int64_t start_s;
    int64_t end_s;
    std::vector<PlotSeries> series;
    std::optional<PlotLevel> level;
};

}  // namespace pwrmgt::pwrmgtctl
