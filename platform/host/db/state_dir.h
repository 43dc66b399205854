// SPDX-License-Identifier: Apache-2.0
// Where the database lives: two directories and the file in each, or a server. Nothing is created
// or opened here.
#pragma once

#include <string>

namespace pwrmgt::vekdb {

inline constexpr const char* kPersistentFile = "vek_pwr_db.sqlite";
inline constexpr const char* kMemoryFile = "vek_pwr_db-mem.sqlite";

struct Directories {
    std::string state;    // the persistent tables
    std::string runtime;  // the tables that a reboot empties

    std::string persistent_path() const { return state + '/' + kPersistentFile; }
    std::string memory_path() const { return runtime + '/' + kMemoryFile; }

    bool operator==(const Directories&) const = default;
};

// $VEKDB_STATE_DIR and $VEKDB_RUNTIME_DIR where set (not in a set-uid program). For the rest: the
// system's /var/lib/vekdb and /run/vekdb for root and for whoever may write to both; else the
// user's own, $XDG_STATE_HOME/vekdb
// (~/.local/state/vekdb) and $XDG_RUNTIME_DIR/vekdb (/dev/shm/vekdb-<uid>).
Directories choose_directories();

// $VEKDB_SERVER where set (not in a set-uid program): the server that has the tables in place of
// the directories.
std::string choose_server();

// The same for people to read: without a password.
std::string without_password(const std::string& server);

// $VEKDB_CHECK is 1: an open looks through both files before it uses them.
bool check_wanted();

}  // namespace pwrmgt::vekdb
