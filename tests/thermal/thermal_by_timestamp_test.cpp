// SPDX-License-Identifier: Apache-2.0
// Temperatures of a span that the caller places: checks, calls, grid, and the count handed back.
#include "thermal_statements.h"
#include "thermal_test.h"

using namespace pwrmgt::test;

namespace {

constexpr uint32_t kEnd = 1'699'000'000;  // 40 seconds after a whole minute

}  // namespace

class ThermalByTimestamp : public ThermalTest {
protected:
    uint32_t ask(int32_t minutes, int32_t per_index, uint32_t end = kEnd) {
        count = 77;
        return traced([&] {
            return pwrmgt_get_therm_hist_by_timestamp(end, minutes, per_index, samples.data(),
                                                      &count);
        });
    }

    Grid samples = grid_of(1442, 0x11);
    uint32_t count = 77;
};

// -- checks

TEST_F(ThermalByTimestamp, NullSamplesAre1BeforeAnyOtherCheck) {
    EXPECT_EQ(
        traced([&] { return pwrmgt_get_therm_hist_by_timestamp(kEnd, 5000, 0, nullptr, &count); }),
        1U);

    EXPECT_EQ(trace, "");
    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_EQ(count, 77U);
}

TEST_F(ThermalByTimestamp, MinutesPerIndexOutside1To12Are11) {
    for (const int32_t per_index : {0, 13, -1, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(ask(60, per_index), 11U) << per_index;

        EXPECT_EQ(count, 77U);
        EXPECT_EQ(trace, "");
    }
    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_TRUE(all_bytes(samples[0], 0x11));
}

TEST_F(ThermalByTimestamp, MinutesAbove1440Are11) {
    EXPECT_EQ(ask(1441, 12), 11U);
    EXPECT_EQ(ask(INT32_MAX, 1), 11U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_TRUE(all_bytes(samples[0], 0x11));
    EXPECT_EQ(count, 77U);
}

TEST_F(ThermalByTimestamp, MinutesPerIndexOf1And12AreTaken) {
    platform().answer_table("", {{1'698'996'420, 1, 1, 20}});

    EXPECT_EQ(ask(60, 1), 0U);
    EXPECT_EQ(count, 60U);

    EXPECT_EQ(ask(60, 12), 0U);
    EXPECT_EQ(count, 5U);
}

TEST_F(ThermalByTimestamp, SpanOf1440MinutesIsTaken) {
    platform().answer_table("", {{1'698'996'420, 1, 1, 20}});

    EXPECT_EQ(ask(1440, 1), 0U);

    EXPECT_EQ(count, 1440U);
    EXPECT_TRUE(all_bytes(samples[1440], 0x11));
}

TEST_F(ThermalByTimestamp, NoConnectionIs2WithTheSamplesClearedAndTheCountZero) {
    platform().fail(Operation::open);

    EXPECT_EQ(ask(2, 1), 2U);

    EXPECT_EQ(platform().calls, Calls{"open localhost root '' vek_pwr_db 0"});
    EXPECT_TRUE(all_bytes(samples[1], 0xFF));
    EXPECT_TRUE(all_bytes(samples[2], 0x11));
    EXPECT_EQ(count, 0U);
}

// -- calls and grid

TEST_F(ThermalByTimestamp, RowsAreTakenUpToTheClock) {
    EXPECT_EQ(ask(60, 1), 8U);

    EXPECT_EQ(platform().calls,
              calls_without_rows("Timestamp>=1698996360 and Timestamp<=1700000000"));
}

TEST_F(ThermalByTimestamp, FirstIndexEndsOneIndexAfterTheStart) {
    ask(60, 1);
    EXPECT_EQ(samples[0].tm, 1'698'996'420U);

    ask(60, 12);
    EXPECT_EQ(samples[0].tm, 1'698'997'080U);

    ask(60, 1, 1'698'999'960);
    EXPECT_EQ(samples[0].tm, 1'698'996'420U);

    ask(60, 1, 1'698'999'959);
    EXPECT_EQ(samples[0].tm, 1'698'996'360U);
}

TEST_F(ThermalByTimestamp, IndexesAreMinutesByMinutesPerIndexCutDown) {
    platform().answer_table("", {{1'698'996'420, 1, 1, 20}});

    EXPECT_EQ(ask(23, 12), 0U);
    EXPECT_EQ(count, 1U);
    EXPECT_TRUE(all_bytes(samples[1], 0x11));

    EXPECT_EQ(ask(24, 12), 0U);
    EXPECT_EQ(count, 2U);
    EXPECT_TRUE(all_bytes(samples[2], 0x11));
}

TEST_F(ThermalByTimestamp, ReadingsAreFoldedBySecondsPerIndex) {
    platform().answer_rows(std::vector<Row>{{1'698'999'480, 1, 1, 20},
                                            {1'698'999'600, 1, 1, 30},
                                            {1'698'999'660, 1, 1, 50},
                                            {1'698'999'720, 1, 1, 40}});

    EXPECT_EQ(ask(10, 2), 0U);

    EXPECT_EQ(count, 5U);
    EXPECT_EQ(samples[0].tm, 1'698'999'480U);
    EXPECT_EQ(fields(samples[0].ambient[0]), (Row{20, 20, 20}));
    EXPECT_EQ(samples[1].tm, 1'698'999'600U);
    EXPECT_EQ(fields(samples[1].ambient[0]), (Row{30, 30, 30}));
    EXPECT_EQ(samples[2].tm, 1'698'999'720U);
    EXPECT_EQ(fields(samples[2].ambient[0]), (Row{50, 45, 40}));
    EXPECT_EQ(samples[3].tm, kNoTime);
}

TEST_F(ThermalByTimestamp, RowsAfterTheSpanCloseItsLastIndex) {
    platform().answer_rows(std::vector<Row>{{1'698'999'950, 1, 1, 20}, {1'699'500'000, 1, 1, 90}});

    EXPECT_EQ(ask(1, 1), 0U);

    EXPECT_EQ(samples[0].tm, 1'698'999'960U);
    EXPECT_EQ(fields(samples[0].ambient[0]), (Row{20, 20, 20}));
}

// -- spans without an index

TEST_F(ThermalByTimestamp, SpanWithoutAnIndexAsksAndIs8WithNoSampleWritten) {
    platform().answer_table("", {{1'698'999'600, 1, 1, 20}});

    EXPECT_EQ(ask(11, 12), 8U);

    EXPECT_EQ(platform().count("raw"), 20U);
    EXPECT_EQ(platform().count("step"), 0U);
    EXPECT_TRUE(all_bytes(samples[0], 0x11));
    EXPECT_EQ(count, 0U);
}

TEST_F(ThermalByTimestamp, SpanOfNoMinuteStartsAtTheEnd) {
    EXPECT_EQ(ask(0, 1), 8U);

    EXPECT_EQ(platform().calls,
              calls_without_rows("Timestamp>=1698999960 and Timestamp<=1700000000"));
    EXPECT_TRUE(all_bytes(samples[0], 0x11));
}

TEST_F(ThermalByTimestamp, NegativeSpanStartsAfterTheEndAndHoldsNoIndex) {
    EXPECT_EQ(ask(-60, 1), 8U);
    EXPECT_EQ(platform().calls,
              calls_without_rows("Timestamp>=1699003560 and Timestamp<=1700000000"));

    EXPECT_EQ(ask(INT32_MIN, 12), 8U);
    EXPECT_EQ(count, 0U);
    EXPECT_TRUE(all_bytes(samples[0], 0x11));
}

TEST_F(ThermalByTimestamp, EndBeforeTheSpanWrapsIn32Bits) {
    EXPECT_EQ(ask(1, 1, 0), 8U);

    EXPECT_EQ(samples[0].tm, 4'294'967'280U);
}

// -- count

TEST_F(ThermalByTimestamp, CountIsZeroWithoutRows) {
    EXPECT_EQ(ask(60, 1), 8U);

    EXPECT_EQ(count, 0U);
}

TEST_F(ThermalByTimestamp, RowsOfOneSensorAreEnough) {
    for (size_t nth = 1; nth <= 20; ++nth) {
        platform().reset();
        for (size_t before = 1; before < nth; ++before)
            platform().answer_rows(std::vector<Row>{});
        platform().answer_rows(std::vector<Row>{{1'698'996'420, 3, 1, 20}});

        EXPECT_EQ(ask(60, 1), 0U) << nth;

        EXPECT_EQ(count, 60U) << nth;
    }
}

TEST_F(ThermalByTimestamp, NullCountIsNotWritten) {
    platform().answer_rows(std::vector<Row>{{1'698'996'420, 1, 1, 20}});

    EXPECT_EQ(traced([&] {
                  return pwrmgt_get_therm_hist_by_timestamp(kEnd, 60, 1, samples.data(), nullptr);
              }),
              0U);

    EXPECT_EQ(fields(samples[0].ambient[0]), (Row{20, 20, 20}));
}
