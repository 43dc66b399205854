// SPDX-License-Identifier: Apache-2.0
#include "cap_range.h"

#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

// The library cuts an available power to 16 bits before it hands it back as the highest cap.
bool highest_is_cut() {
    uint32_t available = 0;
    return pwrmgt_get_sys_avail_power(&available) == 0 && available > PWRMGT_NO_POWER;
}

}  // namespace

bool CapRange::holds(uint32_t cap_w) const {
    return cap_w >= lowest_w.value_or(0) && (!highest_w || cap_w <= *highest_w);
}

uint32_t read_cap_range(Side side, CapRange& range) {
    uint16_t soft = 0;
    uint16_t max = PWRMGT_NO_POWER;
    uint16_t min = PWRMGT_NO_POWER;
    const uint32_t status =
        pwrmgt_get_power_capping_ranges(side == Side::ac ? 0 : 1, &soft, &max, &min);
    if (status != 0) return status;
    range = {watts(min), highest_is_cut() ? Value{} : available_watts(max)};
    return 0;
}

std::string range_words(const CapRange& range) {
    if (range.lowest_w && range.highest_w) {
        return std::to_string(*range.lowest_w) + " to " + std::to_string(*range.highest_w) + " W";
    }
    if (range.lowest_w) return "at least " + std::to_string(*range.lowest_w) + " W";
    if (range.highest_w) return "at most " + std::to_string(*range.highest_w) + " W";
    return "not limited";
}

}  // namespace pwrmgt::pwrmgtctl
