// SPDX-License-Identifier: Apache-2.0
// The commands `psu list` and `psu voltage`: the supply bays, and the input voltage of one supply.
#include <array>
#include <ctime>
#include <memory>

#include "answer.h"
#include "missing.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr uint32_t kNoneUsable = 17;  // the bays are told all the same
constexpr uint32_t kBayEmpty = 3;

struct Options : CommonOptions {
    int32_t bay = 0;
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

std::string table_of(const pwrmgt_psus_property_t& psus) {
    Table table(
        {"Bay", "Supply", "Input", "Health", "Voltage class", "Input label W", "Output label W"});
    for (uint32_t index = 0; index < PWRMGT_MAX_PSU; ++index) {
        const Bay bay = bay_of(psus, index);
        table.add({std::to_string(bay.number), bay.state.value_or("-"), bay.input.value_or("-"),
                   bay.health.value_or("-"), cell(bay.voltage_class), cell(bay.input_label_w),
                   cell(bay.output_label_w)});
    }
    return table.text();
}

Json word_json(const std::optional<std::string>& word) {
    return word ? Json(*word) : Json(nullptr);
}

Json json_of(const pwrmgt_psus_property_t& psus) {
    Json document;
    add_age(document, std::nullopt);  // the table keeps no time
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

Outcome show_list(const Options& options) {
    pwrmgt_psus_property_t psus{};
    const int64_t asked_at_s = std::time(nullptr);
    const Timed done = timed([&] { return pwrmgt_get_psus_property(&psus); });
    if (done.status != 0 && done.status != kNoneUsable) return explain(Call::psus, done.status, "");
    const std::string title = "Supplies: " + std::to_string(psus.psu_count) + " bays, " +
                              std::to_string(psus.present_count) + " present, " +
                              std::to_string(psus.healthy_count) + " healthy; age not known";
    const std::string none =
        done.status == kNoneUsable ? "No supply is present, or none is healthy (status 17).\n" : "";
    return succeed(
        answer_document({"psu.list/1", Origin::working_tables, title, asked_at_s, done.query_ms},
                        options, table_of(psus) + none, json_of(psus)));
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
    const int64_t asked_at_s = std::time(nullptr);
    uint32_t type = PWRMGT_PSU_UNKNOWN;
    uint16_t low = 0;
    uint16_t high = 0;
    const Timed done =
        timed([&] { return pwrmgt_get_psu_voltage_range(options.bay, &type, &low, &high); });
    if (done.status != 0) return explain_voltage(options, done.status);
    Table table({"Input voltage", "Value"});
    table.add({"Kind", type == 0 ? "AC" : "class 16"});
    table.add({"Lowest, V", std::to_string(low)});
    table.add({"Highest, V", std::to_string(high)});
    Json body;
    body["psu"] = options.bay;
    add_age(body, std::nullopt);
    body["kind"] = type == 0 ? "ac" : "class_16";
    body["low_v"] = low;
    body["high_v"] = high;
    return succeed(answer_document(
        {"psu.voltage/1", Origin::working_tables,
         "Input voltage of supply " + std::to_string(options.bay) + "; age not known", asked_at_s,
         done.query_ms},
        options, table.text(), body));
}

}  // namespace

void add_psu(cli::Command psu, Action& chosen) {
    const auto options = std::make_shared<Options>();
    cli::Command list =
        add_command(psu, chosen,
                    {"list", "All twelve bays",
                     "Examples:\n"
                     "  pwrmgtctl psu list --watch\n"
                     "  pwrmgtctl psu list --json | jq '.psus[] | select(.state == \"present\")'"},
                    options, show_list);
    let_watch(list, chosen, options, show_list);

    const auto one = std::make_shared<Options>();
    add_command(psu, chosen,
                {"voltage", "Input voltage of one supply", "Example:\n  pwrmgtctl psu voltage 1"},
                one, show_voltage)
        .add_option("N", one->bay, "Bay number, 1 to 12")
        .required()
        .check(cli::whole_number(1, PWRMGT_MAX_PSU))
        .type_name(" ");
}

}  // namespace pwrmgt::pwrmgtctl
