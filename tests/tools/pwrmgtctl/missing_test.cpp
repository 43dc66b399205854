// SPDX-License-Identifier: Apache-2.0
#include "missing.h"

#include <gtest/gtest.h>

namespace pwrmgt::pwrmgtctl {
namespace {

TEST(Missing, Power65535IsNoReadingAnd65534IsOne) {
    EXPECT_EQ(watts(65535), Value{});
    EXPECT_EQ(watts(65534), Value{65534});
    EXPECT_EQ(watts(255), Value{255});
    EXPECT_EQ(watts(0), Value{0});
}

TEST(Missing, Percentage255IsNoReadingAnd254IsOne) {
    EXPECT_EQ(percent(255), Value{});
    EXPECT_EQ(percent(254), Value{254});
    EXPECT_EQ(percent(0), Value{0});
}

TEST(Missing, PercentageInASixteenBitColumnIsMissingFrom255On) {
    EXPECT_EQ(wide_percent(254), Value{254});
    EXPECT_EQ(wide_percent(255), Value{});
    EXPECT_EQ(wide_percent(65535), Value{});
}

TEST(Missing, ModeNeverSetIsMissing) {
    EXPECT_EQ(mode(255), Value{});
    EXPECT_EQ(mode(15), Value{15});
}

TEST(Missing, SupplyByte15IsUnknownAnd14And16AreValues) {
    EXPECT_EQ(supply_byte(15), Value{});
    EXPECT_EQ(supply_byte(14), Value{14});
    EXPECT_EQ(supply_byte(16), Value{16});
    EXPECT_EQ(supply_byte(0), Value{0});
}

TEST(Missing, AvailablePowerOf0Or65535IsNotKnown) {
    EXPECT_EQ(available_watts(0), Value{});
    EXPECT_EQ(available_watts(65535), Value{});
    EXPECT_EQ(available_watts(1), Value{1});
    EXPECT_EQ(available_watts(65536), Value{65536});
}

TEST(Missing, TripleOfMinusOneIsNoReadingAndOneWithAnotherNumberIs) {
    EXPECT_FALSE(degrees({-1, -1, -1}).has_value());
    EXPECT_TRUE(degrees({0, -1, -1}).has_value());
    EXPECT_TRUE(degrees({-1, -1, -2}).has_value());
    EXPECT_TRUE(degrees({0, 0, 0}).has_value());
}

TEST(Missing, TemperatureOfMinusOneIsAReading) {
    EXPECT_EQ(temperature(-1), -1);
    EXPECT_EQ(temperature(-32767), -32767);
    EXPECT_EQ(temperature(kNoTemperature), std::nullopt);
}

TEST(Missing, SecondMeanIsShownWhenItsMaximumIsAReading) {
    EXPECT_EQ(second_mean(300, 310), Value{300});
    EXPECT_EQ(second_mean(310, 310), Value{310});
}

TEST(Missing, SecondMeanWithASlotWithoutAcIsNoReading) {
    EXPECT_EQ(second_mean(10000, 65535), Value{});
}

TEST(Missing, SecondMeanAboveItsMaximumIsNoReading) {
    EXPECT_EQ(second_mean(311, 310), Value{});
}

}  // namespace
}  // namespace pwrmgt::pwrmgtctl
