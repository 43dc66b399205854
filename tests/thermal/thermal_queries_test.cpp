// SPDX-License-Identifier: Apache-2.0
// Temperatures of a past period: checks, calls, grid.
#include "thermal_statements.h"
#include "thermal_test.h"

using namespace pwrmgt::test;

class ThermalQueries : public PeriodQueryTest {};

// -- checks

TEST_F(ThermalQueries, NullSamplesAre1BeforeAnyOtherCheck) {
    count = 5000;

    EXPECT_EQ(traced([&] { return pwrmgt_get_therm_hist(0, nullptr, &count); }), 1U);
    EXPECT_EQ(trace, "");
    EXPECT_EQ(traced([] { return pwrmgt_get_therm_hist(0, nullptr, nullptr); }), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_EQ(count, 5000U);
}

TEST_F(ThermalQueries, CountAbove1440Is10) {
    for (const uint32_t wanted : {1441U, 65536U, 4'294'967'295U}) {
        EXPECT_EQ(ask(3, wanted), 10U) << wanted;

        EXPECT_EQ(count, wanted);
        EXPECT_EQ(trace, "");
    }
    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_TRUE(all_bytes(samples[0], 0x11));
}

TEST_F(ThermalQueries, CountAbove60OfAnHourIs10) {
    EXPECT_EQ(ask(0, 61), 10U);
    EXPECT_EQ(ask(0, 1440), 10U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_TRUE(all_bytes(samples[0], 0x11));
}

TEST_F(ThermalQueries, CountOf60OfAnHourIsTaken) {
    EXPECT_EQ(ask(0, 60), 0U);

    EXPECT_EQ(count, 60U);
}

TEST_F(ThermalQueries, CountOf61OfALongerPeriodIsTaken) {
    EXPECT_EQ(ask(1, 61), 0U);
    EXPECT_EQ(ask(3, 1440), 0U);

    EXPECT_EQ(count, 1440U);
}

TEST_F(ThermalQueries, NoConnectionIs2WithTheSamplesCleared) {
    platform().fail(Operation::open);

    EXPECT_EQ(ask(0, 2), 2U);

    EXPECT_EQ(platform().calls, Calls{"open localhost root '' vek_pwr_db 0"});
    EXPECT_TRUE(all_bytes(samples[0], 0xFF));
    EXPECT_TRUE(all_bytes(samples[1], 0xFF));
    EXPECT_TRUE(all_bytes(samples[2], 0x11));
    EXPECT_EQ(count, 2U);
}

// -- calls

TEST_F(ThermalQueries, QueryWithoutRowsMakesTheseCallsAndNoOthers) {
    EXPECT_EQ(ask(0, 0), 8U);

    EXPECT_EQ(platform().calls,
              calls_without_rows("Timestamp>=1699996380 and Timestamp<=1700000000"));
}

TEST_F(ThermalQueries, LongerPeriodsStartAtTheirOwnWholeMinute) {
    ask(1, 1);
    EXPECT_EQ(platform().named("raw").front(),
              select_of(kSensorFilters[0], "Timestamp>=1699978380 and Timestamp<=1700000000"));

    platform().reset();
    ask(2, 1);
    EXPECT_EQ(platform().named("raw").front(),
              select_of(kSensorFilters[0], "Timestamp>=1699956780 and Timestamp<=1700000000"));

    platform().reset();
    ask(3, 1);
    EXPECT_EQ(platform().named("raw").back(),
              select_of(kSensorFilters[19], "Timestamp>=1699913580 and Timestamp<=1700000000"));
}

TEST_F(ThermalQueries, WholeMinuteIsItsOwnStart) {
    platform().clock = 1'699'999'980;
    ask(0, 60);
    EXPECT_EQ(samples[0].tm, 1'699'996'440U);

    platform().clock = 1'699'999'979;
    ask(0, 60);
    EXPECT_EQ(samples[0].tm, 1'699'996'380U);
}

TEST_F(ThermalQueries, ModulesPerSocketBoundTheMemoryStatements) {
    platform().set_property(kModulesPerSocket, 12);

    ask(0, 1);

    const std::string span = "Timestamp>=1699996380 and Timestamp<=1700000000";
    const Calls statements = platform().named("raw");
    EXPECT_EQ(statements[12], select_of("Type=3 and InstNum>=1 and InstNum<=12", span));
    EXPECT_EQ(statements[13], select_of("Type=3 and InstNum>=13 and InstNum<=24", span));
    EXPECT_EQ(statements[19], select_of("Type=3 and InstNum>=85 and InstNum<=96", span));
}

TEST_F(ThermalQueries, PropertyIsReadAfterTheClockAndAgainForEachSelectWithRows) {
    answer_select(2, {{1'699'996'440, 1, 2, 20}});

    EXPECT_EQ(ask(0, 1), 0U);

    const Calls calls(platform().calls.begin(), platform().calls.begin() + 16);
    const std::string span = "Timestamp>=1699996380 and Timestamp<=1700000000";
    EXPECT_EQ(calls,
              (Calls{"open localhost root '' vek_pwr_db 0", "time",
                     "byte /dc/tavn/dm/planar/dimm_per_socket", select_of(kSensorFilters[0], span),
                     "row_count", "free_result", select_of(kSensorFilters[1], span), "row_count",
                     "byte /dc/tavn/dm/planar/dimm_per_socket", "step", "int 0", "short_int 1",
                     "short_int 2", "short_int 3", "step", "free_result"}));
    EXPECT_EQ(platform().count("byte"), 2U);
}

TEST_F(ThermalQueries, SelectWithRowsIsWalkedEachTime) {
    platform().answer_table("", {{1'699'996'440, 1, 1, 20}});

    EXPECT_EQ(ask(0, 1), 0U);

    EXPECT_EQ(platform().count("byte"), 21U);
    EXPECT_EQ(platform().count("free_result"), 20U);
}

TEST_F(ThermalQueries, RowCountBelowOneIsNoRow) {
    for (const int told : {0, -1, INT32_MIN}) {
        platform().reset();
        platform().answer_rows(Rows{{{1'699'996'440, 1, 1, 20}}, 10, told});

        EXPECT_EQ(ask(0, 0), 8U) << told;

        EXPECT_EQ(platform().count("step"), 0U) << told;
    }
}

// -- grid

TEST_F(ThermalQueries, SamplesAreClearedUpToTheCountOnly) {
    EXPECT_EQ(ask(0, 2), 0U);

    EXPECT_EQ(samples[0].index, kNoIndex);
    EXPECT_EQ(samples[0].tm, 1'699'998'180U);
    samples[0].tm = UINT32_MAX;
    EXPECT_TRUE(all_bytes(samples[0], 0xFF));
    EXPECT_TRUE(all_bytes(samples[1], 0xFF));
    EXPECT_TRUE(all_bytes(samples[2], 0x11));
}

TEST_F(ThermalQueries, CountOfZeroClears60Samples) {
    EXPECT_EQ(ask(0, 0), 8U);

    EXPECT_TRUE(all_bytes(samples[59], 0xFF));
    EXPECT_TRUE(all_bytes(samples[60], 0x11));
}

TEST_F(ThermalQueries, FirstIndexEndsOneIndexAfterTheStart) {
    ask(0, 60);
    EXPECT_EQ(samples[0].tm, 1'699'996'440U);

    ask(0, 7);
    EXPECT_EQ(samples[0].tm, 1'699'996'894U);

    ask(3, 1440);
    EXPECT_EQ(samples[0].tm, 1'699'913'640U);

    ask(3, 1);
    EXPECT_EQ(samples[0].tm, 1'699'999'980U);
}

TEST_F(ThermalQueries, RowsOfEverySensorFillTheirOwnSlots) {
    const int64_t first = 1'699'998'180;
    for (const Row& sensor :
         std::vector<Row>{{1, 1},  {1, 2},  {4, 1},  {4, 2},  {2, 1},  {2, 2},  {2, 3},
                          {2, 4},  {2, 5},  {2, 6},  {2, 7},  {2, 8},  {3, 1},  {3, 17},
                          {3, 33}, {3, 49}, {3, 65}, {3, 81}, {3, 97}, {3, 113}}) {
        const int64_t value = 10 * sensor[0] + sensor[1] % 16;
        platform().answer_rows(std::vector<Row>{{first, sensor[0], sensor[1], value},
                                                {first + 1800, sensor[0], sensor[1], -value}});
    }

    EXPECT_EQ(ask(0, 2), 0U);

    EXPECT_EQ(samples[0].index, 1);
    EXPECT_EQ(samples[1].index, 2);
    EXPECT_EQ(samples[1].tm, 1'699'999'980U);
    EXPECT_EQ(fields(samples[0].ambient[1]), (Row{12, 12, 12}));
    EXPECT_EQ(fields(samples[1].ambient[0]), (Row{-11, -11, -11}));
    EXPECT_EQ(fields(samples[0].exhaust[0]), (Row{41, 41, 41}));
    EXPECT_EQ(fields(samples[1].exhaust[1]), (Row{-42, -42, -42}));
    EXPECT_EQ(fields(samples[0].cpu[7]), (Row{28, 28, 28}));
    EXPECT_EQ(fields(samples[1].cpu[0]), (Row{-21, -21, -21}));
    EXPECT_EQ(fields(samples[0].memory[0]), (Row{31, 31, 31}));
    EXPECT_EQ(fields(samples[1].memory[7]), (Row{-31, -31, -31}));
}

TEST_F(ThermalQueries, IndexWithoutAReadingKeepsMinusOneInAllThree) {
    answer_select(1, {{1'699'996'560, 1, 1, 20}});

    EXPECT_EQ(ask(0, 60), 0U);

    EXPECT_EQ(samples[0].index, 1);
    EXPECT_EQ(samples[1].index, 2);
    EXPECT_EQ(fields(samples[0].ambient[0]), kNothing);
    EXPECT_EQ(fields(samples[1].ambient[0]), kNothing);
    EXPECT_EQ(fields(samples[2].ambient[0]), (Row{20, 20, 20}));
    EXPECT_EQ(fields(samples[2].cpu[0]), kNothing);
}

// -- period outside 0 to 3

TEST_F(ThermalQueries, PeriodAbove3FoldsNothing) {
    platform().answer_table("", {{1'699'999'980, 1, 1, 20}});

    EXPECT_EQ(ask(4, 61), 0U);

    EXPECT_EQ(platform().named("raw").front(),
              select_of(kSensorFilters[0], "Timestamp>=1699999980 and Timestamp<=1700000000"));
    EXPECT_EQ(platform().count("step"), 0U);
    EXPECT_EQ(platform().count("byte"), 1U);
    EXPECT_EQ(samples[0].tm, 1'699'999'980U);
    EXPECT_EQ(samples[0].index, kNoIndex);
    EXPECT_EQ(fields(samples[0].ambient[0]), kNothing);
    EXPECT_EQ(count, 61U);
}

TEST_F(ThermalQueries, GreatestPeriodIsTakenToo) {
    EXPECT_EQ(ask(UINT32_MAX, 1440), 0U);

    EXPECT_THAT(trace, testing::StartsWith("--->pwrmgt_get_therm_hist enter -1 1440\n"));
}

TEST_F(ThermalQueries, ClockBelowThePeriodWraps) {
    platform().clock = 60;

    EXPECT_EQ(ask(0, 60), 0U);

    // 60 - 3600 in 32 bits, cut to a whole minute: 4294963740.
    EXPECT_EQ(platform().named("raw").front(),
              select_of(kSensorFilters[0], "Timestamp>=-3556 and Timestamp<=60"));
    EXPECT_EQ(samples[0].tm, 4'294'963'800U);
}
