// SPDX-License-Identifier: Apache-2.0
// The policy row made with its defaults, or found and left as it is.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace policy_init_tests {
namespace {

constexpr pwrmgt_power_policy_t kUntouched{77, 77, 77, 77, 77, 77, 77, 77, 77, 77, 77, 77};
const Row kDefaults{1, 3, 0, 0, 1, 65535, 65535, 65535, 65535, 65535, 65535, 65535};
const Row kStored{2, 4, 9, 1, 2, 300, 301, 302, 303, 304, 305, 306, 901, 902, 903};
const std::string kQuery =
    "query PowerPolicy [IsBlade,RedunMode,MaximStatus,CapEnable,CapMode,CapValue,CapSoftAc,"
    "CapMinAc,CapMaxAc,CapSoftDc,CapMinDc,CapMaxDc,UnstressAdapterPwr,UnstressFanPwr,"
    "UnstressHddPwr] where _id=0 order null";

uint32_t initialise() {
    pwrmgt_power_policy_t policy = kUntouched;
    return pwrmgt_init_power_policy_table(kDb, &policy, 1, 3);
}

void empty_table(Recorder&) {}

void row_stored(Recorder& recorder) {
    recorder.answer_rows(std::vector<Row>{kStored});
}

}  // namespace

class PolicyInit : public PlatformTest {
protected:
    pwrmgt_power_policy_t policy = kUntouched;

    uint32_t init(uint32_t is_blade, uint32_t redun_mode) {
        return pwrmgt_init_power_policy_table(kDb, &policy, is_blade, redun_mode);
    }
};

TEST_F(PolicyInit, EmptyTableGetsTheDefaultRow) {
    EXPECT_EQ(init(1, 3), 0U);

    EXPECT_EQ(platform().calls, (Calls{kQuery,
                                       "row_count",
                                       "content",
                                       "put_uchar _id 0",
                                       "put_uchar IsBlade 1",
                                       "put_uchar RedunMode 3",
                                       "put_uchar MaximStatus 0",
                                       "put_uchar CapEnable 0",
                                       "put_uchar CapMode 1",
                                       "put_short_uint CapValue 65535",
                                       "put_short_uint CapSoftAc 65535",
                                       "put_short_uint CapMinAc 65535",
                                       "put_short_uint CapMaxAc 65535",
                                       "put_short_uint CapSoftDc 65535",
                                       "put_short_uint CapMinDc 65535",
                                       "put_short_uint CapMaxDc 65535",
                                       "put_short_uint UnstressAdapterPwr 0",
                                       "put_short_uint UnstressFanPwr 0",
                                       "put_short_uint UnstressHddPwr 0",
                                       "insert PowerPolicy",
                                       "free_content",
                                       "free_result"}));
    EXPECT_EQ(fields(policy), kDefaults);
}

TEST_F(PolicyInit, StoredRowWinsOverTheArgumentsAndStays) {
    row_stored(platform());

    EXPECT_EQ(init(0, 1), 0U);

    EXPECT_EQ(platform().calls,
              chain({{kQuery, "row_count", "step"}, policy_cells(14), {"free_result"}}));
    EXPECT_EQ(fields(policy), (Row{2, 4, 9, 1, 2, 300, 301, 302, 303, 304, 305, 306}));
}

TEST_F(PolicyInit, RedundancyModesUpTo4AreKept) {
    for (const uint32_t mode : {0U, 1U, 2U, 3U, 4U}) {
        EXPECT_EQ(init(0, mode), 0U);
        EXPECT_EQ(policy.redun_mode, mode);

        EXPECT_EQ(init(1, mode), 0U);
        EXPECT_EQ(policy.redun_mode, mode);
    }
}

