// SPDX-License-Identifier: Apache-2.0
// The support gate: whether a power function is offered on this machine.
#include <array>
#include <string_view>

#include "db/status.h"
#include "platform_id.h"
#include "policy/policy_row.h"

using namespace pwrmgt::policy;

namespace {

constexpr uint8_t kUnsupported = 2;

constexpr std::array<std::string_view, 3> kOfferedOnQuoril{
    "pwrmgt_get_realtime_powers",
    "pwrmgt_get_history_power",
    "pwrmgt_get_duration_summary_power",
};

uint32_t verdict() {
    return cached_is_blade() == kUnsupported ? 1 : 0;
}

}  // namespace

uint32_t judge_power_function(const char* name) {
    const std::string_view wanted = name != nullptr ? name : "";
    for (const std::string_view offered : kOfferedOnQuoril) {
        if (wanted == offered) return 1;
    }
    return 0;
}

extern "C" uint32_t pwrmgt_unsupport_check(const char* name) {
    if (is_quoril_platform() != 0 && judge_power_function(name) == 0) return 1;
    if (cached_is_blade() != PWRMGT_POLICY_UNREAD) return verdict();
    pwrmgt_power_policy_t policy{};
    // Kept: an unreadable row never hides a function. [UnreadableRowNeverRefuses]
    if (pwrmgt_get_pwrpolicy_tbl(&policy) != 0) return 0;
    return verdict();
}
