// SPDX-License-Identifier: Apache-2.0
// When a kept connection is not the one that an open asks for, with the database in files.
#include <filesystem>

#include "database_test.h"

namespace {

namespace fs = std::filesystem;

std::size_t policy_rows(std::uint32_t db) {
    return select(db, "select _id from PowerPolicy", 1).size();
}

class PoolOfFiles : public DatabaseTest {};

TEST_F(PoolOfFiles, NextOpenReachesTheDatabaseThatTheEnvironmentNamesNow) {
    const std::uint32_t first = open_database();
    add_policy_row(first);
    vek_db_close(first);
    const EnvironmentVariable elsewhere{"VEKDB_STATE_DIR", place_.directory() + "/elsewhere"};
    const std::uint32_t second = open_database();

    EXPECT_EQ(policy_rows(second), 0u);
    EXPECT_TRUE(fs::exists(place_.directory() + "/elsewhere/vek_pwr_db.sqlite"));
    vek_db_close(second);
}

TEST_F(PoolOfFiles, VanishedRuntimeFileIsNoticedAndPersistentRowsStay) {
    const std::uint32_t first = open_database();
    add_policy_row(first);
    insert_slot(first, "HistPowers24HrMem", 1, 30, 1);
    vek_db_close(first);
    fs::remove_all(files_.runtime);
    const std::uint32_t second = open_database();

    EXPECT_EQ(select(second, "select * from HistPowers24HrMem", 1), Table{});
    EXPECT_EQ(insert_slot(second, "HistPowers24HrMem", 2, 60, 1), 0);
    EXPECT_EQ(policy_rows(second), 1u);
    EXPECT_TRUE(fs::exists(memory_path()));
    vek_db_close(second);
}

TEST_F(PoolOfFiles, SettingsOfOneUserDoNotReachTheNext) {
    const std::uint32_t first = open_database();
    ASSERT_EQ(raw(first, "PRAGMA query_only=1"), 0);
    vek_db_close(first);
    const std::uint32_t second = open_database();

    EXPECT_EQ(add_policy_row(second), 0);
    vek_db_close(second);
}

}  // namespace
