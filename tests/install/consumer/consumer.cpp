// SPDX-License-Identifier: Apache-2.0
// A C++ program against the installed library: the two functions that have C++ linkage.
#include <vekdb_pwrmgt.h>

#include <cstdio>

int main() {
    pwrmgt_hist_pwr_sample_t summary{};
    const uint32_t status =
        pwrmgt_get_duration_summary_power(PWRMGT_DOMAIN_SYSTEM, 60, &summary, psu_id_t{});
    std::printf("history is offered: %u\nsummary: status %u\n",
                judge_power_function("pwrmgt_get_history_power"), status);
    return 0;
}
