// SPDX-License-Identifier: Apache-2.0
// Looking statements up, preparing them, and making room.
#include "statement_cache.h"

#include <algorithm>

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
    if (const auto found = entries_.find(sql); found != entries_.end()) {
        found->second.used_at = ++uses_;
        statement = found->second.statement;
        return SQLITE_OK;
    }
    std::string key{sql};
    const char* tail = nullptr;
    sqlite3_stmt* prepared = nullptr;
    const int code = sqlite3_prepare_v3(db, key.data(), static_cast<int>(key.size()),
                                        SQLITE_PREPARE_PERSISTENT, &prepared, &tail);
    if (code != SQLITE_OK) return code;
    if (prepared == nullptr || more_follows(db, tail, key.data() + key.size())) {
        sqlite3_finalize(prepared);
        return SQLITE_MISUSE;
    }
    if (entries_.size() >= kCapacity) drop_oldest();
    try {
        entries_.emplace(std::move(key), Entry{prepared, ++uses_});
    } catch (...) {
        sqlite3_finalize(prepared);
        throw;
    }
    statement = prepared;
    return SQLITE_OK;
}

void StatementCache::drop_oldest() noexcept {
    const auto oldest = std::min_element(
        entries_.begin(), entries_.end(),
        [](const auto& a, const auto& b) { return a.second.used_at < b.second.used_at; });
    sqlite3_finalize(oldest->second.statement);
    entries_.erase(oldest);
}

void StatementCache::clear() noexcept {
    for (const auto& [text, entry] : entries_)
        sqlite3_finalize(entry.statement);
    entries_.clear();
}

}  // namespace pwrmgt::vekdb
