// SPDX-License-Identifier: Apache-2.0
// A database of its own for each test, and short words for the client's functions.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "db/state_dir.h"
#include "engine_under_test.h"
#include "log_capture.h"
#include "support/environment.h"
#include "support/temp_file.h"
#include "vekdb_client.h"

constexpr int kRow = 9;
constexpr int kNoMoreRows = 10;

inline std::uint32_t open_database() {
    return vek_db_open("localhost", "root", "", "vek_pwr_db", 0);
}

inline int raw(std::uint32_t db, std::string_view sql, std::uint32_t* result = nullptr) {
    return vek_db_raw_query(db, sql.data(), static_cast<std::uint32_t>(sql.size()), result);
}

inline int add_policy_row(std::uint32_t db) {
    return raw(db, "insert into PowerPolicy (_id) values (0)");
}

// Rows of a select as numbers; a cell without a value is -1.
using Table = std::vector<std::vector<std::int64_t>>;

inline Table rows_of(std::uint32_t result, int columns) {
    Table table;
    while (vek_db_result_step(result) == kRow) {
        auto& row = table.emplace_back();
        for (int column = 0; column < columns; ++column) {
            std::uint32_t cell = 0;
            const int failed = vek_db_result_column_uint(result, column, &cell);
            row.push_back(failed != 0 ? -1 : std::int64_t{cell});
        }
    }
    vek_db_free_result(result);
    return table;
}

inline Table select(std::uint32_t db, std::string_view sql, int columns) {
    std::uint32_t result = 0;
    EXPECT_EQ(raw(db, sql, &result), 0) << sql;
    return rows_of(result, columns);
}

// What `body` returns in a child process that starts without any connection of this one's; -1 when
// it crashed.
template <class Body>
int in_child(Body body) {
    std::fflush(nullptr);  // else a child that exits prints what waits in the buffer again
    const pid_t child = fork();
    if (child == 0) _exit(body());
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}

// A row of the power history with its slot and time, and one reading.
inline int insert_slot(std::uint32_t db, const char* table, std::uint16_t slot, std::uint32_t time,
                       std::uint16_t watts) {
    const std::uint32_t content = vek_db_get_content_values();
    vek_db_content_put_uint(content, "Timestamp", time);
    vek_db_content_put_short_uint(content, "SysAvgDc", watts);
    vek_db_content_put_short_uint(content, "_id", slot);
    const int failed = vek_db_insert(db, table, content, 0, 0);
    vek_db_free_content_values(content);
    return failed;
}

class DatabaseTest : public testing::Test {
protected:
    DatabaseTest() { log_lines().clear(); }

    std::string persistent_path() const { return files_.persistent_path(); }
    std::string memory_path() const { return files_.memory_path(); }

    TempFile place_;
    pwrmgt::vekdb::Directories files_{place_.directory() + "/state", place_.directory() + "/run"};
    EnvironmentVariable state_{"VEKDB_STATE_DIR", files_.state};
    EnvironmentVariable runtime_{"VEKDB_RUNTIME_DIR", files_.runtime};
    EnvironmentVariable server_{"VEKDB_SERVER", server_for_a_test()};
};

// With one connection open.
class OpenDatabaseTest : public DatabaseTest {
protected:
    ~OpenDatabaseTest() override { vek_db_close(db_); }

    std::uint32_t db_ = open_database();
};
