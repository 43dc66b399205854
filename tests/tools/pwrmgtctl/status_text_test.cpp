// SPDX-License-Identifier: Apache-2.0
#include "status_text.h"

#include <gtest/gtest.h>

namespace pwrmgt::pwrmgtctl {
namespace {

struct Case {
    Call call;
    uint32_t status;
    Exit exit;
    const char* words;
};

class StatusText : public ::testing::TestWithParam<Case> {};

TEST_P(StatusText, SaysTheCauseHereWithItsNumber) {
    const Case& expected = GetParam();

    const Outcome outcome = explain(expected.call, expected.status, "in the last hour");

    EXPECT_EQ(outcome.exit, expected.exit);
    EXPECT_EQ(outcome.error, expected.words);
    EXPECT_EQ(outcome.document, "");
}

// clang-format off
const Case kCases[] = {
    {Call::history_power, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::history_power, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::history_power, 8, Exit::no_data, "no reading recorded in the last hour (status 8)"},
    {Call::history_power, 10, Exit::unsupported, "power management is not offered on this platform (status 10)"},
    {Call::history_power, 31, Exit::failure, "the clock shows no time from 1970 to 2038-01-19 (status 31)"},
    {Call::history_psu, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::history_psu, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::history_psu, 8, Exit::no_data, "no reading recorded in the last hour (status 8)"},
    {Call::history_psu, 10, Exit::unsupported, "power management is not offered on this platform (status 10)"},
    {Call::history_psu, 31, Exit::failure, "the clock shows no time from 1970 to 2038-01-19 (status 31)"},
    {Call::window_psu, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::window_psu, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::window_psu, 8, Exit::no_data, "no reading recorded in the last hour, or the machine has no such bay (status 8)"},
    {Call::window_psu, 10, Exit::unsupported, "power management is not offered on this platform (status 10)"},
    {Call::history_performance, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::history_performance, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::history_performance, 8, Exit::no_data, "no reading recorded in the last hour (status 8)"},
    {Call::history_performance, 10, Exit::unsupported, "power management is not offered on this platform (status 10)"},
    {Call::history_performance, 31, Exit::no_data, "no reading recorded in the last hour (status 31)"},
    {Call::summary, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::summary, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::summary, 8, Exit::no_data, "no reading recorded in the last hour (status 8)"},
    {Call::summary, 10, Exit::unsupported, "power management is not offered on this platform (status 10)"},
    {Call::summary, 31, Exit::failure, "the clock shows no time from 1970 to 2038-01-19 (status 31)"},
    {Call::cpu, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::cpu, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::cpu, 8, Exit::no_data, "no row of processor power recorded in the last hour (status 8)"},
    {Call::realtime_stored, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::realtime_stored, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::realtime_stored, 8, Exit::no_data, "no real-time reading is stored (status 8)"},
    {Call::realtime_stored, 10, Exit::unsupported, "power management is not offered on this platform (status 10)"},
    {Call::realtime_stored, 31, Exit::failure, "the table of the real-time reading holds several rows (status 31)"},
    {Call::firmware, 10, Exit::unsupported, "power management is not offered on this platform (status 10)"},
    {Call::firmware, 31, Exit::failure, "the firmware did not answer for in the last hour, refused, or answered another length (status 31)"},
    {Call::capping_get, 10, Exit::unsupported, "power management is not offered on this platform (status 10)"},
    {Call::capping_get, 14, Exit::failure, "the firmware says that it has no valid cap (status 14)"},
    {Call::capping_get, 31, Exit::failure, "the firmware did not answer for the cap, refused, or answered another length (status 31)"},
    {Call::capping_set, 10, Exit::unsupported, "power management is not offered on this platform (status 10)"},
    {Call::capping_set, 14, Exit::failure, "the firmware does not take this cap: in the last hour (status 14)"},
    {Call::capping_set, 15, Exit::out_of_range, "a cap of 0 W cannot be on (status 15)"},
    {Call::capping_set, 31, Exit::failure, "the firmware did not answer for the cap, refused, or answered another length; whether it took it is not known (status 31)"},
    {Call::setting, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::setting, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::setting, 5, Exit::failure, "the policy row could not be updated (status 5)"},
    {Call::setting, 7, Exit::failure, "no row could be prepared for the database (status 7)"},
    {Call::setting, 8, Exit::no_data, "no power policy is stored (status 8)"},
    {Call::setting, 10, Exit::unsupported, "power management is not offered on this platform (status 10)"},
    {Call::zero_output, 7, Exit::failure, "the request did not reach the firmware (status 7)"},
    {Call::cpu_caps, 31, Exit::failure, "the firmware answered for the processors' caps with another length (status 31)"},
    {Call::cpu_caps, 193, Exit::failure, "the request for the processors' caps did not reach the firmware, or it refused with this completion code (status 193)"},
    {Call::store, 31, Exit::failure, "the firmware did not answer for in the last hour, refused, or has no such file (status 31)"},
    {Call::policy_set, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::policy_set, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::policy_set, 5, Exit::failure, "the policy row could not be updated (status 5)"},
    {Call::policy_set, 7, Exit::failure, "no row could be prepared for the database (status 7)"},
    {Call::policy_set, 31, Exit::failure, "the policy table holds several rows (status 31)"},
    {Call::policy, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::policy, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::policy, 8, Exit::no_data, "no power policy is stored (status 8)"},
    {Call::psus, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::psus, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::psus, 8, Exit::no_data, "no supply bay or no power policy is stored (status 8)"},
    {Call::psus, 10, Exit::unsupported, "not offered on this platform, or on a blade (status 10)"},
    {Call::psus, 17, Exit::no_data, "no supply is present, or none is healthy (status 17)"},
    {Call::psu_voltage, 3, Exit::no_data, "in the last hour is empty (status 3)"},
    {Call::psu_voltage, 19, Exit::usage, "the machine has no bay for in the last hour (status 19)"},
    {Call::psu_voltage, 31, Exit::no_data, "the voltage class of in the last hour is not known (status 31)"},
    {Call::redundancy_get, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::redundancy_get, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::redundancy_get, 8, Exit::no_data, "no power policy is stored (status 8)"},
    {Call::redundancy_get, 10, Exit::unsupported, "not offered on this platform, or on a blade (status 10)"},
    {Call::redundancy_set, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::redundancy_set, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::redundancy_set, 5, Exit::failure, "the policy row could not be updated (status 5)"},
    {Call::redundancy_set, 7, Exit::failure, "no row could be prepared for the database (status 7)"},
    {Call::redundancy_set, 8, Exit::no_data, "no power policy is stored (status 8)"},
    {Call::redundancy_set, 10, Exit::unsupported, "not offered on this platform, or on a blade (status 10)"},
    {Call::redundancy_auto, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::redundancy_auto, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::redundancy_auto, 5, Exit::failure, "the policy row could not be updated (status 5)"},
    {Call::redundancy_auto, 7, Exit::failure, "no row could be prepared for the database (status 7)"},
    {Call::redundancy_auto, 8, Exit::no_data, "no power policy is stored (status 8)"},
    {Call::redundancy_auto, 10, Exit::unsupported, "not offered on this platform or on a blade, or the mode of the hardware is not allowed (status 10)"},
    {Call::redundancy_auto, 17, Exit::no_data, "the supplies cannot be told: not readable, none healthy, or the weakest one's label not known (status 17)"},
    {Call::redundancy_not_allowed, 10, Exit::unsupported, "redundancy mode in the last hour is not allowed on this machine (status 10)"},
    {Call::redundancy_unset, 10, Exit::no_data, "no redundancy mode is stored (status 10)"},
    {Call::available, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::available, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::available, 8, Exit::no_data, "no power policy is stored (status 8)"},
    {Call::available, 10, Exit::unsupported, "not offered on this platform, on a blade, or in the stored redundancy mode (status 10)"},
    {Call::available, 17, Exit::no_data, "the supplies cannot be told: not readable, none healthy, or the weakest one's label not known (status 17)"},
    {Call::available, 31, Exit::no_data, "the rated-power file holds no number (status 31)"},
    {Call::capping_ranges, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::capping_ranges, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::capping_ranges, 8, Exit::no_data, "no power policy is stored (status 8)"},
    {Call::thermal_history, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::thermal_history, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::thermal_history, 8, Exit::no_data, "no temperature recorded in the span (status 8)"},
    {Call::thermal_realtime, 2, Exit::failure, "the database did not open (status 2)"},
    {Call::thermal_realtime, 3, Exit::failure, "the database query failed (status 3)"},
    {Call::capping_ranges, 10, Exit::unsupported, "power management is not offered on this platform (status 10)"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(EveryCallAndStatus, StatusText, ::testing::ValuesIn(kCases));

TEST(StatusTextUnknown, StatusThatNoRowNamesIsAFailureWithItsNumber) {
    const Outcome outcome = explain(Call::policy, 77, "");

    EXPECT_EQ(outcome.exit, Exit::failure);
    EXPECT_EQ(outcome.error, "unexpected answer of the library (status 77)");
}

}  // namespace
}  // namespace pwrmgt::pwrmgtctl
