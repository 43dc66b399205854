// SPDX-License-Identifier: Apache-2.0
// The commands `policy get` and `policy set`: the stored power policy, and what is in force of it.
#include <algorithm>
#include <array>
#include <ctime>
#include <memory>

#include "answer.h"
#include "mode_words.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

// The values of `IsBlade`; 2 says: no power management here.
constexpr std::array<const char*, 3> kBlade{"no", "yes", "unmanaged"};
constexpr uint8_t kUnmanaged = 2;

// clang-format off
struct Limit { const char* heading; const char* side; const char* key; const char* option;
               const char* help; uint16_t pwrmgt_power_policy_t::*field; };
constexpr std::array<Limit, 6> kLimits{{
    {"AC soft limit, W",  "ac", "soft_w", "--ac-soft", "AC soft limit",  &pwrmgt_power_policy_t::cap_soft_ac},
    {"AC lowest cap, W",  "ac", "min_w",  "--ac-min",  "Lowest AC cap",  &pwrmgt_power_policy_t::cap_min_ac},
    {"AC highest cap, W", "ac", "max_w",  "--ac-max",  "Highest AC cap", &pwrmgt_power_policy_t::cap_max_ac},
    {"DC soft limit, W",  "dc", "soft_w", "--dc-soft", "DC soft limit",  &pwrmgt_power_policy_t::cap_soft_dc},
    {"DC lowest cap, W",  "dc", "min_w",  "--dc-min",  "Lowest DC cap",  &pwrmgt_power_policy_t::cap_min_dc},
    {"DC highest cap, W", "dc", "max_w",  "--dc-max",  "Highest DC cap", &pwrmgt_power_policy_t::cap_max_dc},
}};
// clang-format on

struct GetOptions : CommonOptions {
    bool widened = false;
    bool live = false;
};

struct SetOptions : CommonOptions {
    std::string blade;
    std::array<std::string, kLimits.size()> limits;
};

std::string yes_no(bool yes) {
    return yes ? "yes" : "no";
}

std::string blade_words(uint8_t is_blade) {
    return is_blade == kUnmanaged ? "-" : yes_no(is_blade == 1);
}

std::string table_of(const pwrmgt_power_policy_t& policy) {
    Table table({"Setting", "Value"});
    table.add({"Power management offered", yes_no(policy.is_blade != kUnmanaged)});
    table.add({"Blade", blade_words(policy.is_blade)});
    table.add({"Redundancy mode", redundancy_words(redundancy_mode(policy.redun_mode))});
    table.add({"Maximizer status", cell(mode(policy.maxim_status))});
    table.add({"Capping on", yes_no(policy.cap_enable == 1)});
    table.add({"Capping mode", cell(mode(policy.cap_mode))});
    table.add({"Cap, W", cell(watts(policy.cap_value))});
    for (const Limit& limit : kLimits) {
        table.add({limit.heading, cell(watts(policy.*limit.field))});
    }
    return table.text();
}

Json json_of(const pwrmgt_power_policy_t& policy, const char* view) {
    const bool offered = policy.is_blade != kUnmanaged;
    Json body;
    body["view"] = view;
    body["power_management_offered"] = offered;
    body["blade"] = offered ? Json(policy.is_blade == 1) : Json(nullptr);
    body["redundancy_mode"] = json_value(redundancy_mode(policy.redun_mode));
    body["redundancy"] = redundancy_words(redundancy_mode(policy.redun_mode));
    body["maximizer_status"] = json_value(mode(policy.maxim_status));
    Json& capping = body["capping"];
    capping["on"] = policy.cap_enable == 1;
    capping["mode"] = json_value(mode(policy.cap_mode));
    capping["cap_w"] = json_value(watts(policy.cap_value));
    for (const Limit& limit : kLimits) {
        capping[limit.side][limit.key] = json_value(watts(policy.*limit.field));
    }
    return body;
}

struct View {
    const char* name;
    const char* title;
    uint32_t (*read)(pwrmgt_power_policy_t*);
};

View view_of(const GetOptions& options) {
    if (options.live) {
        return {"live", "Power policy in force, the firmware's cap and widened limits",
                pwrmgt_get_power_policy_setting};
    }
    if (options.widened) {
        return {"widened", "Stored power policy, limits widened by the unstress powers",
                pwrmgt_get_power_policy_extra_pwr};
    }
    return {"stored", "Stored power policy", pwrmgt_get_pwrpolicy_tbl};
}

