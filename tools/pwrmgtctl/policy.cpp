// SPDX-License-Identifier: Apache-2.0
// The command `policy`: the stored power policy.
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

struct Options {
    bool json = false;
    bool timing = false;
};

// The value of `IsBlade` that says: no power management here.
constexpr uint8_t kUnsupported = 2;

std::string yes_no(bool yes) {
    return yes ? "yes" : "no";
}

std::string text_document(const pwrmgt_power_policy_t& policy) {
    Table table({"Setting", "Value"});
    table.add({"Power management offered", yes_no(policy.is_blade != kUnsupported)});
    table.add({"Blade", policy.is_blade == kUnsupported ? "-" : yes_no(policy.is_blade == 1)});
    table.add({"Redundancy mode", cell(mode(policy.redun_mode))});
    table.add({"Maximizer status", cell(mode(policy.maxim_status))});
    table.add({"Capping on", yes_no(policy.cap_enable == 1)});
    table.add({"Capping mode", cell(mode(policy.cap_mode))});
    table.add({"Cap, W", cell(watts(policy.cap_value))});
    table.add({"AC soft limit, W", cell(watts(policy.cap_soft_ac))});
    table.add({"AC lowest cap, W", cell(watts(policy.cap_min_ac))});
    table.add({"AC highest cap, W", cell(watts(policy.cap_max_ac))});
    table.add({"DC soft limit, W", cell(watts(policy.cap_soft_dc))});
    table.add({"DC lowest cap, W", cell(watts(policy.cap_min_dc))});
    table.add({"DC highest cap, W", cell(watts(policy.cap_max_dc))});
    return "Stored power policy; database " + persistent_database() + '\n' + table.text();
}

Json json_document(const pwrmgt_power_policy_t& policy) {
    Json document;
    document["schema"] = "pwrmgtctl.policy/1";
    document["database"] = persistent_database();
    document["power_management_offered"] = policy.is_blade != kUnsupported;
    document["blade"] =
        policy.is_blade == kUnsupported ? Json(nullptr) : Json(policy.is_blade == 1);
    document["redundancy_mode"] = json_value(mode(policy.redun_mode));
    document["maximizer_status"] = json_value(mode(policy.maxim_status));
    Json& capping = document["capping"];
    capping["on"] = policy.cap_enable == 1;
    capping["mode"] = json_value(mode(policy.cap_mode));
    capping["cap_w"] = json_value(watts(policy.cap_value));
    capping["ac"]["soft_w"] = json_value(watts(policy.cap_soft_ac));
    capping["ac"]["min_w"] = json_value(watts(policy.cap_min_ac));
    capping["ac"]["max_w"] = json_value(watts(policy.cap_max_ac));
    capping["dc"]["soft_w"] = json_value(watts(policy.cap_soft_dc));
    capping["dc"]["min_w"] = json_value(watts(policy.cap_min_dc));
    capping["dc"]["max_w"] = json_value(watts(policy.cap_max_dc));
    return document;
}

Outcome show(const Options& options) {
    pwrmgt_power_policy_t policy{};
    const Timed done = timed([&] { return pwrmgt_get_pwrpolicy_tbl(&policy); });
    if (done.status != 0) return explain(Call::policy, done.status, "");
    if (!options.json) {
        return succeed(text_document(policy) +
                       (options.timing ? timing_text(done.query_ms) : std::string()));
    }
    Json document = json_document(policy);
    if (options.timing) document["query_ms"] = rounded_ms(done.query_ms);
    return succeed(json_text(document));
}

}  // namespace

void add_policy(CLI::App& app, Action& chosen) {
    CLI::App* command =
        app.add_subcommand("policy", "The stored power policy: redundancy and capping");
    const auto options = std::make_shared<Options>();
    command->add_flag("--json", options->json, "One JSON document instead of a table");
    command->add_flag("--timing", options->timing, "Tell how long the query took");
    command->footer("Example:\n  pwrmgtctl policy --json | jq .capping.cap_w");
    command->callback([&chosen, options] { chosen = [options] { return show(*options); }; });
}

}  // namespace pwrmgt::pwrmgtctl
