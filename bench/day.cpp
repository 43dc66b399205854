// SPDX-License-Identifier: Apache-2.0
// Laying the measured trace on the 30-second grid.
#include "day.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "measured_trace.h"

namespace pwrmgt::bench {

namespace {

constexpr std::size_t kSuppliesInRow = 4;

trace::Trace load_trace() {
    const char* directory = std::getenv("MEASURED_DATA_DIR");
    if (directory == nullptr) throw std::runtime_error("MEASURED_DATA_DIR is not set");
    trace::LoadResult loaded = trace::load(std::string{directory} + "/server_4socket_24h_60s.csv");
    if (!loaded.trace) throw std::runtime_error(loaded.error);
    return std::move(*loaded.trace);
}

template <class Value>
std::uint16_t or_marker(const Value& value, std::uint16_t marker) {
    return value ? *value : marker;
}

// One measured value stands for average, maximum and minimum of its slot.
std::array<std::uint16_t, kValues> values_of(const trace::Reading& reading) {
    std::array<std::uint16_t, kValues> values{};
    auto* next = values.begin();
    for (const trace::Watts& watts :
         {reading.system_dc_w, reading.system_ac_w, reading.cpu_w, reading.mem_w}) {
        next = std::fill_n(next, 3, or_marker(watts, PWRMGT_NO_POWER));
    }
    for (std::size_t supply = 0; supply < kSuppliesInRow; ++supply) {
        *next++ = or_marker(reading.supplies[supply].ac_in_w, PWRMGT_NO_POWER);
        *next++ = or_marker(reading.supplies[supply].dc_out_w, PWRMGT_NO_POWER);
    }
    next = std::fill_n(next, 3, or_marker(reading.sys_pct, PWRMGT_NO_PERCENT));
    for (const trace::Percent& percent : {reading.cpu_pct, reading.mem_pct, reading.io_pct}) {
        *next++ = or_marker(percent, PWRMGT_NO_PERCENT);
    }
    return values;
}

}  // namespace

std::vector<Row> measured_day() {
    const trace::Trace trace = load_trace();
    const trace::Reading unreachable;
    std::vector<Row> rows(kSlots);
    for (std::int32_t slot = 0; slot < kSlots; ++slot) {
        Row& row = rows[static_cast<std::size_t>(slot)];
        const trace::Reading* reading =
            trace.reading_at(trace.first_s() + std::int64_t{slot} * kSlot_s);
        row.slot = static_cast<std::uint16_t>(slot);
        row.time_s = kNow_s - (kSlots - 1 - slot) * kSlot_s;
        row.values = values_of(reading != nullptr ? *reading : unreachable);
    }
    return rows;
}

pwrmgt_hist_sample_t sample_of(const Row& row) {
    pwrmgt_hist_sample_t sample{};
    const auto& v = row.values;
    const auto low = [&](std::size_t at) { return static_cast<std::uint8_t>(v[at]); };
    sample.system = {0, 0, v[0], v[1], v[2], v[3], v[4], v[5]};
    sample.cpu = {0, 0, v[6], v[7], v[8], 0, 0, 0};
    sample.memory = {0, 0, v[9], v[10], v[11], 0, 0, 0};
    for (std::size_t supply = 0; supply < kSuppliesInRow; ++supply) {
        sample.psu[supply] = {0, 0, v[12 + 2 * supply], v[13 + 2 * supply]};
    }
    sample.perf = {0, 0, low(20), low(21), low(22), low(23), low(24), low(25)};
    return sample;
}

}  // namespace pwrmgt::bench
