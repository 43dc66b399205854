// SPDX-License-Identifier: Apache-2.0
// The one query pipeline: connection, window, select, rows, fold. Differences are arguments.
#pragma once

#include <cstdint>
#include <optional>

#include "db/session.h"
#include "query/sources.h"
#include "query/window.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::query {

// The rows of a window; query_failed also without a source.
inline db::Status select_window(uint32_t db, const std::optional<Source>& source,
                                const Window& window, db::Result& rows) {
    if (!source) return db::Status::query_failed;
    return db::select(db, {source->table, source->columns, window.filter, window.order}, rows);
}

// Folds the last `period` with `read(result, samples per entry)`; an empty window is `when_empty`.
template <class Read>
db::Status by_period(const std::optional<Source>& source, uint32_t period, uint32_t count,
                     db::Status when_empty, Read read) {
    using db::Status;
    const db::Connection db{pwrmgt_get_db_handle()};
    if (!db) return Status::no_connection;
    Window window;
    if (pwrmgt_hist_query_string(window.order, window.filter, period, count) != 0) {
        return Status::no_window;
    }
    db::Result rows;
    const Status found = select_window(db.get(), source, window, rows);
    if (found != Status::ok) return found;
    if (vek_db_result_row_count(rows.get()) < 1) return when_empty;
    const bool any = read(rows.get(), pwrmgt_get_samples_perIndex(period)) == 1;
    return any ? Status::ok : Status::no_valid_sample;
}

}  // namespace pwrmgt::query
