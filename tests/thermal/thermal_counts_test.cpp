// SPDX-License-Identifier: Apache-2.0
// The number of indexes that a query of a past period hands back.
#include "thermal_test.h"

using namespace pwrmgt::test;

class ThermalCounts : public PeriodQueryTest {};

TEST_F(ThermalCounts, CountOfZeroYields60Indexes) {
    answer_select(1, {{1'699'996'440, 1, 1, 20}});

    EXPECT_EQ(ask(0, 0), 0U);

    EXPECT_EQ(count, 60U);
}

TEST_F(ThermalCounts, AmbientSetsTheCountAndTheOthersRaiseIt) {
    for (size_t nth = 1; nth <= 20; ++nth) {
        platform().reset();
        answer_select(nth, {{1'699'996'440, 2, 1, 20}});

        EXPECT_EQ(ask(0, 0), 0U) << nth;

        EXPECT_EQ(count, 60U) << nth;
    }
}

TEST_F(ThermalCounts, CountIsUnchangedWithoutRows) {
    EXPECT_EQ(ask(0, 7), 0U);
    EXPECT_EQ(count, 7U);

    EXPECT_EQ(ask(0, 0), 8U);
    EXPECT_EQ(count, 0U);
}

TEST_F(ThermalCounts, NullCountIsReadAsZero) {
    EXPECT_EQ(traced([&] { return pwrmgt_get_therm_hist(0, samples.data(), nullptr); }), 8U);
    EXPECT_TRUE(all_bytes(samples[59], 0xFF));
    EXPECT_TRUE(all_bytes(samples[60], 0x11));

    answer_select(3, {{1'699'996'440, 4, 1, 20}});
    EXPECT_EQ(traced([&] { return pwrmgt_get_therm_hist(0, samples.data(), nullptr); }), 0U);
}
