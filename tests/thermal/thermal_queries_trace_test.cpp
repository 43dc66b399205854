// SPDX-License-Identifier: Apache-2.0
// What whole queries print, byte by byte.
#include "thermal_test.h"

using namespace pwrmgt::test;

namespace {

// clang-format off
const std::string kWithoutRows =
    "--->query for ambient\n"
    "--->AMB 1 table_rows 0\n"
    "--->AMB 2 table_rows 0\n"
    "--->EXH 1 table_rows 0\n"
    "--->EXH 2 table_rows 0\n"
    "--->query for cpu\n"
    "--->CPU 1 table_rows 0\n"
    "--->CPU 2 table_rows 0\n"
    "--->CPU 3 table_rows 0\n"
    "--->CPU 4 table_rows 0\n"
    "--->CPU 5 table_rows 0\n"
    "--->CPU 6 table_rows 0\n"
    "--->CPU 7 table_rows 0\n"
    "--->CPU 8 table_rows 0\n"
    "--->query for dimm\n"
    "--->CPU1 DIMM table_rows 0\n"
    "--->CPU2 DIMM table_rows 0\n"
    "--->CPU3 DIMM table_rows 0\n"
    "--->CPU4 DIMM table_rows 0\n"
    "--->CPU5 DIMM table_rows 0\n"
    "--->CPU6 DIMM table_rows 0\n"
    "--->CPU7 DIMM table_rows 0\n"
    "--->CPU8 DIMM table_rows 0\n";

// Two indexes of half an hour from 1'699'996'380 on; rows for the inlet sensor 1, exhaust 2,
// processors 1 and 8, and the modules of sockets 1 and 8.
const std::string kWithRows =
    "--->query for ambient\n"
    "--->AMB 1 table_rows 2\n"
    "required sample count 2, secs per index 1800\n"
    "record 1699998000, 1, 1, 20, expected tm 1699998180\n"
    "accumulate for index 0, number 1\n"
    "record 1699998180, 1, 1, 23, expected tm 1699998180\n"
    "index[00] tm[1699998180] type[1] inst[01] Max/Avg/Min[023 021 020]\n"
    "index[01] tm[1699999980] fill NULL\n"
    "--->sample_counts 2 first tm 1699998180\n"
    "--->AMB 2 table_rows 0\n"
    "--->EXH 1 table_rows 0\n"
    "--->EXH 2 table_rows 1\n"
    "required sample count 2, secs per index 1800\n"
    "record 1699998181, 4, 2, 30, expected tm 1699998180\n"
    "index[00] tm[1699998180] NULL\n"
    "accumulate for index 1, number 1\n"
    "index[01] tm[1699999980] type[4] inst[02] Max/Avg/Min[030 030 030]\n"
    "index 0 -1 -1 -1\n"
    "--->query for cpu\n"
    "--->CPU 1 table_rows 1\n"
    "required sample count 2, secs per index 1800\n"
    "record 1699998180, 2, 1, 60, expected tm 1699998180\n"
    "index[00] tm[1699998180] type[2] inst[01] Max/Avg/Min[060 060 060]\n"
    "index[01] tm[1699999980] fill NULL\n"
    "index 0 60 60 60\n"
    "--->CPU 2 table_rows 0\n"
    "--->CPU 3 table_rows 0\n"
    "--->CPU 4 table_rows 0\n"
    "--->CPU 5 table_rows 0\n"
    "--->CPU 6 table_rows 0\n"
    "--->CPU 7 table_rows 0\n"
    "--->CPU 8 table_rows 1\n"
    "required sample count 2, secs per index 1800\n"
    "record 1699998180, 2, 8, 70, expected tm 1699998180\n"
    "index[00] tm[1699998180] type[2] inst[08] Max/Avg/Min[070 070 070]\n"
    "index[01] tm[1699999980] fill NULL\n"
    "index 0 60 60 60\n"
    "--->query for dimm\n"
    "--->CPU1 DIMM table_rows 2\n"
    "required sample count 2, secs per index 1800\n"
    "record 1699998000, 3, 1, 40, expected tm 1699998180\n"
    "accumulate for index 0, number 1\n"
    "record 1699998000, 3, 16, 45, expected tm 1699998180\n"
    "accumulate for index 0, number 2\n"
    "index[00] tm[1699998180] type[3] inst[16] Max/Avg/Min[045 042 040]\n"
    "index[01] tm[1699999980] fill NULL\n"
    "index 0 45 42 40\n"
    "--->CPU2 DIMM table_rows 0\n"
    "--->CPU3 DIMM table_rows 0\n"
    "--->CPU4 DIMM table_rows 0\n"
    "--->CPU5 DIMM table_rows 0\n"
    "--->CPU6 DIMM table_rows 0\n"
    "--->CPU7 DIMM table_rows 0\n"
    "--->CPU8 DIMM table_rows 1\n"
    "required sample count 2, secs per index 1800\n"
    "record 1699998180, 3, 128, 50, expected tm 1699998180\n"
    "index[00] tm[1699998180] type[3] inst[128] Max/Avg/Min[050 050 050]\n"
    "index[01] tm[1699999980] fill NULL\n"
    "index 0 45 42 40\n"
    "returned sample count 2\n";
// clang-format on

void answer_nothing(size_t times) {
    while (times-- > 0)
        platform().answer_rows(std::vector<Row>{});
}

void answer_six_selects() {
    platform().answer_rows(std::vector<Row>{{1'699'998'000, 1, 1, 20}, {1'699'998'180, 1, 1, 23}});
    answer_nothing(2);
    platform().answer_rows(std::vector<Row>{{1'699'998'181, 4, 2, 30}});
    platform().answer_rows(std::vector<Row>{{1'699'998'180, 2, 1, 60}});
    answer_nothing(6);
    platform().answer_rows(std::vector<Row>{{1'699'998'180, 2, 8, 70}});
    platform().answer_rows(std::vector<Row>{{1'699'998'000, 3, 1, 40}, {1'699'998'000, 3, 16, 45}});
    answer_nothing(6);
    platform().answer_rows(std::vector<Row>{{1'699'998'180, 3, 128, 50}});
}

}  // namespace

class ThermalQueriesTrace : public ThermalTest {
protected:
    uint32_t ask(uint32_t period, uint32_t wanted) {
        uint32_t count = wanted;
        return traced([&] { return pwrmgt_get_therm_hist(period, samples.data(), &count); });
    }
    uint32_t ask_span(uint32_t end, int32_t minutes, int32_t per_index) {
        uint32_t count = 0;
        return traced([&] {
            return pwrmgt_get_therm_hist_by_timestamp(end, minutes, per_index, samples.data(),
                                                      &count);
        });
    }

    Grid samples = grid_of(1440, 0x11);
};

TEST_F(ThermalQueriesTrace, PeriodWithoutRows) {
    ask(0, 0);

    EXPECT_EQ(trace, "--->pwrmgt_get_therm_hist enter 0 60\n" + kWithoutRows +
                         "returned sample count 0\n");
}

TEST_F(ThermalQueriesTrace, LongPeriodWithoutRowsKeepsItsCount) {
    ask(3, 1440);

    EXPECT_EQ(trace, "--->pwrmgt_get_therm_hist enter 3 1440\n" + kWithoutRows +
                         "returned sample count 1440\n");
}

TEST_F(ThermalQueriesTrace, PeriodWithRows) {
    answer_six_selects();

    ask(0, 2);

    EXPECT_EQ(trace, "--->pwrmgt_get_therm_hist enter 0 2\n" + kWithRows);
}

TEST_F(ThermalQueriesTrace, SpanWithoutRows) {
    ask_span(1'699'999'980, 60, 12);

    EXPECT_EQ(trace, "--->pwrmgt_get_therm_hist_by_timestamp enter 60 12\n" + kWithoutRows +
                         "returned sample count 0\n");
}

TEST_F(ThermalQueriesTrace, SpanWithRows) {
    platform().answer_rows(std::vector<Row>{{1'699'999'970, 1, 1, 20}});

    ask_span(1'699'999'980, 1, 1);

    std::string expected = "--->pwrmgt_get_therm_hist_by_timestamp enter 1 1\n" + kWithoutRows +
                           "returned sample count 1\n";
    const std::string first = "--->AMB 1 table_rows 0\n";
    expected.replace(expected.find(first), first.size(),
                     "--->AMB 1 table_rows 1\n"
                     "required sample count 1, secs per index 60\n"
                     "record 1699999970, 1, 1, 20, expected tm 1699999980\n"
                     "accumulate for index 0, number 1\n"
                     "index[00] tm[1699999980] type[1] inst[01] Max/Avg/Min[020 020 020]\n"
                     "--->sample_counts 1 first tm 1699999980\n");
    EXPECT_EQ(trace, expected);
}

TEST_F(ThermalQueriesTrace, SpanWithoutAnIndexPrintsAnUnsetTime) {
    platform().answer_rows(std::vector<Row>{{1'699'999'970, 1, 1, 20}});
    answer_nothing(1);
    platform().answer_rows(std::vector<Row>{{1'699'999'970, 4, 1, 20}});

    ask_span(1'699'999'980, -1, 1);

    EXPECT_THAT(trace, testing::StartsWith("--->pwrmgt_get_therm_hist_by_timestamp enter -1 1\n"
                                           "--->query for ambient\n"
                                           "--->AMB 1 table_rows 1\n"
                                           "required sample count 0, secs per index 60\n"
                                           "--->sample_counts 0 first tm -1\n"
                                           "--->AMB 2 table_rows 0\n"
                                           "--->EXH 1 table_rows 1\n"
                                           "required sample count 0, secs per index 60\n"
                                           "index 0 -1 -1 -1\n"));
}

TEST_F(ThermalQueriesTrace, PeriodAbove3PrintsNoWalk) {
    platform().answer_rows(std::vector<Row>{{1'699'999'970, 1, 1, 20}});

    ask(4, 0);

    EXPECT_THAT(trace, testing::StartsWith("--->pwrmgt_get_therm_hist enter 4 60\n"
                                           "--->query for ambient\n"
                                           "--->AMB 1 table_rows 1\n"
                                           "--->sample_counts 60 first tm 1699999980\n"
                                           "--->AMB 2 table_rows 0\n"));
}

TEST_F(ThermalQueriesTrace, QueryWithoutAConnectionPrintsItsEnterLineOnly) {
    platform().fail(Operation::open);
    ask(1, 5);
    EXPECT_EQ(trace, "--->pwrmgt_get_therm_hist enter 1 5\n");

    platform().reset();
    platform().fail(Operation::open);
    ask_span(0, 5, 2);
    EXPECT_EQ(trace, "--->pwrmgt_get_therm_hist_by_timestamp enter 5 2\n");
}

TEST_F(ThermalQueriesTrace, FailedSelectEndsTheTrace) {
    platform().fail(Operation::raw_rows, -1, 5);

    ask(0, 60);

    EXPECT_EQ(trace,
              "--->pwrmgt_get_therm_hist enter 0 60\n"
              "--->query for ambient\n"
              "--->AMB 1 table_rows 0\n"
              "--->AMB 2 table_rows 0\n"
              "--->EXH 1 table_rows 0\n"
              "--->EXH 2 table_rows 0\n"
              "--->query for cpu\n");
}

TEST_F(ThermalQueriesTrace, RowCountIsPrintedAsTold) {
    platform().answer_rows(Rows{{}, 10, -1});

    ask(0, 60);

    EXPECT_THAT(trace, testing::HasSubstr("--->AMB 1 table_rows -1\n--->AMB 2 table_rows 0\n"));
}
