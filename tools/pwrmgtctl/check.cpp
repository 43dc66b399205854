// SPDX-License-Identifier: Apache-2.0
// The command `check`: a plugin of a monitoring system. It ends with the plugin's exit codes, not
// with those of the other commands, and never with 0 when something could not be read.
#include <algorithm>
#include <ctime>
#include <exception>
#include <memory>

#include "check_rules.h"
#include "command.h"
#include "database.h"
#include "print.h"
#include "status_text.h"
#include "stored_reading.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr uint32_t kNoneUsable = 17;  // the bays are told all the same
constexpr uint32_t kMaxPercent = 1000;
constexpr int64_t kMaxAge = 86400;
constexpr uint32_t kMostLevels = 2;

struct Options {
    uint32_t supplies = 0;  // 0: as many as are present
    uint32_t redundancy = 1;
    DrawLimits draw{80, 90};
    int64_t max_age_s = 2 * PWRMGT_SLOT_SECONDS;
    std::vector<std::string> skip;
    bool json = false;

    [[nodiscard]] bool wants(const char* part) const {
        return std::find(skip.begin(), skip.end(), part) == skip.end();
    }
};

Supply supply_of(const pwrmgt_psu_property_t& psu, uint32_t bay) {
    if (psu.psu_id == PWRMGT_PSU_UNKNOWN || psu.present == 0) return {bay, SupplyState::empty};
    if (psu.present != 1) return {bay, SupplyState::not_known};
    // One thing that is wrong is enough, whether or not the other is known.
    const Value input_lost = supply_byte(psu.input_ac_lost);
    const Value fault = supply_byte(psu.psu_fault);
    if (input_lost && *input_lost != 0) return {bay, SupplyState::input_lost};
    if (fault && *fault != 0) return {bay, SupplyState::fault};
    return {bay, input_lost && fault ? SupplyState::healthy : SupplyState::not_known};
}

Told<std::vector<Supply>> read_supplies() {
    pwrmgt_psus_property_t psus{};
    const uint32_t status = pwrmgt_get_psus_property(&psus);
    if (status != 0 && status != kNoneUsable) {
        return {std::nullopt, explain(Call::psus, status, "").error};
    }
    std::vector<Supply> supplies;
    for (uint32_t index = 0; index < std::min<uint32_t>(psus.psu_count, PWRMGT_MAX_PSU); ++index) {
        const uint8_t stored = psus.psu[index].psu_id;
        const bool numbered = stored >= 1 && stored <= PWRMGT_MAX_PSU;
        supplies.push_back(supply_of(psus.psu[index], numbered ? stored : index + 1));
    }
    return {supplies, {}};
}

Told<Redundancy> read_redundancy() {
    pwrmgt_power_policy_t policy{};
    if (const uint32_t status = pwrmgt_get_pwrpolicy_tbl(&policy); status != 0) {
        return {std::nullopt, explain(Call::policy, status, "").error};
    }
    const Value stored = redundancy_mode(policy.redun_mode);
    if (!stored) return {std::nullopt, "no redundancy mode is stored"};
    uint8_t level = PWRMGT_PSU_UNKNOWN;
    const uint32_t status =
        pwrmgt_get_powerInfo_perRedunMode(policy.redun_mode, nullptr, nullptr, &level);
    if (status != 0) return {std::nullopt, explain(Call::available, status, "").error};
    return {Redundancy{policy.redun_mode, supply_byte(level)}, {}};
}

Told<Value> read_available() {
    uint32_t available = 0;
    const uint32_t status = pwrmgt_get_sys_avail_power(&available);
    if (status != 0) return {std::nullopt, explain(Call::available, status, "").error};
    return {available_watts(available), {}};
}

struct Readings {
    Told<int64_t> age_s;
    Told<Value> drawn_w;
};

Readings read_latest(int64_t now_s) {
    StoredReading reading;
    const uint32_t status = read_stored_reading(reading);
    if (status != 0) {
        const std::string why = explain(Call::realtime_stored, status, "").error;
        return {{std::nullopt, why}, {std::nullopt, why}};
    }
    return {{now_s - reading.taken_s, {}}, {reading.values[place::system_dc_w], {}}};
}

std::vector<Finding> look(const Options& options) {
    std::vector<Finding> findings;
    if (options.wants("supplies")) {
        findings.push_back(judge_supplies(
            read_supplies(), options.supplies == 0 ? Value{} : Value{options.supplies}));
    }
    if (options.wants("redundancy")) {
        findings.push_back(judge_redundancy(read_redundancy(), options.redundancy));
    }
    if (!options.wants("draw") && !options.wants("age")) return findings;
    const Readings latest = read_latest(std::time(nullptr));
    const Finding age = judge_age(latest.age_s, options.max_age_s);
    if (options.wants("draw")) {
        const bool stale = options.wants("age") && age.state != PluginState::ok;
        findings.push_back(judge_draw({latest.drawn_w, read_available(), stale}, options.draw));
    }
    if (options.wants("age")) findings.push_back(age);
    return findings;
}

