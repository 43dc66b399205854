// SPDX-License-Identifier: Apache-2.0
// The command family `psu`: the supply bays, and the input voltage of one supply.
#include <array>
#include <memory>

#include "command.h"
#include "database.h"
#include "missing.h"
#include "print.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr uint32_t kNoneUsable = 17;  // the bays are told all the same
constexpr uint32_t kBayEmpty = 3;

struct Options {
    int32_t bay = 0;
    bool json = false;
    bool timing = false;
};

struct Bay {
    uint32_t number;
    std::optional<std::string> state;  // none: not known
    std::optional<std::string> input;
    std::optional<std::string> health;
    Value voltage_class;
    Value input_label_w;
    Value output_label_w;
};

std::optional<std::string> one_of(uint8_t stored, uint8_t first, const char* if_first,
                                  const char* otherwise) {
    if (stored == PWRMGT_PSU_UNKNOWN) return std::nullopt;
    return stored == first ? if_first : otherwise;
}

std::optional<std::string> state_of(const pwrmgt_psu_property_t& psu, bool has_row) {
    if (!has_row) return "no bay";
    if (psu.psu_id == PWRMGT_PSU_UNKNOWN) return "empty";
    return one_of(psu.present, 1, "present", "empty");
}

// What is known of a bay without a supply is not told: it would be about the supply before.
Bay bay_of(const pwrmgt_psus_property_t& psus, uint32_t index) {
    const pwrmgt_psu_property_t& psu = psus.psu[index];
    const bool numbered = psu.psu_id >= 1 && psu.psu_id <= PWRMGT_MAX_PSU;
    Bay bay{};
    bay.number = numbered ? psu.psu_id : index + 1;
    bay.state = state_of(psu, index < psus.psu_count);
    if (bay.state && *bay.state != "present") return bay;
    bay.input = one_of(psu.input_ac_lost, 0, "good", "lost");
    bay.health = one_of(psu.psu_fault, 0, "good", "fault");
    bay.voltage_class = supply_byte(psu.input_voltage);
    bay.input_label_w = watts(psu.input_label_power);
    bay.output_label_w = watts(psu.output_label_power);
    return bay;
}

std::string text_of(const pwrmgt_psus_property_t& psus, uint32_t status) {
    Table table(
        {"Bay", "Supply", "Input", "Health", "Voltage class", "Input label W", "Output label W"});
    for (uint32_t index = 0; index < PWRMGT_MAX_PSU; ++index) {
        const Bay bay = bay_of(psus, index);
        table.add({std::to_string(bay.number), bay.state.value_or("-"), bay.input.value_or("-"),
                   bay.health.value_or("-"), cell(bay.voltage_class), cell(bay.input_label_w),
                   cell(bay.output_label_w)});
    }
    return "Supplies: " + std::to_string(psus.psu_count) + " bays, " +
           std::to_string(psus.present_count) + " present, " + std::to_string(psus.healthy_count) +
           " healthy; database " + working_database() + '\n' + table.text() +
           (status == kNoneUsable ? "No supply is present, or none is healthy (status 17).\n" : "");
}

Json word_json(const std::optional<std::string>& word) {
    return word ? Json(*word) : Json(nullptr);
}

Json json_of(const pwrmgt_psus_property_t& psus) {
    Json document;
    document["schema"] = "pwrmgtctl.psu.list/1";
    document["database"] = working_database();
    document["bays"] = psus.psu_count;
    document["present"] = psus.present_count;
    document["healthy"] = psus.healthy_count;
    document["psus"] = Json::array();
    for (uint32_t index = 0; index < PWRMGT_MAX_PSU; ++index) {
        const Bay bay = bay_of(psus, index);
        document["psus"].push_back({{"psu", bay.number},
                                    {"state", word_json(bay.state)},
                                    {"input", word_json(bay.input)},
                                    {"health", word_json(bay.health)},
                                    {"voltage_class", json_value(bay.voltage_class)},
                                    {"input_label_w", json_value(bay.input_label_w)},
                                    {"output_label_w", json_value(bay.output_label_w)}});
    }
    return document;
}

