// SPDX-License-Identifier: Apache-2.0
// The commands `capping get` and `capping set`: the cap that the firmware keeps to.
#include <ctime>
#include <optional>

#include "answer.h"
#include "cap_range.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr int kHighestMode = 254;  // 255 stands for none

struct Cap {
    uint8_t enable = 0;
    uint8_t mode = 0;
    uint16_t value = PWRMGT_NO_POWER;

    bool operator==(const Cap&) const = default;
};

struct GetOptions : CommonOptions {
    bool ungated = false;
};

struct SetOptions : CommonOptions {
    std::string cap;  // watts, "on" or "off"
    std::optional<uint32_t> mode;
    std::optional<std::string> audit;
    bool dc = false;
    bool force = false;
};

std::string words_of(const Cap& cap) {
    return std::string(cap.enable == 1 ? "on" : "off") + ", " +
           (watts(cap.value) ? std::to_string(cap.value) + " W" : "no value") + ", mode " +
           cell(mode(cap.mode));
}

Json json_of(const Cap& cap) {
    return {{"on", cap.enable == 1},
            {"cap_w", json_value(watts(cap.value))},
            {"mode", json_value(mode(cap.mode))}};
}

uint32_t read_cap(Cap& cap) {
    return pwrmgt_get_power_capping_policy(&cap.enable, &cap.mode, &cap.value);
}

Outcome show(const GetOptions& options) {
    const int64_t asked_at_s = std::time(nullptr);
    Cap cap;
    const Timed done = timed([&] {
        return options.ungated ? pwrmgt_ipmi_get_pwr_capping(&cap.enable, &cap.mode, &cap.value)
                               : read_cap(cap);
    });
    if (done.status != 0) return explain(Call::capping_get, done.status, "");
    return succeed(answer_document({"capping.get/1", Origin::firmware,
                                    "Power cap: " + words_of(cap), asked_at_s, done.query_ms},
                                   options, "", json_of(cap)));
}

// What is to be sent, or why it cannot be.
struct Wanted {
    Cap cap;
    std::optional<Outcome> refusal;
};

// A switch keeps the value, a value keeps the mode: what is not given comes from the firmware.
Wanted wanted_of(const SetOptions& options) {
    Wanted wanted;
    const bool has_value = options.cap != "on" && options.cap != "off";
    if (!has_value || !options.mode) {
        const uint32_t status = read_cap(wanted.cap);
        if (status != 0) {
            wanted.refusal = explain(Call::capping_get, status, "");
            return wanted;
        }
    }
    wanted.cap.enable = options.cap == "off" ? 0 : 1;
    if (has_value) wanted.cap.value = static_cast<uint16_t>(std::stoul(options.cap));
    if (options.mode) wanted.cap.mode = static_cast<uint8_t>(*options.mode);
    if (options.cap == "on" && watts(wanted.cap.value).value_or(0) == 0) {
        wanted.refusal = fail(Exit::out_of_range, "the firmware holds no cap; give watts");
    }
    return wanted;
}

std::string side_name(const SetOptions& options) {
    return options.dc ? "DC" : "AC";
}

// The permitted range in words, or a refusal. Nothing forbids to switch a cap off.
Wanted check_range(const SetOptions& options, const Cap& cap, CapRange& range, std::string& words) {
    Wanted checked{cap, std::nullopt};
    const uint32_t status = read_cap_range(options.dc ? Side::dc : Side::ac, range);
    words = status == 0 ? range_words(range) : "not known";
    if (options.force || cap.enable == 0) return checked;
    if (status != 0) {
        checked.refusal = explain(Call::capping_ranges, status, "");
        checked.refusal->error += "; --force sets a cap without a known range";
    } else if (!range.holds(cap.value)) {
        checked.refusal =
            fail(Exit::out_of_range,
                 "a cap of " + std::to_string(cap.value) + " W is outside the permitted range (" +
                     side_name(options) + "), " + words + "; --force sets it all the same");
    }
    return checked;
}

