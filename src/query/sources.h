// SPDX-License-Identifier: Apache-2.0
// Where a history is read: the table and the column list of a domain or a bay.
#pragma once

#include <cstdint>
#include <optional>

#include "db/columns.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::query {

struct Source {
    const char* table;
    db::Columns columns;
};

// Nothing for a domain above 2 or a bay outside 1..12.
std::optional<Source> source_of_domain(pwrmgt_pwr_domain domain);
std::optional<Source> source_of_psu(uint32_t psu);
Source source_of_percentages();

}  // namespace pwrmgt::query
