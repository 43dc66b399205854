// SPDX-License-Identifier: Apache-2.0
// The latest temperatures: which rows are stored, and where.
#include "thermal_test.h"

using namespace pwrmgt::test;

namespace {

constexpr int16_t kUntouched = 0x5A5A;

pwrmgt_therm_realtime_t untouched() {
    pwrmgt_therm_realtime_t out;
    std::memset(&out, 0x5A, sizeof out);
    return out;
}

void three_rows_stored(Recorder& recorder) {
    recorder.answer_rows(std::vector<Row>{
        {1'700'000'000, 2, 1, 60}, {1'700'000'000, 3, 17, 41}, {1'700'000'000, 1, 2, 23}});
}

uint32_t ask() {
    pwrmgt_therm_realtime_t out = untouched();
    return pwrmgt_get_therm_realtime(&out);
}

}  // namespace

class ThermalRealtime : public ThermalTest {
protected:
    // Numbers of the words of the record, its head included, that a single row changes.
    std::vector<size_t> words_changed_by(int64_t type, int64_t instance) {
        out = untouched();
        const OpenResult result({{1'700'000'000, type, instance, 21}});
        EXPECT_EQ(thermal_get_realtime_data(result, &out), 1U);
        std::vector<size_t> changed;
        for (size_t word = 0; word < sizeof out / 2; ++word) {
            int16_t value = 0;
            std::memcpy(&value, reinterpret_cast<const char*>(&out) + 2 * word, sizeof value);
            if (value != kUntouched) changed.push_back(word);
        }
        return changed;
    }

    pwrmgt_therm_realtime_t out = untouched();
};

using Words = std::vector<size_t>;

TEST_F(ThermalRealtime, QueryMakesTheseCallsAndNoOthers) {
    platform().answer_rows(std::vector<Row>{{1'700'000'000, 2, 8, -60}});

    EXPECT_EQ(pwrmgt_get_therm_realtime(&out), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"open localhost root '' vek_pwr_db 0", "raw select * from RealTimeThermalMem",
                     "step", "int 0", "short_int 1", "short_int 2", "short_int 3", "step",
                     "free_result", "close"}));
    EXPECT_EQ(out.cpu[7], -60);
}

TEST_F(ThermalRealtime, QueryPrintsNothing) {
    three_rows_stored(platform());

    EXPECT_EQ(traced(ask), 0U);

    EXPECT_EQ(trace, "");
}

TEST_F(ThermalRealtime, EachKindGoesToItsOwnArray) {
    three_rows_stored(platform());

    EXPECT_EQ(pwrmgt_get_therm_realtime(&out), 0U);

    EXPECT_EQ(out.cpu[0], 60);
    EXPECT_EQ(out.memory[16], 41);
    EXPECT_EQ(out.ambient[1], 23);
    EXPECT_EQ(out.cpu[1], kUntouched);
    EXPECT_EQ(out.memory[0], kUntouched);
    EXPECT_EQ(out.ambient[0], kUntouched);
}

TEST_F(ThermalRealtime, HeadIsNeverWritten) {
    three_rows_stored(platform());

    EXPECT_EQ(pwrmgt_get_therm_realtime(&out), 0U);

    EXPECT_THAT(out.lead, testing::Each(0x5A));
}

TEST_F(ThermalRealtime, InstancesWithinTheArraysAreStored) {
    EXPECT_EQ(words_changed_by(2, 1), Words{4});
    EXPECT_EQ(words_changed_by(2, 8), Words{11});
    EXPECT_EQ(words_changed_by(3, 1), Words{12});
    EXPECT_EQ(words_changed_by(3, 128), Words{139});
    EXPECT_EQ(words_changed_by(1, 1), Words{140});
    EXPECT_EQ(words_changed_by(1, 8), Words{147});
}

TEST_F(ThermalRealtime, InstancesOutsideTheArraysAreSkipped) {
    const std::vector<std::pair<int64_t, int64_t>> outside{
        {2, 0},   {2, 9},  {2, -1}, {2, -3}, {2, -32768}, {2, 32767}, {3, 0},
        {3, 129}, {3, -1}, {3, -7}, {1, 0},  {1, 9},      {1, -1},    {1, 32767}};
    for (const auto& [type, instance] : outside) {
        EXPECT_EQ(words_changed_by(type, instance), Words{}) << type << " " << instance;
    }
}

TEST_F(ThermalRealtime, ExhaustRowsAreSkipped) {
    EXPECT_EQ(words_changed_by(4, 1), Words{});
    EXPECT_EQ(words_changed_by(4, 2), Words{});
}

TEST_F(ThermalRealtime, RowsOfOtherTypesAreSkipped) {
    for (const int64_t type : {0, 5, -1, -32768, 32767}) {
        EXPECT_EQ(words_changed_by(type, 1), Words{}) << type;
    }
}

TEST_F(ThermalRealtime, LastRowOfASensorHolds) {
    platform().answer_rows(std::vector<Row>{{1'700'000'000, 2, 1, 60}, {1'600'000'000, 2, 1, 50}});

    EXPECT_EQ(pwrmgt_get_therm_realtime(&out), 0U);

    EXPECT_EQ(out.cpu[0], 50);
}

TEST_F(ThermalRealtime, TemperatureKeepsItsSixteenBits) {
    platform().answer_rows(std::vector<Row>{{0, 1, 1, -32768}, {0, 1, 2, 32767}});

    EXPECT_EQ(pwrmgt_get_therm_realtime(&out), 0U);

    EXPECT_EQ(out.ambient[0], -32768);
    EXPECT_EQ(out.ambient[1], 32767);
}

TEST_F(ThermalRealtime, NoRowIs0WithTheRecordUntouched) {
    EXPECT_EQ(pwrmgt_get_therm_realtime(&out), 0U);

    const pwrmgt_therm_realtime_t expected = untouched();
    EXPECT_EQ(std::memcmp(&out, &expected, sizeof out), 0);
    EXPECT_EQ(platform().count("step"), 1U);
}

TEST_F(ThermalRealtime, RowsEndWithAnyStepButNine) {
    for (const int code : {-1, 0, 1, 3, 8, 10, 11}) {
        platform().reset();
        platform().answer_rows(Rows{{{0, 1, 1, 20}}, code, {}});

        EXPECT_EQ(pwrmgt_get_therm_realtime(&out), 0U) << code;

        EXPECT_EQ(platform().count("step"), 2U) << code;
    }
}

TEST_F(ThermalRealtime, NullOutputIs1AndCallsNothing) {
    EXPECT_EQ(pwrmgt_get_therm_realtime(nullptr), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(ThermalRealtime, NoConnectionIs2) {
    platform().fail(Operation::open);

    EXPECT_EQ(pwrmgt_get_therm_realtime(&out), 2U);

    EXPECT_EQ(platform().calls, Calls{"open localhost root '' vek_pwr_db 0"});
}

TEST_F(ThermalRealtime, NullResultIs0AndCallsNothing) {
    EXPECT_EQ(thermal_get_realtime_data(0, &out), 0U);
    EXPECT_EQ(thermal_get_realtime_data(0, nullptr), 0U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_EQ(out.cpu[0], kUntouched);
}

TEST_F(ThermalRealtime, NullRecordReadsTheRowsAllTheSame) {
    const OpenResult result({{0, 2, 1, 60}});

    EXPECT_EQ(thermal_get_realtime_data(result, nullptr), 1U);

    EXPECT_EQ(platform().calls,
              (Calls{"step", "int 0", "short_int 1", "short_int 2", "short_int 3", "step"}));
}

// Open, select, then per row a step and four columns, and the last step.
TEST_F(ThermalRealtime, EachFailingCallHasItsStatus) {
    EXPECT_EQ(swept_statuses(three_rows_stored, ask), in_turn({{{2}, {3}}, each_of(16, 0)}));
}

// The select of the open result, then as above.
TEST_F(ThermalRealtime, ReaderIsDoneHoweverItsRowsEnd) {
    const auto read = [&] {
        const OpenResult rows({{0, 2, 1, 60}});
        out = untouched();
        return thermal_get_realtime_data(rows, &out);
    };

    EXPECT_EQ(swept_statuses([](Recorder&) {}, read), in_turn({{{0, 0, 1, 0}}, each_of(6, 1)}));
    sweep_faults(
        [](Recorder&) {}, read,
        [&](const Faulted& faulted) {
            const bool skipped = (faulted.at == 2 && faulted.mode != Mode::no_row) ||
                                 faulted.at == 4 || faulted.at == 5 || faulted.status == 0;
            EXPECT_EQ(out.cpu[0], skipped ? kUntouched : faulted.at == 6 ? 0 : 60) << faulted.at;
        });
}

TEST_F(ThermalRealtime, FailedQueryLeavesTheRecord) {
    sweep_faults(
        three_rows_stored,
        [&] {
            out = untouched();
            return pwrmgt_get_therm_realtime(&out);
        },
        [&](const Faulted& faulted) {
            if (faulted.status == 0) return;
            const pwrmgt_therm_realtime_t expected = untouched();
            EXPECT_EQ(std::memcmp(&out, &expected, sizeof out), 0);
        });
}

TEST_F(ThermalRealtime, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(three_rows_stored, ask), 18U);
}
