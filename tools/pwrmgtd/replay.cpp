// SPDX-License-Identifier: Apache-2.0
#include "replay.h"

#include <algorithm>

#include "source.h"

namespace pwrmgt::pwrmgtd {

ReplayPlan plan_replay(const trace::Trace& trace, std::int64_t until_s) {
    ReplayPlan plan{};
    plan.last_s = slot_start(until_s) - kSlot_s;
    plan.shift_s = plan.last_s - slot_start(trace.last_s());
    plan.first_s = std::max(slot_start(trace.first_s()) + plan.shift_s, oldest_kept(until_s));
    return plan;
}

std::vector<Row> replay_rows(const trace::Trace& trace, const ReplayPlan& plan) {
    std::vector<Row> rows;
    for (std::int64_t stamp_s = plan.first_s; stamp_s <= plan.last_s; stamp_s += kSlot_s) {
        SlotReadings readings;
        for (std::int64_t t_s = stamp_s; t_s < stamp_s + kSlot_s; ++t_s) {
            readings.add(reading_of(trace.reading_at(t_s - plan.shift_s)));
        }
        rows.push_back(readings.row(stamp_s));
    }
    return rows;
}

bool record_minutes(const trace::Trace& trace, const ReplayPlan& plan, DatabaseTables& tables) {
    const std::int64_t first_s = (plan.first_s + kMinute_s - 1) / kMinute_s * kMinute_s;
    bool done = true;
    for (std::int64_t minute_s = first_s; minute_s < plan.last_s + kSlot_s; minute_s += kMinute_s) {
        const Reading reading = reading_of(trace.reading_at(minute_s - plan.shift_s));
        done &= tables.record_temperatures(reading, minute_s);
    }
    return done;
}

bool replay(const trace::Trace& trace, const ReplayPlan& plan, std::int64_t until_s,
            DatabaseTables& tables) {
    const std::vector<Row> rows = replay_rows(trace, plan);
    const std::int64_t last_row_s = trace.last_s();
    return tables.remove_from(plan.first_s) && tables.append(rows) == rows.size() &&
           record_minutes(trace, plan, tables) && tables.trim(until_s) &&
           tables.save(plan.first_s, plan.last_s) &&
           tables.show(reading_of(trace.reading_at(last_row_s)), last_row_s + plan.shift_s);
}

}  // namespace pwrmgt::pwrmgtd
