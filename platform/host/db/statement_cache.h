// SPDX-License-Identifier: Apache-2.0
// The prepared statements of one SQLite connection, by their text without integers.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string_view>

#include "text_cache.h"

namespace pwrmgt::vekdb {

struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using StatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

class StatementCache {
public:
    static constexpr std::size_t kCapacity = TextCache<StatementHandle>::kCapacity;

    // The statement for a text, ready to bind. An SQLite code other than SQLITE_OK comes with a
    // null statement; SQLITE_MISUSE stands for a text that holds no statement or more than one.
    int get(sqlite3* db, std::string_view sql, sqlite3_stmt*& statement);

    void clear() noexcept { kept_.clear(); }

private:
    TextCache<StatementHandle> kept_;
};

}  // namespace pwrmgt::vekdb
