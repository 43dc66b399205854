// SPDX-License-Identifier: Apache-2.0
// The histories of power, of one supply and of utilisation: a past period or a window.
#include <array>
#include <ctime>
#include <memory>

#include "command.h"
#include "history_document.h"
#include "history_request.h"
#include "layout_options.h"
#include "missing.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

// clang-format off
constexpr std::array<Column, 6> kSystemColumns{{
    {"DC avg W", "dc", "avg_w"}, {"DC max W", "dc", "max_w"}, {"DC min W", "dc", "min_w"},
    {"AC avg W", "ac", "avg_w"}, {"AC max W", "ac", "max_w"}, {"AC min W", "ac", "min_w"},
}};
constexpr std::array<Column, 3> kDomainColumns{{
    {"DC avg W", "dc", "avg_w"}, {"DC max W", "dc", "max_w"}, {"DC min W", "dc", "min_w"},
}};
constexpr std::array<Column, 2> kPsuColumns{{
    {"AC in avg W", "ac", "avg_w"}, {"DC out avg W", "dc", "avg_w"},
}};
constexpr std::array<Column, 6> kPerformanceColumns{{
    {"System avg %", "system", "avg_pct"}, {"System max %", "system", "max_pct"}, {"System min %", "system", "min_pct"},
    {"CPU avg %", "cpu", "avg_pct"}, {"Memory avg %", "memory", "avg_pct"}, {"I/O avg %", "io", "avg_pct"},
}};
// clang-format on

struct Options : LayoutOptions {
    std::string domain = "system";
    uint32_t psu = 0;
    SpanOptions span;
};

pwrmgt_pwr_domain domain_code(const std::string& name) {
    if (name == "cpu") return PWRMGT_DOMAIN_CPU;
    return name == "memory" ? PWRMGT_DOMAIN_MEMORY : PWRMGT_DOMAIN_SYSTEM;
}

std::string domain_title(const std::string& name) {
    if (name == "cpu") return "Processor power";
    return name == "memory" ? "Memory power" : "System power";
}

std::vector<Value> values_of(const pwrmgt_hist_pwr_sample_t& entry, pwrmgt_pwr_domain domain) {
    std::vector<Value> values{watts(entry.avg), watts(entry.max), watts(entry.min)};
    if (domain != PWRMGT_DOMAIN_SYSTEM) return values;
    values.push_back(second_mean(entry.avg2, entry.max2));
    values.push_back(watts(entry.max2));
    values.push_back(watts(entry.min2));
    return values;
}

std::vector<Value> values_of(const pwrmgt_hist_psu_sample_t& entry) {
    return {watts(entry.avg_ac), watts(entry.avg_dc)};
}

std::vector<Value> values_of(const pwrmgt_hist_perf_sample_t& entry) {
    return {percent(entry.sys_avg), percent(entry.sys_max), percent(entry.sys_min),
            percent(entry.cpu_avg), percent(entry.mem_avg), percent(entry.io_avg)};
}

// Runs one query and shows it. All entries of a period are asked for and the newest ones kept: the
// library's window shrinks with the count, so a smaller count would miss readings that lie a little
// back.
template <class Entry, class Query, class Convert>
Outcome show(const Options& options, Call call, const std::string& about, History history,
             const Query& query, const Convert& convert) {
    const Resolved resolved = resolve(options.span, std::time(nullptr));
    if (!resolved.mistake.empty()) return fail(Exit::usage, resolved.mistake);
    const Request& request = resolved.request;
    std::vector<Entry> entries(request.room());
    uint32_t count = request.room();

    const Timed done = timed([&] { return query(request, entries.data(), count); });

    if (done.status != 0) return explain(call, done.status, about + request.words());
    history.period_s = request.length_s;
    history.entry_s = request.entry_s;
    history.answer.asked_at_s = request.asked_at_s;
    history.answer.query_ms = done.query_ms;
    history.end_s = request.end_s();
    entries.resize(count);
    const size_t wanted = request.window ? count : options.span.entries;
    for (const Entry& entry : entries) {
        if (entry.timestamp == 0) break;  // the data ended before this entry began
        ++history.available;
        if (history.available > wanted) continue;
        history.readings.push_back({entry.index, entry.timestamp, convert(entry)});
    }
    return history_outcome(history, options);
}

History history_of(const char* schema, std::string title, Json subject,
                   std::span<const Column> columns) {
    History history;
    history.answer = {schema, Origin::working_tables, std::move(title), 0, 0};
    history.subject = std::move(subject);
    history.columns = columns;
    return history;
}

