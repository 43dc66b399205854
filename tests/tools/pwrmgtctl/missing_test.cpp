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
