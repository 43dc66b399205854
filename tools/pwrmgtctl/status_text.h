// SPDX-License-Identifier: Apache-2.0
// What a status number means, in words and as an exit code: the same number has other causes in
// other functions.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "command.h"

namespace pwrmgt::pwrmgtctl {

enum class Call {
    history_power,
    history_psu,
    window_psu,
    history_performance,
    summary,
    cpu,
    realtime_stored,
    firmware,
    capping_get,
    capping_set,
    setting,
    zero_output,
    cpu_caps,
    store,
    policy,
    policy_set,
    psus,
    psu_voltage,
    redundancy_get,
    redundancy_set,
    redundancy_auto,
    redundancy_not_allowed,
    redundancy_unset,
    available,
    capping_ranges,
    thermal_history,
    thermal_realtime
};

// The failure that `status` is for this call; `about` says what was asked for where the cause has a
// place for it, such as "in the last hour".
Outcome explain(Call call, uint32_t status, std::string_view about);

}  // namespace pwrmgt::pwrmgtctl