std::string json_document(const std::vector<Finding>& findings, PluginState state) {
    Json document;
    document["schema"] = "pwrmgtctl.check/1";
    document["state"] = state_word(state);
    document["exit_code"] = static_cast<int>(state);
    document["database"] = working_database();
    document["findings"] = Json::array();
    for (const Finding& finding : findings) {
        document["findings"].push_back({{"part", finding.part},
                                        {"state", state_word(finding.state)},
                                        {"words", finding.words},
                                        {"performance", finding.performance}});
    }
    return json_text(document, JsonForm::indented);
}

// Exit codes of a plugin, not those of `Exit`.
Outcome plugin_outcome(PluginState state, std::string document) {
    return {
        static_cast<Exit>(state), std::move(document), {}, static_cast<Exit>(PluginState::unknown)};
}

Outcome show(const Options& options) {
    if (options.draw.warning_pct > options.draw.critical_pct) {
        return check_mistake("--warning is above --critical");
    }
    const std::vector<Finding> findings = look(options);
    PluginState state = PluginState::ok;
    for (const Finding& finding : findings) {
        state = worse(finding.state, state);
    }
    if (findings.empty()) return check_mistake("--skip leaves nothing to check");
    return plugin_outcome(state,
                          options.json ? json_document(findings, state) : plugin_line(findings));
}

Outcome show_guarded(const Options& options) {
    try {
        return show(options);
    } catch (const std::exception& failure) {
        return check_mistake(failure.what());
    }
}

void add_limits(cli::Command command, Options& options) {
    command
        .add_option("--supplies", options.supplies,
                    "Healthy supplies expected, 1 to 12; every one present when left out")
        .check(cli::whole_number(1, uint32_t{PWRMGT_MAX_PSU}))
        .type_name("N");
    command
        .add_option("--redundancy", options.redundancy,
                    "Level of redundancy expected, 0 to 2; mode 2 keeps none")
        .check(cli::whole_number(0, kMostLevels))
        .type_name("LEVEL")
        .show_default();
    command
        .add_option("--warning", options.draw.warning_pct,
                    "Warn above this share of the available power")
        .check(cli::whole_number(1, kMaxPercent))
        .type_name("PERCENT")
        .show_default();
    command
        .add_option("--critical", options.draw.critical_pct,
                    "Critical above this share of the available power")
        .check(cli::whole_number(1, kMaxPercent))
        .type_name("PERCENT")
        .show_default();
    command.add_option("--max-age", options.max_age_s, "Critical when the stored reading is older")
        .check(cli::whole_number(1, kMaxAge))
        .type_name("SECONDS")
        .show_default();
    command
        .add_option("--skip", options.skip,
                    "Leave out a part: supplies, redundancy, draw or age; may be repeated")
        .check(cli::one_of({"supplies", "redundancy", "draw", "age"}))
        .type_name("PART")
        .may_be_repeated();
    command.add_flag("--json", options.json, "One JSON document instead of a line");
}

}  // namespace

Outcome check_mistake(const std::string& words) {
    return plugin_outcome(PluginState::unknown,
                          plugin_line({{PluginState::unknown, "", words, ""}}));
}

void add_check(cli::Command app, Action& chosen) {
    cli::Command command = app.add_command(
        "check", "Supplies, redundancy, draw and age of the data, for a monitoring system");
    const auto options = std::make_shared<Options>();
    add_limits(command, *options);
    command.when_parsed(
        [&chosen, options] { chosen = [options] { return show_guarded(*options); }; });
    command.footer(
        "Exit codes, which are a plugin's and not those of the other commands:\n"
        "  0  OK: everything was read and is as it should be\n"
        "  1  WARNING: draw above --warning, redundancy below --redundancy,\n"
        "     a fault beside the supplies expected\n"
        "  2  CRITICAL: supplies or redundancy lost, draw above --critical,\n"
        "     a reading older than --max-age\n"
        "  3  UNKNOWN: something could not be read, or wrong usage\n"
        "The worst one counts; what is known to be wrong outranks what is unknown.\n"
        "\n"
        "Examples:\n"
        "  pwrmgtctl check --supplies 2\n"
        "  pwrmgtctl check --supplies 4 --redundancy 2 --warning 70 --critical 85\n"
        "  pwrmgtctl check --skip supplies --skip redundancy --max-age 120");
}

}  // namespace pwrmgt::pwrmgtctl
