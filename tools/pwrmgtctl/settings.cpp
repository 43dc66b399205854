// SPDX-License-Identifier: Apache-2.0
// The commands `settings get` and `settings set`: single values of the stored policy and of the
// firmware.
#include <algorithm>
#include <array>
#include <ctime>
#include <string_view>

#include "answer.h"
#include "missing.h"
#include "read_back.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

uint32_t read_maximizer(Value& value) {
    uint8_t stored = PWRMGT_NO_PERCENT;
    const uint32_t status = pwrmgt_get_power_maximzer_status(&stored);
    value = mode(stored);
    return status;
}

uint32_t read_adapter(Value& value) {
    uint16_t stored = PWRMGT_NO_POWER;
    const uint32_t status = pwrmgt_get_unstress_adapter_power(&stored);
    value = watts(stored);
    return status;
}

uint32_t read_disk(Value& value) {
    uint16_t stored = PWRMGT_NO_POWER;
    const uint32_t status = pwrmgt_get_unstress_hdd_power(&stored);
    value = watts(stored);
    return status;
}

// A firmware that refuses leaves the byte as it was, with status 0: no mode was told.
uint32_t read_zero_output(Value& value) {
    uint8_t stored = PWRMGT_NO_PERCENT;
    const uint32_t status = pwrmgt_get_zero_output_mode(&stored);
    value = mode(stored);
    return status;
}

uint32_t set_maximizer(uint32_t value) {
    return pwrmgt_set_maximzer_status(static_cast<uint8_t>(value));
}

uint32_t set_adapter(uint32_t value) {
    return pwrmgt_set_unstress_adapter_power(static_cast<uint16_t>(value));
}

uint32_t set_disk(uint32_t value) {
    return pwrmgt_set_unstress_hdd_power(static_cast<uint16_t>(value));
}

uint32_t set_zero_output(uint32_t value) {
    return pwrmgt_set_zero_output_mode(static_cast<uint8_t>(value));
}

struct Setting {
    std::string_view name;
    const char* heading;
    const char* key;
    const char* unit;
    uint32_t highest;
    Origin origin;
    Call call;
    uint32_t (*read)(Value&);
    uint32_t (*set)(uint32_t);
};

// clang-format off
constexpr std::array<Setting, 4> kSettings{{
    {"maximizer", "Maximizer status", "maximizer_status", "", 254, Origin::persistent_tables, Call::setting,
     read_maximizer, set_maximizer},
    {"unstress-adapter", "Unstress power of adapters, W", "unstress_adapter_w", " W", 65534, Origin::persistent_tables,
     Call::setting, read_adapter, set_adapter},
    {"unstress-disk", "Unstress power of disks, W", "unstress_disk_w", " W", 65534, Origin::persistent_tables,
     Call::setting, read_disk, set_disk},
    {"zero-output", "Zero-output mode", "zero_output_mode", "", 1, Origin::firmware, Call::zero_output,
     read_zero_output, set_zero_output},
}};
// clang-format on

constexpr const char* kCaps = "cpu-caps";
constexpr size_t kMostCpus = 8;

struct Options : CommonOptions {
    std::string name;
    uint32_t value = 0;
};

// What several sources answered. The first that failed decides the exit code; the others are shown.
struct Collected {
    Table table{{"Setting", "Value"}};
    Json body = Json::object();
    Outcome first_failure;

    void miss(const std::string& name, Outcome failure) {
        failure.error = name + ": " + failure.error;
        body["errors"].push_back({{"setting", name}, {"error", failure.error}});
        if (first_failure.exit != Exit::ok) {
            first_failure.error += "\npwrmgtctl: " + failure.error;
        } else {
            first_failure = failure;
        }
    }
};

void collect(const Setting& setting, Collected& all) {
    Value value;
    const uint32_t status = setting.read(value);
    if (status != 0) value = {};
    all.table.add({setting.heading, cell(value)});
    all.body[setting.key] = json_value(value);
    const std::string name(setting.name);
    if (status != 0) all.miss(name, explain(setting.call, status, ""));
}

