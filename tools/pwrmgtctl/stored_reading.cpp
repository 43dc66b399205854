// SPDX-License-Identifier: Apache-2.0
// Reads through the database client what no function of the library hands out.
#include "stored_reading.h"

#include "client_handles.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr std::array<const char*, place::count + 1> kColumns{"Timestamp", "SysPwrAc", "SysPwrDc",
                                                             "CpuPwrDc",  "MemPwrDc", "SysPctg",
                                                             "CpuPctg",   "MemPctg",  "IOPctg"};

uint32_t read_row(uint32_t result, StoredReading& reading) {
    StoredReading read;
    uint32_t taken_s = 0;
    if (vek_db_result_column_uint(result, 0, &taken_s) != 0) return 3;
    read.taken_s = taken_s;
    for (size_t at = 0; at < read.values.size(); ++at) {
        uint16_t stored = 0;
        if (vek_db_result_column_short_uint(result, static_cast<int>(at) + 1, &stored) != 0) {
            return 3;
        }
        read.values[at] = at < place::system_pct ? watts(stored) : wide_percent(stored);
    }
    reading = read;
    return 0;
}

}  // namespace

uint32_t read_stored_reading(StoredReading& reading) {
    if (pwrmgt_unsupport_check("pwrmgt_get_realtime_powers") != 0) return 10;
    ClientHandles handles;
    handles.connection = pwrmgt_get_db_handle();
    if (handles.connection == 0) return 2;
    const int failed =
        vek_db_query(handles.connection, "RealTimePowersMem", kColumns.data(),
                     static_cast<int>(kColumns.size()), "_id=0", 0, 0, nullptr, &handles.result);
    if (failed != 0 || handles.result == 0) return 3;
    const int rows = vek_db_result_row_count(handles.result);
    if (rows < 1) return 8;
    if (rows > 1) return 31;
    if (vek_db_result_step(handles.result) != kRowReady) return 3;
    return read_row(handles.result, reading);
}

std::optional<int64_t> newest_temperature_s() {
    ClientHandles handles;
    handles.connection = pwrmgt_get_db_handle();
    if (handles.connection == 0) return std::nullopt;
    const std::array<const char*, 1> columns{"Timestamp"};
    const int failed = vek_db_query(handles.connection, "RealTimeThermalMem", columns.data(), 1,
                                    nullptr, 1, 0, "Timestamp DESC", &handles.result);
    if (failed != 0 || handles.result == 0) return std::nullopt;
    if (vek_db_result_step(handles.result) != kRowReady) return std::nullopt;
    int32_t taken_s = 0;
    if (vek_db_result_column_int(handles.result, 0, &taken_s) != 0) return std::nullopt;
    return taken_s;
}

}  // namespace pwrmgt::pwrmgtctl
