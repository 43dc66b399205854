// SPDX-License-Identifier: Apache-2.0
// Settings: the stored power policy, read back and made with its defaults.
#include "policy/policy_row.h"

#include <array>
#include <atomic>

#include "db/session.h"

uint8_t g_power_policy_flag = PWRMGT_POLICY_UNREAD;

namespace pwrmgt::policy {

namespace {

using Policy = pwrmgt_power_policy_t;

// The record's fields in the order of kPolicyColumns.
constexpr std::array<uint8_t Policy::*, 5> kBytes{
    &Policy::is_blade,   &Policy::redun_mode, &Policy::maxim_status,
    &Policy::cap_enable, &Policy::cap_mode,
};
constexpr std::array<uint16_t Policy::*, 7> kWords{
    &Policy::cap_value,   &Policy::cap_soft_ac, &Policy::cap_min_ac, &Policy::cap_max_ac,
    &Policy::cap_soft_dc, &Policy::cap_min_dc,  &Policy::cap_max_dc,
};
static_assert(kBytes.size() + kWords.size() == kPolicyFields);

constexpr uint32_t kHighestRedunMode = 4;
constexpr uint8_t kBladeRedunMode = 15;
constexpr uint8_t kServerRedunMode = 1;

}  // namespace

void read_policy(uint32_t result, Policy& policy) {
    int column = 0;
    for (const auto field : kBytes) {
        vek_db_result_column_uchar(result, column++, &(policy.*field));
    }
    for (const auto field : kWords) {
        vek_db_result_column_short_uint(result, column++, &(policy.*field));
    }
}

void put_policy(uint32_t content, const Policy& policy) {
    int column = 0;
    vek_db_content_put_uchar(content, db::kId, 0);
    for (const auto field : kBytes) {
        vek_db_content_put_uchar(content, db::kPolicyColumns[column++], policy.*field);
    }
    for (const auto field : kWords) {
        vek_db_content_put_short_uint(content, db::kPolicyColumns[column++], policy.*field);
    }
}

uint8_t cached_is_blade() {
    return std::atomic_ref{g_power_policy_flag}.load(std::memory_order_relaxed);
}

void cache_is_blade(uint8_t is_blade) {
    std::atomic_ref{g_power_policy_flag}.store(is_blade, std::memory_order_relaxed);
}

namespace {

Policy default_policy(uint32_t is_blade, uint32_t redun_mode) {
    Policy policy{};
    policy.is_blade = static_cast<uint8_t>(is_blade);
    policy.redun_mode = static_cast<uint8_t>(redun_mode);
    if (redun_mode > kHighestRedunMode) {
        policy.redun_mode = is_blade != 0 ? kBladeRedunMode : kServerRedunMode;
    }
    policy.cap_mode = 1;
    for (const auto field : kWords) {
        policy.*field = db::kNoPower;
    }
    return policy;
}

// Kept: the unstress columns are fetched and dropped. [UnstressColumnsAreFetchedAndDropped]
void read_row(uint32_t result, Policy& policy) {
    read_policy(result, policy);
    for (int column = kPolicyFields; column < db::kPolicyColumns.count; ++column) {
        uint16_t unstress_w = 0;
        vek_db_result_column_short_uint(result, column, &unstress_w);
    }
}

db::Status insert_policy(uint32_t db, const Policy& policy) {
    const db::Content row{vek_db_get_content_values()};
    if (!row) return db::Status::no_content;
    put_policy(row.get(), policy);
    for (int column = kPolicyFields; column < db::kPolicyColumns.count; ++column) {
        vek_db_content_put_short_uint(row.get(), db::kPolicyColumns[column], 0);
    }
    const int failed = vek_db_insert(db, db::kPowerPolicy, row.get(), 0, 0);
    return failed == 0 ? db::Status::ok : db::Status::insert_failed;
}

}  // namespace

}  // namespace pwrmgt::policy

using namespace pwrmgt::db;
using namespace pwrmgt::policy;

extern "C" uint32_t pwrmgt_get_pwrpolicy_tbl(pwrmgt_power_policy_t* out) {
    if (out == nullptr) return code(Status::null_argument);
    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return code(Status::no_connection);
    {
        Result rows;
        const Status found =
            select(db.get(), {.table = kPowerPolicy, .columns = kPolicyColumns}, rows);
        if (found != Status::ok) return code(found);
        if (vek_db_result_row_count(rows.get()) < 1) return code(Status::no_rows);
        vek_db_result_step(rows.get());
        read_row(rows.get(), *out);
    }
    // Kept: only an unread flag is set here. [ReaderSetsTheFlagOnlyWhileItIs255]
    if (cached_is_blade() == PWRMGT_POLICY_UNREAD) cache_is_blade(out->is_blade);
    return code(Status::ok);
}

extern "C" uint32_t pwrmgt_init_power_policy_table(uint32_t db, pwrmgt_power_policy_t* out,
                                                   uint32_t is_blade, uint32_t redun_mode) {
    const RowFilter only_row("%s=%d", kId, 0);
    Result rows;
    const Status found = select(
        db, {.table = kPowerPolicy, .columns = kPolicyColumns, .where = only_row.c_str()}, rows);
    if (found != Status::ok) return code(found);

    pwrmgt_power_policy_t unwanted;
    pwrmgt_power_policy_t& policy = out != nullptr ? *out : unwanted;
    policy = default_policy(is_blade, redun_mode);
    if (vek_db_result_row_count(rows.get()) < 1) return code(insert_policy(db, policy));
    vek_db_result_step(rows.get());
    read_row(rows.get(), policy);
    return code(Status::ok);
}
