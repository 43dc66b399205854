// SPDX-License-Identifier: Apache-2.0
// The one 30-second walk: slots counted back from the newest row, gaps, the end of the rows.
#pragma once

#include <cstdint>

#include "db/status.h"
#include "db/tables.h"
#include "vekdb_client.h"

namespace pwrmgt::query {

// The rows under the walk: the stamp of the current one, and whether any is left.
class RowCursor {
public:
    explicit RowCursor(uint32_t result) : result_{result} {}

    uint32_t stamp() const { return stamp_; }
    bool exhausted() const { return exhausted_; }
    void read_stamp() { vek_db_result_column_uint(result_, 0, &stamp_); }

    // False when the step failed.
    bool advance() {
        const int step = vek_db_result_step(result_);
        if (step == db::kRowReady) read_stamp();
        exhausted_ = step == db::kRowsEnded;
        return step == db::kRowReady || exhausted_;
    }

private:
    uint32_t result_;
    uint32_t stamp_ = 0;
    bool exhausted_ = false;
};

// Folds `per_entry` slots into each of `count` entries. A fold knows columns, validity and
// arithmetic; the walk knows time. Returns 1 when a fold closed an entry with a valid slot.
template <class Fold>
int32_t walk_grid(uint32_t result, int32_t count, uint32_t per_entry, Fold fold) {
    if (result == 0) return 0;
    RowCursor row{result};
    if (fold.first_row_readable(vek_db_result_step(result))) row.read_stamp();
    if (!fold.starts_at(row.stamp())) return 0;

    // Kept: the slot runs on from entry to entry, and a row off the grid is never matched and hides
    // all older ones. [OffGridRowHidesAllOlderRows]
    uint32_t slot_time = row.stamp();
    int32_t found = 0;
    for (int32_t entry = 0; entry < count; ++entry) {
        fold.open(entry);
        for (uint32_t slot = 0; slot < per_entry; ++slot, slot_time -= db::kSlotSeconds) {
            if (row.exhausted()) {
                fold.miss();
                break;  // every slot left is a miss: the walk costs no more than rows and entries
            }
            if (row.stamp() == slot_time) {
                fold.read(result);
                if (!row.advance()) return 0;
            } else {
                fold.miss();
            }
            if (slot_time == 0) continue;
            fold.stamp(slot_time);
            if (fold.valid()) fold.add();
        }
        found |= fold.close(entry);
    }
    return found;
}

}  // namespace pwrmgt::query
