// SPDX-License-Identifier: Apache-2.0
#include "source_kernel.h"

#include <string_view>

#include "kernel_files.h"
#include "watt_sum.h"

namespace pwrmgt::pwrmgtd {
namespace {

// Drivers come and go.
constexpr std::int64_t kFindEvery_us = 30'000'000;

struct SystemPower {
    Watts ac_w;
    Watts dc_w;
};

// The sum over the supplies that are there.
Watts sum(const Reading& reading, Watts SupplyReading::*side) {
    WattSum sum;
    for (std::size_t i = 0; i < kSupplies; ++i) {
        if (reading.supply_states[i].present == true) sum.add(reading.supplies[i].*side);
    }
    return sum.watts();
}

Watts power_meter(const std::vector<Chip>& chips) {
    for (const Chip& chip : chips) {
        if (chip.name == "power_meter" && !chip.powers.empty()) return chip.powers.front().watts();
    }
    return std::nullopt;
}

// History rows hold both or neither: one number that stands for the system counts as both.
SystemPower system_power(const Reading& reading, const Watts& metered, const Watts& platform) {
    const Watts ac = sum(reading, &SupplyReading::ac_w);
    const Watts dc = sum(reading, &SupplyReading::dc_w);
    if (ac && dc) return {ac, dc};
    if (metered) return {metered, dc ? dc : metered};
    return {platform, platform};
}

bool has(const std::string& label, std::string_view word) {
    return label.find(word) != std::string::npos;
}

void read_temperatures(const std::vector<Chip>& chips, Reading& reading) {
    std::size_t next_tctl = 0;
    for (const Chip& chip : chips) {
        for (const Channel& channel : chip.temperatures) {
            const std::string& label = channel.label;
            std::optional<std::size_t> place = place_after(label, "package id ");
            if (!place) place = place_after(label, "physical id ");
            if (label == "tctl" && next_tctl < kCpus) place = next_tctl++;
            if (place) {
                reading.each_cpu_c[*place] = channel.degrees();
            } else if (!reading.ambient_c && (has(label, "inlet") || has(label, "ambient"))) {
                reading.ambient_c = channel.degrees();
            } else if (!reading.exhaust_c && (has(label, "exhaust") || has(label, "outlet"))) {
                reading.exhaust_c = channel.degrees();
            }
        }
    }
}

}  // namespace

KernelSource::KernelSource(Place place, Timer timer, Log& log)
    : root_(std::move(place.root)),
      timer_(std::move(timer)),
      energy_(root_),
      load_(root_),
      supplies_(std::move(place.devices), log),
      found_at_us_(timer_()) {
    find();
}

void KernelSource::find() {
    chips_ = find_chips(root_);
    supplies_.find(chips_);
}

Reading KernelSource::read(std::int64_t) {
    const std::int64_t now_us = timer_();
    if (now_us - found_at_us_ >= kFindEvery_us) {
        find();
        found_at_us_ = now_us;
    }
    Reading reading;
    const Watts platform = energy_.read(now_us, reading);
    supplies_.read(chips_, reading);
    const SystemPower system = system_power(reading, power_meter(chips_), platform);
    reading.sys_ac_w = system.ac_w;
    reading.sys_dc_w = system.dc_w;
    read_temperatures(chips_, reading);
    load_.read(reading);
    return reading;
}

std::string KernelSource::name() const {
    return root_.empty() ? "the kernel" : "the kernel's files in " + root_;
}

}  // namespace pwrmgt::pwrmgtd
