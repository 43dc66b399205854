// SPDX-License-Identifier: Apache-2.0
// Every status meaning with its number, and the values that stand for "no reading".
#pragma once

#include <cstdint>

namespace pwrmgt::db {

// Meanings that share a number share it in the open: callers see only the number.
enum class Status : uint32_t {
    ok = 0,
    null_argument = 1,
    bad_time = 1,
    no_connection = 2,
    query_failed = 3,
    bad_slots = 3,
    bay_empty = 3,
    insert_failed = 4,
    copy_failed = 4,
    no_bay_row = 4,
    update_failed = 5,
    statement_failed = 6,
    no_content = 7,
    no_rows = 8,
    no_valid_sample = 8,
    no_such_bay = 8,
    unsupported = 10,
    out_of_range = 10,
    bad_window = 11,
    firmware_refused = 14,
    cap_without_value = 15,
    supplies_unusable = 17,
    bay_out_of_range = 19,
    bad_setting = 20,
    many_rows = 31,
    clock_failed = 31,
    no_window = 31,
    empty_window = 31,
    exchange_failed = 31,
    bad_record = 31,
    unknown_voltage = 31,
    no_rated_power = 31,
};

constexpr uint32_t code(Status status) {
    return static_cast<uint32_t>(status);
}

inline constexpr uint16_t kNoPower = 65535;
inline constexpr uint8_t kNoPercent = 255;
inline constexpr uint8_t kUnknownByte = 15;  // in the supply table

// Step codes of a result.
inline constexpr int kRowReady = 9;
inline constexpr int kRowsEnded = 10;

}  // namespace pwrmgt::db
