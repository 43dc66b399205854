// SPDX-License-Identifier: Apache-2.0
// A C program against the installed library: the last hour of a database.
#include <stdio.h>
#include <vekdb_pwrmgt.h>

int main(void) {
    pwrmgt_hist_pwr_sample_t entries[60];
    const uint32_t status =
        pwrmgt_get_history_power(PWRMGT_DOMAIN_SYSTEM, PWRMGT_PERIOD_1_HOUR, entries, 60);
    printf("history: status %u\n", (unsigned)status);
    return 0;
}
