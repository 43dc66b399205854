// SPDX-License-Identifier: Apache-2.0
// Reading in: the working power history and its persistent twin from start to save.
#include <cstdint>

#include "db/session.h"
#include "db/twins.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::db;

namespace {

void read_last_row(const Result& rows, int32_t* last_id, int32_t* last_timestamp) {
    vek_db_result_step(rows.get());
    int32_t unwanted = 0;
    vek_db_result_column_int(rows.get(), 0, last_id != nullptr ? last_id : &unwanted);
    vek_db_result_column_int(rows.get(), 1, last_timestamp != nullptr ? last_timestamp : &unwanted);
}

int replace_slot(uint32_t db, int32_t slot) {
    const int deleted = statement(db, Statement("delete from HistPowers24Hr where _id=%d", slot));
    const int inserted =
        statement(db, Statement("insert into HistPowers24Hr select * from HistPowers24HrMem where "
                                "_id=%d",
                                slot));
    return deleted | inserted;
}

}  // namespace

extern "C" uint32_t pwrmgt_init_hist_table(uint32_t db, int32_t now, int32_t* last_id,
                                           int32_t* last_timestamp) {
    if (db == 0) return code(Status::null_argument);
    const Status ready = ready_for_copy(db, kMainHistory, now);
    if (ready != Status::ok) return code(ready);
    if (copy_all(db, kHistPowers.working, kHistPowers.persistent) != 0) {
        return code(Status::copy_failed);
    }

    const Order highest_slot_first("%s DESC", kId);
    Result rows;
    const Status found =
        select(db, {.table = kHistPowers.working, .order = highest_slot_first.c_str()}, rows);
    if (found != Status::ok) return code(found);
    if (vek_db_result_row_count(rows.get()) > 0) read_last_row(rows, last_id, last_timestamp);
    return code(Status::ok);
}

extern "C" uint32_t pwrmgt_load_hist_bak_table(uint32_t db) {
    const int deleted = statement(db, Statement("DELETE FROM %s", kHistPowers.working));
    const int copied = copy_all(db, kHistPowers.working, kHistPowers.persistent);
    return static_cast<uint32_t>(deleted | copied);
}

extern "C" uint32_t pwrmgt_cleanup_hist_mem_table(uint32_t db, int32_t now) {
    if (db == 0) return code(Status::null_argument);
    return code(trim_both(db, kMainHistory, now));
}

extern "C" uint32_t pwrmgt_save_hist_mem_table(uint32_t db, int32_t* last_saved) {
    // Kept: slot 0 is not above 0, so an empty table never gets it.
    // [SlotZeroIsNotCopiedToAnEmptyTable]
    int32_t unwanted = 0;
    return code(save_new_rows(db, kMainHistory, last_saved != nullptr ? *last_saved : unwanted));
}

extern "C" uint32_t pwrmgt_update_hist_persist_db(uint32_t db, int32_t first, uint32_t count) {
    if (db == 0 || first < 0 || count < 1 || count > kRingSlots) return code(Status::bad_slots);
    uint32_t slot = static_cast<uint32_t>(first) < kRingSlots ? static_cast<uint32_t>(first) : 0;
    int failed = 0;
    for (uint32_t round = 0; round < count; ++round) {
        // Kept: only the last round's results go back. [OnlyTheLastRoundIsReported]
        failed = replace_slot(db, static_cast<int32_t>(slot));
        slot = (slot + 1) % kRingSlots;
    }
    return static_cast<uint32_t>(failed);
}
