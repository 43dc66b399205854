// SPDX-License-Identifier: Apache-2.0
#include "kernel_energy.h"

#include "kernel_files.h"
#include "watt_sum.h"

namespace pwrmgt::pwrmgtd {
namespace {

// No zone draws more: a counter that was reset looks as if it had.
constexpr std::int64_t kHighest_w = 2000;

}  // namespace

Watts EnergyCounter::watts(std::int64_t energy_uj, std::int64_t range_uj, std::int64_t now_us) {
    const std::optional<std::int64_t> before_uj = last_uj_;
    const std::int64_t elapsed_us = now_us - last_us_;
    last_uj_ = energy_uj;
    last_us_ = now_us;
    if (!before_uj || elapsed_us <= 0) return std::nullopt;
    std::int64_t used_uj = energy_uj - *before_uj;
    if (used_uj < 0) used_uj += range_uj;
    if (used_uj <= 0 || range_uj < kHighest_w * elapsed_us) return std::nullopt;
    const std::int64_t watts = (used_uj + elapsed_us / 2) / elapsed_us;
    if (watts > kHighest_w) return std::nullopt;
    return static_cast<std::uint16_t>(watts);
}

Watts KernelEnergy::zone_watts(const std::string& zone, std::int64_t now_us) {
    const auto energy_uj = read_number(zones_ + "/" + zone + "/energy_uj");
    const auto range_uj = read_number(zones_ + "/" + zone + "/max_energy_range_uj");
    if (!energy_uj || !range_uj || *energy_uj < 0 || *energy_uj > *range_uj) return std::nullopt;
    return counters_[zone].watts(*energy_uj, *range_uj, now_us);
}

Watts KernelEnergy::read(std::int64_t now_us, Reading& reading) {
    std::array<WattSum, kCpus> packages;
    WattSum cpus;
    WattSum memory;
    WattSum platform;
    for (const std::string& zone : names_in(zones_)) {
        // Other control types show the same counters once more.
        if (!zone.starts_with("intel-rapl:")) continue;
        const std::string name = read_word(zones_ + "/" + zone + "/name").value_or("");
        const std::optional<std::size_t> place = place_after(name, "package-");
        if (!place && name != "dram" && name != "psys") continue;
        const Watts watts = zone_watts(zone, now_us);
        if (place) {
            packages[*place].add(watts);
            cpus.add(watts);
        }
        if (name == "dram") memory.add(watts);
        if (name == "psys") platform.add(watts);
    }
    for (std::size_t i = 0; i < kCpus; ++i) {
        reading.each_cpu_w[i] = packages[i].watts();
    }
    reading.cpu_w = cpus.watts();
    reading.mem_w = memory.watts();
    return platform.watts();
}

}  // namespace pwrmgt::pwrmgtd
