// SPDX-License-Identifier: Apache-2.0
// The commands `power available` and `capping ranges`: what the system may draw, and where a cap
// may lie.
#include <memory>

#include "command.h"
#include "database.h"
#include "fields.h"
#include "missing.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

struct Options {
    bool dc = false;
    bool json = false;
    bool timing = false;
};

Outcome finish(const Options& options, const std::string& title, Json document,
               const std::vector<Field>& fields, double query_ms) {
    if (!options.json) {
        const std::string text =
            title + "; database " + persistent_database() + '\n' + fields_table("Power", fields);
        return succeed(options.timing ? text + timing_text(query_ms) : text);
    }
    document["database"] = persistent_database();
    if (options.timing) document["query_ms"] = rounded_ms(query_ms);
    add_fields(document, fields);
    return succeed(json_text(document));
}

Outcome show_available(const Options& options) {
    uint32_t available = 0;
    const Timed done = timed([&] { return pwrmgt_get_sys_avail_power(&available); });
    if (done.status != 0) return explain(Call::available, done.status, "");
    Json document;
    document["schema"] = "pwrmgtctl.power.available/1";
    return finish(options, "Power that the system may draw", document,
                  {{"Available, W", "", "available_w", available_watts(available)}}, done.query_ms);
}

// The library cuts an available power to 16 bits before it hands it back as the highest cap.
bool highest_is_cut() {
    uint32_t available = 0;
    return pwrmgt_get_sys_avail_power(&available) == 0 && available > PWRMGT_NO_POWER;
}

Outcome show_ranges(const Options& options) {
    uint16_t soft = 0;
    uint16_t max = PWRMGT_NO_POWER;
    uint16_t min = PWRMGT_NO_POWER;
    const Timed done = timed(
        [&] { return pwrmgt_get_power_capping_ranges(options.dc ? 1 : 0, &soft, &max, &min); });
    if (done.status != 0) return explain(Call::capping_ranges, done.status, "");
    const Value highest = highest_is_cut() ? Value{} : available_watts(max);
    Json document;
    document["schema"] = "pwrmgtctl.capping.ranges/1";
    document["domain"] = options.dc ? "dc" : "ac";
    return finish(
        options, std::string("Range of a power cap, ") + (options.dc ? "DC" : "AC"), document,
        {{"Lowest cap, W", "", "min_w", watts(min)}, {"Highest cap, W", "", "max_w", highest}},
        done.query_ms);
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

void add_power(CLI::App& app, Action& chosen) {
    CLI::App* power = app.add_subcommand("power", "What the supplies can deliver");
    power->require_subcommand(1);
    add_command(*power, chosen, "available", "Power that the system may draw", show_available,
                std::make_shared<Options>())
        .footer("Example:\n  pwrmgtctl power available --json | jq .available_w");

    CLI::App* capping = app.add_subcommand("capping", "Power capping");
    capping->require_subcommand(1);
    const auto options = std::make_shared<Options>();
    CLI::App& ranges =
        add_command(*capping, chosen, "ranges", "Where a power cap may lie", show_ranges, options);
    ranges.add_flag("--dc", options->dc, "DC limits instead of AC limits");
    ranges.footer("Example:\n  pwrmgtctl capping ranges --dc");
}

}  // namespace pwrmgt::pwrmgtctl
