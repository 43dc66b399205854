// SPDX-License-Identifier: Apache-2.0
// The usual way opens two files that are in order. Only when it does not succeed are files made,
// filled with their tables or moved aside, one process at a time under a lock of each file.
#include "sqlite_open.h"

#include <atomic>
#include <cstring>

#include "schema.h"

namespace pwrmgt::vekdb {

namespace {

std::atomic<bool> suspected{false};

bool damaged(int code) {
    return (code & 0xFF) == SQLITE_NOTADB || (code & 0xFF) == SQLITE_CORRUPT;
}

int execute(sqlite3* db, const std::string& sql) {
    return sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr);
}

int version_of(sqlite3* db, const char* schema, int& version) {
    sqlite3_stmt* statement = nullptr;
    const std::string sql = std::string{"PRAGMA "} + schema + ".user_version";
    int code = sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr);
    if (code == SQLITE_OK) {
        code = sqlite3_step(statement);
        version = code == SQLITE_ROW ? sqlite3_column_int(statement, 0) : 0;
        if (code == SQLITE_ROW) code = SQLITE_OK;
    }
    sqlite3_finalize(statement);
    return code;
}

// Also loads the list of tables: a file may be damaged behind a good header.
int readable(sqlite3* db, const char* schema) {
    return execute(db, std::string{"SELECT count(*) FROM "} + schema + ".sqlite_schema");
}

// Looks through the whole file, which only a suspicion is worth.
bool sound(sqlite3* db) {
    sqlite3_stmt* statement = nullptr;
    bool is_sound = false;
    if (sqlite3_prepare_v2(db, "PRAGMA quick_check(1)", -1, &statement, nullptr) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW) {
        const auto* answer = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        is_sound = answer != nullptr && std::strcmp(answer, "ok") == 0;
    }
    sqlite3_finalize(statement);
    return is_sound;
}

SqliteHandle open_file(const std::string& path, int mode, int& code) {
    sqlite3* db = nullptr;
    code = sqlite3_open_v2(path.c_str(), &db, mode | SQLITE_OPEN_NOMUTEX, nullptr);
    SqliteHandle handle{db};
    if (handle) {
        sqlite3_extended_result_codes(db, 1);
        sqlite3_busy_timeout(db, kBusyTimeoutMs);
    }
    return handle;
}

// The statements that create the tables of one store. The thermal tables keep equal rows, so they
// have a row number of their own that `*` does not show.
std::string schema_of(Store store) {
    std::string text;
    for (const TableShape& table : tables()) {
        if (table.store != store) continue;
        text.append("CREATE TABLE ").append(table.name).append(" (");
        text += typed_columns(table.columns, "INTEGER");
        if (!table.key.empty()) text.append(",PRIMARY KEY (").append(table.key);
        text += table.key.empty() ? ");" : ") ON CONFLICT REPLACE) WITHOUT ROWID;";
        for (const TableIndex& index : table.indices) {
            if (index.suffix.empty()) continue;
            text.append("CREATE INDEX ").append(table.name).append(index.suffix);
            text.append(" ON ").append(table.name).append(" (").append(index.columns).append(");");
        }
    }
    return text;
}

// Creates the tables where another process has not.
int fill(sqlite3* db, Store store) {
    int code = execute(db, "PRAGMA page_size=1024; PRAGMA journal_mode=WAL");
    if (code == SQLITE_OK) code = execute(db, "BEGIN IMMEDIATE");
    if (code != SQLITE_OK) return code;
    int version = 0;
    code = version_of(db, "main", version);
    if (code == SQLITE_OK && version == 0) {
        code =
            execute(db, schema_of(store) + "PRAGMA user_version=" + std::to_string(kSchemaVersion));
    }
    const int ended = execute(db, code == SQLITE_OK ? "COMMIT" : "ROLLBACK");
    return code == SQLITE_OK ? ended : code;
}

int check_file(sqlite3* db, Store store, std::string& why) {
    int version = 0;
    int code = version_of(db, "main", version);
    if (code == SQLITE_OK) code = readable(db, "main");
    if (code == SQLITE_OK && suspected.load(std::memory_order_relaxed) && !sound(db))
        return SQLITE_CORRUPT;
    if (code == SQLITE_OK && version == 0) code = fill(db, store);
    if (code != SQLITE_OK) {
        why = sqlite3_errmsg(db);
    } else if (version > kSchemaVersion) {
        why = "made by a newer version";
        code = SQLITE_MISMATCH;
    }
    return code;
}