Outcome show_power(const Options& options) {
    const pwrmgt_pwr_domain domain = domain_code(options.domain);
    const std::span<const Column> columns = domain == PWRMGT_DOMAIN_SYSTEM
                                                ? std::span<const Column>(kSystemColumns)
                                                : std::span<const Column>(kDomainColumns);
    History history = history_of("power.history/1", domain_title(options.domain),
                                 {{"domain", options.domain}}, columns);
    history.capped = domain == PWRMGT_DOMAIN_SYSTEM;
    return show<pwrmgt_hist_pwr_sample_t>(
        options, Call::history_power, "", std::move(history),
        [&](const Request& asked, pwrmgt_hist_pwr_sample_t* entries, uint32_t& count) {
            if (!asked.window) {
                return pwrmgt_get_history_power(domain, asked.period.code, entries, count);
            }
            const auto& [end_s, minutes, samples] = *asked.window;
            return pwrmgt_get_history_power_by_tm(domain, end_s, minutes, samples, entries, &count);
        },
        [&](const pwrmgt_hist_pwr_sample_t& entry) { return values_of(entry, domain); });
}

Outcome show_psu(const Options& options) {
    const std::string number = std::to_string(options.psu);
    return show<pwrmgt_hist_psu_sample_t>(
        options, options.span.minutes == 0 ? Call::history_psu : Call::window_psu,
        "of supply " + number + ' ',
        history_of("psu.history/1", "Power of supply " + number, {{"psu", options.psu}},
                   kPsuColumns),
        [&](const Request& asked, pwrmgt_hist_psu_sample_t* entries, uint32_t& count) {
            if (!asked.window) {
                return pwrmgt_get_history_psu_powers(options.psu, asked.period.code, entries,
                                                     count);
            }
            const auto& [end_s, minutes, samples] = *asked.window;
            return pwrmgt_get_history_psu_power_by_tm(static_cast<int32_t>(options.psu), end_s,
                                                      minutes, samples, entries, &count);
        },
        [](const pwrmgt_hist_psu_sample_t& entry) { return values_of(entry); });
}

Outcome show_performance(const Options& options) {
    return show<pwrmgt_hist_perf_sample_t>(
        options, Call::history_performance, "",
        history_of("performance.history/1", "Utilisation", Json::object(), kPerformanceColumns),
        [](const Request& asked, pwrmgt_hist_perf_sample_t* entries, uint32_t& count) {
            if (!asked.window)
                return pwrmgt_get_history_performance(asked.period.code, entries, count);
            const auto& [end_s, minutes, samples] = *asked.window;
            return pwrmgt_get_history_performance_by_tm(end_s, minutes, samples, entries, &count);
        },
        [](const pwrmgt_hist_perf_sample_t& entry) { return values_of(entry); });
}

// The command with what every history can be asked.
std::shared_ptr<Options> add_history(cli::Command family, Action& chosen, const CommandText& text,
                                     Outcome (*show_it)(const Options&)) {
    auto options = std::make_shared<Options>();
    cli::Command command = add_command(family, chosen, text, options, show_it);
    add_request_options(command, options->span);
    add_layout_options(command, *options);
    return options;
}

}  // namespace

void add_power_history(cli::Command power, Action& chosen) {
    const auto options = add_history(
        power, chosen,
        {"history", "Power of a past period or window",
         "Examples:\n"
         "  pwrmgtctl power history --period 24h\n"
         "  pwrmgtctl power history --domain cpu --period 6h --plot\n"
         "  pwrmgtctl power history --period 24h --svg day.svg\n"
         "  pwrmgtctl power history --end 2026-11-20T20:25:00Z --minutes 90 --samples-per-entry 6\n"
         "  pwrmgtctl power history --period 24h --csv >day.csv\n"
         "  pwrmgtctl power history --period 24h --json | jq '.entries[0].dc.avg_w'"},
        show_power);
    power.command("history")
        .add_option("--domain", options->domain, "What to show: system (DC and AC), cpu or memory")
        .check(cli::one_of({"system", "cpu", "memory"}))
        .type_name("DOMAIN")
        .show_default();
}

void add_psu_history(cli::Command psu, Action& chosen) {
    const auto options = add_history(psu, chosen,
                                     {"history", "Input and output power of one supply",
                                      "Examples:\n"
                                      "  pwrmgtctl psu history 2 --period 24h --entries 10\n"
                                      "  pwrmgtctl psu history 1 --minutes 30 --csv"},
                                     show_psu);
    psu.command("history")
        .add_option("N", options->psu, "Bay number, 1 to 12")
        .required()
        .check(cli::whole_number(1, PWRMGT_MAX_PSU))
        .type_name(" ");
}

void add_performance(cli::Command performance, Action& chosen) {
    add_history(performance, chosen,
                {"history", "Utilisation of system, processors, memory and I/O",
                 "Example:\n  pwrmgtctl performance history --period 12h --oldest-first"},
                show_performance);
}

}  // namespace pwrmgt::pwrmgtctl
