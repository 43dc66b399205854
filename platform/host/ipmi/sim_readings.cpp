// SPDX-License-Identifier: Apache-2.0
// Power readings, played from the measured trace and bent by the caps that are set.
#include <memory>
#include <optional>

#include "live_trace.h"
#include "sim_operations.h"
#include "sim_power.h"

namespace pwrmgt::ipmi::sim {
namespace {

void put_watts(Response& response, const trace::Watts& watts) {
    response.le16(watts.value_or(kNoWatts));
}

void put_percent(Response& response, const trace::Percent& percent) {
    response.u8(percent.value_or(0xFF));
}

std::uint32_t stamp(std::int64_t time_s) {
    return static_cast<std::uint32_t>(time_s);
}

struct Live {
    trace::Reading reading;
    std::size_t supplies;
    std::uint32_t taken_s;  // on the wall clock
};

// Without a trace there is nothing measured, and nothing is made up. During an outage in the trace
// every field is empty and the time is now.
std::optional<Live> live(std::time_t now, const State& state) {
    const std::shared_ptr<const trace::Trace> trace = live_trace();
    if (!trace) return {};
    const std::int64_t second = trace->live_second(now);
    const trace::Reading* row = trace->reading_at(second);
    if (row == nullptr) return Live{{}, trace->supply_count(), stamp(now)};
    return Live{bent(*row, state), trace->supply_count(), stamp(now - (second - row->epoch_s))};
}

}  // namespace

// System AC and DC, processor and memory power, four percentages, and the time at which the
// reading was taken.
void realtime_powers(const Call& call, const State& state, Response& response) {
    if (!all_zero(call.request.payload().subspan(1))) return response.u8(kInvalidField);
    const std::optional<Live> now = live(call.now, state);
    if (!now) return response.u8(kNotPresent);

    const trace::Reading& reading = now->reading;
    response.u8(kSuccess);
    put_watts(response, reading.system_ac_w);
    put_watts(response, reading.system_dc_w);
    put_watts(response, reading.cpu_w);
    put_watts(response, reading.mem_w);
    put_percent(response, reading.sys_pct);
    put_percent(response, reading.cpu_pct);
    put_percent(response, reading.mem_pct);
    put_percent(response, reading.io_pct);
    response.le32(now->taken_s);
}

// The time, the four powers of the real-time reading, and input and output of each supply.
void power_meter(const Call& call, const State& state, Response& response) {
    if (!all_zero(call.request.payload().subspan(1))) return response.u8(kInvalidField);
    const std::optional<Live> now = live(call.now, state);
    if (!now) return response.u8(kNotPresent);

    const trace::Reading& reading = now->reading;
    response.u8(kSuccess);
    response.le32(now->taken_s);
    put_watts(response, reading.system_ac_w);
    put_watts(response, reading.system_dc_w);
    put_watts(response, reading.cpu_w);
    put_watts(response, reading.mem_w);
    response.u8(static_cast<std::uint8_t>(now->supplies));
    for (std::size_t at = 0; at < now->supplies; ++at) {
        put_watts(response, reading.supplies[at].ac_in_w);
        put_watts(response, reading.supplies[at].dc_out_w);
    }
}

// No trace measures slot devices: what was set for them, no reading before.
void slot_devices(const Call& call, const State& state, Response& response) {
    constexpr std::uint8_t kSlotDeviceForm = 0x08;
    const auto payload = call.request.payload();
    if (payload[1] != kSlotDeviceForm || !all_zero(payload.subspan(2))) {
        return response.u8(kInvalidField);
    }
    response.u8(kSuccess);
    response.le32(stamp(call.now));
    for (const std::uint16_t power_w : state.slot_w)
        response.le16(power_w);
}

}  // namespace pwrmgt::ipmi::sim
