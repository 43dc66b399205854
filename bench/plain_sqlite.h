// SPDX-License-Identifier: Apache-2.0
// What one gets from SQLite without thinking about it: the same rows in ordinary tables with an
// index on each of the two keys and 4096-byte pages, but with statements kept prepared, which is as
// fast as that layout goes.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>

#include "day.h"
#include "fold.h"

namespace pwrmgt::bench {

struct SqliteCloser {
    void operator()(sqlite3* db) const { sqlite3_close(db); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using SqliteHandle = std::unique_ptr<sqlite3, SqliteCloser>;
using SqliteStatement = std::unique_ptr<sqlite3_stmt, SqliteCloser>;

struct Files {
    std::string persistent;  // on a disk
    std::string working;     // on a tmpfs
};

class PlainSqlite {
public:
    // Makes both files with their tables. Throws std::runtime_error.
    explicit PlainSqlite(const Files& files);

    void insert(const Row& row);
    void erase_newer_than(std::int32_t time_s);

    // Saves one slot: out of the persistent table, in from the working one.
    void save(std::int32_t slot);

    // Buffers the rows of a window in one block of 32-bit cells, counted, and folds them.
    void query(std::int32_t from_s, std::int32_t to_s, Entries& entries);

private:
    SqliteHandle db_;
    SqliteStatement insert_;
    SqliteStatement erase_;
    SqliteStatement delete_slot_;
    SqliteStatement copy_slot_;
    SqliteStatement select_;
};

// The library's power policy query with nothing kept: open both files, prepare, ask, close. Returns
// the sum of the row's cells. Throws std::runtime_error.
int query_policy_once(const Files& library_files);

}  // namespace pwrmgt::bench
