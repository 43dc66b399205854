// SPDX-License-Identifier: Apache-2.0
// What the tests that every engine has to pass must know of theirs.
#pragma once

#include <string>

// What $VEKDB_SERVER is for one test; empty: the database is in files.
std::string server_for_a_test();

// A table's columns, as a table of their `name` and place, `cid`; it wants a name of its own.
std::string columns_of(const std::string& table);

int descriptors_per_connection();
