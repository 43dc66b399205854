// SPDX-License-Identifier: Apache-2.0
// The one query pipeline behind a connection and a window: select, rows, fold. Differences are
// arguments.
#pragma once

#include <cstdint>
#include <optional>

#include "db/session.h"
#include "query/sources.h"
#include "query/window.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::query {

// Folds the window's rows with `read(result)`, which tells 1 when an entry got a valid sample. An
// empty window ends with `when_empty`; without one the row count is not asked for. No source:
// query_failed.
template <class Read>
db::Status fold_window(uint32_t db, const std::optional<Source>& source, const Window& window,
                       std::optional<db::Status> when_empty, Read read) {
    using db::Status;
    if (!source) return Status::query_failed;
    db::Result rows;
    const Status found =
        db::select(db, {source->table, source->columns, window.filter, window.order}, rows);
    if (found != Status::ok) return found;
    if (when_empty && vek_db_result_row_count(rows.get()) < 1) return *when_empty;
    return read(rows.get()) == 1 ? Status::ok : Status::no_valid_sample;
}

}  // namespace pwrmgt::query
