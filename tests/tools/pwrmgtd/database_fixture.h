// SPDX-License-Identifier: Apache-2.0
// A test with a database of its own in a directory that ends with it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "environment.h"
#include "stand_ins.h"
#include "temp_file.h"
#include "vekdb_client.h"

namespace pwrmgt::pwrmgtd::test {

inline constexpr std::int64_t kMidnight = 1748995200;        // 2025-06-04 00:00:00, slot 0
inline constexpr std::int64_t kMidnightBefore = 1748908800;  // the same, a day before

class DatabaseTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(tables.open()); }

    // Slot numbers by stamp.
    std::map<std::int64_t, int> rows_of(const char* table) {
        std::map<std::int64_t, int> rows;
        const char* const columns[] = {"_id", "Timestamp"};
        std::uint32_t result = 0;
        EXPECT_EQ(
            vek_db_query(tables.connection(), table, columns, 2, nullptr, 0, 0, nullptr, &result),
            0);
        while (vek_db_result_step(result) == 9) {
            std::uint16_t slot = 0;
            std::uint32_t stamp_s = 0;
            vek_db_result_column_short_uint(result, 0, &slot);
            vek_db_result_column_uint(result, 1, &stamp_s);
            EXPECT_TRUE(rows.emplace(stamp_s, slot).second) << "stamp " << stamp_s << " twice";
        }
        vek_db_free_result(result);
        return rows;
    }

    // One number of the row that `filter` finds; -1 when there is no such row.
    std::int64_t number(const char* table, const char* column, const std::string& filter) {
        std::uint32_t result = 0;
        std::uint32_t value = 0;
        std::int64_t found = -1;
        EXPECT_EQ(vek_db_query(tables.connection(), table, &column, 1, filter.c_str(), 0, 0,
                               nullptr, &result),
                  0);
        if (vek_db_result_step(result) == 9 && vek_db_result_column_uint(result, 0, &value) == 0) {
            found = value;
        }
        vek_db_free_result(result);
        return found;
    }

    // Supply bays that pass a filter.
    int bays_with(const char* filter) {
        std::uint32_t result = 0;
        EXPECT_EQ(vek_db_query(tables.connection(), "PsuPropertyMem", nullptr, 0, filter, 0, 0,
                               nullptr, &result),
                  0);
        const int rows = vek_db_result_row_count(result);
        vek_db_free_result(result);
        return rows;
    }

    int raw(const std::string& sql) {
        return vek_db_raw_query(tables.connection(), sql.c_str(),
                                static_cast<std::uint32_t>(sql.size()), nullptr);
    }

    // A row whose system power is `watts`.
    static Row row(std::int64_t stamp_s, std::uint16_t watts) {
        SlotReadings readings;
        readings.add(system_reading(watts));
        return readings.row(stamp_s);
    }

    TempFile place_;
    EnvironmentVariable state_{"VEKDB_STATE_DIR", place_.directory() + "/state"};
    EnvironmentVariable runtime_{"VEKDB_RUNTIME_DIR", place_.directory() + "/run"};
    EnvironmentVariable server_{"VEKDB_SERVER"};
    CollectingLog log;
    DatabaseTables tables{log};
};

}  // namespace pwrmgt::pwrmgtd::test
