// SPDX-License-Identifier: Apache-2.0
// What the thermal tests share: grids of samples, samples as plain numbers, the traces of an act.
#pragma once

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "builders.h"
#include "captured_output.h"
#include "platform_test.h"

namespace pwrmgt::test {

inline constexpr const char* kModulesPerSocket = "/dc/tavn/dm/planar/dimm_per_socket";

using Grid = std::vector<pwrmgt_therm_sample_t>;

// Samples with one byte value throughout.
inline Grid grid_of(size_t count, int byte) {
    Grid grid(count);
    std::memset(grid.data(), byte, count * sizeof(pwrmgt_therm_sample_t));
    return grid;
}

inline bool all_bytes(const pwrmgt_therm_sample_t& sample, uint8_t byte) {
    const auto* const bytes = reinterpret_cast<const uint8_t*>(&sample);
    return std::count(bytes, bytes + sizeof sample, byte) == sizeof sample;
}

// Maximum, average, minimum.
inline Row fields(const pwrmgt_therm_triple_t& t) {
    return {t.max, t.avg, t.min};
}
inline const Row kNothing{-1, -1, -1};
inline constexpr int64_t kNoIndex = 65535;
inline constexpr int64_t kNoTime = 4294967295;

// Traces go to standard output: they are taken over while an act runs, and only then, so that a
// failed check is still seen.
class ThermalTest : public PlatformTest {
protected:
    uint32_t traced(const std::function<uint32_t()>& act) {
        CapturedOutput output;
        const uint32_t status = act();
        trace = output.text();
        return status;
    }

    std::string trace;
};

// A grid of four indexes that end at 600, 660, 720 and 780, and the rows that are walked over it.
class BucketTest : public ThermalTest {
protected:
    BucketTest() { samples[0].tm = 600; }

    uint32_t walk(std::vector<Row> rows) {
        const OpenResult result(std::move(rows));
        return traced([&] { return thermal_get_samples(result, 60, 1, &count, samples.data()); });
    }

    // Index, time, maximum, average and minimum of the first inlet sensor.
    Row inlet(size_t at) const {
        const pwrmgt_therm_triple_t& t = samples[at].ambient[0];
        return {samples[at].index, samples[at].tm, t.max, t.avg, t.min};
    }

    Grid samples = grid_of(4, 0xFF);
    uint32_t count = 4;
};

// Queries of a past period. The clock stands 20 seconds after a whole minute, 1'699'999'980.
class PeriodQueryTest : public ThermalTest {
protected:
    uint32_t ask(uint32_t period, uint32_t wanted) {
        count = wanted;
        return traced([&] { return pwrmgt_get_therm_hist(period, samples.data(), &count); });
    }

    // Rows for the nth of the twenty selects; the others find none.
    static void answer_select(size_t nth, std::vector<Row> rows) {
        for (size_t before = 1; before < nth; ++before)
            platform().answer_rows(std::vector<Row>{});
        platform().answer_rows(std::move(rows));
    }

    Grid samples = grid_of(1442, 0x11);
    uint32_t count = 0;
};

}  // namespace pwrmgt::test
