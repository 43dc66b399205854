// SPDX-License-Identifier: Apache-2.0
// The database session: opening, selects, statements, the clock.
#include "db/session.h"

#include <ctime>

#include "vekdb_pwrmgt.h"

namespace pwrmgt::db {

uint32_t open_database() {
    return vek_db_open("localhost", "root", "", "vek_pwr_db", 0);
}

Status select(uint32_t db, const Selection& what, Result& rows) {
    const int failed = vek_db_query(db, what.table, what.columns.first, what.columns.count,
                                    what.where, 0, 0, what.order, rows.out());
    return failed == 0 && rows ? Status::ok : Status::query_failed;
}

int statement(uint32_t db, const Statement& text) {
    return vek_db_raw_query(db, text.c_str(), text.length(), nullptr);
}

int statement(uint32_t db, const Statement& text, Result& rows) {
    return vek_db_raw_query(db, text.c_str(), text.length(), rows.out());
}

int truncate(uint32_t db, const char* table) {
    return statement(db, Statement("TRUNCATE TABLE %s", table));
}

int copy_all(uint32_t db, const char* to, const char* from) {
    return statement(db, Statement("INSERT INTO %s SELECT * FROM %s", to, from));
}

int copy_above(uint32_t db, const Twin& tables, const char* column, int32_t last) {
    return statement(db, Statement("INSERT INTO %s SELECT * FROM %s where %s>%d", tables.persistent,
                                   tables.working, column, last));
}

int32_t now() {
    return static_cast<int32_t>(std::time(nullptr));
}

}  // namespace pwrmgt::db

extern "C" uint32_t pwrmgt_get_db_handle() {
    return pwrmgt::db::open_database();
}
