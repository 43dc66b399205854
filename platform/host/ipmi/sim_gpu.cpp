// SPDX-License-Identifier: Apache-2.0
// GPU caps and consumption. A GPU beyond the machine's number of them is out of range everywhere.
#include "sim_operations.h"

namespace pwrmgt::ipmi::sim {
namespace {

constexpr std::size_t kCapGpuAt = 1;
constexpr std::size_t kCapAt = 2;
constexpr std::size_t kConsumptionGpuAt = 2;

// Null, and the refusal answered, when the machine has no such GPU.
template <class Gpus>
auto* gpu_at(std::size_t at, const Call& call, Gpus& gpus, Response& response) {
    const std::size_t gpu = call.request.payload()[at];
    if (gpu < gpus.size()) return &gpus[gpu];
    response.u8(kOutOfRange);
    return decltype(&gpus[gpu]){nullptr};
}

}  // namespace

void set_gpu_word(const Call& call, State& state, Response& response) {
    Gpu* gpu = gpu_at(kCapGpuAt, call, state.gpus, response);
    if (gpu == nullptr) return;
    const auto payload = call.request.payload();
    gpu->cap_w = static_cast<std::uint16_t>(payload[kCapAt] << 8 | payload[kCapAt + 1]);
    response.u8(kSuccess);
}

void get_gpu_word(const Call& call, const State& state, Response& response) {
    const Gpu* gpu = gpu_at(kCapGpuAt, call, state.gpus, response);
    if (gpu == nullptr) return;
    response.u8(kSuccess);
    response.be16(gpu->cap_w);
}

void set_gpu_byte(const Call& call, State& state, Response& response) {
    Gpu* gpu = gpu_at(kCapGpuAt, call, state.gpus, response);
    if (gpu == nullptr) return;
    gpu->byte_cap = call.request.payload()[kCapAt];
    response.u8(kSuccess);
}

void get_gpu_byte(const Call& call, const State& state, Response& response) {
    const Gpu* gpu = gpu_at(kCapGpuAt, call, state.gpus, response);
    if (gpu == nullptr) return;
    response.u8(kSuccess);
    response.u8(gpu->byte_cap);
}

// No trace measures GPUs: what was set for one, but never above its 16-bit cap.
void gpu_consumption(const Call& call, const State& state, Response& response) {
    constexpr std::uint8_t kConsumption = 0x02;
    if (call.request.payload()[1] != kConsumption) return response.u8(kInvalidField);
    const Gpu* gpu = gpu_at(kConsumptionGpuAt, call, state.gpus, response);
    if (gpu == nullptr) return;
    const bool capped = gpu->cap_w != 0 && gpu->draw_w != kNoWatts;
    response.u8(kSuccess);
    response.le16(capped ? std::min(gpu->draw_w, gpu->cap_w) : gpu->draw_w);
}

}  // namespace pwrmgt::ipmi::sim
