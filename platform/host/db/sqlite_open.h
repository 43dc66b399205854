// SPDX-License-Identifier: Apache-2.0
// Opening the two database files as one SQLite connection, making or mending them where that is
// needed.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>

#include "files.h"
#include "state_dir.h"

namespace pwrmgt::vekdb {

struct CloseSqlite {
    void operator()(sqlite3* db) const noexcept { sqlite3_close_v2(db); }
};
using SqliteHandle = std::unique_ptr<sqlite3, CloseSqlite>;

inline constexpr int kBusyTimeoutMs = 5000;

// What a connection was opened on.
struct OpenedFiles {
    Directories directories;
    FileIdentity persistent;
    FileIdentity memory;

    bool operator==(const OpenedFiles&) const = default;
};

// The files that `directories` leads to now; false when one is missing.
bool locate(const Directories& directories, OpenedFiles& files);

// Null with the reason in `why`.
SqliteHandle open_sqlite(OpenedFiles& files, std::string& why);

// A statement found a file damaged: the next open looks through both files.
void suspect_damage() noexcept;
bool damage_suspected() noexcept;

}  // namespace pwrmgt::vekdb
