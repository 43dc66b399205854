// SPDX-License-Identifier: Apache-2.0
#include "firmware_sim.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>

#include "live_trace.h"

namespace pwrmgt::ipmi::sim {
namespace {

constexpr std::uint8_t kResponder = 0x20;

// Completion codes.
constexpr std::uint8_t kSuccess = 0x00;
constexpr std::uint8_t kInvalidCommand = 0xC1;
constexpr std::uint8_t kInvalidForLun = 0xC2;
constexpr std::uint8_t kInvalidLength = 0xC7;
constexpr std::uint8_t kNotPresent = 0xCB;
constexpr std::uint8_t kInvalidField = 0xCC;

void put_watts(Response& response, const trace::Watts& watts) {
    response.le16(watts.value_or(0xFFFF));
}

void put_percent(Response& response, const trace::Percent& percent) {
    response.u8(percent.value_or(0xFF));
}

bool all_zero(std::span<const std::uint8_t> bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

// System AC and DC, processor and memory power, four percentages, and the time at which the
// reading was taken. Without a trace there is nothing measured, and nothing is made up.
void realtime_powers(const Request& request, std::time_t now, Response& response) {
    if (!all_zero(request.payload().subspan(1))) return response.u8(kInvalidField);
    const std::shared_ptr<const trace::Trace> trace = live_trace();
    if (!trace) return response.u8(kNotPresent);

    trace::Reading reading;
    const std::int64_t second = trace->live_second(now);
    reading.epoch_s = second;
    if (const trace::Reading* row = trace->reading_at(second)) reading = *row;
    response.u8(kSuccess);
    put_watts(response, reading.system_ac_w);
    put_watts(response, reading.system_dc_w);
    put_watts(response, reading.cpu_w);
    put_watts(response, reading.mem_w);
    put_percent(response, reading.sys_pct);
    put_percent(response, reading.cpu_pct);
    put_percent(response, reading.mem_pct);
    put_percent(response, reading.io_pct);
    const std::int64_t age_s = second - reading.epoch_s;
    response.le32(static_cast<std::uint32_t>(now - age_s));
}

// One row per operation, which is the first data byte of its command. An operation with forms of
// several lengths has a row for each.
struct Operation {
    std::uint8_t netfn;
    std::uint8_t command;
    std::uint8_t operation;
    std::size_t min_length;  // of the whole frame
    std::size_t max_length;
    void (*run)(const Request& request, std::time_t now, Response& response);
};

// clang-format off
constexpr Operation kOperations[] = {
    {0x3A, 0x32, 0x01, 9, 9, realtime_powers},
};
// clang-format on

bool asks_for(const Request& request, const Operation& row) {
    const auto payload = request.payload();
    return request.netfn() == row.netfn && request.command() == row.command && !payload.empty() &&
           payload[0] == row.operation;
}

}  // namespace

Send answer(const Request& request, std::time_t now, Response& response) {
    if (request.responder() != kResponder) return Send::no_answer;
    std::uint8_t refusal = kInvalidCommand;
    for (const Operation& row : kOperations) {
        if (!asks_for(request, row)) continue;
        if (request.lun() != 0) {
            refusal = kInvalidForLun;
        } else if (request.length() < row.min_length || request.length() > row.max_length) {
            refusal = kInvalidLength;
        } else {
            row.run(request, now, response);
            return Send::done;
        }
    }
    response.u8(refusal);
    return Send::done;
}

}  // namespace pwrmgt::ipmi::sim
