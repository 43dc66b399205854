// SPDX-License-Identifier: Apache-2.0
// Settings walk: live readings that the firmware answers with one exchange each.
#include <algorithm>
#include <cstdio>

#include "db/status.h"
#include "policy/ipmi.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;
using namespace pwrmgt::policy;

namespace {

constexpr uint8_t kReading = 0x01;
constexpr uint8_t kMeter = 0x04;
constexpr uint8_t kSlotDevices = 0x08;

}  // namespace

extern "C" uint32_t pwrmgt_get_realtime_powers(pwrmgt_realtime_pwr_t* out) {
    if (out == nullptr) return code(Status::null_argument);
    if (pwrmgt_unsupport_check("pwrmgt_get_realtime_powers") != 0) return code(Status::unsupported);
    Reply reply;
    const int failed = exchange(Request(kOemNetfn, kCappingCommand).u8(kReading).zeros(4), reply);
    if (!completed(failed, reply) || reply.length() != 17) return code(Status::exchange_failed);
    out->lead1 = reply.le32(13);
    out->sys_ac_w = reply.le16(1);
    out->sys_dc_w = reply.le16(3);
    out->cpu_dc_w = reply.le16(5);
    out->mem_dc_w = reply.le16(7);
    out->sys_pct = reply.u8(9);
    out->cpu_pct = reply.u8(10);
    out->mem_pct = reply.u8(11);
    out->io_pct = reply.u8(12);
    return code(Status::ok);
}

extern "C" uint32_t pwrmgt_get_realtime_slot_dev_powers(pwrmgt_slot_dev_pwr_t* out) {
    if (out == nullptr) return code(Status::null_argument);
    if (pwrmgt_unsupport_check("") != 0) return code(Status::unsupported);
    Request request(kOemNetfn, kCappingCommand);
    request.u8(kMeter).u8(kSlotDevices).zeros(4);
    Reply reply;
    const int failed = exchange(request, reply);
    if (!completed(failed, reply) || reply.length() != 15) return code(Status::exchange_failed);
    out->word = reply.le32(1);
    size_t at = 5;
    for (uint16_t& value : out->value) {
        value = reply.le16(at);
        at += 2;
    }
    return code(Status::ok);
}

extern "C" uint32_t pwrmgt_get_power_fpga_meter(uint8_t* out) {
    if (out == nullptr) return code(Status::null_argument);
    Reply reply;
    const int failed = exchange(Request(kOemNetfn, kCappingCommand).u8(kMeter).zeros(4), reply);
    std::printf("pwrmgt_get_power_fpga_meter() rc=%d, resp[0]=0x%x, resp_sz=%d\n", failed,
                reply.completion(), static_cast<int>(reply.length()));
    if (!completed(failed, reply)) return code(Status::exchange_failed);
    const auto block = reply.received();
    std::copy(block.begin(), block.end(), out);
    return code(Status::ok);
}

extern "C" uint32_t pwrmgt_get_gpu_power_consumption(uint8_t gpu, uint16_t* out) {
    Reply reply;
    const int failed =
        exchange(Request(kOemNetfn, kGpuPowerCommand).u8(0x01).u8(0x02).u8(gpu), reply);
    if (!completed(failed, reply)) return code(Status::exchange_failed);
    if (out != nullptr) *out = reply.le16(1);
    return code(Status::ok);
}
