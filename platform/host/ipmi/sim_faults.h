// SPDX-License-Identifier: Apache-2.0
// Faults of the simulated firmware: which requests they befall, how often, and what the caller
// gets instead of the answer.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame.h"
#include "transport.h"

namespace pwrmgt::ipmi::sim {

inline constexpr std::size_t kMaxFaults = 64;

// What happens, in the order of the words in sim_faults.cpp.
enum class FaultKind : std::uint8_t {
    busy,         // completion code 0xC0, nothing done
    no_answer,    // nothing is sent back, nothing done
    late,         // done, but given up after the argument's milliseconds
    short_reply,  // done, cut to the argument's bytes, or by one
    long_reply,   // done, stretched to the argument's bytes, or by one
    garbage,      // done, every data byte another
    completion,   // the argument as completion code, nothing done
    status,       // the argument as the status byte of a capping answer, nothing done
};

struct Fault {
    std::uint8_t command = 0;
    std::optional<std::uint8_t> operation;  // none: every operation of the command
    FaultKind kind = FaultKind::busy;
    std::optional<std::uint16_t> argument;
    std::uint32_t times = 1;  // 0: until cleared

    bool operator==(const Fault&) const = default;
};

// Sets kind and argument from a text such as "busy", "late:200" or "completion:0xC3". False, and
// the fault is left alone, when it names no kind or the argument is missing or out of range.
bool set_kind(Fault& fault, std::string_view text);
std::string kind_text(const Fault& fault);
// The words that set_kind() takes, for a help text.
std::string kind_words();

// The byte that selects the operation, where the request is long enough to have one.
std::optional<std::uint8_t> operation_of(const Request& request);

// Whether a fault waits for this request.
bool waits_for(const std::vector<Fault>& faults, const Request& request);
// The first such fault, one time of it used up.
std::optional<Fault> take(std::vector<Fault>& faults, const Request& request);

// Whether the firmware still does what it was asked.
bool carries_out(const Fault& fault);

// Puts what the fault leaves of the answer into `response`, after a late one's delay.
Send befall(const Fault& fault, const Request& request, Response& response);

}  // namespace pwrmgt::ipmi::sim
