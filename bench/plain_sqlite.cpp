// SPDX-License-Identifier: Apache-2.0
// The ordinary tables and the statements on them.
#include "plain_sqlite.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace pwrmgt::bench {

namespace {

// Timestamp and the six columns of the system query.
constexpr int kSelected = 7;
constexpr std::size_t kFirstRows = 64;

void require(int code, sqlite3* db) {
    if (code != SQLITE_OK && code != SQLITE_ROW && code != SQLITE_DONE) {
        throw std::runtime_error(sqlite3_errmsg(db));
    }
}

void execute(sqlite3* db, const std::string& sql) {
    require(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), db);
}

SqliteStatement prepare(sqlite3* db, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    require(sqlite3_prepare_v3(db, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr),
            db);
    return SqliteStatement{statement};
}

// Runs a statement that yields no rows.
void run(sqlite3* db, const SqliteStatement& statement) {
    const int code = sqlite3_step(statement.get());
    sqlite3_reset(statement.get());
    require(code, db);
}

SqliteHandle open_both(const Files& files) {
    sqlite3* opened = nullptr;
    const int code =
        sqlite3_open_v2(files.persistent.c_str(), &opened,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    SqliteHandle db{opened};
    require(code, opened);
    execute(opened, "ATTACH '" + files.working + "' AS mem");
    return db;
}

std::string table(const std::string& schema, const std::string& name) {
    std::string sql = "CREATE TABLE " + schema + name + " (_id INTEGER, Timestamp INTEGER";
    for (const char* column : kValueColumns) {
        sql.append(",").append(column).append(" INTEGER");
    }
    sql += ");";
    for (const char* key : {"_id", "Timestamp"}) {
        sql.append("CREATE INDEX ").append(schema).append(name).append(key);
        sql.append(" ON ").append(name).append("(").append(key).append(");");
    }
    return sql;
}

std::string insert_text() {
    std::string sql = "INSERT INTO HistPowers24HrMem VALUES (?,?";
    for (std::size_t i = 0; i < kValues; ++i) {
        sql += ",?";
    }
    return sql + ")";
}

}  // namespace

PlainSqlite::PlainSqlite(const Files& files) : db_{open_both(files)} {
    sqlite3* db = db_.get();
    execute(db,
            "PRAGMA main.journal_mode=WAL; PRAGMA mem.journal_mode=WAL;"
            "PRAGMA main.synchronous=NORMAL; PRAGMA mem.synchronous=OFF");
    execute(db, table("mem.", "HistPowers24HrMem") + table("main.", "HistPowers24Hr"));
    insert_ = prepare(db, insert_text());
    erase_ = prepare(db, "DELETE FROM HistPowers24HrMem WHERE Timestamp>?");
    delete_slot_ = prepare(db, "DELETE FROM HistPowers24Hr WHERE _id=?");
    copy_slot_ =
        prepare(db, "INSERT INTO HistPowers24Hr SELECT * FROM HistPowers24HrMem WHERE _id=?");
    select_ = prepare(db,
                      "SELECT Timestamp,SysAvgDc,SysMaxDc,SysMinDc,SysAvgAc,SysMaxAc,SysMinAc "
                      "FROM HistPowers24HrMem WHERE Timestamp>=? AND Timestamp<=? "
                      "ORDER BY Timestamp DESC");
}

void PlainSqlite::insert(const Row& row) {
    int place = 0;
    sqlite3_bind_int(insert_.get(), ++place, row.slot);
    sqlite3_bind_int(insert_.get(), ++place, row.time_s);
    for (const std::uint16_t value : row.values) {
        sqlite3_bind_int(insert_.get(), ++place, value);
    }
    run(db_.get(), insert_);
}

void PlainSqlite::erase_newer_than(std::int32_t time_s) {
    sqlite3_bind_int(erase_.get(), 1, time_s);
    run(db_.get(), erase_);
}

void PlainSqlite::save(std::int32_t slot) {
    sqlite3_bind_int(delete_slot_.get(), 1, slot);
    run(db_.get(), delete_slot_);
    sqlite3_bind_int(copy_slot_.get(), 1, slot);
    run(db_.get(), copy_slot_);
}

void PlainSqlite::query(std::int32_t from_s, std::int32_t to_s, Entries& entries) {
    sqlite3_stmt* statement = select_.get();
    sqlite3_bind_int(statement, 1, from_s);
    sqlite3_bind_int(statement, 2, to_s);
    std::vector<std::int32_t> cells;
    std::size_t rows = 0;
    int code = SQLITE_OK;
    while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
        if ((rows + 1) * kSelected > cells.size()) {
            cells.resize(std::max(kFirstRows, rows * 2) * kSelected);
        }
        std::int32_t* row = &cells[rows++ * kSelected];
        for (int column = 0; column < kSelected; ++column) {
            row[column] = sqlite3_column_int(statement, column);
        }
    }
    sqlite3_reset(statement);
    require(code, db_.get());

    const auto slot = [&](std::size_t at) {
        const std::int32_t* row = &cells[at * kSelected];
        PowerSlot now{static_cast<std::uint32_t>(row[0]), {}};
        for (std::size_t i = 0; i < now.watts.size(); ++i) {
            now.watts[i] = static_cast<std::uint16_t>(row[i + 1]);
        }
        return now;
    };
    fold_newest_first(rows, slot, entries);
}

int query_policy_once(const Files& library_files) {
    const SqliteHandle db = open_both(library_files);
    const SqliteStatement statement =
        prepare(db.get(),
                "SELECT IsBlade,RedunMode,MaximStatus,CapEnable,CapMode,CapValue,CapSoftAc,"
                "CapMinAc,CapMaxAc,CapSoftDc,CapMinDc,CapMaxDc,UnstressAdapterPwr,UnstressFanPwr,"
                "UnstressHddPwr FROM PowerPolicy");
    const int code = sqlite3_step(statement.get());
    if (code != SQLITE_ROW) throw std::runtime_error("there is no policy row");
    int sum = 0;
    for (int column = 0; column < sqlite3_column_count(statement.get()); ++column) {
        sum += sqlite3_column_int(statement.get(), column);
    }
    return sum;
}

}  // namespace pwrmgt::bench
