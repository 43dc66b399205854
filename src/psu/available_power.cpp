// SPDX-License-Identifier: Apache-2.0
// How much power the system may draw in its current redundancy mode.
#include "db/status.h"
#include "platform_id.h"
#include "psu/rated_power.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;
using namespace pwrmgt::psu;

namespace {

constexpr const char* kRatedPowerFile = "/tmp/.ratedPowerData.log";

}  // namespace

extern "C" uint32_t pwrmgt_get_sys_avail_power(uint32_t* avail) {
    uint32_t watts = 0;
    if (is_quoril_platform() != 0) {
        watts = read_rated_power_file(kRatedPowerFile);
        if (avail != nullptr) *avail = watts;
        return code(watts != 0 ? Status::ok : Status::no_rated_power);
    }
    if (pwrmgt_unsupport_check("") != 0) return code(Status::unsupported);
    pwrmgt_power_policy_t policy{};
    if (const uint32_t failed = pwrmgt_get_pwrpolicy_tbl(&policy); failed != 0) return failed;
    const uint32_t failed =
        pwrmgt_get_powerInfo_perRedunMode(policy.redun_mode, nullptr, &watts, nullptr);
    if (failed != 0) return failed;
    if (avail != nullptr) *avail = watts;
    return code(Status::ok);
}
