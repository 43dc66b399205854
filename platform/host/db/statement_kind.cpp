// SPDX-License-Identifier: Apache-2.0
#include "statement_kind.h"

#include <algorithm>
#include <array>

#include "literals.h"
#include "schema.h"

namespace pwrmgt::vekdb {

std::string as_delete(std::string_view sql) {
    std::array<std::string_view, 3> words;
    std::size_t count = 0;
    constexpr std::string_view kBlank = " \t\r\n\v\f;";
    for (std::size_t at = sql.find_first_not_of(kBlank); at != std::string_view::npos;) {
        if (count == words.size()) return {};
        const std::size_t end = std::min(sql.find_first_of(kBlank, at), sql.size());
        words[count++] = sql.substr(at, end - at);
        at = sql.find_first_not_of(kBlank, end);
    }
    if (count == 3 && first_word(words[1]) != "table") return {};
    const char* table = count < 2 ? nullptr : known_table(words[count - 1]);
    return table == nullptr ? std::string{} : std::string{"DELETE FROM "} + table;
}

bool leaves_no_trace(std::string_view word) {
    constexpr std::array<std::string_view, 13> kTraceless{
        "select", "insert", "update", "delete",   "replace",   "with",    "values",
        "begin",  "commit", "end",    "rollback", "savepoint", "release",
    };
    return std::find(kTraceless.begin(), kTraceless.end(), word) != kTraceless.end();
}

}  // namespace pwrmgt::vekdb
