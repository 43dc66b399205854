// SPDX-License-Identifier: Apache-2.0
#include "status_words.h"

#include <algorithm>
#include <array>

namespace pwrmgt::pwrmgtd {
namespace {

struct Meaning {
    std::string_view function;
    std::uint32_t status;
    std::string_view words;
};

// clang-format off
constexpr std::array<Meaning, 51> kMeanings{{
    {"pwrmgt_init_hist_table",          1,  "no database connection"},
    {"pwrmgt_init_hist_table",          6,  "old rows could not be trimmed, or the working table not emptied"},
    {"pwrmgt_init_hist_table",          4,  "the saved history could not be copied to the working table"},
    {"pwrmgt_init_hist_table",          3,  "the working table could not be queried"},
    {"pwrmgt_init_power_policy_table",  3,  "the policy row could not be queried"},
    {"pwrmgt_init_power_policy_table",  7,  "no memory for the policy row"},
    {"pwrmgt_init_power_policy_table",  4,  "the policy row could not be inserted"},
    {"pwrmgt_init_psu_property_table",  3,  "the supply table could not be queried"},
    {"pwrmgt_init_psu_property_table",  6,  "the supply table could not be emptied"},
    {"pwrmgt_init_psu_property_table",  7,  "no memory for the bays"},
    {"pwrmgt_init_psu_property_table",  4,  "a bay could not be inserted"},
    {"pwrmgt_update_psu_property_table", 3, "the bay could not be queried"},
    {"pwrmgt_update_psu_property_table", 4, "the bay has no row"},
    {"pwrmgt_update_psu_property_table", 7, "no memory for the bay"},
    {"pwrmgt_update_psu_property_table", 5, "the bay could not be updated"},
    {"pwrmgt_update_realtime_table",    3,  "the real-time row could not be queried"},
    {"pwrmgt_update_realtime_table",    31, "the real-time table holds more than one row"},
    {"pwrmgt_update_realtime_table",    4,  "the real-time row could not be inserted"},
    {"pwrmgt_update_realtime_table",    5,  "the real-time row could not be updated"},
    {"pwrmgt_update_hist_table",        1,  "no database connection, or a time outside 32 bits"},
    {"pwrmgt_update_hist_table",        4,  "no space is left"},
    {"pwrmgt_update_hist_table",        7,  "no memory for the row, or the disk failed"},
    {"pwrmgt_cleanup_hist_mem_table",   1,  "no database connection"},
    {"pwrmgt_cleanup_hist_mem_table",   6,  "old rows could not be trimmed"},
    {"pwrmgt_update_hist_persist_db",   3,  "bad slots"},
    {"pwrmgt_update_hist_persist_db",   4,  "no space is left"},
    {"pwrmgt_update_hist_persist_db",   7,  "the disk failed"},
    {"storing slots",                   4,  "no space is left"},
    {"storing slots",                   7,  "the disk failed"},
    {"saving slots",                    4,  "no space is left"},
    {"saving slots",                    5,  "the disk is read-only"},
    {"saving slots",                    7,  "the disk failed or is read-only"},
    {"pwrmgt_get_realtime_powers",      10, "the platform does not offer live readings"},
    {"pwrmgt_get_realtime_powers",      31, "the firmware did not answer, refused, or answered with another length"},
    {"pwrmgt_get_db_handle",            1,  "the database did not open"},
    {"saved rows",                      1,  "not every slot arrived in the persistent table"},
    {"saved rows",                      3,  "the tables could not be compared"},
    {"newest row",                      3,  "the history table could not be queried"},
    {"saved extra rows",                1,  "not every slot arrived in the persistent table"},
    {"saved extra rows",                3,  "the tables could not be compared"},
    {"saving supplies 5 to 12",         4,  "a slot could not be deleted or copied"},
    {"pwrmgt_init_hist_extra_table",    1,  "no database connection"},
    {"pwrmgt_init_hist_extra_table",    6,  "old rows could not be trimmed, or the working table not emptied"},
    {"pwrmgt_update_hist_extra_table",  1,  "no database connection, or a time outside 32 bits"},
    {"pwrmgt_update_hist_extra_table",  4,  "no space is left"},
    {"pwrmgt_update_hist_extra_table",  7,  "no memory for the row, or the disk failed"},
    {"pwrmgt_cleanup_extra_hist_mem_table", 1, "no database connection"},
    {"pwrmgt_cleanup_extra_hist_mem_table", 6, "old rows could not be trimmed"},
    {"pwrmgt_update_cpu_pwr_hist_table", 1, "no database connection"},
    {"pwrmgt_update_cpu_pwr_hist_table", 7, "no memory for the row"},
    {"pwrmgt_cleanup_cpu_pwr_hist_table", 6, "old rows could not be trimmed"},
}};
// clang-format on

}  // namespace

std::string status_words(std::string_view function, std::uint32_t status) {
    const auto known = std::find_if(kMeanings.begin(), kMeanings.end(), [&](const Meaning& row) {
        return row.function == function && row.status == status;
    });
    // The history writer and the save hand on the database client's own results.
    const std::string_view words = known != kMeanings.end() ? known->words : "the database refused";
    return std::to_string(status) + ", " + std::string(words);
}

bool note_status(Log& log, std::string_view function, std::uint32_t status) {
    log.state(function, status == 0 ? std::string() : "status " + status_words(function, status));
    return status == 0;
}

}  // namespace pwrmgt::pwrmgtd
