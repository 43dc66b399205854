// SPDX-License-Identifier: Apache-2.0
// Reading out: domains and bays as tables and columns.
#include "query/sources.h"

#include "db/tables.h"

namespace pwrmgt::query {

namespace {

constexpr uint32_t kPsusInMainTable = 4;

}  // namespace

std::optional<Source> source_of_domain(pwrmgt_pwr_domain domain) {
    switch (domain) {
        case PWRMGT_DOMAIN_SYSTEM:
            return Source{db::kHistPowers.working, db::kSystemColumns};
        case PWRMGT_DOMAIN_CPU:
            return Source{db::kHistPowers.working, db::kCpuColumns};
        case PWRMGT_DOMAIN_MEMORY:
            return Source{db::kHistPowers.working, db::kMemoryColumns};
        default:
            return std::nullopt;
    }
}

std::optional<Source> source_of_psu(uint32_t psu) {
    if (psu < 1 || psu > PWRMGT_MAX_PSU) return std::nullopt;
    const db::Twin& tables = psu <= kPsusInMainTable ? db::kHistPowers : db::kHistExtraPowers;
    return Source{tables.working, db::psu_columns(psu)};
}

Source source_of_percentages() {
    return {db::kHistPowers.working, db::kPercentColumns};
}

}  // namespace pwrmgt::query
