// SPDX-License-Identifier: Apache-2.0
// How the sample readers start, and what a failing step leaves behind.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

constexpr uint32_t kAnyWidth = 2;

}  // namespace

class FirstAndFailingSteps : public PlatformTest {
protected:
    std::vector<pwrmgt_hist_pwr_sample_t> power{5, untouched_power()};
    std::vector<pwrmgt_hist_psu_sample_t> psu{5, untouched_psu()};
    std::vector<pwrmgt_hist_perf_sample_t> perf{5, untouched_perf()};

    // Processor power: three columns a row, which keeps the tables short.
    int32_t walk(uint32_t rows, int32_t count, uint32_t per_entry) {
        return pwrmgt_get_powerSamples(rows, count, per_entry, power.data(), PWRMGT_DOMAIN_CPU);
    }
    int32_t walk_psu(uint32_t rows, int32_t count, uint32_t per_entry) {
        return pwrmgt_get_psuPowerSamples(rows, count, per_entry, psu.data());
    }
    int32_t walk_perf(uint32_t rows, int32_t count, uint32_t per_entry) {
        return pwrmgt_get_perfSample_perIndex(rows, count, per_entry, perf.data());
    }
};

// -- nothing to read

TEST_F(FirstAndFailingSteps, NullResultIs0WithoutACall) {
    EXPECT_EQ(walk(0, 5, 1), 0);
    EXPECT_EQ(walk_psu(0, 5, 1), 0);
    EXPECT_EQ(walk_perf(0, 5, 1), 0);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_EQ(fields(power[0]), fields(untouched_power()));
    EXPECT_EQ(fields(psu[0]), fields(untouched_psu()));
    EXPECT_EQ(fields(perf[0]), fields(untouched_perf()));
}

TEST_F(FirstAndFailingSteps, EmptyResultStopsThePowerReaderAtOnce) {
    const OpenResult rows(std::vector<Row>{});

    EXPECT_EQ(walk(rows, 5, 1), 0);

    EXPECT_EQ(platform().calls, (Calls{"step", "uint 0"}));
    EXPECT_EQ(fields(power[0]), fields(untouched_power()));
}

TEST_F(FirstAndFailingSteps, EmptyResultLetsTheOtherReadersMarkTheirEntries) {
    const OpenResult no_supply(std::vector<Row>{});
    const OpenResult no_percent(std::vector<Row>{});

    EXPECT_EQ(walk_psu(no_supply, 2, 1), 0);
    EXPECT_EQ(walk_perf(no_percent, 2, 1), 0);

    EXPECT_EQ(fields(psu[0]), (Row{0, 0, 65535, 65535}));
    EXPECT_EQ(fields(psu[1]), (Row{1, 0, 65535, 65535}));
    EXPECT_EQ(fields(perf[0]), (Row{0, 0, 255, 255, 255, 255, 255, 255}));
    EXPECT_EQ(fields(perf[1]), (Row{1, 0, 255, 255, 255, 255, 255, 255}));
}

