// SPDX-License-Identifier: Apache-2.0
// Connections and statements: names are checked here, texts put together and handed to the engine.
#include <syslog.h>

#include <memory>

#include "content.h"
#include "fork_gate.h"
#include "guarded.h"
#include "handles.h"
#include "literals.h"
#include "pool.h"
#include "rows.h"
#include "schema.h"
#include "vekdb_client.h"

namespace pwrmgt::vekdb {

namespace {

// Holds any select that the library makes.
constexpr std::size_t kTextSize = 512;
// An offset stands behind a limit only; every engine takes this one.
constexpr const char* kNoLimit = "9223372036854775807";

bool given(const char* text) {
    return text != nullptr && *text != '\0';
}

Outcome run(Lease& lease, std::string_view sql, std::span<const std::int64_t> values, Rows* rows) {
    const std::lock_guard turn{lease.turn};
    return lease.connection->run(sql, values, rows);
}

// Runs a statement and makes a handle for its rows; a statement that yields no columns has no
// result.
Outcome run_for_result(Lease& lease, std::string_view sql, std::span<const std::int64_t> values,
                       std::uint32_t& result) {
    auto rows = std::make_unique<Rows>();
    const Outcome outcome = run(lease, sql, values, rows.get());
    if (outcome != Outcome::ok || rows->columns() == 0) return outcome;
    result = result_handles.add(rows.get());
    if (result == 0) return Outcome::no_memory;
    static_cast<void>(rows.release());
    return Outcome::ok;
}

// The wanted columns as a text; false when there is a name that no table has.
bool column_text(const char* const* columns, int n_columns, std::string& text) {
    if (columns == nullptr || n_columns == 0) {
        text += '*';
        return true;
    }
    for (int i = 0; i < n_columns; ++i) {
        const auto number = columns[i] == nullptr ? std::nullopt : column_number(columns[i]);
        if (!number) return false;
        if (i > 0) text += ',';
        text.append(column_name(*number));
    }
    return true;
}

void append_filter(std::string& text, const char* where) {
    if (given(where)) text.append(" WHERE ").append(where);
}

Outcome write(std::uint32_t conn, const char* table, std::uint32_t content, const char* where,
              bool is_update) {
    const char* known = table == nullptr ? nullptr : known_table(table);
    const auto* pairs = static_cast<Content*>(content_handles.find(content));
    const auto lease = find_connection(conn);
    if (known == nullptr || pairs == nullptr || pairs->empty() || !lease)
        return Outcome::bad_argument;
    std::vector<std::int64_t> values{pairs->values().begin(), pairs->values().end()};
    if (!is_update) return run(*lease, pairs->insert_text(known), values, nullptr);
    std::string text = pairs->update_text(known);
    const std::size_t names_end = text.size();
    append_filter(text, where);
    const Template statement = take_literals_from(text, names_end);
    values.insert(values.end(), statement.values.begin(), statement.values.end());
    return run(*lease, statement.text, values, nullptr);
}

}  // namespace

// The list of exports can only pick from what is not hidden.
#pragma GCC visibility push(default)
extern "C" {

uint32_t vek_db_open(const char* host, const char* user, const char* password, const char* dbname,
                     int) {
    const Operation operation;
    std::string why = "null argument";
    try {
        if (host != nullptr && user != nullptr && password != nullptr && dbname != nullptr) {
            const std::uint32_t handle = lease_connection(why);
            if (handle != 0) return handle;
        }
        syslog(LOG_ERR, "vekdb: the database did not open: %s", why.c_str());
    } catch (const std::exception& trouble) {
        syslog(LOG_ERR, "vekdb: the database did not open: %s", trouble.what());
    }
    return 0;
}

void vek_db_close(uint32_t conn) {
    const Operation operation;
    return_connection(conn);
}

int vek_db_query(uint32_t conn, const char* table, const char* const* columns, int n_columns,
                 const char* where, int limit, int offset, const char* order, uint32_t* result) {
    if (result == nullptr) return code(Outcome::bad_argument);
    *result = 0;
    const Operation operation;
    return guarded([&] {
        const char* known = table == nullptr ? nullptr : known_table(table);
        const auto lease = find_connection(conn);
        std::string text;
        text.reserve(kTextSize);
        text += "SELECT ";
        if (known == nullptr || !lease || n_columns < 0 || limit < 0 || offset < 0 ||
            !column_text(columns, n_columns, text)) {
            return Outcome::bad_argument;
        }
        text.append(" FROM ").append(known);
        const std::size_t names_end = text.size();
        append_filter(text, where);
        if (given(order)) text.append(" ORDER BY ").append(order);
        if (limit != 0 || offset != 0)
            text.append(" LIMIT ").append(limit == 0 ? kNoLimit : std::to_string(limit));
        if (offset != 0) text.append(" OFFSET ").append(std::to_string(offset));
        const Template statement = take_literals_from(text, names_end);
        return run_for_result(*lease, statement.text, statement.values, *result);
    });
}

int vek_db_raw_query(uint32_t conn, const char* sql, uint32_t length, uint32_t* result) {
    if (result != nullptr) *result = 0;
    const Operation operation;
    return guarded([&] {
        const auto lease = find_connection(conn);
        if (sql == nullptr || length == 0 || !lease) return Outcome::bad_argument;
        const std::string_view text{sql, length};
        if (text.find('\0') != std::string_view::npos) return Outcome::bad_argument;
        const Template statement = take_literals(text);
        if (result == nullptr) return run(*lease, statement.text, statement.values, nullptr);
        return run_for_result(*lease, statement.text, statement.values, *result);
    });
}

int vek_db_insert(uint32_t conn, const char* table, uint32_t content, int, int) {
    const Operation operation;
    return guarded([&] { return write(conn, table, content, nullptr, false); });
}

int vek_db_update(uint32_t conn, const char* table, uint32_t content, const char* where, int, int) {
    const Operation operation;
    return guarded([&] { return write(conn, table, content, where, true); });
}

int vek_db_delete(uint32_t conn, const char* table, const char* where) {
    const Operation operation;
    return guarded([&] {
        const char* known = table == nullptr ? nullptr : known_table(table);
        const auto lease = find_connection(conn);
        if (known == nullptr || !lease) return Outcome::bad_argument;
        std::string text = std::string{"DELETE FROM "} + known;
        const std::size_t names_end = text.size();
        append_filter(text, where);
        const Template statement = take_literals_from(text, names_end);
        return run(*lease, statement.text, statement.values, nullptr);
    });
}

}  // extern "C"
#pragma GCC visibility pop

}  // namespace pwrmgt::vekdb
