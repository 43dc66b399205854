// SPDX-License-Identifier: Apache-2.0
// The supply table: rows made, rewritten, and read back as one record.
#include "psu/bays.h"

#include "db/session.h"

namespace pwrmgt::psu {

namespace {

constexpr uint32_t kUnusableLabel = 8192;

// Puts the seven columns in their order.
void put_bay(uint32_t row, const Psu& psu) {
    const db::Columns& columns = db::kPsuColumns;
    vek_db_content_put_uchar(row, columns[0], psu.psu_id);
    vek_db_content_put_uchar(row, columns[1], psu.present);
    vek_db_content_put_uchar(row, columns[2], psu.input_ac_lost);
    vek_db_content_put_uchar(row, columns[3], psu.psu_fault);
    vek_db_content_put_uchar(row, columns[4], psu.input_voltage);
    vek_db_content_put_short_uint(row, columns[5], psu.input_label_power);
    vek_db_content_put_short_uint(row, columns[6], psu.output_label_power);
}

void read_bay(uint32_t rows, Psu& psu) {
    vek_db_result_column_uchar(rows, 0, &psu.psu_id);
    vek_db_result_column_uchar(rows, 1, &psu.present);
    vek_db_result_column_uchar(rows, 2, &psu.input_ac_lost);
    vek_db_result_column_uchar(rows, 3, &psu.psu_fault);
    vek_db_result_column_uchar(rows, 4, &psu.input_voltage);
    vek_db_result_column_short_uint(rows, 5, &psu.input_label_power);
    vek_db_result_column_short_uint(rows, 6, &psu.output_label_power);
}

// Counts every row; rows beyond the record's bays are not stored.
void fill(uint32_t rows, int count, Psus& psus) {
    psus.psu_count = static_cast<uint8_t>(count);
    psus.present_count = psus.healthy_count = 0;
    for (Psu& bay : psus.psu) {
        bay = unknown_psu();
    }
    for (int index = 0; index < count; ++index) {
        Psu beyond = unknown_psu();
        Psu& psu = index < PWRMGT_MAX_PSU ? psus.psu[index] : beyond;
        vek_db_result_step(rows);
        read_bay(rows, psu);
        if (psu.psu_id == db::kUnknownByte || psu.present != 1) continue;
        ++psus.present_count;
        if (psu.input_ac_lost == 0 && psu.psu_fault == 0) ++psus.healthy_count;
    }
}

db::Status insert_bays(uint32_t db, uint32_t row, int32_t count) {
    const uint32_t bays = count > 0 ? static_cast<uint32_t>(count) : 0;
    for (uint32_t bay = 1; bay <= bays; ++bay) {
        Psu psu = unknown_psu();
        psu.psu_id = static_cast<uint8_t>(bay);
        vek_db_content_clear(row);
        put_bay(row, psu);
        if (vek_db_insert(db, db::kPsuProperty, row, 0, 0) != 0) return db::Status::insert_failed;
    }
    return db::Status::ok;
}

}  // namespace

Psu unknown_psu() {
    return {15, 15, 15, 15, 15, db::kNoPower, db::kNoPower};
}

bool delivers(const Psu& psu) {
    return psu.psu_id != db::kUnknownByte && psu.present != 0 && psu.input_ac_lost == 0 &&
           psu.psu_fault == 0;
}

bool usable(const Psu& psu) {
    return delivers(psu) && psu.output_label_power < db::kNoPower;
}

uint32_t count_usable(const Psus& psus, uint32_t first, uint32_t last) {
    uint32_t found = 0;
    for (uint32_t bay = first; bay <= last; ++bay) {
        if (usable(psus.psu[bay - 1])) ++found;
    }
    return found;
}

std::optional<Psus> read_bays() {
    Psus psus{};
    const uint32_t status = pwrmgt_get_psus_property(&psus);
    if (status != 0 && status != code(db::Status::supplies_unusable)) return std::nullopt;
    return psus;
}

std::optional<uint32_t> weakest_label_w() {
    Psu weakest = unknown_psu();
    pwrmgt_get_smallest_psuInfo(&weakest);
    if (weakest.output_label_power >= kUnusableLabel) return std::nullopt;
    return weakest.output_label_power;
}

}  // namespace pwrmgt::psu

using namespace pwrmgt::db;
using namespace pwrmgt::psu;

extern "C" uint32_t pwrmgt_init_psu_property_table(uint32_t db, int32_t count) {
    Content row;
    Result rows;
    const Status found = select(db, {.table = kPsuProperty}, rows);
    if (found != Status::ok) return code(found);
    if (vek_db_delete(db, kPsuProperty, nullptr) != 0) return code(Status::statement_failed);
    row.own(vek_db_get_content_values());
    if (!row) return code(Status::no_content);
    return code(insert_bays(db, row.get(), count));
}

extern "C" uint32_t pwrmgt_update_psu_property_table(uint32_t db, pwrmgt_psu_property_t psu) {
    const RowFilter this_bay("%s=%d", kPsuColumns[0], psu.psu_id);
    Result rows;
    const Status found = select(db, {.table = kPsuProperty, .where = this_bay.c_str()}, rows);
    if (found != Status::ok) return code(found);
    if (vek_db_result_row_count(rows.get()) < 1) return code(Status::no_bay_row);
    const Content row{vek_db_get_content_values()};
    if (!row) return code(Status::no_content);
    put_bay(row.get(), psu);
    const int failed = vek_db_update(db, kPsuProperty, row.get(), this_bay.c_str(), 0, 0);
    vek_db_content_clear(row.get());
    return code(failed == 0 ? Status::ok : Status::update_failed);
}

extern "C" uint32_t pwrmgt_get_psus_property(pwrmgt_psus_property_t* out) {
    if (out == nullptr) return code(Status::null_argument);
    if (pwrmgt_unsupport_check("") != 0) return code(Status::unsupported);
    pwrmgt_power_policy_t policy{};
    if (const uint32_t failed = pwrmgt_get_pwrpolicy_tbl(&policy); failed != 0) return failed;
    // Kept: 3 passes here; the other supply functions take 0 only. [IsBladeThreePassesHere]
    if (policy.is_blade != 0 && policy.is_blade != 3) return code(Status::unsupported);

    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return code(Status::no_connection);
    Result rows;
    const Status found = select(db.get(), {.table = kPsuProperty, .columns = kPsuColumns}, rows);
    if (found != Status::ok) return code(found);
    const int count = vek_db_result_row_count(rows.get());
    if (count < 1) return code(Status::no_rows);
    fill(rows.get(), count, *out);
    const bool healthy = out->present_count != 0 && out->healthy_count != 0;
    return code(healthy ? Status::ok : Status::supplies_unusable);
}
