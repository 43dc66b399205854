// SPDX-License-Identifier: Apache-2.0
// The 30-second slots of the history: which one a second belongs to, which number it has on the
// ring, and how the readings taken in one become its sample.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "reading.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtd {

inline constexpr std::int64_t kSlot_s = PWRMGT_SLOT_SECONDS;
inline constexpr std::int64_t kDay_s = kSlot_s * PWRMGT_RING_SLOTS;

// The start of the slot that holds second `t_s`; the stamp of its row.
constexpr std::int64_t slot_start(std::int64_t t_s) {
    const std::int64_t into = t_s % kSlot_s;
    return t_s - (into < 0 ? into + kSlot_s : into);
}

// The place on the ring of the slot that starts at `stamp_s`. It follows from the time alone, so
// every run of the daemon gives a slot the same number, and a slot of the past 24 hours its own.
constexpr std::uint16_t slot_number(std::int64_t stamp_s) {
    return static_cast<std::uint16_t>(stamp_s / kSlot_s % PWRMGT_RING_SLOTS);
}

// The first slot that a trim at `now_s` keeps.
constexpr std::int64_t oldest_kept(std::int64_t now_s) {
    return slot_start(now_s - kDay_s + kSlot_s - 1);
}

// Times that the tables can hold and trim. The clock of a controller without a battery starts at
// the epoch; trimming by it would cost the whole history.
constexpr bool is_recordable(std::int64_t now_s) {
    return now_s > kDay_s && now_s <= INT32_MAX;
}

// What one quantity did in a slot. Values are at most 65534 and come once a second.
class Spread {
public:
    void add(std::uint16_t value);
    bool empty() const { return count_ == 0; }
    std::uint16_t average() const;  // cut to a whole number; only when not empty, as the others
    std::uint16_t max() const { return max_; }
    std::uint16_t min() const { return min_; }

private:
    std::uint64_t sum_ = 0;
    std::uint32_t count_ = 0;
    std::uint16_t max_ = 0;
    std::uint16_t min_ = 0;
};

// One slot as it goes into the three power histories. Without a reading every value is missing.
struct Row {
    std::int64_t stamp_s;
    pwrmgt_hist_sample_t sample;
    pwrmgt_hist_extra_sample_t extra;  // supplies 5 to 12
    std::array<std::uint16_t, kCpus> each_cpu_w;
};

// Gathers the readings of one slot.
class SlotReadings {
public:
    void add(const Reading& reading);

    // What goes into the main history. A quantity that no reading held is missing; without any
    // reading this is an empty sample.
    pwrmgt_hist_sample_t sample() const;

    // What goes into all histories, stamped with the start of the slot.
    Row row(std::int64_t stamp_s) const;

private:
    struct Supply {
        Spread ac;
        Spread dc;
    };

    Spread sys_dc_;
    Spread sys_ac_;
    Spread cpu_;
    Spread mem_;
    std::array<Supply, kSupplies> supplies_;
    std::array<Spread, kCpus> each_cpu_;
    Spread sys_pct_;
    Spread cpu_pct_;
    Spread mem_pct_;
    Spread io_pct_;
};

}  // namespace pwrmgt::pwrmgtd