void collect_caps(Collected& all) {
    pwrmgt_cpu_pcap_t caps{};
    const uint32_t status = pwrmgt_get_cpu_pcap(&caps);
    Json& values = all.body["cpu_cap_w"];
    if (status != 0) {
        all.table.add({"Caps of processors, W", "-"});
        return all.miss(kCaps, explain(Call::cpu_caps, status, ""));
    }
    values = Json::array();
    const size_t count = std::min<size_t>(caps.count, kMostCpus);
    for (size_t at = 0; at < count; ++at) {
        const Value cap = watts(caps.cap_w[at]);
        all.table.add({"Cap of processor " + std::to_string(at + 1) + ", W", cell(cap)});
        values.push_back(json_value(cap));
    }
}

const Setting* find(const std::string& name) {
    const auto* found = std::find_if(kSettings.begin(), kSettings.end(),
                                     [&](const Setting& row) { return row.name == name; });
    return found == kSettings.end() ? nullptr : found;
}

// All of them together are told as the policy's: most are.
Origin origin_of(const std::string& name) {
    if (name == kCaps) return Origin::firmware;
    const Setting* setting = find(name);
    return setting == nullptr ? Origin::persistent_tables : setting->origin;
}

Outcome show(const Options& options) {
    const int64_t asked_at_s = std::time(nullptr);
    Collected all;
    const Timed done = timed([&] {
        for (const Setting& setting : kSettings) {
            if (options.name.empty() || options.name == setting.name) collect(setting, all);
        }
        if (options.name.empty() || options.name == kCaps) collect_caps(all);
        return 0U;
    });
    if (!all.body.contains("errors")) all.body["errors"] = Json::array();
    const Answer answer{"settings.get/1", origin_of(options.name),
                        "Settings of the policy and of the firmware", asked_at_s, done.query_ms};
    Outcome outcome = all.first_failure;
    // One setting alone that cannot be told is no document.
    if (outcome.exit != Exit::ok && !options.name.empty()) return outcome;
    outcome.document = answer_document(answer, options, all.table.text(), all.body);
    return outcome;
}

Outcome change(const Options& options) {
    const Setting* setting = find(options.name);  // the parser accepts these names only
    if (options.value > setting->highest) {
        return fail(Exit::usage, options.name + " takes 0 to " + std::to_string(setting->highest));
    }
    const int64_t asked_at_s = std::time(nullptr);
    const Timed done = timed([&] { return setting->set(options.value); });
    if (done.status != 0) return explain(setting->call, done.status, options.name);
    ReadBack back{setting->call, 0, options.value, {}, setting->unit};
    back.status = setting->read(back.held);
    return tell_read_back(
        options,
        {"settings.set/1", setting->origin, options.name + " set:", asked_at_s, done.query_ms},
        {{"setting", options.name}}, back);
}

}  // namespace

void add_settings(cli::Command settings, Action& chosen) {
    const auto get = std::make_shared<Options>();
    add_command(settings, chosen,
                {"get", "Maximizer, unstress powers, zero-output mode, caps of processors",
                 "Examples:\n"
                 "  pwrmgtctl settings get\n"
                 "  pwrmgtctl settings get zero-output --json"},
                get, show)
        .add_option("NAME", get->name, "One of them; all when left out")
        .check(
            cli::one_of({"maximizer", "unstress-adapter", "unstress-disk", "zero-output", kCaps}))
        .type_name(" ");

    const auto set = std::make_shared<Options>();
    cli::Command changed =
        add_command(settings, chosen,
                    {"set", "Set one of them and read it back",
                     "Settings:\n"
                     "  maximizer         status, 0 to 254, the firmware's meaning\n"
                     "  unstress-adapter  watts; limits of caps are widened while it is below 550\n"
                     "  unstress-disk     watts; limits of caps are widened while it is below 352\n"
                     "  zero-output       mode of the supplies, 0 or 1\n"
                     "\n"
                     "Example:\n  pwrmgtctl settings set unstress-adapter 75"},
                    set, change);
    changed.add_option("NAME", set->name, "Which setting, see below")
        .required()
        .check(cli::one_of({"maximizer", "unstress-adapter", "unstress-disk", "zero-output"}))
        .type_name(" ");
    changed.add_option("VALUE", set->value, "Its value")
        .required()
        .check(cli::whole_number(0, 65534))
        .type_name(" ");
}

}  // namespace pwrmgt::pwrmgtctl
