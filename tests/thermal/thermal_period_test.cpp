// SPDX-License-Identifier: Apache-2.0
// Periods of the thermal history in seconds, and what an index of them covers.
#include "thermal_test.h"

using namespace pwrmgt::test;

class ThermalPeriod : public ThermalTest {};

TEST_F(ThermalPeriod, DefaultIsSixtyIndexes) {
    EXPECT_EQ(thermal_get_default_total_count(), 60);
}

TEST_F(ThermalPeriod, PeriodsZeroToThreeHaveTheirSeconds) {
    EXPECT_EQ(thermal_get_secs_per_period(0), 3600U);
    EXPECT_EQ(thermal_get_secs_per_period(1), 21600U);
    EXPECT_EQ(thermal_get_secs_per_period(2), 43200U);
    EXPECT_EQ(thermal_get_secs_per_period(3), 86400U);
}

TEST_F(ThermalPeriod, PeriodAboveThreeHasNoSeconds) {
    EXPECT_EQ(thermal_get_secs_per_period(4), 0U);
    EXPECT_EQ(thermal_get_secs_per_period(4'294'967'295), 0U);
}

TEST_F(ThermalPeriod, IndexCoversItsShareOfThePeriod) {
    EXPECT_EQ(thermal_get_secs_per_index(0, 60), 60);
    EXPECT_EQ(thermal_get_secs_per_index(0, 1), 3600);
    EXPECT_EQ(thermal_get_secs_per_index(1, 60), 360);
    EXPECT_EQ(thermal_get_secs_per_index(2, 60), 720);
    EXPECT_EQ(thermal_get_secs_per_index(3, 60), 1440);
    EXPECT_EQ(thermal_get_secs_per_index(3, 1440), 60);
}

TEST_F(ThermalPeriod, ShareIsCutTowardZero) {
    EXPECT_EQ(thermal_get_secs_per_index(0, 7), 514);
    EXPECT_EQ(thermal_get_secs_per_index(0, -7), -514);
    EXPECT_EQ(thermal_get_secs_per_index(0, 3600), 1);
    EXPECT_EQ(thermal_get_secs_per_index(0, 3601), 0);
    EXPECT_EQ(thermal_get_secs_per_index(3, INT32_MAX), 0);
}

TEST_F(ThermalPeriod, NegativeNumberOfIndexesGivesANegativeShare) {
    EXPECT_EQ(thermal_get_secs_per_index(0, -60), -60);
    EXPECT_EQ(thermal_get_secs_per_index(3, -1), -86400);
    EXPECT_EQ(thermal_get_secs_per_index(3, INT32_MIN), 0);
}

TEST_F(ThermalPeriod, NoIndexHasNoShare) {
    EXPECT_EQ(thermal_get_secs_per_index(0, 0), 0);
    EXPECT_EQ(thermal_get_secs_per_index(3, 0), 0);
    EXPECT_EQ(thermal_get_secs_per_index(4, 0), 0);
}

TEST_F(ThermalPeriod, PeriodOutsideZeroToThreeHasNoShare) {
    EXPECT_EQ(thermal_get_secs_per_index(4, 60), 0);
    EXPECT_EQ(thermal_get_secs_per_index(-1, 60), 0);
    EXPECT_EQ(thermal_get_secs_per_index(INT32_MIN, 60), 0);
    EXPECT_EQ(thermal_get_secs_per_index(INT32_MAX, 60), 0);
}

TEST_F(ThermalPeriod, ArithmeticCallsNoPlatform) {
    thermal_get_default_total_count();
    thermal_get_secs_per_period(3);
    thermal_get_secs_per_index(3, 60);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}
