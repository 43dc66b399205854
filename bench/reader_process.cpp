// SPDX-License-Identifier: Apache-2.0
// A front end: it asks for the day twenty times, in an existing database, and tells its memory.
#include <array>

#include "memory_use.h"
#include "vekdb_pwrmgt.h"

int main() {
    std::array<pwrmgt_hist_pwr_sample_t, PWRMGT_MAX_PERIOD_ENTRIES> entries{};
    for (int i = 0; i < 20; ++i) {
        const std::uint32_t status = pwrmgt_get_history_power(
            PWRMGT_DOMAIN_SYSTEM, PWRMGT_PERIOD_24_HOURS, entries.data(), entries.size());
        if (status != 0) return 1;
    }
    return pwrmgt::bench::print_anonymous_memory() ? 0 : 1;
}
