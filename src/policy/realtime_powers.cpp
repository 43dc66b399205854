// SPDX-License-Identifier: Apache-2.0
// Settings walk outward: live readings that the firmware answers with one exchange each.
#include "db/status.h"
#include "policy/ipmi.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;
using namespace pwrmgt::policy;

extern "C" uint32_t pwrmgt_get_realtime_powers(pwrmgt_realtime_pwr_t* out) {
    if (out == nullptr) return code(Status::null_argument);
    if (pwrmgt_unsupport_check("pwrmgt_get_realtime_powers") != 0) return code(Status::unsupported);
    Reply reply;
    const int failed = exchange(Request(0x3A, 0x32).u8(0x01).zeros(4), reply);
    if (failed != 0 || reply.completion() != kCompleted || reply.length() != 17) {
        return code(Status::exchange_failed);
    }
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
