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
constexpr std::string_view kClock = "the clock shows no time from 1970 to 2038-01-19";
constexpr std::string_view kNothing = "no reading recorded {}";
constexpr std::string_view kNoPolicy = "no power policy is stored";
constexpr std::string_view kNoBlade = "not offered on this platform, or on a blade";
constexpr std::string_view kMemory = "no row could be prepared for the database";
constexpr std::string_view kSupplies =
    "the supplies cannot be told: not readable, none healthy, or the weakest one's label not known";

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
    Cause{Call::firmware,            10, Exit::unsupported, kUnsupported},
    Cause{Call::firmware,            31, Exit::failure,     "the firmware did not answer for {}, refused, or answered another length"},
    Cause{Call::capping_get,         10, Exit::unsupported, kUnsupported},
    Cause{Call::capping_get,         14, Exit::failure,     "the firmware says that it has no valid cap"},
    Cause{Call::capping_get,         31, Exit::failure,     "the firmware did not answer for the cap, refused, or answered another length"},
    Cause{Call::capping_set,         10, Exit::unsupported, kUnsupported},
    Cause{Call::capping_set,         14, Exit::failure,     "the firmware does not take this cap: {}"},
    Cause{Call::capping_set,         15, Exit::out_of_range, "a cap of 0 W cannot be on"},
    Cause{Call::capping_set,         31, Exit::failure,     "the firmware did not answer for the cap, refused, or answered another length; whether it took it is not known"},
    Cause{Call::setting,             2,  Exit::failure,     kNotOpened},
    Cause{Call::setting,             3,  Exit::failure,     kQuery},
    Cause{Call::setting,             5,  Exit::failure,     "the policy row could not be updated"},
    Cause{Call::setting,             7,  Exit::failure,     kMemory},
    Cause{Call::setting,             8,  Exit::no_data,     kNoPolicy},
    Cause{Call::setting,             10, Exit::unsupported, kUnsupported},
    Cause{Call::store,               31, Exit::failure,     "the firmware did not answer for {}, refused, or has no such file"},
    Cause{Call::policy,              2,  Exit::failure,     kNotOpened},
    Cause{Call::policy,              3,  Exit::failure,     kQuery},
    Cause{Call::policy,              8,  Exit::no_data,     kNoPolicy},
    Cause{Call::policy_set,          2,  Exit::failure,     kNotOpened},
    Cause{Call::policy_set,          3,  Exit::failure,     kQuery},
    Cause{Call::policy_set,          5,  Exit::failure,     "the policy row could not be updated"},
    Cause{Call::policy_set,          7,  Exit::failure,     kMemory},
    Cause{Call::policy_set,          31, Exit::failure,     "the policy table holds several rows"},
    Cause{Call::psus, 2, Exit::failure, kNotOpened},
    Cause{Call::psus, 3, Exit::failure, kQuery},
    Cause{Call::psus, 8, Exit::no_data, "no supply bay or no power policy is stored"},
    Cause{Call::psus, 10, Exit::unsupported, kNoBlade},
    Cause{Call::psus, 17, Exit::no_data, "no supply is present, or none is healthy"},
    Cause{Call::psu_voltage, 3, Exit::no_data, "{} is empty"},
    Cause{Call::psu_voltage, 19, Exit::usage, "the machine has no bay for {}"},
    Cause{Call::psu_voltage, 31, Exit::no_data, "the voltage class of {} is not known"},
    Cause{Call::redundancy_get, 2, Exit::failure, kNotOpened},
    Cause{Call::redundancy_get, 3, Exit::failure, kQuery},
    Cause{Call::redundancy_get, 8, Exit::no_data, kNoPolicy},
    Cause{Call::redundancy_get, 10, Exit::unsupported, kNoBlade},
    Cause{Call::redundancy_set, 2, Exit::failure, kNotOpened},
    Cause{Call::redundancy_set, 3, Exit::failure, kQuery},
    Cause{Call::redundancy_set, 5, Exit::failure, "the policy row could not be updated"},
    Cause{Call::redundancy_set, 7, Exit::failure, kMemory},
    Cause{Call::redundancy_set, 8, Exit::no_data, kNoPolicy},
    Cause{Call::redundancy_set, 10, Exit::unsupported, kNoBlade},
    Cause{Call::redundancy_auto, 2, Exit::failure, kNotOpened},
    Cause{Call::redundancy_auto, 3, Exit::failure, kQuery},
    Cause{Call::redundancy_auto, 5, Exit::failure, "the policy row could not be updated"},
    Cause{Call::redundancy_auto, 7, Exit::failure, kMemory},
    Cause{Call::redundancy_auto, 8, Exit::no_data, kNoPolicy},
    Cause{Call::redundancy_auto, 10, Exit::unsupported, "not offered on this platform or on a blade, or the mode of the hardware is not allowed"},
    Cause{Call::redundancy_auto, 17, Exit::no_data, kSupplies},
    Cause{Call::redundancy_not_allowed, 10, Exit::unsupported, "redundancy mode {} is not allowed on this machine"},
    Cause{Call::redundancy_unset, 10, Exit::no_data, "no redundancy mode is stored"},
    Cause{Call::available, 2, Exit::failure, kNotOpened},
    Cause{Call::available, 3, Exit::failure, kQuery},
    Cause{Call::available, 8, Exit::no_data, kNoPolicy},
    Cause{Call::available, 10, Exit::unsupported, "not offered on this platform, on a blade, or in the stored redundancy mode"},
    Cause{Call::available, 17, Exit::no_data, kSupplies},
    Cause{Call::available, 31, Exit::no_data, "the rated-power file holds no number"},
    Cause{Call::capping_ranges, 2, Exit::failure, kNotOpened},
    Cause{Call::capping_ranges, 3, Exit::failure, kQuery},
    Cause{Call::capping_ranges, 8, Exit::no_data, kNoPolicy},
    Cause{Call::capping_ranges, 10, Exit::unsupported, kUnsupported},
    Cause{Call::thermal_history, 2, Exit::failure, kNotOpened},
    Cause{Call::thermal_history, 3, Exit::failure, kQuery},
    Cause{Call::thermal_history, 8, Exit::no_data, "no temperature recorded in the span"},
    Cause{Call::thermal_realtime, 2, Exit::failure, kNotOpened},
    Cause{Call::thermal_realtime, 3, Exit::failure, kQuery},
};
// clang-format on

// An empty performance window and a clock that cannot be used share a number; the clock itself
// tells them apart.
bool clock_failed(Call call, uint32_t status) {
    return call == Call::history_performance && status == 31 && std::time(nullptr) <= 0;
}

// Numbers that are no status but another's result, handed on.
std::string handed_on(Call call, uint32_t status) {
    if (call == Call::zero_output) return "the request did not reach the firmware";
    if (call != Call::cpu_caps) return {};
    if (status == 31) return "the firmware answered for the processors' caps with another length";
    return "the request for the processors' caps did not reach the firmware, or it refused with "
           "this completion code";
}

}  // namespace

Outcome explain(Call call, uint32_t status, std::string_view about) {
    const std::string number = " (status " + std::to_string(status) + ")";
    if (clock_failed(call, status)) return fail(Exit::failure, std::string(kClock) + number);
    if (const std::string words = handed_on(call, status); !words.empty()) {
        return fail(Exit::failure, words + number);
    }
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
