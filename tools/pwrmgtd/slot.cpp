// SPDX-License-Identifier: Apache-2.0
#include "slot.h"

#include <algorithm>
#include <iterator>

namespace pwrmgt::pwrmgtd {
namespace {

template <class Value>
void add_known(Spread& spread, const std::optional<Value>& value) {
    if (value) spread.add(*value);
}

struct Triple {
    std::uint16_t avg = PWRMGT_NO_POWER;
    std::uint16_t max = PWRMGT_NO_POWER;
    std::uint16_t min = PWRMGT_NO_POWER;
};

Triple triple(const Spread& spread) {
    if (spread.empty()) return {};
    return {spread.average(), spread.max(), spread.min()};
}

// Percentages are bytes; the markers' low 8 bits are all ones in both widths.
std::uint8_t low8(std::uint16_t value) {
    return static_cast<std::uint8_t>(value);
}
static_assert((PWRMGT_NO_POWER & 255) == PWRMGT_NO_PERCENT);

void put_first_group(pwrmgt_hist_pwr_sample_t& group, const Triple& of) {
    group.avg = of.avg;
    group.max = of.max;
    group.min = of.min;
}

void put_second_group(pwrmgt_hist_pwr_sample_t& group, const Triple& of) {
    group.avg2 = of.avg;
    group.max2 = of.max;
    group.min2 = of.min;
}

}  // namespace

void Spread::add(std::uint16_t value) {
    max_ = std::max(max_, value);
    min_ = empty() ? value : std::min(min_, value);
    sum_ += value;
    ++count_;
}

std::uint16_t Spread::average() const {
    return static_cast<std::uint16_t>(sum_ / count_);
}

void SlotReadings::add(const Reading& reading) {
    // Readers of the history look for a missing value in the DC columns only and then take AC as
    // valid too: a moment counts with both or not at all.
    if (reading.sys_dc_w && reading.sys_ac_w) {
        sys_dc_.add(*reading.sys_dc_w);
        sys_ac_.add(*reading.sys_ac_w);
    }
    add_known(cpu_, reading.cpu_w);
    add_known(mem_, reading.mem_w);
    for (std::size_t i = 0; i < kSupplies; ++i) {
        add_known(supplies_[i].ac, reading.supplies[i].ac_w);
        add_known(supplies_[i].dc, reading.supplies[i].dc_w);
    }
    for (std::size_t i = 0; i < kCpus; ++i) {
        add_known(each_cpu_[i], reading.each_cpu_w[i]);
    }
    add_known(sys_pct_, reading.sys_pct);
    add_known(cpu_pct_, reading.cpu_pct);
    add_known(mem_pct_, reading.mem_pct);
    add_known(io_pct_, reading.io_pct);
}

pwrmgt_hist_sample_t SlotReadings::sample() const {
    pwrmgt_hist_sample_t sample{};
    put_first_group(sample.system, triple(sys_dc_));
    put_second_group(sample.system, triple(sys_ac_));
    put_first_group(sample.cpu, triple(cpu_));
    put_first_group(sample.memory, triple(mem_));
    for (std::size_t i = 0; i < std::size(sample.psu); ++i) {
        sample.psu[i].avg_ac = triple(supplies_[i].ac).avg;
        sample.psu[i].avg_dc = triple(supplies_[i].dc).avg;
    }
    const Triple load = triple(sys_pct_);
    sample.perf.sys_avg = low8(load.avg);
    sample.perf.sys_max = low8(load.max);
    sample.perf.sys_min = low8(load.min);
    sample.perf.cpu_avg = low8(triple(cpu_pct_).avg);
    sample.perf.mem_avg = low8(triple(mem_pct_).avg);
    sample.perf.io_avg = low8(triple(io_pct_).avg);
    return sample;
}

Row SlotReadings::row(std::int64_t stamp_s) const {
    Row row{stamp_s, sample(), {}, {}};
    const std::size_t first_extra = std::size(row.sample.psu);
    for (std::size_t i = 0; i < std::size(row.extra.psu); ++i) {
        row.extra.psu[i].avg_ac = triple(supplies_[first_extra + i].ac).avg;
        row.extra.psu[i].avg_dc = triple(supplies_[first_extra + i].dc).avg;
    }
    for (std::size_t i = 0; i < kCpus; ++i) {
        row.each_cpu_w[i] = triple(each_cpu_[i]).avg;
    }
    return row;
}

}  // namespace pwrmgt::pwrmgtd
