// SPDX-License-Identifier: Apache-2.0
#include "startup.h"

#include <algorithm>
#include <array>
#include <string>

#include "slot.h"
#include "status_words.h"
#include "time_text.h"

namespace pwrmgt::pwrmgtd {
namespace {

enum class Need { required, optional };

struct Step {
    bool (*run)(const Startup& start);
    Need need;
};

// A daemon that was killed leaves slots in the working table that were not saved yet; a reboot
// leaves none. They are saved before the working table is filled afresh.
bool save_left_over_slots(const Startup& start) {
    const auto working = start.tables.extent(kWorkingHistory);
    const auto persistent = start.tables.extent(kPersistentHistory);
    if (!working || !persistent || working->rows == 0) return working && persistent;
    if (working->newest_s >= start.now_s) return true;
    std::int64_t first_s = std::max(slot_start(working->oldest_s), oldest_kept(start.now_s));
    if (persistent->rows > 0) {
        first_s = std::max(first_s, slot_start(persistent->newest_s) + kSlot_s);
    }
    if (first_s > working->newest_s) return true;
    start.log.notice("saving slots of an earlier run, " + time_text(first_s) + " to " +
                     time_text(working->newest_s));
    return start.tables.save(first_s, slot_start(working->newest_s));
}

bool start_power_history(const Startup& start) {
    std::int32_t last_id = -1;
    std::int32_t last_timestamp = 0;
    const std::uint32_t status =
        pwrmgt_init_hist_table(start.tables.connection(), static_cast<std::int32_t>(start.now_s),
                               &last_id, &last_timestamp);
    if (!note_status(start.log, "pwrmgt_init_hist_table", status)) return false;
    const auto history = start.tables.extent(kWorkingHistory);
    if (!history) return false;
    if (history->rows == 0) {
        start.log.notice("power history: empty");
        return true;
    }
    start.log.notice("power history: " + std::to_string(history->rows) + " rows, " +
                     time_text(history->oldest_s) + " to " + time_text(history->newest_s));
    // Queries walk a 30-second grid and stop at a row that is not on it.
    const int off_grid = start.tables.count(kWorkingHistory, "Timestamp % 30 <> 0");
    if (off_grid > 0) {
        start.log.warning("power history: " + std::to_string(off_grid) +
                          " rows do not start at a multiple of 30 seconds and hide older ones");
    }
    return true;
}

bool start_extra_history(const Startup& start) {
    const std::uint32_t status = pwrmgt_init_hist_extra_table(
        start.tables.connection(), static_cast<std::int32_t>(start.now_s));
    return note_status(start.log, "pwrmgt_init_hist_extra_table", status);
}

bool start_thermal_history(const Startup& start) {
    return start.tables.start_temperatures();
}

bool start_power_policy(const Startup& start) {
    constexpr std::uint32_t kNotABlade = 0;
    pwrmgt_power_policy_t policy{};
    const std::uint32_t status = pwrmgt_init_power_policy_table(start.tables.connection(), &policy,
                                                                kNotABlade, start.redundancy_mode);
    if (!note_status(start.log, "pwrmgt_init_power_policy_table", status)) return false;
    start.log.notice("power policy: redundancy mode " + std::to_string(policy.redun_mode) +
                     ", capping " + (policy.cap_enable != 0 ? "on" : "off") +
                     (policy.is_blade == 2 ? ", power management not supported" : ""));
    return true;
}

bool start_supplies(const Startup& start) {
    if (!start.tables.start_bays(start.bays)) return false;
    start.log.notice("supplies: " + std::to_string(start.bays.count) + " bays");
    return true;
}

// In this order; a subsystem that gets tables adds its step here.
constexpr std::array kSteps{
    Step{save_left_over_slots, Need::optional}, Step{start_power_history, Need::required},
    Step{start_extra_history, Need::optional},  Step{start_thermal_history, Need::optional},
    Step{start_power_policy, Need::optional},   Step{start_supplies, Need::optional},
};

}  // namespace

std::int64_t time_to_start_at(DatabaseTables& tables, std::int64_t now_s) {
    std::int64_t start_s = now_s;
    for (const char* table : {kWorkingHistory, kPersistentHistory}) {
        const auto history = tables.extent(table);
        if (history && history->rows > 0) start_s = std::max(start_s, history->newest_s + 1);
    }
    return std::min<std::int64_t>(start_s, INT32_MAX);
}

bool start_tables(const Startup& start) {
    bool fit = true;
    for (const Step& step : kSteps) {
        if (!step.run(start) && step.need == Need::required) fit = false;
    }
    return fit;
}

}  // namespace pwrmgt::pwrmgtd
