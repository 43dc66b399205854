// SPDX-License-Identifier: Apache-2.0
#include "columns.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace pwrmgt::trace {
namespace {

struct Pattern {
    std::string_view prefix;
    std::string_view suffix;  // empty: the prefix is the whole name, without a number
    Place first;
    std::size_t count;
    std::int32_t min;
    std::int32_t max;
};

constexpr std::int32_t kCount = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kWatts = 65534;
constexpr std::int32_t kPercent = 100;
constexpr std::int32_t kColdest = -128;
constexpr std::int32_t kHottest = 255;
constexpr std::int32_t kYes = 1;
constexpr std::int32_t kClasses = 254;
constexpr std::int32_t kVolts = 1000;

// clang-format off
constexpr Pattern kPatterns[] = {
    {"sdr_rows",     "",                kAnswers,    1,         0,        kCount},
    {"sys_power_W",  "",                kSystemW,    1,         0,        kWatts},
    {"cpu_power_W",  "",                kCpuW,       1,         0,        kWatts},
    {"mem_power_W",  "",                kMemoryW,    1,         0,        kWatts},
    {"sys_util_pct", "",                kSystemPct,  1,         0,        kPercent},
    {"cpu_util_pct", "",                kCpuPct,     1,         0,        kPercent},
    {"mem_util_pct", "",                kMemoryPct,  1,         0,        kPercent},
    {"io_util_pct",  "",                kIoPct,      1,         0,        kPercent},
    {"ambient_C",    "",                kAmbientC,   1,         kColdest, kHottest},
    {"exhaust_C",    "",                kExhaustC,   1,         kColdest, kHottest},
    {"cpu",          "_C",              kCpuC,       kCpus,     kColdest, kHottest},
    {"psu",          "_present",        kPresent,    kSupplies, 0,        kYes},
    {"psu",          "_ac_lost",        kAcLost,     kSupplies, 0,        kYes},
    {"psu",          "_fault",          kFault,      kSupplies, 0,        kYes},
    {"psu",          "_input_class",    kInputClass, kSupplies, 0,        kClasses},
    {"psu",          "_input_V",        kInputV,     kSupplies, 0,        kVolts},
    {"probe",        "_voltage_V",      kInputV,     kSupplies, 0,        kVolts},
    {"psu",          "_label_in_W",     kLabelIn,    kSupplies, 0,        kWatts},
    {"psu",          "_label_out_W",    kLabelOut,   kSupplies, 0,        kWatts},
    {"psu",          "_ac_in_W",        kSupplyAc,   kSupplies, 0,        kWatts},
    {"psu",          "_dc_out_W",       kSupplyDc,   kSupplies, 0,        kWatts},
    {"probe",        "_active_power_W", kProbeAc,    kSupplies, 0,        kWatts},
};
// clang-format on

// The number between prefix and suffix, 1 for a pattern without one, 0 when the name is another.
std::size_t number_in(std::string_view name, const Pattern& pattern) {
    if (pattern.suffix.empty()) return name == pattern.prefix ? 1 : 0;
    if (!name.starts_with(pattern.prefix) || !name.ends_with(pattern.suffix)) return 0;
    if (name.size() <= pattern.prefix.size() + pattern.suffix.size()) return 0;

    name.remove_prefix(pattern.prefix.size());
    name.remove_suffix(pattern.suffix.size());
    std::size_t found = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), found);
    if (error != std::errc{} || end != name.data() + name.size()) return 0;
    return found;
}

}  // namespace

std::optional<Column> find_column(std::string_view name) {
    for (const Pattern& pattern : kPatterns) {
        const std::size_t instance = number_in(name, pattern);
        if (instance >= 1 && instance <= pattern.count) {
            return Column{pattern.first + instance - 1, pattern.min, pattern.max};
        }
    }
    return std::nullopt;
}

std::optional<double> number(std::string_view cell) {
    double value = 0;
    const auto [end, error] = std::from_chars(cell.data(), cell.data() + cell.size(), value);
    if (error != std::errc{} || end != cell.data() + cell.size()) return std::nullopt;
    if (!std::isfinite(value)) return std::nullopt;
    return value;
}

std::optional<std::int32_t> rounded(double value, const Column& column) {
    const double whole = std::round(value);
    if (whole < column.min || whole > column.max) return std::nullopt;
    return static_cast<std::int32_t>(whole);
}

}  // namespace pwrmgt::trace
