// SPDX-License-Identifier: Apache-2.0
#include "dialect.h"

#include <algorithm>
#include <array>

#include "../literals.h"
#include "../schema.h"
#include "../statement_kind.h"

namespace pwrmgt::vekdb::mariadb {

namespace {

// Takes a name off the front of `sql`; empty when something else stands there.
std::string_view take_name(std::string_view& sql) {
    constexpr std::string_view kBlank = " \t\r\n\v\f";
    constexpr std::string_view kName =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
    sql.remove_prefix(std::min(sql.find_first_not_of(kBlank), sql.size()));
    const std::size_t end = std::min(sql.find_first_not_of(kName), sql.size());
    const std::string_view name = sql.substr(0, end);
    sql.remove_prefix(end);
    return name;
}

std::string as_replacement(std::string_view sql) {
    std::string_view rest = sql;
    take_name(rest);
    const std::string_view from_here = rest;
    std::string_view name = take_name(rest);
    if (first_word(name) == "into") name = take_name(rest);
    const TableShape* const table = find_table(name);
    if (table == nullptr || table->key.empty()) return {};
    return std::string{"REPLACE"}.append(from_here);
}

// The working table that a statement empties.
const TableShape* emptied_table(std::string_view sql) {
    std::array<std::string_view, 3> names;
    for (std::string_view& name : names) {
        name = take_name(sql);
    }
    if (first_word(names[0]) != "delete" || first_word(names[1]) != "from") return nullptr;
    if (sql.find_first_not_of(" \t\r\n\v\f;") != std::string_view::npos) return nullptr;
    const TableShape* const table = find_table(names[2]);
    return table != nullptr && table->store == Store::memory ? table : nullptr;
}

}  // namespace

std::string translated(std::string_view sql, bool in_transaction) {
    const std::string word = first_word(sql);
    if (word == "insert") return as_replacement(sql);
    if (word != "truncate" && word != "delete") return {};
    std::string deletion = word == "truncate" ? as_delete(sql) : std::string{};
    const TableShape* const table = emptied_table(deletion.empty() ? sql : deletion);
    if (table == nullptr || in_transaction) return deletion;
    return std::string{"TRUNCATE TABLE "} + table->name;
}

bool says_nothing(std::string_view sql) {
    while (!sql.empty()) {
        sql.remove_prefix(std::min(sql.find_first_not_of(" \t\r\n\v\f;"), sql.size()));
        const bool line = sql.starts_with("--") || sql.starts_with('#');
        if (!line && !sql.starts_with("/*")) break;
        // The server runs what stands in such a comment.
        if (sql.starts_with("/*!") || sql.starts_with("/*M!")) break;
        const std::size_t end = line ? sql.find('\n') : sql.find("*/", 2);
        sql.remove_prefix(end == std::string_view::npos ? sql.size() : end + (line ? 1 : 2));
    }
    return sql.empty();
}

}  // namespace pwrmgt::vekdb::mariadb
