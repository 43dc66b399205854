// SPDX-License-Identifier: Apache-2.0
// The values come from the library; it hands out no times, so those come through the database
// client.
#include "thermal_latest.h"

#include <algorithm>
#include <array>
#include <map>
#include <span>
#include <utility>

#include "client_handles.h"
#include "missing.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

using Times = std::map<std::pair<int16_t, int16_t>, int64_t>;  // by `Type` and `InstNum`

uint32_t read_times(Times& times) {
    constexpr std::array<const char*, 3> kColumns{"Timestamp", "Type", "InstNum"};
    ClientHandles handles;
    handles.connection = pwrmgt_get_db_handle();
    if (handles.connection == 0) return 2;
    const int failed =
        vek_db_query(handles.connection, "RealTimeThermalMem", kColumns.data(),
                     static_cast<int>(kColumns.size()), nullptr, 0, 0, nullptr, &handles.result);
    if (failed != 0 || handles.result == 0) return 3;
    while (vek_db_result_step(handles.result) == kRowReady) {
        int32_t taken_s = 0;
        int16_t type = 0;
        int16_t instance = 0;
        if (vek_db_result_column_int(handles.result, 0, &taken_s) != 0 ||
            vek_db_result_column_short_int(handles.result, 1, &type) != 0 ||
            vek_db_result_column_short_int(handles.result, 2, &instance) != 0) {
            return 3;
        }
        times[{type, instance}] = taken_s;
    }
    return 0;
}

struct Kind {
    int16_t type;
    const char* name;
    const char* heading;
    std::span<const int16_t> values;
};

}  // namespace

uint32_t read_latest_temperatures(std::vector<LatestTemperature>& temperatures) {
    pwrmgt_therm_realtime_t record{};
    // Only sensors with a row are written; what keeps the marker has none.
    std::fill(std::begin(record.cpu), std::end(record.cpu), kNoTemperature);
    std::fill(std::begin(record.memory), std::end(record.memory), kNoTemperature);
    std::fill(std::begin(record.ambient), std::end(record.ambient), kNoTemperature);
    if (const uint32_t status = pwrmgt_get_therm_realtime(&record); status != 0) return status;
    Times times;
    if (const uint32_t status = read_times(times); status != 0) return status;

    const std::array<Kind, 3> kinds{{{1, "inlet", "Inlet ", record.ambient},
                                     {2, "cpu", "CPU ", record.cpu},
                                     {3, "memory", "Memory module ", record.memory}}};
    for (const Kind& kind : kinds) {
        for (size_t at = 0; at < kind.values.size(); ++at) {
            const auto value = temperature(kind.values[at]);
            const auto taken = times.find({kind.type, static_cast<int16_t>(at + 1)});
            // A row that came or went between the two reads is left out.
            if (!value || taken == times.end()) continue;
            const std::string number = std::to_string(at + 1);
            temperatures.push_back(
                {kind.name + number, kind.heading + number, *value, taken->second});
        }
    }
    return 0;
}

}  // namespace pwrmgt::pwrmgtctl
