// SPDX-License-Identifier: Apache-2.0
// The work itself, inlined over rows in memory: what no way of storing them can go below. The
// baselines fold with it, and their entries are compared with the library's before anything is
// timed.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include "vekdb_pwrmgt.h"

namespace pwrmgt::bench {

inline constexpr std::size_t kEntries = PWRMGT_MAX_PERIOD_ENTRIES;
inline constexpr std::size_t kSamplesPerEntry = 24;
using Entries = std::array<pwrmgt_hist_pwr_sample_t, kEntries>;

// Six values: DC average, maximum and minimum, then AC.
struct PowerSlot {
    std::uint32_t time_s;
    std::array<std::uint16_t, 6> watts;
};

// Folds `rows` rows, newest first, with `slot(i)` for the i-th.
template <class Slot>
void fold_newest_first(std::size_t rows, Slot slot, Entries& entries) {
    std::size_t row = 0;
    std::uint32_t time_s = rows > 0 ? slot(0).time_s : 0;
    std::uint16_t index = 0;
    for (pwrmgt_hist_pwr_sample_t& entry : entries) {
        std::uint32_t dc = 0;
        std::uint32_t ac = 0;
        std::uint32_t valid = 0;
        entry = {index++, 0, 0, 0, 65535, 0, 0, 65535};
        for (std::size_t i = 0; i < kSamplesPerEntry && row < rows; ++i) {
            const PowerSlot now = slot(row);
            const bool missing = now.time_s != time_s;
            if (entry.timestamp == 0) entry.timestamp = time_s;
            time_s -= PWRMGT_SLOT_SECONDS;
            if (missing) continue;
            ++row;
            const auto& watts = now.watts;
            if (watts[0] == 65535 || watts[1] == 65535 || watts[2] == 65535) continue;
            ++valid;
            dc += watts[0];
            ac += watts[3];
            entry.max = std::max(entry.max, watts[1]);
            entry.min = std::min(entry.min, watts[2]);
            entry.max2 = std::max(entry.max2, watts[4]);
            entry.min2 = std::min(entry.min2, watts[5]);
        }
        if (valid == 0) {
            entry.avg = entry.max = entry.avg2 = entry.max2 = 65535;
            continue;
        }
        entry.avg = static_cast<std::uint16_t>(dc / valid);
        entry.avg2 = static_cast<std::uint16_t>(ac / valid);
    }
}

// Throws when two ways to the same entries differ.
inline void require_equal(const Entries& one, const Entries& other, const char* what) {
    const auto differs = [](const pwrmgt_hist_pwr_sample_t& a, const pwrmgt_hist_pwr_sample_t& b) {
        return a.index != b.index || a.timestamp != b.timestamp || a.avg != b.avg ||
               a.max != b.max || a.min != b.min || a.avg2 != b.avg2 || a.max2 != b.max2 ||
               a.min2 != b.min2;
    };
    for (std::size_t i = 0; i < one.size(); ++i) {
        if (differs(one[i], other[i])) throw std::runtime_error(what);
    }
}

}  // namespace pwrmgt::bench
