// SPDX-License-Identifier: Apache-2.0
// Settings that live in the firmware alone: zero-output mode and processor caps.
#include "db/status.h"
#include "policy/ipmi.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;
using namespace pwrmgt::policy;

namespace {

constexpr uint8_t kZeroOutput = 0x06;
constexpr uint8_t kCpuCaps = 0x09;

}  // namespace

extern "C" uint32_t pwrmgt_set_zero_output_mode(uint8_t mode) {
    if (mode > 1) return code(Status::bad_setting);
    Request request(kOemNetfn, kCappingCommand);
    request.u8(kZeroOutput).u8(0x01).u8(0x01).u8(mode);
    Reply reply;
    // Kept: the send status itself, and the answer is not looked at. [SendStatusIsReturnedUnmapped]
    return static_cast<uint32_t>(exchange(request, reply));
}

extern "C" uint32_t pwrmgt_get_zero_output_mode(uint8_t* mode) {
    Request request(kOemNetfn, kCappingCommand);
    request.u8(kZeroOutput).u8(0x01).u8(0x00);
    Reply reply;
    const int failed = exchange(request, reply);
    if (completed(failed, reply) && mode != nullptr) *mode = reply.u8(1);
    // Kept: 0 also when the firmware refused. [RefusedZeroOutputGetReturnsZero]
    return static_cast<uint32_t>(failed);
}

extern "C" uint32_t pwrmgt_get_cpu_pcap(pwrmgt_cpu_pcap_t* caps) {
    if (caps == nullptr) return code(Status::null_argument);
    Reply reply;
    const int failed = exchange(Request(kOemNetfn, kCappingCommand).u8(kCpuCaps), reply);
    // Kept: send status and completion code go back as they are. [CompletionCodeIsTheStatus]
    if (failed != 0) return static_cast<uint32_t>(failed);
    if (reply.completion() != kCompleted) return reply.completion();
    // Kept: 19 bytes are refused and every other length is taken. [OnlyNineteenBytesAreRefused]
    if (reply.length() == 19) return code(Status::exchange_failed);
    caps->count = static_cast<uint16_t>((caps->count & 0xFF00) | reply.u8(1));
    size_t at = 2;
    for (uint16_t& cap_w : caps->cap_w) {
        cap_w = reply.le16(at);
        at += 2;
    }
    return code(Status::ok);
}
