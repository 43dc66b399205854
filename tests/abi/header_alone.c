/* SPDX-License-Identifier: Apache-2.0 */
/* The public header as a C or C++ program's first and only include, twice. */
#include <vekdb_pwrmgt.h>

/* A declaration that needs what the header promises to bring: the records and the fixed-width
 * integers. */
uint32_t entries_of_an_hour(pwrmgt_hist_pwr_sample_t* entries);

uint32_t entries_of_an_hour(pwrmgt_hist_pwr_sample_t* entries) {
    return pwrmgt_get_history_power(PWRMGT_DOMAIN_SYSTEM, PWRMGT_PERIOD_1_HOUR, entries,
                                    PWRMGT_MAX_PERIOD_ENTRIES);
}
