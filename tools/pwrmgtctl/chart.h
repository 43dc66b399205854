// SPDX-License-Identifier: Apache-2.0
// A small chart of text: bars upwards, time from left to right, entries without a reading left
// blank.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "print.h"

namespace pwrmgt::pwrmgtctl {

enum class Charset { utf8, ascii };

// Watts and percentages are never below zero, degrees may be.
using ChartValue = std::optional<int32_t>;

struct ChartPoint {
    uint32_t timestamp_s;
    ChartValue value;
};

struct ChartStyle {
    Charset charset;
    Zone zone;
};

// Draws points that come newest first, at most 60 columns wide: neighbours share a column as their
// mean. Below the axis stand the first and the last time, and the lowest and highest value.
std::string chart_text(const std::vector<ChartPoint>& newest_first, const ChartStyle& style);

}  // namespace pwrmgt::pwrmgtctl
