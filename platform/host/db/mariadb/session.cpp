// SPDX-License-Identifier: Apache-2.0
#include "session.h"

#include <errmsg.h>
#include <fcntl.h>
#include <mysqld_error.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <mutex>

#include "../schema.h"
#include "quiet_pipe.h"

namespace pwrmgt::vekdb::mariadb {

namespace {

constexpr unsigned kConnectTimeout_s = 5;
// Longer than a lock may be waited for, so that a lock is told from a server that is gone.
constexpr unsigned kAnswerTimeout_s = 15;
constexpr unsigned long kOldestServer = 100602;  // the first to prepare every statement

// An ordinary text, a text in double quotes as a name, no meaning of its own for a backslash, and
// no value that was not asked for. Other writers are not waited for by readers, and a lock that
// does not come free ends a statement.
constexpr const char* kSettings =
    "SET SESSION sql_mode='STRICT_ALL_TABLES,ANSI_QUOTES,PIPES_AS_CONCAT,NO_BACKSLASH_ESCAPES,"
    "NO_ENGINE_SUBSTITUTION',autocommit=1,lock_wait_timeout=5,innodb_lock_wait_timeout=5,"
    "max_heap_table_size=67108864";
constexpr const char* kIsolation = "SET SESSION TRANSACTION ISOLATION LEVEL READ COMMITTED";

std::atomic<bool> missing{false};

// The library ignores SIGPIPE for the whole process when it starts; that is the program's to
// choose.
bool start_library() {
    static std::once_flag started;
    static bool works = false;
    std::call_once(started, [] {
        struct sigaction before {};
        sigaction(SIGPIPE, nullptr, &before);
        works = mysql_library_init(0, nullptr, nullptr) == 0;
        sigaction(SIGPIPE, &before, nullptr);
    });
    return works;
}

std::string error_of(MYSQL* session) {
    const char* const text = mysql_error(session);
    return *text != '\0' ? text : "out of memory";
}

bool execute(MYSQL* session, const std::string& sql) {
    return mysql_real_query(session, sql.data(), sql.size()) == 0;
}

const char* text_or_null(const std::optional<std::string>& text) {
    return text ? text->c_str() : nullptr;
}

Session make_session() {
    Session session{mysql_init(nullptr)};
    if (!session) return session;
    const unsigned no_files = 0;
    mysql_optionsv(session.get(), MYSQL_OPT_CONNECT_TIMEOUT, &kConnectTimeout_s);
    mysql_optionsv(session.get(), MYSQL_OPT_READ_TIMEOUT, &kAnswerTimeout_s);
    mysql_optionsv(session.get(), MYSQL_OPT_WRITE_TIMEOUT, &kAnswerTimeout_s);
    mysql_optionsv(session.get(), MYSQL_SET_CHARSET_NAME, "utf8mb4");
    mysql_optionsv(session.get(), MYSQL_READ_DEFAULT_GROUP, "vekdb");
    // A server must not ask for files of this machine.
    mysql_optionsv(session.get(), MYSQL_OPT_LOCAL_INFILE, &no_files);
    return session;
}

bool connect(MYSQL* session, const Address& address, const char* database) {
    const char* const host = address.host.empty() ? "localhost" : address.host.c_str();
    const char* const socket = address.socket.empty() ? nullptr : address.socket.c_str();
    return mysql_real_connect(session, host, text_or_null(address.user),
                              text_or_null(address.password), database, address.port, socket,
                              0) != nullptr;
}

// A name for a statement, whatever the quotes mean there.
std::string quoted(std::string_view name) {
    std::string text = "`";
    for (const char c : name) {
        if (c == '`') text += c;
        text += c;
    }
    return text + '`';
}

// Connects, and makes the database where the server has none of that name.
Session reach(const Address& address, std::string& why) {
    Session session = make_session();
    if (session && connect(session.get(), address, address.database.c_str())) return session;
    if (session && mysql_errno(session.get()) == ER_BAD_DB_ERROR) {
        session = make_session();
        if (session && connect(session.get(), address, nullptr) &&
            execute(session.get(), "CREATE DATABASE IF NOT EXISTS " + quoted(address.database)) &&
            mysql_select_db(session.get(), address.database.c_str()) == 0) {
            return session;
        }
    }
    why = session ? error_of(session.get()) : "out of memory";
    return nullptr;
}

bool settle(MYSQL* session, std::string& why) {
    const my_bool off = 0;
    // A session made anew behind our back would lack its settings.
    mysql_optionsv(session, MYSQL_OPT_RECONNECT, &off);
    fcntl(mysql_get_socket(session), F_SETFD, FD_CLOEXEC);
    if (mariadb_connection(session) == 0 || mysql_get_server_version(session) < kOldestServer) {
        why = std::string{"server of version "} + mysql_get_server_info(session) +
              ", and it takes MariaDB 10.6.2 or later";
        return false;
    }
    if (execute(session, kSettings) && execute(session, kIsolation)) return true;
    why = error_of(session);
    return false;
}

std::string creation_of(const TableShape& table) {
    const bool memory = table.store == Store::memory;
    // Ranges are asked for, and these tables' usual indices know none.
    const char* const kind = memory ? " USING BTREE" : "";
    std::string text = std::string{"CREATE TABLE IF NOT EXISTS "} + table.name + " (";
    text += typed_columns(table.columns, "BIGINT");
    if (!table.key.empty()) {
        text.append(",PRIMARY KEY (").append(table.key).append(")").append(kind);
    }
    for (const TableIndex& index : table.indices) {
        if (index.suffix.empty()) continue;
        text.append(",KEY ").append(table.name).append(index.suffix);
        text.append(" (").append(index.columns).append(")").append(kind);
    }
    return text.append(memory ? ") ENGINE=MEMORY" : ") ENGINE=InnoDB");
}

// Each statement does nothing where another opener was first. The version comes last: where it
// stands all tables do.
bool make_tables(MYSQL* session) {
    for (const TableShape& table : tables()) {
        if (!execute(session, creation_of(table))) return false;
    }
    return execute(session,
                   "CREATE TABLE IF NOT EXISTS VekdbSchema (Version INT PRIMARY KEY) "
                   "ENGINE=InnoDB") &&
           execute(session, "INSERT IGNORE INTO VekdbSchema VALUES (" +
                                std::to_string(kSchemaVersion) + ")");
}

// 0 without tables, -1 with the reason in the session.
int version_of(MYSQL* session) {
    if (!execute(session, "SELECT MAX(Version) FROM VekdbSchema")) {
        return mysql_errno(session) == ER_NO_SUCH_TABLE ? 0 : -1;
    }
    const std::unique_ptr<MYSQL_RES, decltype(&mysql_free_result)> result{
        mysql_store_result(session), &mysql_free_result};
    if (!result) return -1;
    const MYSQL_ROW row = mysql_fetch_row(result.get());
    return row == nullptr || row[0] == nullptr ? 0 : std::atoi(row[0]);
}

bool prepare_tables(MYSQL* session, std::string& why) {
    const int version = version_of(session);
    if (version > kSchemaVersion) {
        why = "made by a newer version";
        return false;
    }
    if (version < 0 || (version == 0 && !make_tables(session))) {
        why = error_of(session);
        return false;
    }
    // A text may have named a table that nobody has: who may not make any goes on without.
    if (missing.exchange(false) && version > 0) static_cast<void>(make_tables(session));
    return true;
}

}  // namespace

void CloseSession::operator()(MYSQL* session) const noexcept {
    const QuietPipe quiet;
    mysql_close(session);
}

Session open_session(const Address& address, std::string& why) {
    if (!start_library()) {
        why = "the connector's library does not start";
        return nullptr;
    }
    const QuietPipe quiet;
    Session session = reach(address, why);
    if (!session || !settle(session.get(), why) || !prepare_tables(session.get(), why)) {
        return nullptr;
    }
    return session;
}

void suspect_missing_table() noexcept {
    missing.store(true);
}

}  // namespace pwrmgt::vekdb::mariadb
