// SPDX-License-Identifier: Apache-2.0
// The operations of the simulated firmware: each puts the whole answer, completion code first,
// into `response`. The frame's length and LUN have been looked at before.
#pragma once

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <span>

#include "completion.h"
#include "frame.h"
#include "sim_state.h"

namespace pwrmgt::ipmi::sim {

struct Call {
    const Request& request;
    std::time_t now;
};

inline std::uint16_t le16_at(std::span<const std::uint8_t> bytes, std::size_t at) {
    return static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8);
}

inline std::uint32_t le32_at(std::span<const std::uint8_t> bytes, std::size_t at) {
    return le16_at(bytes, at) | static_cast<std::uint32_t>(le16_at(bytes, at + 2)) << 16;
}

inline bool all_zero(std::span<const std::uint8_t> bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

// Power readings.
void realtime_powers(const Call& call, const State& state, Response& response);
void power_meter(const Call& call, const State& state, Response& response);
void slot_devices(const Call& call, const State& state, Response& response);

// The power cap.
void set_cap(const Call& call, State& state, Response& response);
void get_cap(const Call& call, const State& state, Response& response);

// Supplies and processors.
void set_zero_output(const Call& call, State& state, Response& response);
void get_zero_output(const Call& call, const State& state, Response& response);
void get_cpu_caps(const Call& call, const State& state, Response& response);

// GPUs.
void set_gpu_word(const Call& call, State& state, Response& response);
void get_gpu_word(const Call& call, const State& state, Response& response);
void set_gpu_byte(const Call& call, State& state, Response& response);
void get_gpu_byte(const Call& call, const State& state, Response& response);
void gpu_consumption(const Call& call, const State& state, Response& response);

// The data store.
void open_file(const Call& call, State& state, Response& response);
void read_file(const Call& call, const State& state, Response& response);

}  // namespace pwrmgt::ipmi::sim
