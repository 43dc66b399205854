// SPDX-License-Identifier: Apache-2.0
// Frames of every kind to the simulated firmware, whose answer is never longer than a caller's
// room.
#include <stdlib.h>

#include <vector>

#include "ipmiraw.h"
#include "scratch_place.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    const std::string place = pwrmgt::fuzz::ScratchPlace::only().directory();
    setenv("VEKDB_RUNTIME_DIR", (place + "/run").c_str(), 1);
    setenv("VEKDB_IPMI", "sim", 1);
    constexpr char kTrace[] = "epoch_s,sys_power_W,cpu_power_W\n1000,270,60\n1060,300,70\n";
    const std::string trace = pwrmgt::fuzz::ScratchPlace::only().holding(
        reinterpret_cast<const std::uint8_t*>(kTrace), sizeof kTrace - 1);
    setenv("VEKDB_SIM_TRACE", trace.c_str(), 1);
    return 0;
}

// A few frames, each behind its length: the simulator writes its state to a file for most of them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr int kMost = 8;
    std::size_t at = 0;
    for (int frames = 0; frames < kMost && at < size; ++frames) {
        const std::size_t length = std::min<std::size_t>(data[at], size - at - 1);
        const std::vector<std::uint8_t> frame(data + at + 1, data + at + 1 + length);
        auto request_length = static_cast<std::uint32_t>(frame.size());
        std::vector<std::uint8_t> response(256);
        std::uint32_t response_length = 0;
        const int result =
            send_ipmi_cmd(frame.data(), &request_length, response.data(), &response_length);
        if (result == 0 && (response_length == 0 || response_length > 256)) std::abort();
        at += 1 + length;
    }
    return 0;
}
