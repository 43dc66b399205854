// SPDX-License-Identifier: Apache-2.0
// The prepared statements of one connection, by their text without integers.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace pwrmgt::vekdb {

class StatementCache {
public:
    // Twice the texts that the library has; a text beyond them replaces the one not used longest.
    static constexpr std::size_t kCapacity = 96;

    StatementCache() = default;
    ~StatementCache() { clear(); }
    StatementCache(const StatementCache&) = delete;
    StatementCache& operator=(const StatementCache&) = delete;

    // The statement for a text, ready to bind. An SQLite code other than SQLITE_OK comes with a
    // null statement; SQLITE_MISUSE stands for a text that holds no statement or more than one.
    int get(sqlite3* db, std::string_view sql, sqlite3_stmt*& statement);

    void clear() noexcept;

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept {
            return std::hash<std::string_view>{}(text);
        }
    };
    struct Entry {
        sqlite3_stmt* statement = nullptr;
        std::uint64_t used_at = 0;
    };

    void drop_oldest() noexcept;

    std::unordered_map<std::string, Entry, Hash, std::equal_to<>> entries_;
    std::uint64_t uses_ = 0;
};

}  // namespace pwrmgt::vekdb
