// SPDX-License-Identifier: Apache-2.0
// The command family `redundancy`: the supplies' redundancy mode told, stored, or chosen from the
// hardware.
#include <limits>
#include <memory>

#include "command.h"
#include "database.h"
#include "print.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr uint32_t kNotAllowed = 10;
constexpr uint32_t kUntouched = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kHighestMode = 4;
constexpr int32_t kHighestConfig = 3;

struct Options {
    int32_t value = 0;  // the mode, or the hardware configuration
    bool json = false;
    bool timing = false;
};

Outcome succeed_with(const Options& options, const std::string& words, uint32_t mode, bool stored,
                     double query_ms) {
    if (!options.json) {
        const std::string text = words + std::to_string(mode) + (stored ? " stored" : "") +
                                 "; database " + persistent_database() + '\n';
        return succeed(options.timing ? text + timing_text(query_ms) : text);
    }
    Json document;
    document["schema"] = "pwrmgtctl.redundancy/1";
    document["database"] = persistent_database();
    if (options.timing) document["query_ms"] = rounded_ms(query_ms);
    document["mode"] = mode;
    document["stored"] = stored;
    return succeed(json_text(document));
}

// One number stands for several refusals; the mode that was written all the same tells which.
Outcome explain_get(uint32_t status, uint32_t mode) {
    if (status != kNotAllowed || mode == kUntouched) {
        return explain(Call::redundancy_get, status, "");
    }
    if (mode > kHighestMode) return explain(Call::redundancy_unset, status, "");
    return explain(Call::redundancy_not_allowed, status, std::to_string(mode));
}

Outcome show(const Options& options) {
    uint32_t mode = kUntouched;
    const Timed done = timed([&] { return pwrmgt_get_power_redundant_mode(&mode); });
    if (done.status != 0) return explain_get(done.status, mode);
    // A mode that was never set passes the library's test of what is allowed.
    if (mode > kHighestMode) return fail(Exit::no_data, "no redundancy mode is stored");
    return succeed_with(options, "Redundancy mode ", mode, false, done.query_ms);
}

Outcome store(const Options& options) {
    const auto mode = static_cast<uint32_t>(options.value);
    const Timed done = timed([&] { return pwrmgt_set_power_redundant_mode(options.value); });
    if (done.status == kNotAllowed && pwrmgt_redundant_mode_support_check(mode) == 0) {
        return explain(Call::redundancy_not_allowed, done.status, std::to_string(mode));
    }
    if (done.status != 0) return explain(Call::redundancy_set, done.status, "");
    return succeed_with(options, "Redundancy mode ", mode, true, done.query_ms);
}

Outcome choose(const Options& options) {
    const Timed done = timed([&] { return pwrmgt_set_redunmode_per_hwconfig(options.value); });
    if (done.status != 0) return explain(Call::redundancy_auto, done.status, "");
    uint32_t mode = kUntouched;
    const uint32_t told = pwrmgt_get_power_redundant_mode(&mode);
    if (told != 0) return explain_get(told, mode);
    return succeed_with(
        options, "Hardware configuration " + std::to_string(options.value) + ": redundancy mode ",
        mode, true, done.query_ms);
}

using Run = Outcome (*)(const Options&);

CLI::App& add_command(CLI::App& family, Action& chosen, const char* name, const char* description,
                      Run run_it, const std::shared_ptr<Options>& options) {
    CLI::App* command = family.add_subcommand(name, description);
    command->add_flag("--json", options->json, "One JSON document instead of a line");
    command->add_flag("--timing", options->timing, "Tell how long the call took");
    command->callback(
        [&chosen, options, run_it] { chosen = [options, run_it] { return run_it(*options); }; });
    return *command;
}

void add_number(CLI::App& command, const char* name, const char* description, int32_t& value,
                const CLI::Range& range) {
    command.add_option(name, value, description)
        ->required()
        ->check(CLI::Range(range).description(""))
        ->type_name(" ");
}

}  // namespace

void add_redundancy(CLI::App& app, Action& chosen) {
    CLI::App* family = app.add_subcommand("redundancy", "The redundancy mode of the supplies");
    family->require_subcommand(1);
    add_command(*family, chosen, "get", "The stored mode", show, std::make_shared<Options>())
        .footer("Example:\n  pwrmgtctl redundancy get --json | jq .mode");

    const auto mode = std::make_shared<Options>();
    CLI::App& set = add_command(*family, chosen, "set", "Store a mode", store, mode);
    add_number(set, "MODE", "0 to 4; 4 holds one supply in reserve", mode->value,
               CLI::Range(0, int32_t{kHighestMode}));
    set.footer("Example:\n  pwrmgtctl redundancy set 1");

    const auto config = std::make_shared<Options>();
    CLI::App& automatic = add_command(
        *family, chosen, "auto", "Choose the mode from the hardware and store it", choose, config);
    add_number(automatic, "HWCONFIG", "Hardware-configuration code, 1 to 3", config->value,
               CLI::Range(1, kHighestConfig));
    automatic.footer("Example:\n  pwrmgtctl redundancy auto 2");
}

}  // namespace pwrmgt::pwrmgtctl
