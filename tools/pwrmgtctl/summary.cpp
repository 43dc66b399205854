// SPDX-License-Identifier: Apache-2.0
// The commands `power summary` and `psu summary`: the last minutes of a power history as one entry.
#include <ctime>

#include "answer.h"
#include "fields.h"
#include "layout_options.h"
#include "span_options.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

struct Options : CommonOptions {
    std::string domain = "system";
    uint32_t psu = 0;  // 0: the domain counts
    int32_t minutes = 0;
    bool local = false;
};

pwrmgt_pwr_domain domain_of(const Options& options) {
    if (options.psu != 0) return PWRMGT_DOMAIN_PSU;
    if (options.domain == "cpu") return PWRMGT_DOMAIN_CPU;
    return options.domain == "memory" ? PWRMGT_DOMAIN_MEMORY : PWRMGT_DOMAIN_SYSTEM;
}

std::string title_of(const Options& options) {
    if (options.psu != 0) return "Power of supply " + std::to_string(options.psu);
    if (options.domain == "cpu") return "Processor power";
    return options.domain == "memory" ? "Memory power" : "System power";
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

// Of a supply the library hands back no time.
std::optional<Age> age_of_summary(const pwrmgt_hist_pwr_sample_t& entry, int64_t asked_at_s) {
    if (entry.timestamp == 0) return std::nullopt;
    return age_of(int64_t{entry.timestamp} + PWRMGT_SLOT_SECONDS, asked_at_s, asked_at_s);
}

std::string document_of(const Options& options, Answer answer,
                        const pwrmgt_hist_pwr_sample_t& entry) {
    const std::vector<Field> fields = fields_of(entry, domain_of(options));
    const std::optional<Age> age = age_of_summary(entry, answer.asked_at_s);
    const uint32_t period_s = static_cast<uint32_t>(options.minutes) * 60;
    answer.title += ", last " + span_text(period_s) + " up to " +
                    time_text(answer.asked_at_s, options.local ? Zone::local : Zone::utc) +
                    (age ? "; newest reading " + age_words(*age) : "; age not known");
    std::string text = fields_table("Reading", fields);
    Json body;
    if (options.psu != 0) {
        text += "Summed in 16 bits: right while the mean is at most " +
                std::to_string(true_up_to_w(options)) + " W.\n";
        body["psu"] = options.psu;
        body["right_up_to_w"] = true_up_to_w(options);
    } else {
        body["domain"] = options.domain;
    }
    body["period_s"] = period_s;
    add_age(body, age);
    add_fields(body, fields);
    return answer_document(answer, options, text, body);
}

Outcome show(const Options& options) {
    const bool one_supply = options.psu != 0;
    Answer answer{one_supply ? "psu.summary/1" : "power.summary/1", Origin::working_tables,
                  title_of(options), std::time(nullptr), 0};
    pwrmgt_hist_pwr_sample_t entry{};

    const Timed done = timed([&] {
        return pwrmgt_get_duration_summary_power(domain_of(options), options.minutes, &entry,
                                                 psu_id_t{options.psu});
    });

    if (done.status != 0) {
        const std::string about =
            one_supply ? "of supply " + std::to_string(options.psu) + ' ' : std::string();
        const auto period_s = static_cast<uint32_t>(options.minutes) * 60;
        return explain(Call::summary, done.status, about + "in the last " + span_text(period_s));
    }
    answer.query_ms = done.query_ms;
    return succeed(document_of(options, answer, entry));
}

cli::Command add_summary(cli::Command family, Action& chosen, const CommandText& text,
                         const std::shared_ptr<Options>& options) {
    cli::Command command = add_command(family, chosen, text, options, show);
    command.add_option("--minutes", options->minutes, "How far back, 1 to 1440")
        .check(cli::whole_number(1, kMaxMinutes))
        .type_name("N")
        .required();
    add_local_option(command, options->local);
    return command;
}

}  // namespace

void add_power_summary(cli::Command power, Action& chosen) {
    const auto options = std::make_shared<Options>();
    add_summary(power, chosen,
                {"summary", "Power over the last minutes as one entry",
                 "Examples:\n"
                 "  pwrmgtctl power summary --minutes 60\n"
                 "  pwrmgtctl power summary --domain cpu --minutes 15 --json"},
                options)
        .add_option("--domain", options->domain, "What to show: system, cpu or memory")
        .check(cli::one_of({"system", "cpu", "memory"}))
        .type_name("DOMAIN")
        .show_default();
}

void add_psu_summary(cli::Command psu, Action& chosen) {
    const auto options = std::make_shared<Options>();
    add_summary(psu, chosen,
                {"summary", "Power of one supply over the last minutes as one entry",
                 "Example:\n  pwrmgtctl psu summary 2 --minutes 15"},
                options)
        .add_option("N", options->psu, "Bay number, 1 to 12")
        .required()
        .check(cli::whole_number(1, PWRMGT_MAX_PSU))
        .type_name(" ");
}

}  // namespace pwrmgt::pwrmgtctl
