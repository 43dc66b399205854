// SPDX-License-Identifier: Apache-2.0
#include "source.h"
#include "status_words.h"

namespace pwrmgt::pwrmgtd {
namespace {

Watts watts(std::uint16_t answered) {
    if (answered == PWRMGT_NO_POWER) return std::nullopt;
    return answered;
}

Percent percent(std::uint8_t answered) {
    if (answered == PWRMGT_NO_PERCENT) return std::nullopt;
    return answered;
}

// An answer with a percentage that cannot be is none, whatever else stands in it.
bool credible(const pwrmgt_realtime_pwr_t& answer) {
    for (const std::uint8_t told :
         {answer.sys_pct, answer.cpu_pct, answer.mem_pct, answer.io_pct}) {
        if (told > 100 && told != PWRMGT_NO_PERCENT) return false;
    }
    return true;
}

}  // namespace

Reading FirmwareSource::read(std::int64_t) {
    pwrmgt_realtime_pwr_t answer{};
    const std::uint32_t status = pwrmgt_get_realtime_powers(&answer);
    note_status(log_, "pwrmgt_get_realtime_powers", status);
    if (status != 0 || !credible(answer)) return {};
    Reading reading;
    reading.sys_ac_w = watts(answer.sys_ac_w);
    reading.sys_dc_w = watts(answer.sys_dc_w);
    reading.cpu_w = watts(answer.cpu_dc_w);
    reading.mem_w = watts(answer.mem_dc_w);
    reading.sys_pct = percent(answer.sys_pct);
    reading.cpu_pct = percent(answer.cpu_pct);
    reading.mem_pct = percent(answer.mem_pct);
    reading.io_pct = percent(answer.io_pct);
    return reading;
}

}  // namespace pwrmgt::pwrmgtd
