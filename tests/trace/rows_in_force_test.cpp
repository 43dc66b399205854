// SPDX-License-Identifier: Apache-2.0
// Which row is in force at a second, and which second plays now.
#include <gtest/gtest.h>

#include "loaded.h"
#include "measured_trace.h"

namespace {

using pwrmgt::trace::Trace;

TEST(RowsInForce, RowHoldsFromItsOwnSecondUntilTheNextRow) {
    const Trace trace = loaded("epoch_s,cpu_power_W\n1000,60\n1063,61\n");

    EXPECT_EQ(trace.reading_at(999), nullptr);
    ASSERT_NE(trace.reading_at(1000), nullptr);
    EXPECT_EQ(trace.reading_at(1000)->cpu_w, 60);
    ASSERT_NE(trace.reading_at(1062), nullptr);
    EXPECT_EQ(trace.reading_at(1062)->cpu_w, 60);
    ASSERT_NE(trace.reading_at(1063), nullptr);
    EXPECT_EQ(trace.reading_at(1063)->cpu_w, 61);
}

TEST(RowsInForce, RowHoldsNoLongerThan90Seconds) {
    const Trace trace = loaded("epoch_s,cpu_power_W\n1000,60\n2000,61\n");

    EXPECT_NE(trace.reading_at(1089), nullptr);
    EXPECT_EQ(trace.reading_at(1090), nullptr);
    EXPECT_NE(trace.reading_at(2089), nullptr);
    EXPECT_EQ(trace.reading_at(2090), nullptr);
}

TEST(RowsInForce, HoldLimitMayBeChosen) {
    const Trace trace = loaded("epoch_s,cpu_power_W\n1000,60\n");

    EXPECT_NE(trace.reading_at(1019, 20), nullptr);
    EXPECT_EQ(trace.reading_at(1020, 20), nullptr);
}

TEST(RowsInForce, RowThatNoSensorAnsweredEndsTheRowBefore) {
    const Trace trace = loaded("epoch_s,sdr_rows,cpu_power_W\n1000,115,60\n1060,0,\n1120,1,61\n");

    EXPECT_NE(trace.reading_at(1059), nullptr);
    EXPECT_EQ(trace.reading_at(1060), nullptr);
    EXPECT_EQ(trace.reading_at(1119), nullptr);
    EXPECT_NE(trace.reading_at(1120), nullptr);
}

TEST(RowsInForce, ValuesInARowThatNoSensorAnsweredAreNotReadings) {
    const Trace trace = loaded("epoch_s,sdr_rows,cpu_power_W\n1000,0,60\n");

    EXPECT_FALSE(trace.readings()[0].answered);
    EXPECT_EQ(trace.readings()[0].cpu_w, std::nullopt);
    EXPECT_EQ(trace.reading_at(1000), nullptr);
}

TEST(RowsInForce, OfTwoRowsInOneSecondTheLaterHolds) {
    const Trace trace = loaded("epoch_s,cpu_power_W\n1000.2,60\n1000.9,61\n");

    ASSERT_NE(trace.reading_at(1000), nullptr);
    EXPECT_EQ(trace.reading_at(1000)->cpu_w, 61);
}

TEST(RowsInForce, LivePlayStartsAtMidnightAndStartsOverAtTheEnd) {
    const Trace trace = loaded("epoch_s,cpu_power_W\n1000,60\n1060,61\n");

    EXPECT_EQ(trace.live_second(1'700'006'400), 1000);  // 2023-11-15 00:00:00 UTC
    EXPECT_EQ(trace.live_second(1'700'006'460), 1060);
    EXPECT_EQ(trace.live_second(1'700'006'461), 1000);
    EXPECT_EQ(trace.live_second(1'700'092'799), 1023);  // 23:59:59
    EXPECT_EQ(trace.live_second(1'700'092'800), 1000);
}

TEST(RowsInForce, LivePlayOfOneRowStaysOnIt) {
    const Trace trace = loaded("epoch_s,cpu_power_W\n1000,60\n");

    EXPECT_EQ(trace.live_second(1'700'012'345), 1000);
}

}  // namespace
