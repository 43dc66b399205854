// SPDX-License-Identifier: Apache-2.0
// The supplies' zero-output mode and the processors' caps.
#include "sim_operations.h"

namespace pwrmgt::ipmi::sim {
namespace {

constexpr std::uint8_t kZeroOutputSetting = 0x01;
constexpr std::uint8_t kGet = 0x00;
constexpr std::uint8_t kSet = 0x01;

bool asks_to(const Call& call, std::uint8_t direction) {
    const auto payload = call.request.payload();
    return payload[1] == kZeroOutputSetting && payload[2] == direction;
}

}  // namespace

void set_zero_output(const Call& call, State& state, Response& response) {
    if (!asks_to(call, kSet)) return response.u8(kInvalidField);
    const std::uint8_t mode = call.request.payload()[3];
    if (mode > 1) return response.u8(kOutOfRange);
    state.zero_output = mode;
    response.u8(kSuccess);
}

void get_zero_output(const Call& call, const State& state, Response& response) {
    if (!asks_to(call, kGet)) return response.u8(kInvalidField);
    response.u8(kSuccess);
    response.u8(state.zero_output);
}

// Eight caps whatever the number of processors: an answer of always 18 bytes.
void get_cpu_caps(const Call&, const State& state, Response& response) {
    response.u8(kSuccess);
    response.u8(state.cpus);
    for (const std::uint16_t cap_w : state.cpu_cap_w)
        response.le16(cap_w);
}

}  // namespace pwrmgt::ipmi::sim
