// SPDX-License-Identifier: Apache-2.0
// Reading out: the latest temperatures.
#include <cstddef>
#include <cstdint>
#include <span>

#include "db/session.h"
#include "thermal/sensors.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;
using namespace pwrmgt::thermal;

namespace {

// Kept: exhaust sensors have no place here. [ExhaustRowsAreSkipped]
std::span<int16_t> values_of(pwrmgt_therm_realtime_t& out, int16_t type) {
    switch (type) {
        case kProcessor:
            return out.cpu;
        case kMemory:
            return out.memory;
        case kAmbient:
            return out.ambient;
        default:
            return {};
    }
}

void store(pwrmgt_therm_realtime_t& out, const Reading& reading) {
    const std::span<int16_t> values = values_of(out, reading.type);
    const auto place = static_cast<size_t>(reading.instance - 1);
    if (place < values.size()) values[place] = reading.value;
}

}  // namespace

extern "C" uint32_t thermal_get_realtime_data(uint32_t result, pwrmgt_therm_realtime_t* out) {
    if (result == 0) return 0;
    while (vek_db_result_step(result) == kRowReady) {
        const Reading reading = read_row(result);
        if (out != nullptr) store(*out, reading);
    }
    return 1;
}

extern "C" uint32_t pwrmgt_get_therm_realtime(pwrmgt_therm_realtime_t* out) {
    if (out == nullptr) return code(Status::null_argument);
    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return code(Status::no_connection);
    Result rows;
    if (statement(db.get(), Statement("select * from %s", kRealTimeThermal), rows) != 0 || !rows) {
        return code(Status::query_failed);
    }
    thermal_get_realtime_data(rows.get(), out);
    return code(Status::ok);
}