Outcome tell(const CommonOptions& options, const Answer& answer,
             const pwrmgt_power_policy_t& policy, const char* view) {
    return succeed(answer_document(answer, options, table_of(policy), json_of(policy, view)));
}

Outcome show(const GetOptions& options) {
    const View view = view_of(options);
    const int64_t asked_at_s = std::time(nullptr);
    pwrmgt_power_policy_t policy{};
    const Timed done = timed([&] { return view.read(&policy); });
    if (done.status != 0) return explain(Call::policy, done.status, "");
    return tell(options,
                {"policy.get/1", Origin::persistent_tables, view.title, asked_at_s, done.query_ms},
                policy, view.name);
}

// The parser has let whole watts and "none" through only.
uint16_t limit_of(const std::string& text) {
    return text == "none" ? uint16_t{PWRMGT_NO_POWER} : static_cast<uint16_t>(std::stoul(text));
}

bool crossed(uint16_t lowest, uint16_t highest) {
    return watts(lowest) && watts(highest) && lowest > highest;
}

Outcome change(const SetOptions& options) {
    const bool any_limit = std::any_of(options.limits.begin(), options.limits.end(),
                                       [](const std::string& text) { return !text.empty(); });
    if (options.blade.empty() && !any_limit) {
        return fail(Exit::usage, "nothing to set; see --help");
    }
    const int64_t asked_at_s = std::time(nullptr);
    pwrmgt_power_policy_t policy{};
    const uint32_t read = pwrmgt_get_pwrpolicy_tbl(&policy);
    if (read != 0) return explain(Call::policy, read, "");
    for (uint8_t value = 0; value < kBlade.size(); ++value) {
        if (options.blade == kBlade[value]) policy.is_blade = value;
    }
    for (size_t at = 0; at < kLimits.size(); ++at) {
        if (options.limits[at].empty()) continue;
        policy.*kLimits[at].field = limit_of(options.limits[at]);
    }
    if (crossed(policy.cap_min_ac, policy.cap_max_ac) ||
        crossed(policy.cap_min_dc, policy.cap_max_dc)) {
        return fail(Exit::out_of_range, "the lowest cap would lie above the highest");
    }
    const Timed done = timed([&] { return pwrmgt_update_power_policy_table(policy); });
    if (done.status != 0) return explain(Call::policy_set, done.status, "");
    if (const uint32_t again = pwrmgt_get_pwrpolicy_tbl(&policy); again != 0) {
        return explain(Call::policy, again, "");
    }
    return tell(options,
                {"policy.set/1", Origin::persistent_tables, "Power policy as stored now",
                 asked_at_s, done.query_ms},
                policy, "stored");
}

}  // namespace

void add_policy(cli::Command policy, Action& chosen) {
    const auto get = std::make_shared<GetOptions>();
    cli::Command shown = add_command(policy, chosen,
                                     {"get", "The power policy: redundancy and capping",
                                      "Examples:\n"
                                      "  pwrmgtctl policy get\n"
                                      "  pwrmgtctl policy get --live --json | jq .capping.cap_w"},
                                     get, show);
    cli::Option widened = shown.add_flag("--widened", get->widened,
                                         "Limits with the unstress powers added, where both count");
    shown.add_flag("--live", get->live, "The firmware's cap in place of the stored one, too")
        .excludes(widened);

    const auto set = std::make_shared<SetOptions>();
    cli::Command changed = add_command(policy, chosen,
                                       {"set", "Change the stored policy",
                                        "Examples:\n"
                                        "  pwrmgtctl policy set --ac-min 200 --ac-max 900\n"
                                        "  pwrmgtctl policy set --dc-soft none"},
                                       set, change);
    for (size_t at = 0; at < kLimits.size(); ++at) {
        changed
            .add_option(kLimits[at].option, set->limits[at],
                        std::string(kLimits[at].help) + ", 0 to 65534 watts, or none")
            .check(cli::watts_or({"none"}))
            .type_name("W");
    }
    changed
        .add_option("--blade", set->blade,
                    "no, yes, or unmanaged: no power management is offered here")
        .check(cli::one_of({"no", "yes", "unmanaged"}))
        .type_name("KIND");
}

}  // namespace pwrmgt::pwrmgtctl
