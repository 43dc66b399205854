// SPDX-License-Identifier: Apache-2.0
// The command `summary`: the last minutes of a power history as one entry.
#include <ctime>
#include <memory>

#include "command.h"
#include "database.h"
#include "fields.h"
#include "missing.h"
#include "span_options.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

struct Options {
    std::string domain = "system";
    uint32_t psu = 0;
    int32_t minutes = 0;
    bool json = false;
    bool local = false;
    bool timing = false;
};

struct Summary {
    std::vector<Field> fields;
    int64_t asked_at_s;
    double query_ms;
};

pwrmgt_pwr_domain domain_code(const std::string& name) {
    if (name == "cpu") return PWRMGT_DOMAIN_CPU;
    if (name == "memory") return PWRMGT_DOMAIN_MEMORY;
    return name == "psu" ? PWRMGT_DOMAIN_PSU : PWRMGT_DOMAIN_SYSTEM;
}

std::string title(const Options& options) {
    if (options.domain == "cpu") return "Processor power";
    if (options.domain == "memory") return "Memory power";
    if (options.domain == "psu") return "Power of supply " + std::to_string(options.psu);
    return "System power";
}

std::vector<Field> fields_of(const pwrmgt_hist_pwr_sample_t& entry, pwrmgt_pwr_domain domain) {
    if (domain == PWRMGT_DOMAIN_PSU) {
        return {{"AC in average, W", "ac", "avg_w", watts(entry.avg2)},
                {"DC out average, W", "dc", "avg_w", watts(entry.avg)}};
    }
    std::vector<Field> fields{{"DC average, W", "dc", "avg_w", watts(entry.avg)},
                              {"DC highest, W", "dc", "max_w", watts(entry.max)},
                              {"DC lowest, W", "dc", "min_w", watts(entry.min)}};
    if (domain != PWRMGT_DOMAIN_SYSTEM) return fields;
    fields.push_back({"AC average, W", "ac", "avg_w", second_mean(entry.avg2, entry.max2)});
    fields.push_back({"AC highest, W", "ac", "max_w", watts(entry.max2)});
    fields.push_back({"AC lowest, W", "ac", "min_w", watts(entry.min2)});
    return fields;
}

// The library sums a supply's slots in 16 bits: above this mean the sum may have wrapped.
uint32_t true_up_to_w(const Options& options) {
    return 65535U / (2U * static_cast<uint32_t>(options.minutes) + 1U);
}

uint32_t period_s(const Options& options) {
    return static_cast<uint32_t>(options.minutes) * 60;
}

std::string text_document(const Summary& summary, const Options& options) {
    std::string text = title(options) + ", last " + span_text(period_s(options)) + " up to " +
                       time_text(summary.asked_at_s, options.local ? Zone::local : Zone::utc) +
                       "; database " + working_database() + '\n' +
                       fields_table("Reading", summary.fields);
    if (options.domain == "psu") {
        text += "Summed in 16 bits: right while the mean is at most " +
                std::to_string(true_up_to_w(options)) + " W.\n";
    }
    return options.timing ? text + timing_text(summary.query_ms) : text;
}

std::string json_document(const Summary& summary, const Options& options) {
    Json document;
    document["schema"] = "pwrmgtctl.summary/1";
    document["domain"] = options.domain;
    if (options.domain == "psu") {
        document["psu"] = options.psu;
        document["right_up_to_w"] = true_up_to_w(options);
    }
    document["period_s"] = period_s(options);
    document["asked_at_s"] = summary.asked_at_s;
    document["asked_at_utc"] = time_text(summary.asked_at_s, Zone::utc);
    document["database"] = working_database();
    if (options.timing) document["query_ms"] = rounded_ms(summary.query_ms);
    add_fields(document, summary.fields);
    return json_text(document);
}

Outcome show(const Options& options) {
    const bool one_supply = options.domain == "psu";
    if (one_supply && options.psu == 0) return fail(Exit::usage, "--domain psu requires --psu N");
    if (!one_supply && options.psu != 0) return fail(Exit::usage, "--psu requires --domain psu");
    const pwrmgt_pwr_domain domain = domain_code(options.domain);
    const int64_t asked_at_s = std::time(nullptr);
    pwrmgt_hist_pwr_sample_t entry{};

    const Timed done = timed([&] {
        return pwrmgt_get_duration_summary_power(domain, options.minutes, &entry,
                                                 psu_id_t{options.psu});
    });

    if (done.status != 0) {
        const std::string about =
            one_supply ? "of supply " + std::to_string(options.psu) + ' ' : std::string();
        return explain(Call::summary, done.status,
                       about + "in the last " + span_text(period_s(options)));
    }
    const Summary summary{fields_of(entry, domain), asked_at_s, done.query_ms};
    return succeed(options.json ? json_document(summary, options)
                                : text_document(summary, options));
}

}  // namespace

void add_summary(CLI::App& app, Action& chosen) {
    CLI::App* command = app.add_subcommand("summary", "Power over the last minutes as one entry");
    const auto options = std::make_shared<Options>();
    command->add_option("--domain", options->domain, "What to show: system, cpu, memory or psu")
        ->check(CLI::IsMember({"system", "cpu", "memory", "psu"}).description(""))
        ->type_name("DOMAIN")
        ->capture_default_str();
    command->add_option("--psu", options->psu, "Bay number, 1 to 12, with --domain psu")
        ->check(CLI::Range(1U, uint32_t{PWRMGT_MAX_PSU}).description(""))
        ->type_name("N");
    command->add_option("--minutes", options->minutes, "How far back, 1 to 1440")
        ->check(CLI::Range(1, kMaxMinutes).description(""))
        ->type_name("N")
        ->required();
    CLI::Option* json =
        command->add_flag("--json", options->json, "One JSON document instead of a table");
    command->add_flag("--local", options->local, "Local time instead of UTC")->excludes(json);
    command->add_flag("--timing", options->timing, "Tell how long the query took");
    command->footer(
        "Examples:\n"
        "  pwrmgtctl summary --minutes 60\n"
        "  pwrmgtctl summary --domain psu --psu 2 --minutes 15 --json");
    command->callback([&chosen, options] { chosen = [options] { return show(*options); }; });
}

}  // namespace pwrmgt::pwrmgtctl
