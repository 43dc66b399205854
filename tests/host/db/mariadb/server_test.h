// SPDX-License-Identifier: Apache-2.0
// What tests of a server's own behaviour share.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>

#include "../database_test.h"
#include "server.h"

constexpr int kRefused = 2;
constexpr int kBusy = 3;
constexpr int kNoSpace = 4;
constexpr int kReadOnly = 5;
constexpr int kFailed = 7;

inline std::int64_t connection_id(std::uint32_t db) {
    return select(db, "select connection_id()", 1)[0][0];
}

inline bool log_tells(const std::string& text) {
    return std::any_of(log_lines().begin(), log_lines().end(), [&](const std::string& line) {
        return line.find(text) != std::string::npos;
    });
}

// The name of a test's database, the last part of its address.
inline std::string name_of(const std::string& address) {
    return address.substr(address.rfind('/') + 1);
}

class ServerTest : public DatabaseTest {
protected:
    // That no database was made in files in the server's place.
    void expect_no_files() const {
        EXPECT_FALSE(std::filesystem::exists(files_.state));
        EXPECT_FALSE(std::filesystem::exists(files_.runtime));
    }

    static std::string address() { return std::getenv("VEKDB_SERVER"); }
};
