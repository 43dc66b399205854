// SPDX-License-Identifier: Apache-2.0
// One row per call and status: exit code and cause.
#include "status_text.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace pwrmgt::pwrmgtctl {
namespace {

struct Cause {
    Call call;
    uint32_t status;
    Exit exit;
    std::string_view words;  // {} takes what was asked for
};

constexpr std::string_view kUnsupported = "power management is not offered on this platform";
constexpr std::string_view kNotOpened = "the database did not open";
constexpr std::string_view kQuery = "the database query failed";
constexpr std::string_view kClock = "the clock does not show a time after 1970";
constexpr std::string_view kNothing = "no reading recorded {}";

// clang-format off
constexpr std::array kCauses{
    Cause{Call::history_power,       2,  Exit::failure,     kNotOpened},
    Cause{Call::history_power,       3,  Exit::failure,     kQuery},
    Cause{Call::history_power,       8,  Exit::no_data,     kNothing},
    Cause{Call::history_power,       10, Exit::unsupported, kUnsupported},
    Cause{Call::history_power,       31, Exit::failure,     kClock},
    Cause{Call::history_psu,         2,  Exit::failure,     kNotOpened},
    Cause{Call::history_psu,         3,  Exit::failure,     kQuery},
    Cause{Call::history_psu,         8,  Exit::no_data,     kNothing},
    Cause{Call::history_psu,         10, Exit::unsupported, kUnsupported},
    Cause{Call::history_psu,         31, Exit::failure,     kClock},
    Cause{Call::window_psu,          2,  Exit::failure,     kNotOpened},
    Cause{Call::window_psu,          3,  Exit::failure,     kQuery},
    Cause{Call::window_psu,          8,  Exit::no_data,     "no reading recorded {}, or the machine has no such bay"},
    Cause{Call::window_psu,          10, Exit::unsupported, kUnsupported},
    Cause{Call::history_performance, 2,  Exit::failure,     kNotOpened},
    Cause{Call::history_performance, 3,  Exit::failure,     kQuery},
    Cause{Call::history_performance, 8,  Exit::no_data,     kNothing},
    Cause{Call::history_performance, 10, Exit::unsupported, kUnsupported},
    Cause{Call::history_performance, 31, Exit::no_data,     kNothing},
    Cause{Call::summary,             2,  Exit::failure,     kNotOpened},
    Cause{Call::summary,             3,  Exit::failure,     kQuery},
    Cause{Call::summary,             8,  Exit::no_data,     kNothing},
    Cause{Call::summary,             10, Exit::unsupported, kUnsupported},
    Cause{Call::summary,             31, Exit::failure,     kClock},
    Cause{Call::cpu,                 2,  Exit::failure,     kNotOpened},
    Cause{Call::cpu,                 3,  Exit::failure,     kQuery},
    Cause{Call::cpu,                 8,  Exit::no_data,     "no row of processor power recorded {}"},
    Cause{Call::realtime_stored,     2,  Exit::failure,     kNotOpened},
    Cause{Call::realtime_stored,     3,  Exit::failure,     kQuery},
    Cause{Call::realtime_stored,     8,  Exit::no_data,     "no real-time reading is stored"},
    Cause{Call::realtime_stored,     10, Exit::unsupported, kUnsupported},
    Cause{Call::realtime_stored,     31, Exit::failure,     "the table of the real-time reading holds several rows"},
    Cause{Call::realtime_live,       10, Exit::unsupported, kUnsupported},
    Cause{Call::realtime_live,       31, Exit::failure,     "the exchange with the firmware failed"},
    Cause{Call::policy,              2,  Exit::failure,     kNotOpened},
    Cause{Call::policy,              3,  Exit::failure,     kQuery},
    Cause{Call::policy,              8,  Exit::no_data,     "no power policy is stored"},
};
// clang-format on

// An empty performance window and a clock that cannot be used share a number; the clock itself
// tells them apart.
bool clock_failed(Call call, uint32_t status) {
    return call == Call::history_performance && status == 31 && std::time(nullptr) <= 0;
}

}  // namespace

Outcome explain(Call call, uint32_t status, std::string_view about) {
    const std::string number = " (status " + std::to_string(status) + ")";
    if (clock_failed(call, status)) return fail(Exit::failure, std::string(kClock) + number);
    const auto* cause = std::find_if(kCauses.begin(), kCauses.end(), [&](const Cause& row) {
        return row.call == call && row.status == status;
    });
    if (cause == kCauses.end())
        return fail(Exit::failure, "unexpected answer of the library" + number);
    std::string words(cause->words);
    if (const size_t place = words.find("{}"); place != std::string::npos)
        words.replace(place, 2, about);
    return fail(cause->exit, words + number);
}

}  // namespace pwrmgt::pwrmgtctl
