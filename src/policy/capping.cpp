// SPDX-License-Identifier: Apache-2.0
// Settings: the power cap, sent to and read from the firmware.
#include <cstring>

#include "db/status.h"
#include "policy/ipmi.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;
using namespace pwrmgt::policy;

namespace {

constexpr uint8_t kSet = 0x02;
constexpr uint8_t kGet = 0x03;
constexpr uint8_t kNameFollows = 1;
constexpr uint8_t kNoName = 0;

// The firmware's own verdict stands behind the completion code.
Status verdict(int failed, const Reply& reply, uint32_t expected_length) {
    if (!completed(failed, reply) || reply.length() != expected_length) {
        return Status::exchange_failed;
    }
    return reply.u8(1) == 0 ? Status::ok : Status::firmware_refused;
}

// Kept: a name that is too long is told as none; no name at all is not told.
// [NameOf65CharactersIsLeftOut]
void add_name(Request& request, const char* name) {
    if (name == nullptr) return;
    const size_t length = std::strlen(name);
    if (length > PWRMGT_MAX_AUDIT_NAME) {
        request.u8(kNoName);
        return;
    }
    request.u8(kNameFollows).bytes({reinterpret_cast<const uint8_t*>(name), length});
}

struct Cap {
    uint8_t enable;
    uint8_t mode;
    uint16_t value_w;
};

Status set_cap(const Cap& cap, const char* name) {
    // Kept: tested before the gate, so that it is told on every platform.
    // [EnabledWithoutAValueIsRefusedBeforeTheGate]
    if (cap.enable == 1 && cap.value_w == 0) return Status::cap_without_value;
    if (pwrmgt_unsupport_check("") != 0) return Status::unsupported;
    Request request(kOemNetfn, kCappingCommand);
    request.u8(kSet).u8(cap.enable).le16(cap.value_w).u8(cap.mode);
    add_name(request, name);
    Reply reply;
    const int failed = exchange(request, reply);
    return verdict(failed, reply, 2);
}

}  // namespace

extern "C" uint32_t pwrmgt_set_power_capping_policy(uint8_t enable, uint8_t mode, uint16_t value) {
    return code(set_cap({enable, mode, value}, nullptr));
}

extern "C" uint32_t pwrmgt_set_power_capping_policy_auditlog(uint8_t enable, uint8_t mode,
                                                             uint16_t value, const char* name) {
    return code(set_cap({enable, mode, value}, name));
}

extern "C" uint32_t pwrmgt_get_power_capping_policy(uint8_t* enable, uint8_t* mode,
                                                    uint16_t* value) {
    if (enable == nullptr || mode == nullptr || value == nullptr) {
        return code(Status::null_argument);
    }
    if (pwrmgt_unsupport_check("") != 0) return code(Status::unsupported);
    return pwrmgt_ipmi_get_pwr_capping(enable, mode, value);
}

extern "C" uint32_t pwrmgt_ipmi_get_pwr_capping(uint8_t* enable, uint8_t* mode, uint16_t* value) {
    if (enable == nullptr || mode == nullptr || value == nullptr) {
        return code(Status::null_argument);
    }
    Reply reply;
    const int failed = exchange(Request(kOemNetfn, kCappingCommand).u8(kGet).zeros(4), reply);
    const Status answered = verdict(failed, reply, 6);
    if (answered != Status::ok) return code(answered);
    *enable = reply.u8(2);
    *value = reply.le16(3);
    *mode = reply.u8(5);
    return code(Status::ok);
}
