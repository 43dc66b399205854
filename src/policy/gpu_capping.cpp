// SPDX-License-Identifier: Apache-2.0
// Settings: the power cap of one GPU. Neither the gate nor the answer's length is looked at.
#include "db/status.h"
#include "policy/ipmi.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;
using namespace pwrmgt::policy;

namespace {

constexpr int32_t kWordCap = 16;
constexpr int32_t kByteCap = 32;
constexpr uint8_t kWordOperation = 0xC0;
constexpr uint8_t kByteOperation = 0xC1;

Status send(const Request& request, Reply& reply) {
    return completed(exchange(request, reply), reply) ? Status::ok : Status::exchange_failed;
}

}  // namespace

extern "C" uint32_t pwrmgt_set_gpu_power_capping_policy(uint8_t gpu, int32_t kind, uint16_t value) {
    Request request(kOemNetfn, kGpuCapCommand);
    if (kind == kWordCap) {
        request.u8(kWordOperation).u8(gpu).be16(value);
    } else if (kind == kByteCap) {
        request.u8(kByteOperation).u8(gpu).u8(static_cast<uint8_t>(value));
    } else {
        return code(Status::unsupported);
    }
    Reply reply;
    return code(send(request, reply));
}

extern "C" uint32_t pwrmgt_get_gpu_power_capping_policy(uint8_t gpu, int32_t kind,
                                                        uint16_t* value) {
    if (kind != kWordCap && kind != kByteCap) return code(Status::unsupported);
    const uint8_t operation = kind == kWordCap ? kWordOperation : kByteOperation;
    Reply reply;
    const Status answered = send(Request(kOemNetfn, kGpuCapCommand).u8(operation).u8(gpu), reply);
    if (answered != Status::ok || value == nullptr) return code(answered);
    if (kind == kWordCap) {
        const uint16_t cap = reply.be16(1);
        *value = cap != 0 ? cap : kNoPower;
    } else {
        // Kept: the upper byte stays the caller's. [KindThirtyTwoWritesOneByteOnly]
        *value = static_cast<uint16_t>((*value & 0xFF00) | reply.u8(1));
    }
    return code(Status::ok);
}
