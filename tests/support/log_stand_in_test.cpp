// SPDX-License-Identifier: Apache-2.0
// The log of a test program is the recorder's: lines of the library and of the program land there.
#include <syslog.h>

#include <cstdarg>

#include "platform_test.h"

using namespace pwrmgt::test;

extern "C" {
void __syslog_chk(int priority, int flag, const char* format, ...);
void __vsyslog_chk(int priority, int flag, const char* format, va_list values);
}

namespace {

void log_through_a_checked_list(int priority, const char* format, ...) {
    va_list values;
    va_start(values, format);
    __vsyslog_chk(priority, 1, format, values);
    va_end(values);
}

void log_through_a_list(int priority, const char* format, ...) {
    va_list values;
    va_start(values, format);
    vsyslog(priority, format, values);
    va_end(values);
}

// Two supplies that a choice by hardware can go on from.
void healthy_supplies() {
    platform().answer_table("PowerPolicy", {{0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}});
    platform().answer_table("PsuPropertyMem",
                            {{1, 1, 0, 0, 0, 2000, 1800}, {2, 1, 0, 0, 0, 2000, 1800}});
}

}  // namespace

class LogStandIn : public PlatformTest {};

TEST_F(LogStandIn, LibraryReachesTheRecorderForTheLog) {
    policy_is_read();
    healthy_supplies();

    pwrmgt_set_redunmode_per_hwconfig(1);

    EXPECT_THAT(platform().calls,
                testing::Contains("syslog 11 PSU Config: Matching using GPU code "));
}

TEST_F(LogStandIn, LineIsItsPriorityAndItsFormattedText) {
    syslog(3, "slot [%02d] of %s  ", 7, "a key");

    EXPECT_EQ(platform().calls, Calls{"syslog 3 slot [07] of a key  "});
}

TEST_F(LogStandIn, LineOfAnArgumentListLandsThereToo) {
    log_through_a_list(8, "mode [%d]", 4);

    EXPECT_EQ(platform().calls, Calls{"syslog 8 mode [4]"});
}

TEST_F(LogStandIn, LineOfFortifiedCodeLandsThereToo) {
    __syslog_chk(11, 1, "mode [%d]", 2);
    log_through_a_checked_list(11, "mode [%d]", 3);

    EXPECT_EQ(platform().calls, (Calls{"syslog 11 mode [2]", "syslog 11 mode [3]"}));
}
