// SPDX-License-Identifier: Apache-2.0
// The processor queries: checks in order, rows copied as they are, and the four short forms.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

constexpr uint32_t kAll = 255;

using One = pwrmgt_hist_cpu_pwr_t;
using Entire = pwrmgt_hist_entire_cpu_pwr_t;

Row fields(const One& e) {
    return {e.index, e.timestamp, e.cpu_pwr};
}
Row fields(const Entire& e) {
    Row row{e.index, e.timestamp};
    row.insert(row.end(), std::begin(e.cpu_pwr), std::end(e.cpu_pwr));
    return row;
}

constexpr One kUntouchedOne{7, 7, 7};
constexpr Entire kUntouchedEntire{7, 7, {7, 7, 7, 7, 7, 7, 7, 7}};

std::vector<Row> two_rows() {
    return {{1'699'999'990, 101, 102, 103, 104, 105, 106, 107, 65535},
            {1'699'999'901, 201, 202, 203, 204, 205, 206, 207, 208}};
}

std::string select(const std::string& filter) {
    return "query HistCpuPowersMem [Timestamp,Cpu1AvgPwr,Cpu2AvgPwr,Cpu3AvgPwr,Cpu4AvgPwr,"
           "Cpu5AvgPwr,Cpu6AvgPwr,Cpu7AvgPwr,Cpu8AvgPwr] where " +
           filter + " order Timestamp DESC";
}

}  // namespace

class CpuPower : public PlatformTest {
protected:
    std::vector<One> one{21, kUntouchedOne};
    std::vector<Entire> entire{21, kUntouchedEntire};
};

// -- checks, each before the next

TEST_F(CpuPower, NullEntriesAre1BeforeAnyOtherCheck) {
    EXPECT_EQ(pwrmgt_get_cpu_power_per_index(0, nullptr, 21), 1U);
    EXPECT_EQ(pwrmgt_get_cpu_power_per_index(1, nullptr, 0), 1U);
    EXPECT_EQ(pwrmgt_get_history_cpu_power(9, nullptr, 21), 1U);
    EXPECT_EQ(pwrmgt_get_history_entire_cpu_power(nullptr, 21), 1U);
    EXPECT_EQ(pwrmgt_get_latest_cpu_power(0, nullptr), 1U);
    EXPECT_EQ(pwrmgt_get_latest_entire_cpu_power(nullptr), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(CpuPower, SelectorOutside1To8And255Is10AndCallsNothing) {
    for (const uint32_t cpu : {0U, 9U, 254U, 256U, 257U, 4'294'967'295U}) {
        EXPECT_EQ(pwrmgt_get_cpu_power_per_index(cpu, entire.data(), 1), 10U) << cpu;
        EXPECT_EQ(pwrmgt_get_history_cpu_power(cpu, entire.data(), 1), 10U) << cpu;
        EXPECT_EQ(pwrmgt_get_latest_cpu_power(cpu, entire.data()), 10U) << cpu;
    }

    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_EQ(fields(entire[0]), fields(kUntouchedEntire));
}

TEST_F(CpuPower, CountAbove20Is10AndCallsNothing) {
    EXPECT_EQ(pwrmgt_get_cpu_power_per_index(1, one.data(), 21), 10U);
    EXPECT_EQ(pwrmgt_get_cpu_power_per_index(kAll, entire.data(), 21), 10U);
    EXPECT_EQ(pwrmgt_get_history_cpu_power(8, one.data(), UINT32_MAX), 10U);
    EXPECT_EQ(pwrmgt_get_history_entire_cpu_power(entire.data(), 21), 10U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(CpuPower, CountOf20IsAccepted) {
    platform().answer_rows(steady_rows(1'699'999'990, 21, two_rows()[0]));

    EXPECT_EQ(pwrmgt_get_cpu_power_per_index(kAll, entire.data(), 20), 0U);

    EXPECT_EQ(platform().count("step"), 20U);
    EXPECT_EQ(entire[19].index, 19);
    EXPECT_EQ(entire[19].timestamp, 1'699'999'420U);
    EXPECT_EQ(fields(entire[20]), fields(kUntouchedEntire));
}

TEST_F(CpuPower, SupportGateIsNotAsked) {
    policy_is_read(2);
    platform().quoril = true;
    platform().answer_rows(two_rows());

    EXPECT_EQ(pwrmgt_get_latest_cpu_power(3, one.data()), 0U);

    EXPECT_EQ(platform().count("quoril"), 0U);
    EXPECT_EQ(platform().count("query PowerPolicy"), 0U);
}

TEST_F(CpuPower, NoConnectionIs2BeforeTheClock) {
    platform().fail(Operation::open);

    EXPECT_EQ(pwrmgt_get_cpu_power_per_index(1, one.data(), 20), 2U);

    EXPECT_EQ(platform().calls, Calls{kOpen});
    EXPECT_EQ(fields(one[0]), fields(kUntouchedOne));
}

TEST_F(CpuPower, ClockIsNotChecked) {
    platform().clock = -1;
    platform().answer_rows(two_rows());

    EXPECT_EQ(pwrmgt_get_latest_cpu_power(1, one.data()), 0U);

    EXPECT_EQ(platform().named("query"), Calls{select("Timestamp>=-121 AND Timestamp<=-1")});
}

TEST_F(CpuPower, FailedQueryIs3HoweverItFails) {
    for (const Mode mode : {Mode::error, Mode::error_with_handle, Mode::no_handle}) {
        platform().reset();
        platform().fail(Operation::query, -1, 1, mode);

        EXPECT_EQ(pwrmgt_get_cpu_power_per_index(1, one.data(), 20), 3U);

        EXPECT_EQ(platform().count("row_count"), 0U);
        EXPECT_EQ(platform().count("free_result"), mode == Mode::error_with_handle ? 1U : 0U);
        EXPECT_EQ(platform().calls.back(), "close");
    }
    EXPECT_EQ(fields(one[0]), fields(kUntouchedOne));
}

TEST_F(CpuPower, EmptyTableIs8AndLeavesTheEntries) {
    EXPECT_EQ(pwrmgt_get_cpu_power_per_index(1, one.data(), 20), 8U);
    EXPECT_EQ(pwrmgt_get_history_entire_cpu_power(entire.data(), 20), 8U);

    EXPECT_EQ(platform().count("step"), 0U);
    EXPECT_EQ(fields(one[0]), fields(kUntouchedOne));
    EXPECT_EQ(fields(entire[0]), fields(kUntouchedEntire));
}

TEST_F(CpuPower, RowCountBelowZeroCountsAsEmpty) {
    platform().answer_rows(two_rows());
    platform().fail(Operation::row_count);

    EXPECT_EQ(pwrmgt_get_latest_cpu_power(1, one.data()), 8U);

    EXPECT_EQ(platform().count("step"), 0U);
}

// -- calls and rows

TEST_F(CpuPower, OneProcessorMakesTheseCallsAndNoOthers) {
    platform().answer_rows(two_rows());

    EXPECT_EQ(pwrmgt_get_cpu_power_per_index(8, one.data(), 2), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{kOpen, "time", select("Timestamp>=1699999850 AND Timestamp<=1700000000"),
                     "row_count", "step", "uint 0", "short_uint 8", "step", "uint 0",
                     "short_uint 8", "free_result", "close"}));
    EXPECT_EQ(fields(one[0]), (Row{0, 1'699'999'990, 65535}));
    EXPECT_EQ(fields(one[1]), (Row{1, 1'699'999'901, 208}));
    EXPECT_EQ(fields(one[2]), fields(kUntouchedOne));
}

TEST_F(CpuPower, AllProcessorsMakeTheseCallsAndNoOthers) {
    platform().answer_rows(two_rows());

    EXPECT_EQ(pwrmgt_get_cpu_power_per_index(kAll, entire.data(), 1), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{kOpen, "time", select("Timestamp>=1699999880 AND Timestamp<=1700000000"),
                     "row_count", "step", "uint 0", "short_uint 1", "short_uint 2", "short_uint 3",
                     "short_uint 4", "short_uint 5", "short_uint 6", "short_uint 7", "short_uint 8",
                     "free_result", "close"}));
    EXPECT_EQ(fields(entire[0]), (Row{0, 1'699'999'990, 101, 102, 103, 104, 105, 106, 107, 65535}));
    EXPECT_EQ(fields(entire[1]), fields(kUntouchedEntire));
}

TEST_F(CpuPower, EachSelectorReadsItsOwnColumn) {
    for (uint32_t cpu = 1; cpu <= 8; ++cpu) {
        platform().answer_rows({two_rows()[1]});

        EXPECT_EQ(pwrmgt_get_latest_cpu_power(cpu, one.data()), 0U);

        EXPECT_EQ(one[0].cpu_pwr, 200 + cpu);
    }
}

TEST_F(CpuPower, WindowIsNinetySecondsAndThirtyPerRow) {
    for (const uint32_t count : {0U, 1U, 20U}) {
        pwrmgt_get_cpu_power_per_index(1, one.data(), count);
    }

    EXPECT_EQ(platform().named("query"),
              (Calls{select("Timestamp>=1699999910 AND Timestamp<=1700000000"),
                     select("Timestamp>=1699999880 AND Timestamp<=1700000000"),
                     select("Timestamp>=1699999310 AND Timestamp<=1700000000")}));
}

TEST_F(CpuPower, CountOfZeroFillsNothingAndIs0) {
    platform().answer_rows(two_rows());

    EXPECT_EQ(pwrmgt_get_cpu_power_per_index(1, one.data(), 0), 0U);

    EXPECT_EQ(platform().count("step"), 0U);
    EXPECT_EQ(fields(one[0]), fields(kUntouchedOne));
}

TEST_F(CpuPower, EntriesBeyondTheLastRowAreZeroedAndTheStatusIs0) {
    platform().answer_rows(two_rows());
    EXPECT_EQ(pwrmgt_get_history_cpu_power(1, one.data(), 4), 0U);
    EXPECT_EQ(platform().count("step"), 3U);

    platform().answer_rows(two_rows());
    EXPECT_EQ(pwrmgt_get_history_entire_cpu_power(entire.data(), 4), 0U);

    EXPECT_EQ(fields(one[1]), (Row{1, 1'699'999'901, 201}));
    EXPECT_EQ(fields(one[2]), (Row{0, 0, 0}));
    EXPECT_EQ(fields(one[3]), (Row{0, 0, 0}));
    EXPECT_EQ(fields(one[4]), fields(kUntouchedOne));
    EXPECT_EQ(fields(entire[3]), (Row{0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(fields(entire[4]), fields(kUntouchedEntire));
}

TEST_F(CpuPower, FailingStepEndsTheRowsWithStatus0) {
    for (const int result : {-1, 0, 1, 3}) {
        platform().reset();
        platform().answer_rows(two_rows());
        platform().fail(Operation::step, result, 2);
        one.assign(21, kUntouchedOne);

        EXPECT_EQ(pwrmgt_get_cpu_power_per_index(1, one.data(), 3), 0U);

        EXPECT_EQ(platform().count("step"), 2U);
        EXPECT_EQ(fields(one[0]), (Row{0, 1'699'999'990, 101}));
        EXPECT_EQ(fields(one[1]), (Row{0, 0, 0}));
        EXPECT_EQ(fields(one[2]), (Row{0, 0, 0}));
    }
}

TEST_F(CpuPower, UnreadableColumnIs0) {
    platform().answer_rows(two_rows());
    platform().fail(Operation::column, 1, 2);

    EXPECT_EQ(pwrmgt_get_latest_cpu_power(1, one.data()), 0U);

    EXPECT_EQ(fields(one[0]), (Row{0, 1'699'999'990, 0}));
}

// -- short forms

TEST_F(CpuPower, LatestQueriesReadOneRowOfTheLast120Seconds) {
    platform().answer_rows(two_rows());
    EXPECT_EQ(pwrmgt_get_latest_cpu_power(3, one.data()), 0U);
    platform().answer_rows(two_rows());
    EXPECT_EQ(pwrmgt_get_latest_entire_cpu_power(entire.data()), 0U);

    const std::string query = select("Timestamp>=1699999880 AND Timestamp<=1700000000");
    EXPECT_EQ(platform().named("query"), (Calls{query, query}));
    EXPECT_EQ(fields(one[0]), (Row{0, 1'699'999'990, 103}));
    EXPECT_EQ(fields(one[1]), fields(kUntouchedOne));
    EXPECT_EQ(fields(entire[0]), (Row{0, 1'699'999'990, 101, 102, 103, 104, 105, 106, 107, 65535}));
    EXPECT_EQ(fields(entire[1]), fields(kUntouchedEntire));
}

TEST_F(CpuPower, LatestQueryOfAllProcessorsBySelectorFillsTheEntireRecord) {
    platform().answer_rows({two_rows()[1]});

    EXPECT_EQ(pwrmgt_get_latest_cpu_power(kAll, entire.data()), 0U);

    EXPECT_EQ(fields(entire[0]), (Row{0, 1'699'999'901, 201, 202, 203, 204, 205, 206, 207, 208}));
}
