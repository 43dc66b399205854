// SPDX-License-Identifier: Apache-2.0
// Statements as callers write them, in this server's words.
#pragma once

#include <string>
#include <string_view>

namespace pwrmgt::vekdb::mariadb {

// Empty where `sql` stands as it is. A row put into a table with a key replaces one that is equal
// in it; every row of a working table goes at once, which leaves its rows in the order of their
// coming and is no part of a transaction.
std::string translated(std::string_view sql, bool in_transaction);

// Blanks and comments alone, which the server takes for a statement that does nothing.
bool says_nothing(std::string_view sql);

}  // namespace pwrmgt::vekdb::mariadb
