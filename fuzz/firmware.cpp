// SPDX-License-Identifier: Apache-2.0
// Answers of the firmware through every function that asks it, into outputs of exactly their size.
#include <algorithm>
#include <array>
#include <memory>
#include <vector>

#include "platform.h"
#include "vekdb_pwrmgt.h"

namespace {

using pwrmgt::fuzz::Script;

// On the heap, where a byte too many is seen.
template <class Record>
std::unique_ptr<Record> room() {
    return std::make_unique<Record>();
}

void caps(Script& script) {
    const auto enable = room<std::uint8_t>();
    const auto mode = room<std::uint8_t>();
    const auto watts = room<std::uint16_t>();
    switch (script.u8() % 4) {
        case 0:
            pwrmgt_set_power_capping_policy(script.u8(), script.u8(), script.u16());
            break;
        case 1: {
            const std::string name = script.text(80);
            pwrmgt_set_power_capping_policy_auditlog(script.u8(), script.u8(), script.u16(),
                                                     script.fails() ? nullptr : name.c_str());
            break;
        }
        case 2:
            pwrmgt_get_power_capping_policy(enable.get(), mode.get(), watts.get());
            break;
        default:
            pwrmgt_ipmi_get_pwr_capping(enable.get(), mode.get(), watts.get());
    }
}

void gpus(Script& script) {
    const auto watts = room<std::uint16_t>();
    const std::int32_t kind = script.u8() < 128 ? 16 : script.fails() ? script.i32() : 32;
    switch (script.u8() % 3) {
        case 0:
            pwrmgt_set_gpu_power_capping_policy(script.u8(), kind, script.u16());
            break;
        case 1:
            pwrmgt_get_gpu_power_capping_policy(script.u8(), kind, watts.get());
            break;
        default:
            pwrmgt_get_gpu_power_consumption(script.u8(), watts.get());
    }
}

void readings(Script& script) {
    switch (script.u8() % 5) {
        case 0:
            pwrmgt_get_realtime_powers(room<pwrmgt_realtime_pwr_t>().get());
            break;
        case 1:
            pwrmgt_get_realtime_slot_dev_powers(room<pwrmgt_slot_dev_pwr_t>().get());
            break;
        case 2:
            pwrmgt_get_cpu_pcap(room<pwrmgt_cpu_pcap_t>().get());
            break;
        case 3:
            pwrmgt_get_power_policy_setting(room<pwrmgt_power_policy_t>().get());
            break;
        default:
            pwrmgt_get_power_fpga_meter(std::vector<std::uint8_t>(256).data());
    }
}

void zero_output(Script& script) {
    if (script.u8() % 2 == 0) {
        pwrmgt_set_zero_output_mode(script.u8());
    } else {
        pwrmgt_get_zero_output_mode(room<std::uint8_t>().get());
    }
}

void store(Script& script) {
    const std::string name = script.text(130);
    std::vector<std::uint8_t> buffer(256);
    const std::int32_t size = script.fails() ? std::min(script.i32(), 256) : 256;
    pwrmgt_ds_file_read(name.c_str(), buffer.data(), size);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    pwrmgt::fuzz::quiet();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::array kTopics{caps, gpus, readings, zero_output, store};
    Script script(data, size);
    const pwrmgt::fuzz::ScriptedPlatform platform(script);
    for (int call = 0; call < 8 && !script.ended(); ++call)
        kTopics[script.u8() % kTopics.size()](script);
    return 0;
}