Outcome finish(const Options& options, std::string text, Json document, double query_ms) {
    if (options.json) {
        if (options.timing) document["query_ms"] = rounded_ms(query_ms);
        return succeed(json_text(document));
    }
    return succeed(options.timing ? text + timing_text(query_ms) : text);
}

Outcome show_list(const Options& options) {
    pwrmgt_psus_property_t psus{};
    const Timed done = timed([&] { return pwrmgt_get_psus_property(&psus); });
    if (done.status != 0 && done.status != kNoneUsable) return explain(Call::psus, done.status, "");
    return finish(options, text_of(psus, done.status), json_of(psus), done.query_ms);
}

// An empty bay and a failed query share a number; whether the bays can be read tells them apart.
Outcome explain_voltage(const Options& options, uint32_t status) {
    pwrmgt_psus_property_t psus{};
    const uint32_t of_bays = pwrmgt_get_psus_property(&psus);
    if (of_bays != 0) return explain(Call::psus, of_bays, "");
    const std::string bay = std::to_string(options.bay);
    return explain(Call::psu_voltage, status, status == kBayEmpty ? "bay " + bay : "supply " + bay);
}

Outcome show_voltage(const Options& options) {
    uint32_t type = PWRMGT_PSU_UNKNOWN;
    uint16_t low = 0;
    uint16_t high = 0;
    const Timed done =
        timed([&] { return pwrmgt_get_psu_voltage_range(options.bay, &type, &low, &high); });
    if (done.status != 0) return explain_voltage(options, done.status);
    const std::string kind = type == 0 ? "AC" : "class 16";
    Table table({"Input voltage", "Value"});
    table.add({"Kind", kind});
    table.add({"Lowest, V", std::to_string(low)});
    table.add({"Highest, V", std::to_string(high)});
    Json document;
    document["schema"] = "pwrmgtctl.psu.voltage/1";
    document["psu"] = options.bay;
    document["database"] = working_database();
    document["kind"] = type == 0 ? "ac" : "class_16";
    document["low_v"] = low;
    document["high_v"] = high;
    return finish(options,
                  "Input voltage of supply " + std::to_string(options.bay) + "; database " +
                      working_database() + '\n' + table.text(),
                  document, done.query_ms);
}

using Show = Outcome (*)(const Options&);

CLI::App& add_command(CLI::App& family, Action& chosen, const char* name, const char* description,
                      Show run_it, const std::shared_ptr<Options>& options) {
    CLI::App* command = family.add_subcommand(name, description);
    command->add_flag("--json", options->json, "One JSON document instead of a table");
    command->add_flag("--timing", options->timing, "Tell how long the query took");
    command->callback(
        [&chosen, options, run_it] { chosen = [options, run_it] { return run_it(*options); }; });
    return *command;
}

}  // namespace

void add_psu(CLI::App& app, Action& chosen) {
    CLI::App* family = app.add_subcommand("psu", "The supply bays");
    family->require_subcommand(1);
    add_command(*family, chosen, "list", "All twelve bays", show_list, std::make_shared<Options>())
        .footer(
            "Example:\n  pwrmgtctl psu list --json | jq '.psus[] | select(.state == \"present\")'");
    const auto options = std::make_shared<Options>();
    CLI::App& voltage = add_command(*family, chosen, "voltage", "Input voltage of one supply",
                                    show_voltage, options);
    voltage.add_option("N", options->bay, "Bay number, 1 to 12")
        ->required()
        ->check(CLI::Range(1, int32_t{PWRMGT_MAX_PSU}).description(""))
        ->type_name(" ");
    voltage.footer("Example:\n  pwrmgtctl psu voltage 1");
}

}  // namespace pwrmgt::pwrmgtctl
