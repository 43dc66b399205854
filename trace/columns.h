// SPDX-License-Identifier: Apache-2.0
// The columns of a measured trace that are read, as a table of names and of the values a cell of
// them may hold.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "measured_trace.h"

namespace pwrmgt::trace {

// Where a cell goes in a parsed row. A numbered column takes the place of its number 1 and the
// ones behind it.
enum Place : std::size_t {
    kAnswers,
    kSystemW,
    kCpuW,
    kMemoryW,
    kSystemPct,
    kCpuPct,
    kMemoryPct,
    kIoPct,
    kAmbientC,
    kExhaustC,
    kCpuC,
    kPresent = kCpuC + kCpus,
    kAcLost = kPresent + kSupplies,
    kFault = kAcLost + kSupplies,
    kInputClass = kFault + kSupplies,
    kInputV = kInputClass + kSupplies,
    kLabelIn = kInputV + kSupplies,
    kLabelOut = kLabelIn + kSupplies,
    kSupplyAc = kLabelOut + kSupplies,  // from here on: power, without which there is no sum
    kSupplyDc = kSupplyAc + kSupplies,
    kProbeAc = kSupplyDc + kSupplies,
    kPlaces = kProbeAc + kSupplies,
};

using Cells = std::array<std::optional<std::int32_t>, kPlaces>;

struct Column {
    std::size_t place;
    std::int32_t min;
    std::int32_t max;
};

inline constexpr std::string_view kTimeColumn = "epoch_s";

// The column of that name; nullopt for one that is not read.
std::optional<Column> find_column(std::string_view name);

// A cell as a finite number; nullopt when it is not one.
std::optional<double> number(std::string_view cell);

// The number rounded to the nearest whole one; nullopt when the column cannot hold it.
std::optional<std::int32_t> rounded(double value, const Column& column);

}  // namespace pwrmgt::trace
