// SPDX-License-Identifier: Apache-2.0
// Looking statements up and preparing them.
#include "statement_cache.h"

#include <string>

namespace pwrmgt::vekdb {

namespace {

// Whether the text behind the first statement holds another one; comments and semicolons do not
// count.
bool more_follows(sqlite3* db, const char* tail, const char* end) {
    while (tail != end) {
        sqlite3_stmt* next = nullptr;
        const char* behind = end;
        const int code = sqlite3_prepare_v2(db, tail, static_cast<int>(end - tail), &next, &behind);
        if (code != SQLITE_OK || next != nullptr) {
            sqlite3_finalize(next);
            return true;
        }
        tail = behind;
    }
    return false;
}

}  // namespace

int StatementCache::get(sqlite3* db, std::string_view sql, sqlite3_stmt*& statement) {
    statement = nullptr;
    if (const StatementHandle* found = kept_.find(sql); found != nullptr) {
        statement = found->get();
        return SQLITE_OK;
    }
    std::string key{sql};
    const char* tail = nullptr;
    sqlite3_stmt* made = nullptr;
    const int code = sqlite3_prepare_v3(db, key.data(), static_cast<int>(key.size()),
                                        SQLITE_PREPARE_PERSISTENT, &made, &tail);
    StatementHandle prepared{made};
    if (code != SQLITE_OK) return code;
    if (!prepared || more_follows(db, tail, key.data() + key.size())) return SQLITE_MISUSE;
    statement = kept_.keep(std::move(key), std::move(prepared)).get();
    return SQLITE_OK;
}

}  // namespace pwrmgt::vekdb
