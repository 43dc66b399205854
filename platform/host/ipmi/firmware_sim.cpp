// SPDX-License-Identifier: Apache-2.0
#include "firmware_sim.h"

#include <syslog.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <mutex>
#include <optional>
#include <string>

#include "completion.h"
#include "sim_faults.h"
#include "sim_operations.h"
#include "sim_state_file.h"

namespace pwrmgt::ipmi::sim {
namespace {

constexpr std::uint8_t kResponder = 0x20;

// One row per operation. An operation with forms of several lengths has a row for each.
struct Operation {
    std::uint8_t netfn;
    std::uint8_t command;
    std::uint8_t operation;
    std::size_t min_length;  // of the whole frame
    std::size_t max_length;
    // Either of the two.
    void (*read)(const Call& call, const State& state, Response& response);
    void (*change)(const Call& call, State& state, Response& response);
};

// clang-format off
constexpr Operation kOperations[] = {
    {0x3A, 0x32, 0x01,  9,   9, realtime_powers, nullptr},
    {0x3A, 0x32, 0x02,  9,  10 + kMaxAuditName, nullptr, set_cap},
    {0x3A, 0x32, 0x03,  9,   9, get_cap,         nullptr},
    {0x3A, 0x32, 0x04,  9,   9, power_meter,     nullptr},
    {0x3A, 0x32, 0x04, 10,  10, slot_devices,    nullptr},
    {0x3A, 0x32, 0x06,  7,   7, get_zero_output, nullptr},
    {0x3A, 0x32, 0x06,  8,   8, nullptr,         set_zero_output},
    {0x3A, 0x32, 0x09,  5,   5, get_cpu_caps,    nullptr},
    {0x3A, 0x06, 0xC0,  6,   6, get_gpu_word,    nullptr},
    {0x3A, 0x06, 0xC0,  8,   8, nullptr,         set_gpu_word},
    {0x3A, 0x06, 0xC1,  6,   6, get_gpu_byte,    nullptr},
    {0x3A, 0x06, 0xC1,  7,   7, nullptr,         set_gpu_byte},
    {0x3A, 0xDB, 0x01,  7,   7, gpu_consumption, nullptr},
    {0x2E, 0x90, 0x01, 16, 128, nullptr,         open_file},
    {0x2E, 0x90, 0x02, 18,  18, read_file,       nullptr},
};
// clang-format on

// The row that answers, or the completion code that refuses.
struct LookUp {
    const Operation* row = nullptr;
    std::uint8_t refusal = kInvalidCommand;
};

LookUp look_up(const Request& request) {
    LookUp found;
    for (const Operation& row : kOperations) {
        if (request.netfn() != row.netfn || request.command() != row.command ||
            operation_of(request) != row.operation) {
            continue;
        }
        if (request.lun() != 0) {
            found.refusal = kInvalidForLun;
        } else if (request.length() < row.min_length || request.length() > row.max_length) {
            found.refusal = kInvalidLength;
        } else {
            found.row = &row;
            return found;
        }
    }
    return found;
}

// Once, not at every exchange of a daemon that asks each second.
void log_once(const std::string& reason) {
    static std::mutex mutex;
    static std::string told;
    const std::lock_guard lock(mutex);
    if (told == reason) return;
    told = reason;
    syslog(LOG_ERR, "firmware simulator: %s", reason.c_str());
}

void refuse_for(const Access& access, Response& response) {
    log_once(access.reason);
    response.cut_to(0);
    response.u8(access.usable == Usable::busy ? kBusy : kUnavailable);
}

void run(const LookUp& found, const Call& call, State& state, Response& response) {
    if (found.row == nullptr) {
        response.u8(found.refusal);
    } else if (found.row->read != nullptr) {
        found.row->read(call, state, response);
    } else {
        found.row->change(call, state, response);
    }
}

// Whatever changes the state: what was asked, or a fault of which one time is used up.
Send answer_with_change(const LookUp& found, const Call& call, Response& response) {
    Transaction transaction;
    State& state = transaction.state();
    if (transaction.access().usable != Usable::yes) {
        refuse_for(transaction.access(), response);
        return Send::done;
    }
    const std::optional<Fault> fault = take(state.faults, call.request);
    if (!fault || carries_out(*fault)) run(found, call, state, response);
    if (const Access kept = transaction.commit(); kept.usable != Usable::yes) {
        refuse_for(kept, response);
        return Send::done;
    }
    return fault ? befall(*fault, call.request, response) : Send::done;
}

}  // namespace

bool offers(std::uint8_t command, std::optional<std::uint8_t> operation) {
    return std::any_of(std::begin(kOperations), std::end(kOperations), [&](const Operation& row) {
        return row.command == command && (!operation || row.operation == *operation);
    });
}

Send answer(const Request& request, std::time_t now, Response& response) {
    if (request.responder() != kResponder) return Send::no_answer;
    const LookUp found = look_up(request);
    const Call call{request, now};
    State state;
    const Access access = read_state(state);
    const bool changes = found.row != nullptr && found.row->change != nullptr;
    if (access.usable == Usable::damaged || changes || waits_for(state.faults, request)) {
        return answer_with_change(found, call, response);
    }
    if (access.usable != Usable::yes && found.row != nullptr) {
        refuse_for(access, response);
    } else {
        run(found, call, state, response);
    }
    return Send::done;
}

}  // namespace pwrmgt::ipmi::sim