TEST_F(PolicyInit, RedundancyModeAbove4Is15OnABladeAnd1Elsewhere) {
    for (const uint32_t mode : {5U, 7U, 15U, 255U, 256U, 4'294'967'295U}) {
        platform().calls.clear();

        EXPECT_EQ(init(1, mode), 0U);
        EXPECT_EQ(policy.redun_mode, 15);

        EXPECT_EQ(init(0, mode), 0U);
        EXPECT_EQ(policy.redun_mode, 1);

        EXPECT_THAT(platform().calls, testing::IsSupersetOf(Calls{"put_uchar RedunMode 15",
                                                                  "put_uchar RedunMode 1"}));
    }
}

TEST_F(PolicyInit, AnyNonZeroBladeValueCountsAsABlade) {
    EXPECT_EQ(init(2, 7), 0U);
    EXPECT_EQ(policy.is_blade, 2);
    EXPECT_EQ(policy.redun_mode, 15);

    EXPECT_EQ(init(256, 7), 0U);
    EXPECT_EQ(policy.is_blade, 0);
    EXPECT_EQ(policy.redun_mode, 15);
}

TEST_F(PolicyInit, FailedQueryIs3AndLeavesTheOutput) {
    for (const Mode mode : {Mode::error, Mode::error_with_handle, Mode::no_handle}) {
        platform().reset();
        platform().fail(Operation::query, -1, 1, mode);

        EXPECT_EQ(init(1, 3), 3U);

        EXPECT_EQ(fields(policy), fields(kUntouched));
        EXPECT_EQ(platform().count("content"), 0U);
    }
}

TEST_F(PolicyInit, NoContentIs7WithTheDefaultsInTheOutput) {
    platform().fail(Operation::content);

    EXPECT_EQ(init(1, 3), 7U);

    EXPECT_EQ(fields(policy), kDefaults);
    EXPECT_EQ(platform().calls, (Calls{kQuery, "row_count", "content", "free_result"}));
}

TEST_F(PolicyInit, FailedInsertIs4WithTheDefaultsInTheOutput) {
    for (const int result : {1, 1062, -1}) {
        platform().reset();
        policy = kUntouched;
        platform().fail(Operation::insert, result);

        EXPECT_EQ(init(1, 3), 4U);

        EXPECT_EQ(fields(policy), kDefaults);
    }
}

TEST_F(PolicyInit, StoredColumnThatCannotBeReadShowsItsDefault) {
    row_stored(platform());
    platform().fail(Operation::column, 1, 6);

    EXPECT_EQ(init(0, 1), 0U);

    EXPECT_EQ(fields(policy), (Row{2, 4, 9, 1, 2, 65535, 301, 302, 303, 304, 305, 306}));
}

TEST_F(PolicyInit, FlagIsLeftAlone) {
    EXPECT_EQ(init(2, 3), 0U);
    EXPECT_EQ(g_power_policy_flag, 255);

    row_stored(platform());
    EXPECT_EQ(init(0, 3), 0U);
    EXPECT_EQ(g_power_policy_flag, 255);

    g_power_policy_flag = 1;
    row_stored(platform());
    EXPECT_EQ(init(0, 3), 0U);
    EXPECT_EQ(g_power_policy_flag, 1);
}

TEST_F(PolicyInit, NullOutputStillMakesTheRow) {
    EXPECT_EQ(pwrmgt_init_power_policy_table(kDb, nullptr, 1, 7), 0U);
    EXPECT_THAT(platform().calls, testing::Contains("put_uchar RedunMode 15"));
    EXPECT_EQ(platform().count("insert"), 1U);

    row_stored(platform());
    EXPECT_EQ(pwrmgt_init_power_policy_table(kDb, nullptr, 1, 7), 0U);
    EXPECT_EQ(platform().count("insert"), 1U);
}

TEST_F(PolicyInit, ConnectionIsNotTestedAndNotClosed) {
    EXPECT_EQ(pwrmgt_init_power_policy_table(0, &policy, 1, 3), 0U);

    EXPECT_EQ(platform().calls.front(), kQuery);
    EXPECT_EQ(platform().count("close"), 0U);
}

// Select, row count, content, sixteen puts, insert. Below 1 a count is no row, and one row too many
// is one that cannot be read.
TEST_F(PolicyInit, EachFailingCallOnAnEmptyTableHasItsStatus) {
    EXPECT_EQ(swept_statuses(empty_table, initialise),
              in_turn({{{3}, {0}, {7}}, each_of(16, 0), each_of(1, 4)}));
}

TEST_F(PolicyInit, EachFailingCallOnAStoredRowHasItsStatus) {
    EXPECT_EQ(swept_statuses(row_stored, initialise), in_turn({each_of(1, 3), each_of(17, 0)}));
}

TEST_F(PolicyInit, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(empty_table, initialise), 20U);
    EXPECT_EQ(sweep_exceptions(row_stored, initialise), 18U);
}

}  // namespace policy_init_tests
