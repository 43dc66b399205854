// SPDX-License-Identifier: Apache-2.0
// Each platform call of both thermal queries fails in turn: the status, and every handle back.
#include "thermal_test.h"

using namespace pwrmgt::test;

namespace thermal_faults_tests {
namespace {

constexpr uint32_t kEnd = 1'699'999'980;

// One row for each of the twenty selects, on the first index's end.
void row_for_every_select(Recorder& recorder) {
    recorder.answer_table("", {{1'699'998'180, 1, 1, 20}});
}

void nothing_stored(Recorder&) {}

// Open, clock, property; then per query the select, row count, property, step, four columns, last
// step.
Outcomes statuses_with_rows() {
    Outcomes statuses{{2}, {0}, {0}};
    for (int query = 0; query < 20; ++query) {
        statuses = in_turn({statuses, each_of(1, 3), each_of(8, 0)});
    }
    return statuses;
}

// A row told where there is none is a query that found something.
Outcomes statuses_without_rows(uint32_t found_nothing) {
    Outcomes statuses{{2}, {found_nothing}, {found_nothing}};
    Outcomes counted{{found_nothing, found_nothing, found_nothing, 0}};
    if (found_nothing == 0) counted = each_of(1, 0);
    for (int query = 0; query < 20; ++query) {
        statuses = in_turn({statuses, each_of(1, 3), counted});
    }
    return statuses;
}

}  // namespace

class ThermalFaults : public ThermalTest {
protected:
    uint32_t ask(uint32_t wanted) {
        samples = grid_of(60, 0x11);
        count = wanted;
        return traced([&] { return pwrmgt_get_therm_hist(0, samples.data(), &count); });
    }
    uint32_t ask_span() {
        samples = grid_of(60, 0x11);
        count = 77;
        return traced([&] {
            return pwrmgt_get_therm_hist_by_timestamp(kEnd, 60, 12, samples.data(), &count);
        });
    }

    Grid samples = grid_of(60, 0x11);
    uint32_t count = 0;
};

TEST_F(ThermalFaults, EachFailingCallOfAPeriodWithRowsHasItsStatus) {
    EXPECT_EQ(swept_statuses(row_for_every_select, [&] { return ask(2); }), statuses_with_rows());
}

TEST_F(ThermalFaults, EachFailingCallOfAPeriodWithoutRowsHasItsStatus) {
    EXPECT_EQ(swept_statuses(nothing_stored, [&] { return ask(0); }), statuses_without_rows(8));
    EXPECT_EQ(swept_statuses(nothing_stored, [&] { return ask(2); }), statuses_without_rows(0));
}

TEST_F(ThermalFaults, EachFailingCallOfASpanHasItsStatus) {
    EXPECT_EQ(swept_statuses(row_for_every_select, [&] { return ask_span(); }),
              statuses_with_rows());
    EXPECT_EQ(swept_statuses(nothing_stored, [&] { return ask_span(); }), statuses_without_rows(8));
}

TEST_F(ThermalFaults, FailedSelectStopsTheQuery) {
    for (size_t nth = 1; nth <= 20; ++nth) {
        platform().reset();
        platform().fail(Operation::raw_rows, -1, nth);

        EXPECT_EQ(ask(2), 3U) << nth;

        EXPECT_EQ(platform().count("raw"), nth);
        EXPECT_EQ(platform().calls.back(), "close");
        EXPECT_EQ(count, 2U);
    }
}

TEST_F(ThermalFaults, HandleOfAFailedSelectIsFreedBeforeTheConnectionCloses) {
    platform().fail(Operation::raw_rows, -1, 20, Mode::error_with_handle);

    EXPECT_EQ(ask(2), 3U);

    const Calls last(platform().calls.end() - 2, platform().calls.end());
    EXPECT_EQ(last, (Calls{"free_result", "close"}));
}

TEST_F(ThermalFaults, FailedSelectKeepsWhatWasFilledBefore) {
    row_for_every_select(platform());
    platform().fail(Operation::raw_rows, -1, 2);

    EXPECT_EQ(ask(0), 3U);

    EXPECT_EQ(count, 60U);
    EXPECT_EQ(samples[0].index, 1);
}

TEST_F(ThermalFaults, FailedClockIsTheLastSecondOf32Bits) {
    platform().fail(Operation::clock);

    EXPECT_EQ(ask(0), 8U);

    // -1 - 3600 cut to a whole minute, as 32 bits without a sign.
    EXPECT_EQ(samples[0].tm, 4'294'963'740U);
    EXPECT_THAT(platform().named("raw").front(), testing::HasSubstr("Timestamp<=-1 "));
}

TEST_F(ThermalFaults, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(row_for_every_select, [&] { return ask(2); }), 182U);
    EXPECT_EQ(sweep_exceptions(row_for_every_select, [&] { return ask_span(); }), 182U);
    EXPECT_EQ(sweep_exceptions(nothing_stored, [&] { return ask(2); }), 42U);
}

// -- the bucketing call

class BucketFaults : public BucketTest {
protected:
    uint32_t walk_one() {
        samples = grid_of(4, 0xFF);
        samples[0].tm = 600;
        count = 4;
        return walk({{600, 1, 1, 20}});
    }
};

// The select of the open result, property, step, four columns, last step.
TEST_F(BucketFaults, EachFailingCallHasItsResult) {
    EXPECT_EQ(swept_statuses(nothing_stored, [&] { return walk_one(); }),
              in_turn({{{0, 0, 1, 0}}, each_of(7, 1)}));
    EXPECT_EQ(sweep_exceptions(nothing_stored, [&] { return walk_one(); }), 8U);
}

TEST_F(BucketFaults, RowOfWhichTypeOrInstanceCannotBeReadIsSkipped) {
    sweep_faults(
        nothing_stored, [&] { return walk_one(); },
        [&](const Faulted& faulted) {
            if (faulted.status == 0) return;
            const bool no_row = faulted.at == 3 && faulted.mode != Mode::no_row;
            const bool skipped = no_row || faulted.at == 5 || faulted.at == 6;
            const int64_t value = skipped ? -1 : faulted.at == 7 ? 0 : 20;
            EXPECT_EQ(inlet(0), (Row{1, 600, value, value, value})) << faulted.at;
            EXPECT_EQ(count, 4U);
        });
}

TEST_F(BucketFaults, TimeThatCannotBeReadIsTheEpoch) {
    platform().fail(Operation::column);

    EXPECT_EQ(walk_one(), 1U);

    EXPECT_THAT(trace, testing::HasSubstr("record 0, 1, 1, 20, expected tm 600\n"));
}

}  // namespace thermal_faults_tests