TEST_F(FirstAndFailingSteps, FirstRowStampedZeroStopsOnlyThePowerReader) {
    const OpenResult power_rows({{0, 10, 12, 8}});
    const OpenResult supply_rows({{0, 10, 9}, {4'294'967'266, 20, 19}});

    EXPECT_EQ(walk(power_rows, 2, 1), 0);
    EXPECT_EQ(walk_psu(supply_rows, 2, 1), 1);

    EXPECT_EQ(fields(power[0]), fields(untouched_power()));
    EXPECT_EQ(fields(psu[0]), (Row{0, 0, 65535, 65535}));
    EXPECT_EQ(fields(psu[1]), (Row{1, 4'294'967'266, 20, 19}));
}

TEST_F(FirstAndFailingSteps, CountOfZeroOrLessFillsNothing) {
    for (const int32_t count : {0, -1, INT32_MIN}) {
        const OpenResult rows(steady_rows(90'000, 2, {10, 12, 8}));

        EXPECT_EQ(walk(rows, count, 1), 0);

        EXPECT_EQ(platform().calls, (Calls{"step", "uint 0"}));
        EXPECT_EQ(fields(power[0]), fields(untouched_power()));
    }
}

TEST_F(FirstAndFailingSteps, NullEntriesCountAsNone) {
    const OpenResult rows(steady_rows(90'000, 2, {10, 12, 8}));
    const OpenResult supply_rows(steady_rows(90'000, 2, {10, 12}));
    const OpenResult percent_rows(steady_rows(90'000, 2, {1, 2, 3, 4, 5, 6}));

    EXPECT_EQ(pwrmgt_get_powerSamples(rows, 5, 1, nullptr, PWRMGT_DOMAIN_CPU), 0);
    EXPECT_EQ(pwrmgt_get_psuPowerSamples(supply_rows, 5, 1, nullptr), 0);
    EXPECT_EQ(pwrmgt_get_perfSample_perIndex(percent_rows, 5, 1, nullptr), 0);

    EXPECT_EQ(platform().calls, (Calls{"step", "uint 0", "step", "uint 0", "step", "uint 0"}));
}

// -- steps

TEST_F(FirstAndFailingSteps, FailingStepKeepsEarlierEntriesAndLeavesLaterOnes) {
    for (const int code : {-1, 0, 1, 2, 3, 8, 11, 100}) {
        power.assign(5, untouched_power());
        const OpenResult rows(Rows{steady_rows(90'000, 2, {10, 12, 8}), code, {}});

        EXPECT_EQ(walk(rows, 3, 1), 0) << code;

        EXPECT_EQ(fields(power[0]), (Row{0, 90'000, 10, 12, 8, 7, 7, 7}));
        EXPECT_EQ(fields(power[1]), (Row{7, 0, 0, 0, 0, 7, 7, 7}));
        EXPECT_EQ(fields(power[2]), fields(untouched_power()));
    }
}

TEST_F(FirstAndFailingSteps, FailingStepEndsTheOtherReadersTheSameWay) {
    const OpenResult supply_rows(Rows{steady_rows(90'000, 2, {10, 9}), 3, {}});
    const OpenResult percent_rows(Rows{steady_rows(90'000, 2, {1, 2, 3, 4, 5, 6}), 3, {}});

    EXPECT_EQ(walk_psu(supply_rows, 3, 1), 0);
    EXPECT_EQ(walk_perf(percent_rows, 3, 1), 0);

    EXPECT_EQ(fields(psu[0]), (Row{0, 90'000, 10, 9}));
    EXPECT_EQ(fields(psu[1]), (Row{7, 0, 0, 0}));
    EXPECT_EQ(fields(psu[2]), fields(untouched_psu()));
    EXPECT_EQ(fields(perf[0]), (Row{0, 90'000, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(fields(perf[1]), (Row{7, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(fields(perf[2]), fields(untouched_perf()));
}

TEST_F(FirstAndFailingSteps, FirstStampIsReadUnlessTheFirstStepIs1Or3) {
    for (const int code : {-1, 0, 2, 4, 8, 11}) {
        const OpenResult rows(Rows{{}, code, {}});
        const OpenResult percent_rows(Rows{{}, code, {}});

        walk(rows, 1, kAnyWidth);
        walk_perf(percent_rows, 0, kAnyWidth);

        EXPECT_EQ(platform().calls, (Calls{"step", "uint 0", "step", "uint 0"})) << code;
    }
    for (const int code : {1, 3}) {
        const OpenResult rows(Rows{{}, code, {}});
        const OpenResult percent_rows(Rows{{}, code, {}});

        walk(rows, 1, kAnyWidth);
        walk_perf(percent_rows, 0, kAnyWidth);

        EXPECT_EQ(platform().calls, (Calls{"step", "step"})) << code;
    }
}

TEST_F(FirstAndFailingSteps, FirstStampIsReadOnlyAfterNineOrTen) {
    for (const int code : {-1, 0, 1, 2, 3, 4, 8, 11}) {
        const OpenResult rows(Rows{{}, code, {}});

        walk_psu(rows, 0, kAnyWidth);

        EXPECT_EQ(platform().calls, Calls{"step"}) << code;
    }
    const OpenResult none(std::vector<Row>{});
    walk_psu(none, 0, kAnyWidth);
    EXPECT_EQ(platform().calls, (Calls{"step", "uint 0"}));

    const OpenResult one(steady_rows(90'000, 1, {10, 9}));
    walk_psu(one, 0, kAnyWidth);
    EXPECT_EQ(platform().calls, (Calls{"step", "uint 0"}));
}

TEST_F(FirstAndFailingSteps, FailedFirstStepSendsTheSupplyReaderOnFromTimeZero) {
    const OpenResult rows(Rows{{}, 2, {}});

    EXPECT_EQ(walk_psu(rows, 2, 1), 0);

    EXPECT_EQ(platform().calls, (Calls{"step", "short_uint 1", "short_uint 2", "step"}));
    EXPECT_EQ(fields(psu[0]), (Row{7, 0, 0, 0}));
    EXPECT_EQ(fields(psu[1]), fields(untouched_psu()));
}
