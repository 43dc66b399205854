// SPDX-License-Identifier: Apache-2.0
#include <stdio.h>
#include <vekdb_pwrmgt.h>

static pwrmgt_hist_pwr_sample_t day[120];

int main(void) {
    const unsigned status = pwrmgt_get_history_power(PWRMGT_DOMAIN_SYSTEM, 3, day, 120);
    return printf("status %u, %d W\n", status, day[0].avg) < 0;
}