// Makes one file whole: there, a database, with its tables. False with the reason in `why`.
bool prepare_file(const std::string& path, Store store, std::string& why) {
    const FileLock lock{path};
    if (!lock.held()) {
        why = path + ": cannot be locked";
        return false;
    }
    for (int attempt = 0; attempt < 2; ++attempt) {
        why = create_file(path);
        if (!why.empty()) return false;
        int code = SQLITE_OK;
        SqliteHandle db = open_file(path, SQLITE_OPEN_READWRITE, code);
        if (code == SQLITE_OK) code = check_file(db.get(), store, why);
        if (code == SQLITE_OK) return true;
        if (why.empty()) why = sqlite3_errstr(code);
        why.insert(0, path + ": ");
        db.reset();
        if (!damaged(code)) return false;
        std::string moved = move_aside(path);
        if (!moved.empty()) {
            why = std::move(moved);
            return false;
        }
    }
    return false;
}

bool prepare(const Directories& directories, std::string& why) {
    why = prepare_directory(directories.state);
    if (why.empty()) why = prepare_directory(directories.runtime);
    if (!why.empty()) return false;
    if (!prepare_file(directories.persistent_path(), Store::persistent, why)) return false;
    if (!prepare_file(directories.memory_path(), Store::memory, why)) return false;
    suspected.store(false, std::memory_order_relaxed);
    return true;
}

int attach(sqlite3* db, const std::string& path) {
    sqlite3_stmt* statement = nullptr;
    int code = sqlite3_prepare_v2(db, "ATTACH ? AS mem", -1, &statement, nullptr);
    if (code == SQLITE_OK) code = sqlite3_bind_text(statement, 1, path.c_str(), -1, SQLITE_STATIC);
    if (code == SQLITE_OK)
        code = sqlite3_step(statement) == SQLITE_DONE ? SQLITE_OK : sqlite3_errcode(db);
    sqlite3_finalize(statement);
    return code;
}

// The two files as they are. Null when they are missing, damaged or without tables.
SqliteHandle open_both(const OpenedFiles& files, std::string& why) {
    const std::string persistent = files.directories.persistent_path();
    const std::string memory = files.directories.memory_path();
    const bool may_write = writable(persistent) && writable(memory);
    int code = SQLITE_OK;
    SqliteHandle db =
        open_file(persistent, may_write ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY, code);
    if (code == SQLITE_OK) code = attach(db.get(), memory);
    if (code == SQLITE_OK) {
        code = execute(
            db.get(),
            "PRAGMA main.synchronous=NORMAL; PRAGMA mem.synchronous=OFF;"
            "PRAGMA main.cache_size=32; PRAGMA mem.cache_size=400;"
            "PRAGMA main.journal_size_limit=4194304; PRAGMA mem.journal_size_limit=4194304");
    }
    int persistent_version = 0;
    int memory_version = 0;
    if (code == SQLITE_OK) code = version_of(db.get(), "main", persistent_version);
    if (code == SQLITE_OK) code = version_of(db.get(), "mem", memory_version);
    if (code == SQLITE_OK) code = readable(db.get(), "main");
    if (code == SQLITE_OK) code = readable(db.get(), "mem");
    if (code != SQLITE_OK) {
        why = files.directories.state + ", " + files.directories.runtime + ": " +
              (db ? sqlite3_errmsg(db.get()) : sqlite3_errstr(code));
        return nullptr;
    }
    if (persistent_version != kSchemaVersion || memory_version != kSchemaVersion) {
        why = files.directories.state + ", " + files.directories.runtime +
              ": tables of another version";
        return nullptr;
    }
    return db;
}

}  // namespace

void suspect_damage() noexcept {
    suspected.store(true, std::memory_order_relaxed);
}
bool damage_suspected() noexcept {
    return suspected.load(std::memory_order_relaxed);
}

bool locate(const Directories& directories, OpenedFiles& files) {
    files.directories = directories;
    return identify(directories.persistent_path(), files.persistent) &&
           identify(directories.memory_path(), files.memory);
}

SqliteHandle open_sqlite(OpenedFiles& files, std::string& why) {
    constexpr int kAttempts = 4;
    const Directories directories = choose_directories();
    if (check_wanted()) suspect_damage();
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        OpenedFiles before;
        why = prepare_directory(directories.state);
        if (why.empty()) why = prepare_directory(directories.runtime);
        if (!why.empty()) return nullptr;
        if (!damage_suspected() && locate(directories, before)) {
            SqliteHandle db = open_both(before, why);
            // A file may be moved aside between the look and the open: then look again.
            if (db && locate(directories, files) && files == before) return db;
        }
        std::string trouble;
        if (!prepare(directories, trouble)) {
            if (!why.empty()) why += "; ";
            why += trouble;
            return nullptr;
        }
    }
    return nullptr;
}

}  // namespace pwrmgt::vekdb
