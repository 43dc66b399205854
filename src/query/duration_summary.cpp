// SPDX-License-Identifier: Apache-2.0
// Reading out: the last minutes of a power history as one entry.
#include "query/pipeline.h"

using namespace pwrmgt::db;
using namespace pwrmgt::query;

namespace {

// Folds one supply and copies its averages when there is a valid sample.
int32_t read_supply(uint32_t rows, uint32_t slots, pwrmgt_hist_pwr_sample_t& summary) {
    pwrmgt_hist_psu_sample_t entry{};
    const int32_t any = pwrmgt_get_psuPowerSamples(rows, 1, slots, &entry);
    if (any == 1) {
        summary.avg = entry.avg_dc;
        summary.avg2 = entry.avg_ac;
    }
    return any;
}

Status summarise(pwrmgt_pwr_domain domain, int32_t minutes, pwrmgt_hist_pwr_sample_t& summary,
                 uint32_t psu) {
    const Connection db{pwrmgt_get_db_handle()};
    if (!db) return Status::no_connection;
    Window window;
    if (pwrmgt_duration_summary_query_string(window.order, sizeof window.order, window.filter,
                                             sizeof window.filter, minutes) != 0) {
        return Status::no_window;
    }
    const bool one_supply = domain == PWRMGT_DOMAIN_PSU;
    const uint32_t slots = 2U * static_cast<uint32_t>(minutes) + 1U;
    return fold_window(db.get(), one_supply ? source_of_psu(psu) : source_of_domain(domain), window,
                       Status::no_rows, [&](uint32_t rows) {
                           if (one_supply) return read_supply(rows, slots, summary);
                           return pwrmgt_get_powerSamples(rows, 1, slots, &summary, domain);
                       });
}

}  // namespace

uint32_t pwrmgt_get_duration_summary_power(pwrmgt_pwr_domain domain, int minutes,
                                           pwrmgt_hist_pwr_sample_t* summary, psu_id_t psu) {
    if (summary == nullptr) return code(Status::null_argument);
    if (pwrmgt_unsupport_check("pwrmgt_get_duration_summary_power") != 0) {
        return code(Status::unsupported);
    }
    return code(summarise(domain, minutes, *summary, psu));
}
