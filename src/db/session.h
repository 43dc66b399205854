// SPDX-License-Identifier: Apache-2.0
// What every walk asks of the database client and the clock: a select, a statement, the time.
#pragma once

#include <cstdint>

#include "db/columns.h"
#include "db/owned.h"
#include "db/status.h"
#include "db/tables.h"
#include "db/text.h"

namespace pwrmgt::db {

// A connection to the power database; 0 when it did not open.
uint32_t open_database();

struct Selection {
    const char* table;
    Columns columns = kAllColumns;
    const char* where = nullptr;
    const char* order = nullptr;
};

// query_failed also when the client reports success without a result.
Status select(uint32_t db, const Selection& what, Result& rows);

// The client's own result of a statement that hands back no rows.
int statement(uint32_t db, const Statement& text);

// The same for a statement that hands back rows.
int statement(uint32_t db, const Statement& text, Result& rows);

// Statements on a working table and its twin; each is the client's own result.
int truncate(uint32_t db, const char* table);
int copy_all(uint32_t db, const char* to, const char* from);
int copy_above(uint32_t db, const Twin& tables, const char* column, int32_t last);

// The wall clock in 32 bits; below 0 when it cannot be read.
int32_t now();

}  // namespace pwrmgt::db
