// SPDX-License-Identifier: Apache-2.0
// The rows of the supply table: made for each bay, rewritten one by one.
#include "psu_test.h"

using namespace pwrmgt::test;

namespace {

const char* const kSelectAll = "query PsuPropertyMem [] where null order null";
constexpr pwrmgt_psu_property_t kBay3{3, 1, 2, 4, 16, 1234, 1100};

Calls row_of_bay(int bay) {
    return {"clear",
            "put_uchar PsuId " + std::to_string(bay),
            "put_uchar Present 15",
            "put_uchar InputAcLost 15",
            "put_uchar PsuFault 15",
            "put_uchar InputVoltage 15",
            "put_short_uint InputLablePower 65535",
            "put_short_uint OutputLablePower 65535",
            "insert PsuPropertyMem"};
}

uint32_t init_two() {
    return pwrmgt_init_psu_property_table(kDb, 2);
}

uint32_t update_bay_3() {
    return pwrmgt_update_psu_property_table(kDb, kBay3);
}

void bay_3_has_a_row(Recorder& recorder) {
    recorder.answer_rows(std::vector<Row>{good_supply(3)});
}

}  // namespace

// -- made

class BaysInit : public PsuTest {};

TEST_F(BaysInit, OldRowsGoAndEachBayGetsARowOfUnknownValues) {
    EXPECT_EQ(init_two(), 0U);

    EXPECT_EQ(platform().calls, chain({{kSelectAll, "delete PsuPropertyMem where null", "content"},
                                       row_of_bay(1),
                                       row_of_bay(2),
                                       {"free_result", "free_content"}}));
}

TEST_F(BaysInit, CountOfOneMakesOneRow) {
    EXPECT_EQ(pwrmgt_init_psu_property_table(kDb, 1), 0U);

    EXPECT_EQ(platform().named("put_uchar PsuId"), Calls{"put_uchar PsuId 1"});
    EXPECT_EQ(platform().count("insert"), 1U);
}

TEST_F(BaysInit, CountOfZeroAndBelowLeavesTheTableEmpty) {
    for (const int32_t count : {0, -1, INT32_MIN}) {
        platform().calls.clear();

        EXPECT_EQ(pwrmgt_init_psu_property_table(kDb, count), 0U) << count;

        EXPECT_EQ(platform().calls, (Calls{kSelectAll, "delete PsuPropertyMem where null",
                                           "content", "free_result", "free_content"}));
    }
}

TEST_F(BaysInit, BayNumberIsCutTo8Bits) {
    EXPECT_EQ(pwrmgt_init_psu_property_table(kDb, 258), 0U);

    const Calls numbers = platform().named("put_uchar PsuId");
    ASSERT_EQ(numbers.size(), 258U);
    EXPECT_EQ(numbers[254], "put_uchar PsuId 255");
    EXPECT_EQ(numbers[255], "put_uchar PsuId 0");
    EXPECT_EQ(numbers[257], "put_uchar PsuId 2");
}

TEST_F(BaysInit, FailedInsertEndsItAtOnceAndFreesEverything) {
    platform().fail(Operation::insert);

    EXPECT_EQ(pwrmgt_init_psu_property_table(kDb, 4), 4U);

    EXPECT_EQ(platform().count("insert"), 1U);
    EXPECT_EQ(platform().calls.back(), "free_content");
}

TEST_F(BaysInit, FailedDeleteMakesNoContent) {
    platform().fail(Operation::remove);

    EXPECT_EQ(init_two(), 6U);

    EXPECT_EQ(platform().calls,
              (Calls{kSelectAll, "delete PsuPropertyMem where null", "free_result"}));
}

TEST_F(BaysInit, EachFailureHasItsStatus) {
    // Select, delete, content; puts and insert of each bay.
    EXPECT_EQ(
        swept_statuses([](Recorder&) {}, init_two),
        in_turn({{{3}, {6}, {7}}, each_of(7, 0), each_of(1, 4), each_of(7, 0), each_of(1, 4)}));
}

TEST_F(BaysInit, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions([](Recorder&) {}, init_two), 19U);
}

// -- rewritten

class BaysUpdate : public PsuTest {};

TEST_F(BaysUpdate, RowOfTheBayGetsAllSevenColumns) {
    bay_3_has_a_row(platform());

    EXPECT_EQ(update_bay_3(), 0U);

    EXPECT_EQ(
        platform().calls,
        (Calls{"query PsuPropertyMem [] where PsuId=3 order null", "row_count", "content",
               "put_uchar PsuId 3", "put_uchar Present 1", "put_uchar InputAcLost 2",
               "put_uchar PsuFault 4", "put_uchar InputVoltage 16",
               "put_short_uint InputLablePower 1234", "put_short_uint OutputLablePower 1100",
               "update PsuPropertyMem where PsuId=3", "clear", "free_content", "free_result"}));
}

TEST_F(BaysUpdate, HighestBayNumberIsWrittenUnsigned) {
    platform().answer_rows(std::vector<Row>{good_supply(255)});

    EXPECT_EQ(pwrmgt_update_psu_property_table(kDb, {255, 255, 255, 255, 255, 65535, 65535}), 0U);

    EXPECT_EQ(platform().named("update"), Calls{"update PsuPropertyMem where PsuId=255"});
    EXPECT_EQ(platform().named("put_uchar Present"), Calls{"put_uchar Present 255"});
}

TEST_F(BaysUpdate, BayWithoutARowIsRefusedAndNothingWritten) {
    EXPECT_EQ(update_bay_3(), 4U);

    EXPECT_EQ(platform().calls, (Calls{"query PsuPropertyMem [] where PsuId=3 order null",
                                       "row_count", "free_result"}));
}

TEST_F(BaysUpdate, FailedUpdateStillClearsAndFrees) {
    bay_3_has_a_row(platform());
    platform().fail(Operation::update);

    EXPECT_EQ(update_bay_3(), 5U);

    EXPECT_EQ(platform().count("clear"), 1U);
    EXPECT_EQ(platform().calls.back(), "free_result");
}

TEST_F(BaysUpdate, EachFailureHasItsStatus) {
    // Select, row count, content, puts, update.
    EXPECT_EQ(swept_statuses(bay_3_has_a_row, update_bay_3),
              in_turn({{{3}, {4, 4, 4, 0}, {7}}, each_of(7, 0), each_of(1, 5)}));
}

TEST_F(BaysUpdate, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    EXPECT_EQ(sweep_exceptions(bay_3_has_a_row, update_bay_3), 11U);
}
