// SPDX-License-Identifier: Apache-2.0
// A whole policy record written into the one row, and what that does to the process's flag.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace policy_update_tests {
namespace {

constexpr pwrmgt_power_policy_t kRecord{1, 4, 9, 1, 2, 300, 301, 302, 303, 304, 305, 306};
const std::string kQuery = "query PowerPolicy [] where _id=0 order null";

uint32_t update() {
    return pwrmgt_update_power_policy_table(kRecord);
}

void one_row(Recorder& recorder) {
    recorder.answer_rows(std::vector<Row>{{0}});
}

}  // namespace

class PolicyUpdate : public PlatformTest {};

TEST_F(PolicyUpdate, RecordIsWrittenWithTheseCallsAndNoOthers) {
    one_row(platform());

    EXPECT_EQ(update(), 0U);

    EXPECT_EQ(platform().calls, (Calls{"open localhost root '' vek_pwr_db 0",
                                       kQuery,
                                       "row_count",
                                       "content",
                                       "put_uchar _id 0",
                                       "put_uchar IsBlade 1",
                                       "put_uchar RedunMode 4",
                                       "put_uchar MaximStatus 9",
                                       "put_uchar CapEnable 1",
                                       "put_uchar CapMode 2",
                                       "put_short_uint CapValue 300",
                                       "put_short_uint CapSoftAc 301",
                                       "put_short_uint CapMinAc 302",
                                       "put_short_uint CapMaxAc 303",
                                       "put_short_uint CapSoftDc 304",
                                       "put_short_uint CapMinDc 305",
                                       "put_short_uint CapMaxDc 306",
                                       "update PowerPolicy where _id=0",
                                       "free_result",
                                       "free_content",
                                       "close"}));
}

TEST_F(PolicyUpdate, EachFieldIsPutInItsWholeWidth) {
    one_row(platform());

    EXPECT_EQ(pwrmgt_update_power_policy_table(
                  {255, 254, 253, 252, 251, 65535, 65534, 65533, 65532, 65531, 65530, 65529}),
              0U);

    EXPECT_EQ(
        platform().named("put_uchar"),
        (Calls{"put_uchar _id 0", "put_uchar IsBlade 255", "put_uchar RedunMode 254",
               "put_uchar MaximStatus 253", "put_uchar CapEnable 252", "put_uchar CapMode 251"}));
    EXPECT_EQ(platform().named("put_short_uint"),
              (Calls{"put_short_uint CapValue 65535", "put_short_uint CapSoftAc 65534",
                     "put_short_uint CapMinAc 65533", "put_short_uint CapMaxAc 65532",
                     "put_short_uint CapSoftDc 65531", "put_short_uint CapMinDc 65530",
                     "put_short_uint CapMaxDc 65529"}));
}

TEST_F(PolicyUpdate, UnstressColumnsAreNeverPut) {
    one_row(platform());

    update();

    for (const std::string& call : platform().calls) {
        EXPECT_THAT(call, testing::Not(testing::HasSubstr("Unstress")));
    }
}

TEST_F(PolicyUpdate, SeveralRowsAre31AndNothingIsPut) {
    for (const int rows : {2, 3, 2'147'483'647}) {
        platform().reset();
        platform().answer_rows(Rows{{{0}, {0}}, 10, rows});

        EXPECT_EQ(update(), 31U);

        EXPECT_EQ(platform().calls, (Calls{"open localhost root '' vek_pwr_db 0", kQuery,
                                           "row_count", "free_result", "close"}));
        EXPECT_EQ(g_power_policy_flag, 255);
    }
}

TEST_F(PolicyUpdate, RowCountBelowZeroGoesOn) {
    platform().answer_rows(Rows{{}, 10, -1});

    EXPECT_EQ(update(), 0U);

    EXPECT_EQ(platform().count("update"), 1U);
}

// -- the flag

TEST_F(PolicyUpdate, FlagIsSetEvenOnAnEmptyTable) {
    EXPECT_EQ(update(), 0U);

    EXPECT_EQ(g_power_policy_flag, 1);
    EXPECT_EQ(platform().count("insert"), 0U);
}

TEST_F(PolicyUpdate, FlagIsReplacedWhateverItWas) {
    for (const uint8_t before : {uint8_t{0}, uint8_t{1}, uint8_t{2}, uint8_t{255}}) {
        for (const uint8_t is_blade : {uint8_t{0}, uint8_t{2}, uint8_t{255}}) {
            g_power_policy_flag = before;

            EXPECT_EQ(pwrmgt_update_power_policy_table({is_blade, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
                      0U);

            EXPECT_EQ(g_power_policy_flag, is_blade);
        }
    }
}

TEST_F(PolicyUpdate, BladeOf2RefusesGatedFunctionsFromTheNextCallOn) {
    policy_is_read();
    ASSERT_EQ(pwrmgt_unsupport_check("pwrmgt_get_history_power"), 0U);

    pwrmgt_update_power_policy_table({2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(pwrmgt_unsupport_check("pwrmgt_get_history_power"), 1U);
    EXPECT_EQ(pwrmgt_unsupport_check(""), 1U);

    pwrmgt_update_power_policy_table({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(pwrmgt_unsupport_check(""), 0U);
}

// -- failures

TEST_F(PolicyUpdate, NoConnectionIs2AndIsNotClosed) {
    platform().fail(Operation::open);

    EXPECT_EQ(update(), 2U);

    EXPECT_EQ(platform().calls, Calls{"open localhost root '' vek_pwr_db 0"});
}

TEST_F(PolicyUpdate, FailedQueryIs3HoweverItFails) {
    for (const Mode mode : {Mode::error, Mode::error_with_handle, Mode::no_handle}) {
        platform().reset();
        platform().fail(Operation::query, -1, 1, mode);

        EXPECT_EQ(update(), 3U);

        EXPECT_EQ(platform().count("row_count"), 0U);
        EXPECT_EQ(platform().count("free_result"), mode == Mode::error_with_handle ? 1U : 0U);
        EXPECT_EQ(platform().calls.back(), "close");
    }
}

TEST_F(PolicyUpdate, MissingContentIs7AndTheResultGoesBack) {
    one_row(platform());
    platform().fail(Operation::content);

    EXPECT_EQ(update(), 7U);

    EXPECT_EQ(platform().calls, (Calls{"open localhost root '' vek_pwr_db 0", kQuery, "row_count",
                                       "content", "free_result", "close"}));
}

TEST_F(PolicyUpdate, FailedUpdateIs5AndLeavesTheFlag) {
    for (const int result : {1, -1}) {
        platform().reset();
        g_power_policy_flag = 77;
        one_row(platform());
        platform().fail(Operation::update, result);

        EXPECT_EQ(update(), 5U);

        EXPECT_EQ(g_power_policy_flag, 77);
        EXPECT_THAT(platform().calls,
                    testing::IsSupersetOf(Calls{"free_result", "free_content", "close"}));
    }
}

TEST_F(PolicyUpdate, FailureLeavesTheFlag) {
    sweep_faults(one_row, update, [](const Faulted& faulted) {
        EXPECT_EQ(g_power_policy_flag, faulted.status == 0 ? 1 : 255);
    });
}

// Open, select, row count, content, thirteen puts, update. A row too many told is more than one.
TEST_F(PolicyUpdate, EachFailingCallHasItsStatus) {
    EXPECT_EQ(swept_statuses(one_row, update),
              in_turn({{{2}, {3}, {0, 0, 0, 31}, {7}}, each_of(13, 0), each_of(1, 5)}));
}

TEST_F(PolicyUpdate, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(one_row, update), 18U);
}

}  // namespace policy_update_tests
