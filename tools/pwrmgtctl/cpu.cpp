// SPDX-License-Identifier: Apache-2.0
// The command family `cpu`: average power of single processors, rows as they were stored.
#include <array>
#include <ctime>
#include <memory>

#include "command.h"
#include "layout_options.h"
#include "missing.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr uint32_t kMaxRows = PWRMGT_MAX_CPU_ROWS;
// The library looks back that far for each row asked for, and this much more.
constexpr uint32_t kSecondsPerRow = 30;
constexpr uint32_t kSlackSeconds = 90;

// clang-format off
constexpr std::array<Column, 8> kColumns{{
    {"CPU 1 W", "cpu1", "avg_w"}, {"CPU 2 W", "cpu2", "avg_w"}, {"CPU 3 W", "cpu3", "avg_w"}, {"CPU 4 W", "cpu4", "avg_w"},
    {"CPU 5 W", "cpu5", "avg_w"}, {"CPU 6 W", "cpu6", "avg_w"}, {"CPU 7 W", "cpu7", "avg_w"}, {"CPU 8 W", "cpu8", "avg_w"},
}};
// clang-format on

struct Options : LayoutOptions {
    std::string cpu = "all";
    uint32_t rows = kMaxRows;
    bool latest = false;
};

// 1 to 8, or none for all.
std::optional<uint32_t> chosen_cpu(const Options& options) {
    if (options.cpu == "all") return std::nullopt;
    return static_cast<uint32_t>(options.cpu.front() - '0');  // the parser accepts one digit only
}

uint32_t read_one(const Options& options, uint32_t cpu, std::vector<Reading>& readings) {
    std::array<pwrmgt_hist_cpu_pwr_t, kMaxRows> rows{};
    const uint32_t status = options.latest
                                ? pwrmgt_get_latest_cpu_power(cpu, rows.data())
                                : pwrmgt_get_history_cpu_power(cpu, rows.data(), options.rows);
    if (status != 0) return status;
    for (const pwrmgt_hist_cpu_pwr_t& row : rows) {
        if (row.timestamp == 0) break;
        readings.push_back({row.index, row.timestamp, {watts(row.cpu_pwr)}});
    }
    return 0;
}

uint32_t read_all(const Options& options, std::vector<Reading>& readings) {
    std::array<pwrmgt_hist_entire_cpu_pwr_t, kMaxRows> rows{};
    const uint32_t status = options.latest
                                ? pwrmgt_get_latest_entire_cpu_power(rows.data())
                                : pwrmgt_get_history_entire_cpu_power(rows.data(), options.rows);
    if (status != 0) return status;
    for (const pwrmgt_hist_entire_cpu_pwr_t& row : rows) {
        if (row.timestamp == 0) break;
        Reading reading{row.index, row.timestamp, {}};
        for (const uint16_t power : row.cpu_pwr) {
            reading.values.push_back(watts(power));
        }
        readings.push_back(std::move(reading));
    }
    return 0;
}

Outcome show(const Options& options) {
    const std::optional<uint32_t> cpu = chosen_cpu(options);
    History history;
    history.answer = {options.latest ? "cpu.latest/1" : "cpu.history/1", Origin::working_tables,
                      cpu ? "Power of processor " + options.cpu : "Power of each processor",
                      std::time(nullptr), 0};
    history.subject = {{"cpu", cpu ? Json(*cpu) : Json("all")}};
    history.columns = cpu ? std::span(kColumns).subspan(*cpu - 1, 1) : std::span(kColumns);
    history.period_s = kSlackSeconds + kSecondsPerRow * (options.latest ? 1 : options.rows);
    history.end_s = history.answer.asked_at_s;

    const Timed done = timed([&] {
        return cpu ? read_one(options, *cpu, history.readings)
                   : read_all(options, history.readings);
    });

    if (done.status != 0) {
        return explain(Call::cpu, done.status, "in the last " + span_text(history.period_s));
    }
    history.available = history.readings.size();
    history.answer.query_ms = done.query_ms;
    return history_outcome(history, options);
}

void add_cpu_argument(cli::Command command, Options& options) {
    command.add_option("N", options.cpu, "Processor number, 1 to 8, or all")
        .check(cli::one_of({"1", "2", "3", "4", "5", "6", "7", "8", "all"}))
        .type_name(" ")
        .show_default();
}

}  // namespace

void add_cpu(cli::Command cpu, Action& chosen) {
    const auto past = std::make_shared<Options>();
    cli::Command history = add_command(cpu, chosen,
                                       {"history", "Power of processors, the newest rows",
                                        "Examples:\n"
                                        "  pwrmgtctl cpu history\n"
                                        "  pwrmgtctl cpu history 2 --rows 10 --plot"},
                                       past, show);
    add_cpu_argument(history, *past);
    history.add_option("--rows", past->rows, "Rows to look for, 1 to 20")
        .check(cli::whole_number(1, kMaxRows))
        .type_name("N")
        .show_default();
    add_layout_options(history, *past);

    const auto newest = std::make_shared<Options>();
    newest->latest = true;
    cli::Command latest =
        add_command(cpu, chosen,
                    {"latest", "Power of processors, the newest row of the last two minutes",
                     "Example:\n  pwrmgtctl cpu latest all --json | jq '.entries[0].cpu1.avg_w'"},
                    newest, show);
    add_cpu_argument(latest, *newest);
    add_local_option(latest, newest->local);
}

}  // namespace pwrmgt::pwrmgtctl
