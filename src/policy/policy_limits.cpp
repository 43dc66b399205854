// SPDX-License-Identifier: Apache-2.0
// Settings: the stored policy with its capping limits widened by the unstress powers.
#include "db/limits.h"
#include "db/session.h"
#include "policy/policy_row.h"

using namespace pwrmgt::db;
using namespace pwrmgt::policy;

namespace {

// Each limit for itself.
void widen_each(pwrmgt_power_policy_t& policy, const Unstress& extra) {
    widen_if_set(policy.cap_min_ac, extra);
    widen_if_set(policy.cap_max_ac, extra);
    widen_if_set(policy.cap_min_dc, extra);
    widen_if_set(policy.cap_max_dc, extra);
}

// Kept: a minimum follows its maximum and is not tested itself. [MinimumIsWidenedWithItsMaximum]
void widen_in_pairs(pwrmgt_power_policy_t& policy, const Unstress& extra) {
    if (policy.cap_max_ac != kNoPower) {
        widen(policy.cap_max_ac, extra);
        widen(policy.cap_min_ac, extra);
    }
    if (policy.cap_max_dc != kNoPower) {
        widen(policy.cap_max_dc, extra);
        widen(policy.cap_min_dc, extra);
    }
}

void overlay_live_cap(pwrmgt_power_policy_t& policy) {
    if (pwrmgt_ipmi_get_pwr_capping(&policy.cap_enable, &policy.cap_mode, &policy.cap_value) == 0) {
        return;
    }
    policy.cap_enable = 0;
    policy.cap_mode = 0;
    policy.cap_value = kNoPower;
}

// Reads the row, then lets `adjust(policy, unstress)` have it while the connection is open.
template <class Adjust>
Status read_limits(pwrmgt_power_policy_t* out, Adjust adjust) {
    if (out == nullptr) return Status::null_argument;
    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return Status::no_connection;
    Result rows;
    const Status found =
        select(db.get(), {.table = kPowerPolicy, .columns = kPolicyLimitColumns}, rows);
    if (found != Status::ok) return found;
    if (vek_db_result_row_count(rows.get()) < 1) return Status::no_rows;
    vek_db_result_step(rows.get());
    read_policy(rows.get(), *out);
    Unstress extra;
    vek_db_result_column_short_uint(rows.get(), kPolicyFields, &extra.adapter_w);
    vek_db_result_column_short_uint(rows.get(), kPolicyFields + 1, &extra.hdd_w);
    adjust(*out, extra);
    return Status::ok;
}

}  // namespace

extern "C" uint32_t pwrmgt_get_power_policy_extra_pwr(pwrmgt_power_policy_t* out) {
    return code(read_limits(out, [](pwrmgt_power_policy_t& policy, const Unstress& extra) {
        if (extra.counts()) widen_each(policy, extra);
    }));
}

extern "C" uint32_t pwrmgt_get_power_policy_setting(pwrmgt_power_policy_t* out) {
    return code(read_limits(out, [](pwrmgt_power_policy_t& policy, const Unstress& extra) {
        overlay_live_cap(policy);
        if (extra.counts()) widen_in_pairs(policy, extra);
    }));
}
