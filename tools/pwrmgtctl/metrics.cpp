// SPDX-License-Identifier: Apache-2.0
// The command `metrics`: the present state as gauges, for programs that collect numbers.
#include <iterator>
#include <memory>

#include "command.h"
#include "metrics_read.h"
#include "metrics_text.h"
#include "output_file.h"

namespace pwrmgt::pwrmgtctl {
namespace {

struct Options {
    std::string output;
};

// clang-format off
constexpr Gauge kUp{"pwrmgt_up", "", "1 when the source holds readings and could be read, else 0."};
constexpr Gauge kRealtimeTime{"pwrmgt_realtime_timestamp_seconds", "seconds", "When the stored real-time reading was taken."};
constexpr Gauge kSystem{"pwrmgt_system_power_watts", "watts", "Power of the whole system, AC and DC side."};
constexpr Gauge kProcessors{"pwrmgt_processors_power_watts", "watts", "DC power of all processors together."};
constexpr Gauge kMemory{"pwrmgt_memory_power_watts", "watts", "DC power of the memory."};
constexpr Gauge kUtilization{"pwrmgt_utilization_ratio", "ratio", "Utilisation, 1 is all of it."};
constexpr Gauge kProcessor{"pwrmgt_processor_power_watts", "watts", "Power of one processor, newest row of the last two minutes."};
constexpr Gauge kProcessorTime{"pwrmgt_processor_power_timestamp_seconds", "seconds", "When the powers of single processors were taken."};
constexpr Gauge kSupplyPower{"pwrmgt_supply_power_watts", "watts", "Input and output power of one supply, mean of the newest 30-second slot."};
constexpr Gauge kSupplyTime{"pwrmgt_supply_power_timestamp_seconds", "seconds", "Start of the slot that the power of a supply is of."};
constexpr Gauge kPresent{"pwrmgt_supply_present", "", "1 when a supply is in the bay, 0 when the bay is empty."};
constexpr Gauge kInputLost{"pwrmgt_supply_input_lost", "", "1 when the supply has lost its input."};
constexpr Gauge kFault{"pwrmgt_supply_fault", "", "1 when the supply reports a fault."};
constexpr Gauge kRated{"pwrmgt_supply_rated_power_watts", "watts", "Power on the label of the supply, input and output side."};
constexpr Gauge kMode{"pwrmgt_redundancy_mode", "", "Stored redundancy mode of the supplies."};
constexpr Gauge kLevel{"pwrmgt_redundancy_level", "", "Redundancy that the supplies leave in the stored mode, 0 is none."};
constexpr Gauge kAvailable{"pwrmgt_available_power_watts", "watts", "Power that the system may draw."};
constexpr Gauge kCapping{"pwrmgt_power_capping_enabled", "", "1 when power capping is stored as on."};
constexpr Gauge kCap{"pwrmgt_power_cap_watts", "watts", "Stored power cap."};
constexpr Gauge kCapLimit{"pwrmgt_power_cap_limit_watts", "watts", "Stored limits of a power cap."};
constexpr Gauge kTemperature{"pwrmgt_temperature_celsius", "celsius", "Latest temperature of a sensor."};
constexpr Gauge kTemperatureTime{"pwrmgt_temperature_timestamp_seconds", "seconds", "When the newest of the latest temperatures was taken."};
// clang-format on

Value time_value(int64_t time_s) {
    return time_s > 0 ? Value{static_cast<uint32_t>(time_s)} : Value{};
}

Labels labels_of(const char* name, uint32_t number) {
    return {{name, std::to_string(number)}};
}

void tell_realtime(const StoredReading& reading, MetricsText& text) {
    const ReadingValues& values = reading.values;
    text.add(kRealtimeTime, {}, time_value(reading.taken_s));
    text.add(kSystem, {{"side", "ac"}}, values[place::system_ac_w]);
    text.add(kSystem, {{"side", "dc"}}, values[place::system_dc_w]);
    text.add(kProcessors, {}, values[place::cpu_dc_w]);
    text.add(kMemory, {}, values[place::memory_dc_w]);
    text.add_ratio(kUtilization, {{"part", "system"}}, values[place::system_pct]);
    text.add_ratio(kUtilization, {{"part", "processors"}}, values[place::cpu_pct]);
    text.add_ratio(kUtilization, {{"part", "memory"}}, values[place::memory_pct]);
    text.add_ratio(kUtilization, {{"part", "io"}}, values[place::io_pct]);
}

void tell_processors(const pwrmgt_hist_entire_cpu_pwr_t& row, MetricsText& text) {
    text.add(kProcessorTime, {}, time_value(row.timestamp));
    for (uint32_t at = 0; at < std::size(row.cpu_pwr); ++at) {
        text.add(kProcessor, labels_of("processor", at + 1), watts(row.cpu_pwr[at]));
    }
}

void tell_supply_powers(const std::vector<SupplyPower>& powers, MetricsText& text) {
    for (const SupplyPower& power : powers) {
        text.add(kSupplyTime, labels_of("supply", power.bay), time_value(power.timestamp_s));
    }
    for (const SupplyPower& power : powers) {
        const std::string bay = std::to_string(power.bay);
        text.add(kSupplyPower, {{"supply", bay}, {"side", "input"}}, power.input_w);
        text.add(kSupplyPower, {{"supply", bay}, {"side", "output"}}, power.output_w);
    }
}

struct Bay {
    std::string number;
    Value present;
    pwrmgt_psu_property_t psu;
};

// Bays as the table numbers them; a bay without a number is the one of its place.
std::vector<Bay> bays_of(const pwrmgt_psus_property_t& psus) {
    std::vector<Bay> bays;
    for (uint32_t index = 0; index < PWRMGT_MAX_PSU && index < psus.psu_count; ++index) {
        const pwrmgt_psu_property_t& psu = psus.psu[index];
        const bool numbered = psu.psu_id >= 1 && psu.psu_id <= PWRMGT_MAX_PSU;
        Value present = supply_byte(psu.present);
        if (present) present = *present == 1 ? 1U : 0U;
        if (psu.psu_id == PWRMGT_PSU_UNKNOWN) present = 0U;
        bays.push_back({std::to_string(numbered ? psu.psu_id : index + 1), present, psu});
    }
    return bays;
}

Value flag(uint8_t stored) {
    const Value known = supply_byte(stored);
    return known ? Value{*known != 0 ? 1U : 0U} : Value{};
}

// Of a bay without a supply nothing but that is told: the rest is about the supply before.
void tell_supplies(const pwrmgt_psus_property_t& psus, MetricsText& text) {
    const std::vector<Bay> bays = bays_of(psus);
    std::vector<Bay> present;
    for (const Bay& bay : bays) {
        text.add(kPresent, {{"supply", bay.number}}, bay.present);
        if (bay.present == Value{1}) present.push_back(bay);
    }
    for (const Bay& bay : present) {
        text.add(kInputLost, {{"supply", bay.number}}, flag(bay.psu.input_ac_lost));
    }
    for (const Bay& bay : present) {
        text.add(kFault, {{"supply", bay.number}}, flag(bay.psu.psu_fault));
    }
    for (const Bay& bay : present) {
        text.add(kRated, {{"supply", bay.number}, {"side", "input"}},
                 watts(bay.psu.input_label_power));
        text.add(kRated, {{"supply", bay.number}, {"side", "output"}},
                 watts(bay.psu.output_label_power));
    }
}

void tell_policy(const pwrmgt_power_policy_t& policy, MetricsText& text) {
    text.add(kMode, {}, redundancy_mode(policy.redun_mode));
    text.add(kCapping, {}, policy.cap_enable == 1 ? 1U : 0U);
    text.add(kCap, {}, watts(policy.cap_value));
    text.add(kCapLimit, {{"side", "ac"}, {"limit", "soft"}}, watts(policy.cap_soft_ac));
    text.add(kCapLimit, {{"side", "ac"}, {"limit", "lowest"}}, watts(policy.cap_min_ac));
    text.add(kCapLimit, {{"side", "ac"}, {"limit", "highest"}}, watts(policy.cap_max_ac));
    text.add(kCapLimit, {{"side", "dc"}, {"limit", "soft"}}, watts(policy.cap_soft_dc));
    text.add(kCapLimit, {{"side", "dc"}, {"limit", "lowest"}}, watts(policy.cap_min_dc));
    text.add(kCapLimit, {{"side", "dc"}, {"limit", "highest"}}, watts(policy.cap_max_dc));
}

std::string document_of(const Snapshot& snapshot) {
    MetricsText text;
    for (const Source& source : snapshot.sources) {
        text.add(kUp, {{"source", source.name}}, source.up ? 1U : 0U);
    }
    if (snapshot.realtime) tell_realtime(*snapshot.realtime, text);
    if (snapshot.processors) tell_processors(*snapshot.processors, text);
    tell_supply_powers(snapshot.supply_powers, text);
    if (snapshot.supplies) tell_supplies(*snapshot.supplies, text);
    if (snapshot.policy) tell_policy(*snapshot.policy, text);
    text.add(kLevel, {}, snapshot.redundancy_level);
    text.add(kAvailable, {}, snapshot.available_w);
    if (snapshot.temperatures_s) {
        text.add(kTemperatureTime, {}, time_value(*snapshot.temperatures_s));
    }
    for (const Temperature& temperature : snapshot.temperatures) {
        text.add_degrees(kTemperature, {{"sensor", temperature.sensor}}, temperature.degrees);
    }
    return text.text();
}

// "realtime: the database query failed (status 3); ..."; empty when every source was read.
std::string failures_of(const Snapshot& snapshot) {
    std::string words;
    for (const Source& source : snapshot.sources) {
        if (source.failure.empty()) continue;
        words += (words.empty() ? "" : "; ") + std::string(source.name) + ": " + source.failure;
    }
    return words;
}

Outcome show(const Options& options) {
    const Snapshot snapshot = read_snapshot();
    std::string document = document_of(snapshot);
    if (!options.output.empty()) {
        const std::string mistake = write_file(options.output, document);
        if (!mistake.empty()) return fail(Exit::failure, mistake);
        document.clear();
    }
    const std::string failures = failures_of(snapshot);
    return failures.empty() ? succeed(document) : succeed_but(Exit::failure, document, failures);
}

}  // namespace

void add_metrics(cli::Command app, Action& chosen) {
    cli::Command command =
        app.add_command("metrics", "The present state as OpenMetrics text, from the tables");
    const auto options = std::make_shared<Options>();
    command
        .add_option("--output", options->output,
                    "Write the file in one step instead of standard output")
        .type_name("FILE");
    command.when_parsed([&chosen, options] { chosen = [options] { return show(*options); }; });
    command.footer(
        "Exit codes: 0 written, a source without readings included; 1 a source could not be\n"
        "read (the others are written all the same), or the text could not be written.\n"
        "\n"
        "Examples:\n"
        "  pwrmgtctl metrics\n"
        "  pwrmgtctl metrics --output /var/lib/prometheus/node-exporter/pwrmgt.prom");
}

}  // namespace pwrmgt::pwrmgtctl
