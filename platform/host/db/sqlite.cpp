// SPDX-License-Identifier: Apache-2.0
// Running statements on one SQLite connection, and keeping its logs short.
#include <sqlite3.h>

#include <array>
#include <cstring>

#include "backend.h"
#include "literals.h"
#include "rows.h"
#include "sqlite_open.h"
#include "statement_cache.h"
#include "statement_kind.h"

namespace pwrmgt::vekdb {

namespace {

// Frames of a log (about a kilobyte each) from which it is copied into its file, and from which the
// writer waits for a gap between the readers, so that the log starts over.
constexpr int kCheckpointFrames = 1000;
constexpr int kRestartFrames = 4000;
constexpr int kRestartWaitMs = 200;

Outcome outcome_of(int code) {
    switch (code & 0xFF) {
        case SQLITE_OK:
        case SQLITE_ROW:
        case SQLITE_DONE:
            return Outcome::ok;
        case SQLITE_ERROR:
        case SQLITE_MISUSE:
        case SQLITE_RANGE:
        case SQLITE_CONSTRAINT:
            return Outcome::refused;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return Outcome::busy;
        case SQLITE_FULL:
            return Outcome::no_space;
        case SQLITE_READONLY:
            return Outcome::read_only;
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
            return Outcome::damaged;
        case SQLITE_NOMEM:
            return Outcome::no_memory;
        default:
            return Outcome::failed;
    }
}

class SqliteConnection final : public BackendConnection {
public:
    SqliteConnection(SqliteHandle db, OpenedFiles files)
        : db_{std::move(db)}, files_{std::move(files)} {
        sqlite3_wal_hook(db_.get(), &SqliteConnection::committed, this);
    }

    Outcome run(std::string_view sql, std::span<const std::int64_t> values, Rows* rows) override {
        const std::string word = first_word(sql);
        const std::string truncation = word == "truncate" ? as_delete(sql) : std::string{};
        if (!truncation.empty()) {
            sql = truncation;
        } else {
            fit_ &= leaves_no_trace(word);
        }
        return finish(execute(sql, values, rows));
    }

    bool tidy() noexcept override {
        if (sqlite3_get_autocommit(db_.get()) == 0) {
            sqlite3_exec(db_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
        }
        return fit_ && sqlite3_get_autocommit(db_.get()) != 0;
    }

    bool current() const override {
        OpenedFiles now;
        return choose_server().empty() && !damage_suspected() &&
               locate(choose_directories(), now) && now == files_;
    }

    bool disown() noexcept override {
        // An open transaction would be rolled back in the log that the parent goes on using.
        if (sqlite3_get_autocommit(db_.get()) == 0) return false;
        return sqlite3_db_config(db_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr) ==
               SQLITE_OK;
    }

private:
    int execute(std::string_view sql, std::span<const std::int64_t> values, Rows* rows) {
        sqlite3_stmt* statement = nullptr;
        int code = statements_.get(db_.get(), sql, statement);
        if (code != SQLITE_OK) return code;
        int place = 0;
        for (const std::int64_t value : values) {
            code = sqlite3_bind_int64(statement, ++place, value);
            if (code != SQLITE_OK) return code;
        }
        // Also when memory for the rows runs out: a statement left open would hold its locks.
        const struct Reset {
            sqlite3_stmt* statement;
            ~Reset() { sqlite3_reset(statement); }
        } reset{statement};
        return step_through(statement, rows);
    }

    static int step_through(sqlite3_stmt* statement, Rows* rows) {
        const int columns = sqlite3_column_count(statement);
        if (rows != nullptr) rows->start(static_cast<std::size_t>(columns));
        int code = SQLITE_OK;
        while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
            if (rows == nullptr) continue;
            std::uint32_t* cells = rows->add_row();
            for (int column = 0; column < columns; ++column) {
                const std::int64_t value = sqlite3_column_int64(statement, column);
                cells[column] = static_cast<std::uint32_t>(value);
                // Only a zero can be a missing value: the type is asked for no other.
                if (value == 0 && sqlite3_column_type(statement, column) == SQLITE_NULL) {
                    rows->mark_empty(static_cast<std::size_t>(column));
                }
            }
        }
        return code;
    }

    Outcome finish(int code) {
        const Outcome outcome = outcome_of(code);
        if (outcome == Outcome::damaged) suspect_damage();
        if (outcome == Outcome::damaged || outcome == Outcome::failed) fit_ = false;
        return outcome;
    }

    static int committed(void* self, sqlite3* db, const char* schema, int frames) {
        auto& connection = *static_cast<SqliteConnection*>(self);
        int& patience = connection.patience_[std::strcmp(schema, "mem") == 0 ? 1 : 0];
        if (frames < kCheckpointFrames) {
            patience = kRestartFrames;
        } else if (frames < patience) {
            sqlite3_wal_checkpoint_v2(db, schema, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
        } else {
            // A reader that never pauses costs one wait per thousand frames, not one per commit.
            sqlite3_busy_timeout(db, kRestartWaitMs);
            const int code =
                sqlite3_wal_checkpoint_v2(db, schema, SQLITE_CHECKPOINT_RESTART, nullptr, nullptr);
            sqlite3_busy_timeout(db, kBusyTimeoutMs);
            patience = code == SQLITE_OK ? kRestartFrames : frames + kCheckpointFrames;
        }
        // What a checkpoint could not do is no failure of the statement, which is committed.
        return SQLITE_OK;
    }

    SqliteHandle db_;
    StatementCache statements_;  // goes before the connection
    OpenedFiles files_;
    bool fit_ = true;
    std::array<int, 2> patience_{kRestartFrames, kRestartFrames};
};

}  // namespace

std::unique_ptr<BackendConnection> connect_sqlite(std::string& why) {
    OpenedFiles files;
    SqliteHandle db = open_sqlite(files, why);
    if (!db) return nullptr;
    return std::make_unique<SqliteConnection>(std::move(db), std::move(files));
}

}  // namespace pwrmgt::vekdb
