// SPDX-License-Identifier: Apache-2.0
// The stored policy read back: columns, widths, statuses, and the process's copy of `IsBlade`.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace policy_row_tests {
namespace {

constexpr pwrmgt_power_policy_t kUntouched{77, 77, 77, 77, 77, 77, 77, 77, 77, 77, 77, 77};
const Row kStored{1, 4, 9, 1, 2, 300, 301, 302, 303, 304, 305, 306, 901, 902, 903};

uint32_t read_policy() {
    pwrmgt_power_policy_t policy = kUntouched;
    return pwrmgt_get_pwrpolicy_tbl(&policy);
}

void row_stored(Recorder& recorder) {
    recorder.answer_rows(std::vector<Row>{kStored});
}

}  // namespace

class PolicyRow : public PlatformTest {
protected:
    pwrmgt_power_policy_t policy = kUntouched;
};

TEST_F(PolicyRow, ReaderMakesTheseCallsAndNoOthers) {
    row_stored(platform());

    EXPECT_EQ(pwrmgt_get_pwrpolicy_tbl(&policy), 0U);

    EXPECT_EQ(platform().calls,
              chain({{"open localhost root '' vek_pwr_db 0",
                      "query PowerPolicy [IsBlade,RedunMode,MaximStatus,CapEnable,CapMode,CapValue,"
                      "CapSoftAc,CapMinAc,CapMaxAc,CapSoftDc,CapMinDc,CapMaxDc,UnstressAdapterPwr,"
                      "UnstressFanPwr,UnstressHddPwr] where null order null",
                      "row_count", "step"},
                     policy_cells(14),
                     {"free_result", "close"}}));
    EXPECT_EQ(fields(policy), (Row{1, 4, 9, 1, 2, 300, 301, 302, 303, 304, 305, 306}));
}

TEST_F(PolicyRow, EachFieldTakesItsWholeWidth) {
    platform().answer_rows(std::vector<Row>{
        {255, 254, 253, 252, 251, 65535, 65534, 65533, 65532, 65531, 65530, 65529, 0, 0, 0}});

    EXPECT_EQ(pwrmgt_get_pwrpolicy_tbl(&policy), 0U);

    EXPECT_EQ(fields(policy),
              (Row{255, 254, 253, 252, 251, 65535, 65534, 65533, 65532, 65531, 65530, 65529}));
}

TEST_F(PolicyRow, UnstressColumnsAreFetchedAndDropped) {
    row_stored(platform());
    pwrmgt_get_pwrpolicy_tbl(&policy);
    const Row with_some = fields(policy);

    Row other = kStored;
    other[12] = other[13] = other[14] = 12345;
    platform().answer_rows(std::vector<Row>{other});
    platform().calls.clear();
    pwrmgt_get_pwrpolicy_tbl(&policy);

    EXPECT_EQ(fields(policy), with_some);
    EXPECT_THAT(platform().calls,
                testing::IsSupersetOf(Calls{"short_uint 12", "short_uint 13", "short_uint 14"}));
}

TEST_F(PolicyRow, FirstOfSeveralRowsIsRead) {
    Row second = kStored;
    second[5] = 555;
    platform().answer_rows(std::vector<Row>{kStored, second});

    EXPECT_EQ(pwrmgt_get_pwrpolicy_tbl(&policy), 0U);

    EXPECT_EQ(policy.cap_value, 300);
    EXPECT_EQ(platform().count("step"), 1U);
}

TEST_F(PolicyRow, NullOutputIs1AndNothingIsCalled) {
    EXPECT_EQ(pwrmgt_get_pwrpolicy_tbl(nullptr), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(PolicyRow, NoConnectionIs2AndIsNotClosed) {
    platform().fail(Operation::open);

    EXPECT_EQ(pwrmgt_get_pwrpolicy_tbl(&policy), 2U);

    EXPECT_EQ(platform().calls, Calls{"open localhost root '' vek_pwr_db 0"});
}

TEST_F(PolicyRow, FailedQueryIs3HoweverItFails) {
    for (const Mode mode : {Mode::error, Mode::error_with_handle, Mode::no_handle}) {
        platform().reset();
        row_stored(platform());
        platform().fail(Operation::query, -1, 1, mode);

        EXPECT_EQ(pwrmgt_get_pwrpolicy_tbl(&policy), 3U);

        EXPECT_EQ(fields(policy), fields(kUntouched));
        EXPECT_EQ(platform().count("row_count"), 0U);
        EXPECT_EQ(platform().calls.back(), "close");
    }
}

TEST_F(PolicyRow, EmptyTableIs8) {
    EXPECT_EQ(pwrmgt_get_pwrpolicy_tbl(&policy), 8U);

    EXPECT_EQ(fields(policy), fields(kUntouched));
    EXPECT_EQ(platform().count("step"), 0U);
}

TEST_F(PolicyRow, RowCountBelowZeroIs8) {
    row_stored(platform());
    platform().fail(Operation::row_count);

    EXPECT_EQ(pwrmgt_get_pwrpolicy_tbl(&policy), 8U);

    EXPECT_EQ(fields(policy), fields(kUntouched));
}

TEST_F(PolicyRow, FailureLeavesOutputAndFlag) {
    const size_t failures = sweep_faults(
        row_stored,
        [&] {
            policy = kUntouched;
            return pwrmgt_get_pwrpolicy_tbl(&policy);
        },
        [&](const Faulted& faulted) {
            if (faulted.status == 0) return;
            EXPECT_EQ(fields(policy), fields(kUntouched));
            EXPECT_EQ(g_power_policy_flag, 255);
        });

    EXPECT_EQ(failures, 1U + 4U + 4U + 4U + 30U);
}

// Open, select, row count, step, fifteen columns.
TEST_F(PolicyRow, EachFailingCallOfTheReaderHasItsStatus) {
    EXPECT_EQ(swept_statuses(row_stored, read_policy),
              in_turn({{{2}, {3}, {8, 8, 8, 0}}, each_of(16, 0)}));
}

TEST_F(PolicyRow, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(row_stored, read_policy), 19U);
}

// -- the flag

TEST_F(PolicyRow, ReaderSetsTheFlagOnlyWhileItIs255) {
    row_stored(platform());
    EXPECT_EQ(read_policy(), 0U);
    EXPECT_EQ(g_power_policy_flag, 1);

    for (const uint8_t set : {uint8_t{0}, uint8_t{2}, uint8_t{254}}) {
        g_power_policy_flag = set;
        row_stored(platform());

        EXPECT_EQ(read_policy(), 0U);

        EXPECT_EQ(g_power_policy_flag, set);
    }
}

TEST_F(PolicyRow, StoredBladeOf255LeavesTheFlagUnread) {
    Row stored = kStored;
    stored[0] = 255;
    platform().answer_rows(std::vector<Row>{stored});

    EXPECT_EQ(read_policy(), 0U);

    EXPECT_EQ(g_power_policy_flag, 255);
}

}  // namespace policy_row_tests
