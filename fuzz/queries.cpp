// SPDX-License-Identifier: Apache-2.0
// Rows, failing steps, properties and clocks of every kind through the readers, queries, supplies
// and temperatures, into outputs of exactly their size.
#include <array>
#include <memory>
#include <vector>

#include "platform.h"
#include "vekdb_client.h"
#include "vekdb_pwrmgt.h"

namespace {

using pwrmgt::fuzz::open_result;
using pwrmgt::fuzz::Script;

// Counts around the bounds of the queries, and refused ones, for which nobody has to have room.
struct Wanted {
    std::uint32_t count;
    std::size_t room;
};
Wanted wanted(Script& script, std::uint32_t most) {
    if (script.fails()) return {most + 1 + script.u8(), 0};
    const std::uint32_t count = script.u16() % (most + 1);
    return {count, count};
}

pwrmgt_pwr_domain domain(Script& script) {
    return static_cast<pwrmgt_pwr_domain>(script.u8() % 5);
}

void by_period(Script& script) {
    const Wanted to = wanted(script, 120);
    const std::uint32_t period = script.fails() ? script.u32() : script.u8() % 4;
    std::vector<pwrmgt_hist_pwr_sample_t> power(to.room);
    std::vector<pwrmgt_hist_psu_sample_t> supply(to.room);
    std::vector<pwrmgt_hist_perf_sample_t> load(to.room);
    switch (script.u8() % 3) {
        case 0:
            pwrmgt_get_history_power(domain(script), period, power.data(), to.count);
            break;
        case 1:
            pwrmgt_get_history_psu_powers(script.u8() % 14, period, supply.data(), to.count);
            break;
        default:
            pwrmgt_get_history_performance(period, load.data(), to.count);
    }
}

void by_window(Script& script) {
    const std::int32_t minutes = script.fails() ? script.i32() : script.u16() % 1441;
    const std::int32_t each = script.fails() ? script.i32() : 1 + script.u8() % 24;
    const bool refused = minutes > 1440 || each < 1 || each > 24;
    const std::size_t room =
        refused || minutes < 0 ? 0 : static_cast<std::size_t>(2 * minutes / each);
    const std::int32_t end = script.fails() ? script.i32() : 1'700'000'000;
    const auto count = std::make_unique<std::uint32_t>();
    switch (script.u8() % 3) {
        case 0:
            pwrmgt_get_history_power_by_tm(domain(script), end, minutes, each,
                                           std::vector<pwrmgt_hist_pwr_sample_t>(room + 1).data(),
                                           count.get());
            break;
        case 1:
            pwrmgt_get_history_psu_power_by_tm(
                script.u8() % 14, end, minutes, each,
                std::vector<pwrmgt_hist_psu_sample_t>(room + 1).data(), count.get());
            break;
        default:
            pwrmgt_get_history_performance_by_tm(
                end, minutes, each, std::vector<pwrmgt_hist_perf_sample_t>(room + 1).data(),
                count.get());
    }
}

void readers(Script& script) {
    const std::uint32_t result = open_result();
    const auto count = static_cast<std::int32_t>(script.u8());
    const auto room = static_cast<std::size_t>(count);
    // A walk takes as long as its caller's numbers say: rows off the grid are never reached.
    const std::uint32_t each = script.u8();
    switch (script.u8() % 3) {
        case 0:
            pwrmgt_get_powerSamples(result, count, each,
                                    std::vector<pwrmgt_hist_pwr_sample_t>(room).data(),
                                    domain(script));
            break;
        case 1:
            pwrmgt_get_psuPowerSamples(result, count, each,
                                       std::vector<pwrmgt_hist_psu_sample_t>(room).data());
            break;
        default:
            pwrmgt_get_perfSample_perIndex(result, count, each,
                                           std::vector<pwrmgt_hist_perf_sample_t>(room).data());
    }
    vek_db_free_result(result);
}

void summaries(Script& script) {
    const auto summary = std::make_unique<pwrmgt_hist_pwr_sample_t>();
    // As above: so many slots are walked.
    const std::int32_t minutes = script.u16() % 3000;
    pwrmgt_get_duration_summary_power(domain(script), minutes, summary.get(),
                                      static_cast<psu_id_t>(script.u8() % 14));
}

void processors(Script& script) {
    const Wanted to = wanted(script, 20);
    const std::uint32_t cpu = script.u8() % 10;
    std::vector<pwrmgt_hist_cpu_pwr_t> one(to.room + 1);
    std::vector<pwrmgt_hist_entire_cpu_pwr_t> all(to.room + 1);
    switch (script.u8() % 4) {
        case 0:
            pwrmgt_get_cpu_power_per_index(cpu, one.data(), to.count);
            break;
        case 1:
            pwrmgt_get_cpu_power_per_index(255, all.data(), to.count);
            break;
        case 2:
            pwrmgt_get_latest_cpu_power(cpu, one.data());
            break;
        default:
            pwrmgt_get_history_entire_cpu_power(all.data(), to.count);
    }
}

void supplies(Script& script) {
    const auto number = std::make_unique<std::uint32_t>();
    const auto state = std::make_unique<std::uint8_t>();
    const std::array<std::unique_ptr<std::uint16_t>, 3> watts{std::make_unique<std::uint16_t>(),
                                                              std::make_unique<std::uint16_t>(),
                                                              std::make_unique<std::uint16_t>()};
    g_psu_installed = 15;
    g_psu_config_info = script.u8();
    switch (script.u8() % 9) {
        case 0:
            pwrmgt_get_psus_property(std::make_unique<pwrmgt_psus_property_t>().get());
            break;
        case 1:
            pwrmgt_get_smallest_psuInfo(std::make_unique<pwrmgt_psu_property_t>().get());
            break;
        case 2:
            pwrmgt_check_psuStatus();
            break;
        case 3:
            pwrmgt_check_psuStatus_for_N_1();
            break;
        case 4:
            pwrmgt_get_powerInfo_perRedunMode(script.u8() % 6, number.get(),
                                              std::make_unique<std::uint32_t>().get(), state.get());
            break;
        case 5:
            pwrmgt_set_redunmode_per_hwconfig(script.fails() ? script.i32() : script.u8() % 5);
            break;
        case 6:
            pwrmgt_get_psu_voltage_range(script.u8() % 15, number.get(), watts[0].get(),
                                         watts[1].get());
            break;
        case 7:
            pwrmgt_get_sys_avail_power(number.get());
            break;
        default:
            pwrmgt_get_power_capping_ranges(script.u8() % 2, watts[0].get(), watts[1].get(),
                                            watts[2].get());
    }
}

void temperatures(Script& script) {
    const auto count = std::make_unique<std::uint32_t>(script.u16() % 1441);
    std::vector<pwrmgt_therm_sample_t> samples(*count == 0 ? 60 : *count);
    const std::int32_t minutes = script.fails() ? -1 : script.u16() % 1441;
    const std::int32_t each = 1 + script.u8() % 12;
    std::vector<pwrmgt_therm_sample_t> span(
        minutes < 0 ? 0 : static_cast<std::size_t>(minutes / each) + 1);
    switch (script.u8() % 4) {
        case 0:
            pwrmgt_get_therm_hist(script.u8() % 5, samples.data(), count.get());
            break;
        case 1:
            pwrmgt_get_therm_hist_by_timestamp(script.fails() ? script.u32() : 1'700'000'000,
                                               minutes, each, span.data(), count.get());
            break;
        case 2:
            pwrmgt_get_therm_realtime(std::make_unique<pwrmgt_therm_realtime_t>().get());
            break;
        default: {
            const std::uint32_t result = open_result();
            samples[0].tm = 1'699'900'000;
            *count = static_cast<std::uint32_t>(samples.size());
            thermal_get_samples(result, script.fails() ? script.i32() : script.u16(),
                                script.u8() % 6, count.get(), samples.data());
            vek_db_free_result(result);
        }
    }
}

void policy(Script& script) {
    const auto watts = std::make_unique<std::uint16_t>();
    const auto record = std::make_unique<pwrmgt_power_policy_t>();
    g_power_policy_flag = 255;
    switch (script.u8() % 7) {
        case 0:
            pwrmgt_get_pwrpolicy_tbl(record.get());
            break;
        case 1:
            pwrmgt_update_power_policy_table(*record);
            break;
        case 2:
            pwrmgt_get_power_policy_extra_pwr(record.get());
            break;
        case 3:
            pwrmgt_get_power_maximzer_status(std::make_unique<std::uint8_t>().get());
            break;
        case 4:
            pwrmgt_set_maximzer_status(script.u8());
            break;
        case 5:
            pwrmgt_get_unstress_adapter_power(watts.get());
            break;
        default:
            pwrmgt_set_unstress_hdd_power(script.u16());
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    pwrmgt::fuzz::quiet();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::array kTopics{by_period,  by_window, readers,      summaries,
                                 processors, supplies,  temperatures, policy};
    Script script(data, size);
    const pwrmgt::fuzz::ScriptedPlatform platform(script);
    for (int call = 0; call < 4 && !script.ended(); ++call)
        kTopics[script.u8() % kTopics.size()](script);
    return 0;
}
