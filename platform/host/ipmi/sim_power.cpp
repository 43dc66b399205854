// SPDX-License-Identifier: Apache-2.0
#include "sim_power.h"

#include <algorithm>
#include <cstdint>

namespace pwrmgt::ipmi::sim {
namespace {

// value * part / whole, rounded down; `part` is at most `whole`.
std::uint16_t in_proportion(std::uint16_t value, std::uint16_t part, std::uint16_t whole) {
    if (whole == 0) return value;
    return static_cast<std::uint16_t>(std::uint64_t{value} * part / whole);
}

// Takes up to `cut_w` from the power, and from the cut what was taken.
void bear(trace::Watts& power, std::uint16_t& cut_w) {
    if (!power) return;
    const std::uint16_t taken = std::min(*power, cut_w);
    *power = static_cast<std::uint16_t>(*power - taken);
    cut_w = static_cast<std::uint16_t>(cut_w - taken);
}

std::uint16_t kept_by_cpus(std::uint16_t measured_w, const State& state) {
    if (state.cpus == 0) return measured_w;
    const unsigned even_w = unsigned{measured_w} / state.cpus;
    const unsigned left_over_w = unsigned{measured_w} % state.cpus;
    unsigned kept_w = 0;
    for (unsigned at = 0; at < state.cpus; ++at) {
        const unsigned share_w = even_w + (at < left_over_w ? 1 : 0);
        kept_w += std::min<unsigned>(share_w, state.cpu_cap_w[at]);
    }
    return static_cast<std::uint16_t>(kept_w);
}

void cap_cpus(trace::Reading& reading, const State& state) {
    if (!reading.cpu_w) return;
    const std::uint16_t kept_w = kept_by_cpus(*reading.cpu_w, state);
    auto saved_w = static_cast<std::uint16_t>(*reading.cpu_w - kept_w);
    reading.cpu_w = kept_w;
    if (!reading.system_ac_w || !reading.system_dc_w) return;
    const std::uint16_t before_w = *reading.system_dc_w;
    bear(reading.system_dc_w, saved_w);
    reading.system_ac_w = in_proportion(*reading.system_ac_w, *reading.system_dc_w, before_w);
}

void cap_system(trace::Reading& reading, const Cap& cap) {
    if (cap.enable == 0 || !reading.system_ac_w || *reading.system_ac_w <= cap.value_w) return;
    const std::uint16_t uncapped_w = *reading.system_ac_w;
    const std::uint16_t before_w = reading.system_dc_w.value_or(0);
    const std::uint16_t after_w = in_proportion(before_w, cap.value_w, uncapped_w);
    auto cut_w = static_cast<std::uint16_t>(before_w - after_w);
    reading.system_ac_w = cap.value_w;
    if (reading.system_dc_w) reading.system_dc_w = after_w;
    bear(reading.cpu_w, cut_w);
    bear(reading.mem_w, cut_w);
}

}  // namespace

trace::Reading bent(const trace::Reading& measured, const State& state) {
    trace::Reading reading = measured;
    cap_cpus(reading, state);
    cap_system(reading, state.cap);
    if (!measured.system_ac_w || reading.system_ac_w == measured.system_ac_w) return reading;
    for (trace::Supply& supply : reading.supplies) {
        for (trace::Watts* power : {&supply.ac_in_w, &supply.dc_out_w}) {
            if (*power)
                *power = in_proportion(**power, *reading.system_ac_w, *measured.system_ac_w);
        }
    }
    return reading;
}

}  // namespace pwrmgt::ipmi::sim
