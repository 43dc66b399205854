// SPDX-License-Identifier: Apache-2.0
#include "metrics_read.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "status_text.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr uint32_t kNoneUsable = 17;  // the bays are told all the same

// A table that holds nothing, or that this platform does not offer, has not failed.
Source source_of(const char* name, Call call, uint32_t status, bool anything) {
    if (status == 0) return {name, anything, {}};
    const Outcome cause = explain(call, status, "");
    const bool failed = cause.exit == Exit::failure;
    return {name, false, failed ? cause.error : std::string()};
}

void read_realtime(Snapshot& snapshot) {
    StoredReading reading;
    const uint32_t status = read_stored_reading(reading);
    if (status == 0) snapshot.realtime = reading;
    snapshot.sources.push_back(source_of("realtime", Call::realtime_stored, status, true));
}

void read_processors(Snapshot& snapshot) {
    pwrmgt_hist_entire_cpu_pwr_t row{};
    const uint32_t status = pwrmgt_get_latest_entire_cpu_power(&row);
    const bool told = status == 0 && row.timestamp != 0;
    if (told) snapshot.processors = row;
    snapshot.sources.push_back(source_of("processors", Call::cpu, status, told));
}

// The newest slot of each bay's history: an older reading would pass for the present one.
void read_supply_powers(Snapshot& snapshot) {
    uint32_t failed = 0;
    for (uint32_t bay = 1; bay <= PWRMGT_MAX_PSU; ++bay) {
        std::array<pwrmgt_hist_psu_sample_t, PWRMGT_MAX_PERIOD_ENTRIES> entries{};
        const uint32_t status = pwrmgt_get_history_psu_powers(
            bay, PWRMGT_PERIOD_1_HOUR, entries.data(), PWRMGT_MAX_PERIOD_ENTRIES);
        if (status != 0 && explain(Call::history_psu, status, "").exit == Exit::failure) {
            failed = status;
        }
        const pwrmgt_hist_psu_sample_t& newest = entries.front();
        if (status != 0 || newest.timestamp == 0) continue;
        const SupplyPower power{bay, newest.timestamp, watts(newest.avg_ac), watts(newest.avg_dc)};
        if (power.input_w || power.output_w) snapshot.supply_powers.push_back(power);
    }
    snapshot.sources.push_back(
        source_of("supply_power", Call::history_psu, failed, !snapshot.supply_powers.empty()));
}

void read_supplies(Snapshot& snapshot) {
    pwrmgt_psus_property_t psus{};
    uint32_t status = pwrmgt_get_psus_property(&psus);
    if (status == kNoneUsable) status = 0;
    if (status == 0) snapshot.supplies = psus;
    snapshot.sources.push_back(source_of("supplies", Call::psus, status, true));
}

void read_policy(Snapshot& snapshot) {
    pwrmgt_power_policy_t policy{};
    const uint32_t status = pwrmgt_get_pwrpolicy_tbl(&policy);
    if (status == 0) snapshot.policy = policy;
    snapshot.sources.push_back(source_of("policy", Call::policy, status, true));
}

void read_available(Snapshot& snapshot) {
    uint32_t available = 0;
    const uint32_t status = pwrmgt_get_sys_avail_power(&available);
    if (status == 0) snapshot.available_w = available_watts(available);
    uint8_t level = PWRMGT_PSU_UNKNOWN;
    if (snapshot.policy && pwrmgt_get_powerInfo_perRedunMode(snapshot.policy->redun_mode, nullptr,
                                                             nullptr, &level) == 0) {
        snapshot.redundancy_level = supply_byte(level);
    }
    snapshot.sources.push_back(
        source_of("available_power", Call::available, status, snapshot.available_w.has_value()));
}

void add_temperatures(Snapshot& snapshot, const char* kind, std::span<const int16_t> stored) {
    for (size_t at = 0; at < stored.size(); ++at) {
        if (const auto degrees = temperature(stored[at])) {
            snapshot.temperatures.push_back({kind + std::to_string(at + 1), *degrees});
        }
    }
}

void read_temperatures(Snapshot& snapshot) {
    pwrmgt_therm_realtime_t record{};
    // Only sensors with a row are written; what keeps the marker has none.
    std::fill(std::begin(record.cpu), std::end(record.cpu), kNoTemperature);
    std::fill(std::begin(record.memory), std::end(record.memory), kNoTemperature);
    std::fill(std::begin(record.ambient), std::end(record.ambient), kNoTemperature);
    const uint32_t status = pwrmgt_get_therm_realtime(&record);
    if (status == 0) {
        add_temperatures(snapshot, "inlet", record.ambient);
        add_temperatures(snapshot, "cpu", record.cpu);
        add_temperatures(snapshot, "memory_module", record.memory);
        snapshot.temperatures_s = newest_temperature_s();
    }
    snapshot.sources.push_back(
        source_of("temperatures", Call::thermal_realtime, status, !snapshot.temperatures.empty()));
}

}  // namespace

Snapshot read_snapshot() {
    Snapshot snapshot;
    read_realtime(snapshot);
    read_processors(snapshot);
    read_supply_powers(snapshot);
    read_supplies(snapshot);
    read_policy(snapshot);
    read_available(snapshot);
    read_temperatures(snapshot);
    return snapshot;
}

}  // namespace pwrmgt::pwrmgtctl
