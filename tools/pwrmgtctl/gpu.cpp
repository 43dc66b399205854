// SPDX-License-Identifier: Apache-2.0
// The commands `gpu get`, `gpu set` and `gpu realtime`: a GPU's cap, and what it draws.
#include <ctime>

#include "answer.h"
#include "missing.h"
#include "read_back.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

// The library's two kinds of a cap: a word of watts, and a byte of the firmware's meaning.
constexpr int32_t kWord = 16;
constexpr int32_t kByte = 32;

struct Options : CommonOptions {
    uint32_t gpu = 0;
    int32_t kind = kWord;
    uint32_t value = 0;

    [[nodiscard]] uint8_t number() const { return static_cast<uint8_t>(gpu); }
};

std::string name_of(const Options& options) {
    return "GPU " + std::to_string(options.gpu);
}

const char* unit_of(const Options& options) {
    return options.kind == kWord ? " W" : "";
}

// A byte is all 256 values; the library writes no other byte of it.
uint32_t read_cap(const Options& options, Value& cap) {
    uint16_t stored = 0;
    const uint32_t status =
        pwrmgt_get_gpu_power_capping_policy(options.number(), options.kind, &stored);
    if (status == 0) cap = options.kind == kWord ? watts(stored) : Value{stored};
    return status;
}

Json body_of(const Options& options) {
    return {{"gpu", options.gpu}, {"kind", options.kind}};
}

Outcome show_cap(const Options& options) {
    const int64_t asked_at_s = std::time(nullptr);
    Value cap;
    const Timed done = timed([&] { return read_cap(options, cap); });
    if (done.status != 0) return explain(Call::firmware, done.status, "the cap of a GPU");
    Json body = body_of(options);
    body[options.kind == kWord ? "cap_w" : "cap"] = json_value(cap);
    return succeed(answer_document(
        {"gpu.get/1", Origin::firmware,
         "Cap of " + name_of(options) + ": " + (cap ? cell(cap) + unit_of(options) : "none"),
         asked_at_s, done.query_ms},
        options, "", body));
}

Outcome set_cap(const Options& options) {
    if (options.kind == kByte && options.value > 255) {
        return fail(Exit::usage, "--kind 32 takes 0 to 255");
    }
    const int64_t asked_at_s = std::time(nullptr);
    const Timed done = timed([&] {
        return pwrmgt_set_gpu_power_capping_policy(options.number(), options.kind,
                                                   static_cast<uint16_t>(options.value));
    });
    if (done.status != 0) return explain(Call::firmware, done.status, "the cap of a GPU");
    ReadBack back{Call::firmware, 0, {}, {}, unit_of(options)};
    // 0 W is no cap.
    const bool none = options.kind == kWord && options.value == 0;
    back.set = none ? Value{} : Value{options.value};
    back.status = read_cap(options, back.held);
    return tell_read_back(options,
                          {"gpu.set/1", Origin::firmware,
                           "Cap of " + name_of(options) + " set:", asked_at_s, done.query_ms},
                          body_of(options), back);
}

Outcome show_power(const Options& options) {
    const int64_t asked_at_s = std::time(nullptr);
    uint16_t drawn = PWRMGT_NO_POWER;
    const Timed done =
        timed([&] { return pwrmgt_get_gpu_power_consumption(options.number(), &drawn); });
    if (done.status != 0) return explain(Call::firmware, done.status, "the power of a GPU");
    const Value power = watts(drawn);
    const Age now{0, false};
    Json body{{"gpu", options.gpu}};
    add_age(body, now);
    body["power_w"] = json_value(power);
    return succeed(answer_document(
        {"gpu.realtime/1", Origin::firmware,
         name_of(options) + " draws " + (power ? cell(power) + " W" : "-") + ", " + age_words(now),
         asked_at_s, done.query_ms},
        options, "", body));
}

void add_gpu_argument(cli::Command command, Options& options) {
    command.add_option("N", options.gpu, "GPU index, 0 to 255")
        .required()
        .check(cli::whole_number(0, 255))
        .type_name(" ");
}

void add_kind_option(cli::Command command, Options& options) {
    command
        .add_option("--kind", options.kind,
                    "16: a cap in watts; 32: a byte of the firmware's meaning")
        .check(cli::one_of({"16", "32"}))
        .type_name("KIND")
        .show_default();
}

}  // namespace

void add_gpu(cli::Command gpu, Action& chosen) {
    const auto get = std::make_shared<Options>();
    cli::Command shown =
        add_command(gpu, chosen, {"get", "The cap of one GPU", "Example:\n  pwrmgtctl gpu get 0"},
                    get, show_cap);
    add_gpu_argument(shown, *get);
    add_kind_option(shown, *get);

    const auto set = std::make_shared<Options>();
    cli::Command changed = add_command(gpu, chosen,
                                       {"set", "Set the cap of one GPU and read it back",
                                        "Examples:\n"
                                        "  pwrmgtctl gpu set 0 250\n"
                                        "  pwrmgtctl gpu set 0 0     no cap"},
                                       set, set_cap);
    add_gpu_argument(changed, *set);
    changed.add_option("CAP", set->value, "Watts, 0 to 65534; 0 for no cap")
        .required()
        .check(cli::whole_number(0, 65534))
        .type_name(" ");
    add_kind_option(changed, *set);

    const auto drawn = std::make_shared<Options>();
    cli::Command realtime = add_command(
        gpu, chosen,
        {"realtime", "What one GPU draws now", "Example:\n  pwrmgtctl gpu realtime 1 --watch"},
        drawn, show_power);
    add_gpu_argument(realtime, *drawn);
    let_watch(realtime, chosen, drawn, show_power);
}

}  // namespace pwrmgt::pwrmgtctl