uint32_t send(const SetOptions& options, const Cap& cap) {
    if (!options.audit) return pwrmgt_set_power_capping_policy(cap.enable, cap.mode, cap.value);
    return pwrmgt_set_power_capping_policy_auditlog(cap.enable, cap.mode, cap.value,
                                                    options.audit->c_str());
}

// Set is what the firmware holds afterwards, not what it said.
Outcome tell_set(const SetOptions& options, Answer answer, const CapRange& range,
                 const std::string& range_text, const Cap& cap) {
    Cap held;
    const uint32_t status = read_cap(held);
    Json body{{"side", options.dc ? "dc" : "ac"}};
    body["range"] = {{"min_w", json_value(range.lowest_w)}, {"max_w", json_value(range.highest_w)}};
    body["forced"] = options.force;
    body["audit"] = options.audit ? Json(*options.audit) : Json(nullptr);
    body["set"] = json_of(cap);
    body["read_back"] = status == 0 ? json_of(held) : Json(nullptr);
    body["as_set"] = status == 0 && held == cap;
    answer.title = "Permitted range of a cap, " + side_name(options) + ": " + range_text +
                   "\nPower cap set: " + words_of(cap);
    const std::string document = answer_document(
        answer, options, status == 0 ? "Read back: " + words_of(held) + '\n' : "", body);
    if (status != 0) {
        const Outcome unread = explain(Call::capping_get, status, "");
        return succeed_but(unread.exit, document,
                           "the cap was set but not read back: " + unread.error);
    }
    if (held == cap) return succeed(document);
    return succeed_but(Exit::failure, document,
                       "the firmware holds another cap than was set: " + words_of(held));
}

Outcome set(const SetOptions& options) {
    const int64_t asked_at_s = std::time(nullptr);
    const Wanted wanted = wanted_of(options);
    if (wanted.refusal) return *wanted.refusal;
    CapRange range;
    std::string range_text;
    const Wanted checked = check_range(options, wanted.cap, range, range_text);
    if (checked.refusal) return *checked.refusal;
    const Timed done = timed([&] { return send(options, wanted.cap); });
    if (done.status != 0) return explain(Call::capping_set, done.status, words_of(wanted.cap));
    return tell_set(options, {"capping.set/1", Origin::firmware, {}, asked_at_s, done.query_ms},
                    range, range_text, wanted.cap);
}

}  // namespace

void add_capping(cli::Command capping, Action& chosen) {
    const auto get = std::make_shared<GetOptions>();
    add_command(capping, chosen,
                {"get", "The cap that the firmware keeps to",
                 "Example:\n  pwrmgtctl capping get --json | jq .cap_w"},
                get, show)
        .add_flag("--ungated", get->ungated, "Ask also where power management is not offered");

    const auto changed = std::make_shared<SetOptions>();
    cli::Command command =
        add_command(capping, chosen,
                    {"set", "Set a cap, or switch it on or off, and read it back",
                     "A cap outside the permitted range is refused with exit code 6.\n"
                     "\n"
                     "Examples:\n"
                     "  pwrmgtctl capping set 500 --audit \"night shift\"\n"
                     "  pwrmgtctl capping set off\n"
                     "  pwrmgtctl capping set 150 --force"},
                    changed, set);
    command.add_option("CAP", changed->cap, "Watts, on or off; on and off keep the watts")
        .required()
        .check(cli::watts_or({"on", "off"}))
        .type_name(" ");
    command
        .add_option("--mode", changed->mode, "The firmware's mode; the present one when left out")
        .check(cli::whole_number(0, kHighestMode))
        .type_name("N");
    command.add_option("--audit", changed->audit, "Your name for the firmware's log, to 64 letters")
        .check(cli::text_up_to(PWRMGT_MAX_AUDIT_NAME))
        .type_name("NAME");
    command.add_flag("--dc", changed->dc, "Hold the cap against the DC limits, not the AC limits");
    command.add_flag("--force", changed->force, "Set it outside the permitted range, too");
}

}  // namespace pwrmgt::pwrmgtctl
