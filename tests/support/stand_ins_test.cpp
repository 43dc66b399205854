// SPDX-License-Identifier: Apache-2.0
// The scripted platform is in force: what the library calls is what these tests see.
#include <ctime>

#include "builders.h"
#include "ipmiraw.h"
#include "platform_test.h"
#include "vekdb_client.h"

using namespace pwrmgt::test;

class StandIns : public PlatformTest {};

TEST_F(StandIns, LibraryReachesTheRecorderForTheDatabase) {
    const uint32_t db = pwrmgt_get_db_handle();

    EXPECT_EQ(db, 100U);
    EXPECT_EQ(platform().calls, Calls{"open localhost root '' vek_pwr_db 0"});
    vek_db_close(db);
}

TEST_F(StandIns, LibraryReachesTheRecorderForTheClock) {
    platform().clock = 1'234'567'890;
    char order[32];
    char filter[256];

    EXPECT_EQ(pwrmgt_duration_summary_query_string(order, 32, filter, 256, 0), 0U);

    EXPECT_STREQ(filter, "Timestamp>=1234567860 AND Timestamp<=1234567890");
    EXPECT_EQ(platform().calls, Calls{"time"});
}

TEST_F(StandIns, HandleThatStaysOutIsAFault) {
    const uint32_t db = vek_db_open("h", "u", "p", "d", 0);

    EXPECT_EQ(platform().handle_faults(), Calls{"connection 100 never handed back"});
    vek_db_close(db);
}

TEST_F(StandIns, HandleHandedBackTwiceIsAFault) {
    const uint32_t content = vek_db_get_content_values();
    vek_db_free_content_values(content);

    vek_db_free_content_values(content);

    EXPECT_EQ(platform().handle_faults(), Calls{"content 100 handed back wrongly"});
    platform().reset();
}

TEST_F(StandIns, HandleOfAnotherKindIsAFault) {
    const uint32_t content = vek_db_get_content_values();

    vek_db_free_result(content);

    EXPECT_THAT(platform().handle_faults(), testing::Contains("result 100 handed back wrongly"));
    platform().reset();
}

TEST_F(StandIns, ChosenCallFailsAndNoOther) {
    platform().fail(Operation::open, 0, 2);

    EXPECT_EQ(pwrmgt_get_db_handle(), 100U);
    EXPECT_EQ(pwrmgt_get_db_handle(), 0U);
    EXPECT_EQ(pwrmgt_get_db_handle(), 101U);

    vek_db_close(100);
    vek_db_close(101);
}

TEST_F(StandIns, QuietRecorderAnswersAndCountsHandlesButKeepsNoCalls) {
    platform().quiet = true;
    platform().answer_table("PowerPolicy", {{2, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}});
    pwrmgt_power_policy_t policy{};
    const uint32_t db = pwrmgt_get_db_handle();

    EXPECT_EQ(pwrmgt_get_pwrpolicy_tbl(&policy), 0U);

    EXPECT_EQ(policy.is_blade, 2);
    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_THAT(platform().operations, testing::IsEmpty());
    EXPECT_EQ(platform().handle_faults(), Calls{"connection 100 never handed back"});
    vek_db_close(db);
}

TEST_F(StandIns, ConnectionUsedAfterItsCloseIsAFault) {
    const uint32_t db = pwrmgt_get_db_handle();
    vek_db_close(db);

    vek_db_raw_query(db, "x", 1, nullptr);

    EXPECT_EQ(platform().handle_faults(), Calls{"connection 100 used while not open"});
    platform().reset();
}

TEST_F(StandIns, ContentUsedAfterItsReleaseIsAFault) {
    const uint32_t content = vek_db_get_content_values();
    vek_db_free_content_values(content);

    vek_db_insert(kDb, "t", content, 0, 0);

    EXPECT_EQ(platform().handle_faults(), Calls{"content 100 used while not out"});
    platform().reset();
}

TEST_F(StandIns, SelectFailsInFourWaysInASweep) {
    const auto statuses =
        swept_statuses([](Recorder&) {},
                       [] {
                           uint32_t result = 0;
                           const int failed = vek_db_raw_query(kDb, "x", 1, &result);
                           const uint32_t seen = (failed != 0 ? 10U : 0U) + (result != 0 ? 1U : 0U);
                           if (result != 0) vek_db_free_result(result);
                           return seen;
                       });

    EXPECT_EQ(statuses, (Outcomes{{10, 10, 11, 0}}));
}

TEST_F(StandIns, StepGoesWrongInFourWaysInASweep) {
    const auto statuses = swept_statuses([](Recorder&) {},
                                         [] {
                                             const OpenResult rows(std::vector<Row>{{5}});
                                             if (rows == 0U) return 0U;
                                             int32_t value = 0;
                                             const int step = vek_db_result_step(rows);
                                             vek_db_result_column_int(rows, 0, &value);
                                             return static_cast<uint32_t>(10 * step + value);
                                         });

    EXPECT_EQ(statuses, (Outcomes{{0, 0, 95, 0}, {10, 4'294'967'286, 100, 90}, {90}}));
}

TEST_F(StandIns, RowCountGoesWrongInFourWaysInASweep) {
    const auto statuses = swept_statuses(
        [](Recorder&) {},
        [] {
            const OpenResult rows(std::vector<Row>{{5}});
            return rows == 0U ? 0U : static_cast<uint32_t>(vek_db_result_row_count(rows));
        });

    EXPECT_EQ(statuses, (Outcomes{{0, 0, 1, 0}, {kMinusOne, 0, 0, 2}}));
}

TEST_F(StandIns, AnswerHasEveryShorterLengthAndAByteMoreInASweep) {
    const auto statuses = swept_statuses(
        [](Recorder& recorder) {
            recorder.answer_ipmi({.bytes = {1, 2, 3}});
        },
        [] {
            const uint8_t request[4]{};
            uint8_t response[256]{};
            uint32_t request_length = sizeof request;
            uint32_t length = 0;
            const int failed = send_ipmi_cmd(request, &request_length, response, &length);
            const auto bytes = static_cast<uint32_t>(response[0] + response[1] + response[2]);
            return failed != 0 ? 900 : 10 * length + bytes;
        });

    EXPECT_EQ(statuses, (Outcomes{{900, 900, 0, 11, 23, 46}}));
}
