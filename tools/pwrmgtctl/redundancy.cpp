// SPDX-License-Identifier: Apache-2.0
// The commands `redundancy get`, `set` and `auto`: the supplies' redundancy mode told, stored, or
// chosen from the hardware.
#include <ctime>
#include <limits>
#include <memory>

#include "answer.h"
#include "missing.h"
#include "mode_words.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr uint32_t kNotAllowed = 10;
constexpr uint32_t kUntouched = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kHighestMode = 4;

struct Options : CommonOptions {
    int32_t value = 0;  // the mode, or the hardware configuration
};

struct Told {
    const char* schema;
    std::string title;
    Value mode;
    double query_ms;
};

Outcome tell(const Options& options, const Told& told) {
    Json body;
    body["mode"] = json_value(told.mode);
    body["meaning"] = redundancy_words(told.mode);
    return succeed(answer_document(
        {told.schema, Origin::persistent_tables, told.title + redundancy_words(told.mode),
         std::time(nullptr), told.query_ms},
        options, "", body));
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
    return tell(options,
                {"redundancy.get/1", "Redundancy mode ", redundancy_mode(mode), done.query_ms});
}

Outcome store(const Options& options) {
    const auto mode = static_cast<uint32_t>(options.value);
    const Timed done = timed([&] { return pwrmgt_set_power_redundant_mode(options.value); });
    if (done.status == kNotAllowed && pwrmgt_redundant_mode_support_check(mode) == 0) {
        return explain(Call::redundancy_not_allowed, done.status, std::to_string(mode));
    }
    if (done.status != 0) return explain(Call::redundancy_set, done.status, "");
    return tell(options, {"redundancy.set/1", "Stored redundancy mode ", redundancy_mode(mode),
                          done.query_ms});
}

Outcome choose(const Options& options) {
    const Timed done = timed([&] { return pwrmgt_set_redunmode_per_hwconfig(options.value); });
    if (done.status != 0) return explain(Call::redundancy_auto, done.status, "");
    uint32_t mode = kUntouched;
    const uint32_t told = pwrmgt_get_power_redundant_mode(&mode);
    if (told != 0) return explain_get(told, mode);
    return tell(options, {"redundancy.auto/1",
                          "Hardware configuration " + std::to_string(options.value) +
                              ": stored redundancy mode ",
                          redundancy_mode(mode), done.query_ms});
}

}  // namespace

void add_redundancy(cli::Command redundancy, Action& chosen) {
    add_command(
        redundancy, chosen,
        {"get", "The stored mode", "Example:\n  pwrmgtctl redundancy get --json | jq .mode"},
        std::make_shared<Options>(), show);

    const auto mode = std::make_shared<Options>();
    const std::string examples =
        "Modes:\n" + redundancy_modes_help() + "\nExample:\n  pwrmgtctl redundancy set 1";
    add_command(redundancy, chosen, {"set", "Store a mode", examples.c_str()}, mode, store)
        .add_option("MODE", mode->value, "0 to 4, see below")
        .required()
        .check(cli::one_of({"0", "1", "2", "3", "4"}))
        .type_name(" ");

    const auto config = std::make_shared<Options>();
    add_command(redundancy, chosen,
                {"auto", "Choose the mode from the hardware and store it",
                 "Example:\n  pwrmgtctl redundancy auto 2"},
                config, choose)
        .add_option("HWCONFIG", config->value, "Hardware-configuration code, 1 to 3")
        .required()
        .check(cli::one_of({"1", "2", "3"}))
        .type_name(" ");
}

}  // namespace pwrmgt::pwrmgtctl
