// SPDX-License-Identifier: Apache-2.0
// Through librrd, as a program that links it does.
#include "rrd_file.h"

#include <rrd.h>

#include <cmath>
#include <ctime>
#include <stdexcept>
#include <utility>
#include <vector>

namespace pwrmgt::bench {

namespace {

constexpr std::size_t kSources = 24;

void require_done(int result) {
    if (result != 0) throw std::runtime_error(std::string{"librrd: "} + rrd_get_error());
}

// What rrd_fetch_r hands out.
struct Fetched {
    unsigned long sources = 0;
    char** names = nullptr;
    rrd_value_t* values = nullptr;

    Fetched() = default;
    Fetched(const Fetched&) = delete;
    Fetched& operator=(const Fetched&) = delete;
    ~Fetched() {
        for (unsigned long i = 0; i < sources; ++i) {
            rrd_freemem(names[i]);
        }
        rrd_freemem(names);
        rrd_freemem(values);
    }
};

}  // namespace

RrdFile::RrdFile(std::string path, std::int32_t start_s) : path_{std::move(path)} {
    std::vector<std::string> texts;
    texts.reserve(kSources + 6);
    for (std::size_t source = 0; source < kSources; ++source) {
        texts.push_back(std::string{"DS:"} + kValueColumns[source] + ":GAUGE:60:0:65534");
    }
    for (const char* fold : {"AVERAGE", "MAX", "MIN"}) {
        texts.push_back(std::string{"RRA:"} + fold + ":0.5:1:2880");
        texts.push_back(std::string{"RRA:"} + fold + ":0.5:24:120");
    }
    std::vector<const char*> arguments;
    for (const std::string& text : texts) {
        arguments.push_back(text.c_str());
    }
    require_done(rrd_create_r(path_.c_str(), kSlot_s, start_s, static_cast<int>(arguments.size()),
                              arguments.data()));
}

std::string RrdFile::update_text(const Row& row) {
    std::string text = std::to_string(row.time_s);
    for (std::size_t source = 0; source < kSources; ++source) {
        const std::uint16_t value = row.values[source];
        text.append(":").append(value == PWRMGT_NO_POWER ? "U" : std::to_string(value));
    }
    return text;
}

void RrdFile::update(const std::string& text) const {
    const char* arguments[] = {text.c_str()};
    require_done(rrd_update_r(path_.c_str(), nullptr, 1, arguments));
}

void RrdFile::query(std::int32_t from_s, std::int32_t to_s, Entries& entries) const {
    std::time_t start_s = from_s;
    std::time_t end_s = to_s;
    unsigned long step_s = kSlot_s;
    Fetched fetched;
    require_done(rrd_fetch_r(path_.c_str(), "AVERAGE", &start_s, &end_s, &step_s, &fetched.sources,
                             &fetched.names, &fetched.values));
    // Values stand behind the start, oldest first; the row behind the end is not asked for.
    const auto rows = static_cast<std::size_t>((to_s - start_s) / kSlot_s);
    const auto slot = [&](std::size_t at) {
        const rrd_value_t* row = fetched.values + (rows - 1 - at) * kSources;
        PowerSlot now{static_cast<std::uint32_t>(to_s) - static_cast<std::uint32_t>(at) * kSlot_s,
                      {}};
        for (std::size_t i = 0; i < now.watts.size(); ++i) {
            now.watts[i] = std::isnan(row[i]) ? std::uint16_t{PWRMGT_NO_POWER}
                                              : static_cast<std::uint16_t>(row[i] + 0.5);
        }
        return now;
    };
    fold_newest_first(rows, slot, entries);
}

}  // namespace pwrmgt::bench
