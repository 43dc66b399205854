// SPDX-License-Identifier: Apache-2.0
// Measured traces: one server's power, utilisation and temperature readings over time, from a CSV
// file. What the columns are and how a trace becomes 30-second slots is told in data/README.md.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace pwrmgt::trace {

inline constexpr std::size_t kSupplies = 12;
inline constexpr std::size_t kCpus = 8;

// How long a row speaks for the seconds after it when no newer row comes: longer than the longest
// step of a 60-second trace, shorter than two of them, so that one lost row is seen as lost.
inline constexpr std::int64_t kDefaultHold_s = 90;

// Whole watts, 0..65534; nullopt = no reading, as everywhere below.
using Watts = std::optional<std::uint16_t>;
// Whole percent, 0..100.
using Percent = std::optional<std::uint8_t>;
// Whole degrees Celsius, -128..255.
using Celsius = std::optional<std::int16_t>;

struct Supply {
    Watts ac_in_w;
    Watts dc_out_w;
};

// What a row says of a supply beside its power.
struct SupplyState {
    std::optional<bool> present;
    std::optional<bool> ac_lost;
    std::optional<bool> fault;
    std::optional<std::uint8_t> input_class;  // 0..254, of the supply table
    std::optional<std::uint16_t> input_v;     // whole volts, 0..1000
    Watts label_in_w;
    Watts label_out_w;
};

// One row of a trace.
struct Reading {
    std::int64_t epoch_s = 0;  // whole seconds, a fraction in the file is cut off
    bool answered = true;      // false: the source was unreachable, every other field is empty
    Watts system_ac_w;         // both present or both empty
    Watts system_dc_w;
    Watts cpu_w;
    Watts mem_w;
    std::array<Supply, kSupplies> supplies;            // place 0 is supply 1
    std::array<SupplyState, kSupplies> supply_states;  // as above
    Percent sys_pct;
    Percent cpu_pct;
    Percent mem_pct;
    Percent io_pct;
    Celsius ambient_c;
    Celsius exhaust_c;
    std::array<Celsius, kCpus> cpu_c;  // place 0 is processor 1
};

// The rows of one file in the order of their times; never empty.
class Trace {
public:
    Trace(std::vector<Reading> readings, std::size_t supply_count, std::size_t ignored_values)
        : readings_(std::move(readings)),
          supply_count_(supply_count),
          ignored_values_(ignored_values) {}

    std::int64_t first_s() const { return readings_.front().epoch_s; }
    std::int64_t last_s() const { return readings_.back().epoch_s; }
    std::span<const Reading> readings() const { return readings_; }

    // The highest supply number that has a column; 0 = the trace measures no supply.
    std::size_t supply_count() const { return supply_count_; }

    // Cells that held an impossible value and therefore count as empty.
    std::size_t ignored_values() const { return ignored_values_; }

    // The row in force at second `t_s`, or null when there is none: before the first row, longer
    // than the hold limit after a row, or after a row in which the source did not answer. The
    // pointer lives as long as the trace.
    const Reading* reading_at(std::int64_t t_s) const { return reading_at(t_s, kDefaultHold_s); }
    const Reading* reading_at(std::int64_t t_s, std::int64_t hold_s) const;

    // The second of the trace that plays at wall-clock time `now_s`. The trace starts at midnight
    // UTC and starts over when it ends before the day does, so every process sees the same second.
    std::int64_t live_second(std::int64_t now_s) const;

private:
    std::vector<Reading> readings_;
    std::size_t supply_count_;
    std::size_t ignored_values_;
};

struct LoadResult {
    std::optional<Trace> trace;
    std::string error;  // "file:line: reason" when there is no trace
};

// Reads a trace. A malformed file is refused as a whole; a value that no sensor can mean (negative
// or above 65534 W, above 100 %) is no reading and is counted in ignored_values().
LoadResult load(const std::string& path);

}  // namespace pwrmgt::trace
