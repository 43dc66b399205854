// SPDX-License-Identifier: Apache-2.0
// What a walk prints, byte by byte.
#include "thermal_test.h"

using namespace pwrmgt::test;

class BucketsTrace : public BucketTest {};

TEST_F(BucketsTrace, RowOnTimeIsPrintedAsClosed) {
    walk({{600, 1, 1, 20}});

    EXPECT_EQ(trace,
              "required sample count 4, secs per index 60\n"
              "record 600, 1, 1, 20, expected tm 600\n"
              "index[00] tm[600] type[1] inst[01] Max/Avg/Min[020 020 020]\n"
              "index[01] tm[660] fill NULL\n"
              "index[02] tm[720] fill NULL\n"
              "index[03] tm[780] fill NULL\n");
}

TEST_F(BucketsTrace, EarlierRowsAreCountedWithinTheirIndex) {
    walk({{570, 2, 8, 100}, {580, 2, 8, 50}, {600, 2, 8, 30}, {630, 2, 8, 41}});

    EXPECT_EQ(trace,
              "required sample count 4, secs per index 60\n"
              "record 570, 2, 8, 100, expected tm 600\n"
              "accumulate for index 0, number 1\n"
              "record 580, 2, 8, 50, expected tm 600\n"
              "accumulate for index 0, number 2\n"
              "record 600, 2, 8, 30, expected tm 600\n"
              "index[00] tm[600] type[2] inst[08] Max/Avg/Min[100 060 030]\n"
              "record 630, 2, 8, 41, expected tm 660\n"
              "accumulate for index 1, number 1\n"
              "index[01] tm[660] type[2] inst[08] Max/Avg/Min[041 041 041]\n"
              "index[02] tm[720] fill NULL\n"
              "index[03] tm[780] fill NULL\n");
}

TEST_F(BucketsTrace, PassedIndexesArePrintedAsNull) {
    walk({{775, 1, 1, 20}});

    EXPECT_EQ(trace,
              "required sample count 4, secs per index 60\n"
              "record 775, 1, 1, 20, expected tm 600\n"
              "index[00] tm[600] NULL\n"
              "index[01] tm[660] NULL\n"
              "index[02] tm[720] NULL\n"
              "accumulate for index 3, number 1\n"
              "index[03] tm[780] type[1] inst[01] Max/Avg/Min[020 020 020]\n");
}

TEST_F(BucketsTrace, LaterRowClosesTheOpenBucketBeforeItPassesIndexes) {
    walk({{590, 1, 1, 10}, {720, 1, 1, 20}});

    EXPECT_EQ(trace,
              "required sample count 4, secs per index 60\n"
              "record 590, 1, 1, 10, expected tm 600\n"
              "accumulate for index 0, number 1\n"
              "record 720, 1, 1, 20, expected tm 600\n"
              "index[00] tm[600] type[1] inst[01] Max/Avg/Min[010 010 010]\n"
              "index[01] tm[660] NULL\n"
              "index[02] tm[720] type[1] inst[01] Max/Avg/Min[020 020 020]\n"
              "index[03] tm[780] fill NULL\n");
}

TEST_F(BucketsTrace, RowPastTheGridIsPrintedAndDropped) {
    count = 2;

    walk({{661, 1, 1, 20}});

    EXPECT_EQ(trace,
              "required sample count 2, secs per index 60\n"
              "record 661, 1, 1, 20, expected tm 600\n"
              "index[00] tm[600] NULL\n"
              "index[01] tm[660] NULL\n");
}

TEST_F(BucketsTrace, RowsAfterTheLastIndexAreNotPrinted) {
    count = 1;

    walk({{600, 1, 1, 20}, {601, 1, 1, 21}});

    EXPECT_EQ(trace,
              "required sample count 1, secs per index 60\n"
              "record 600, 1, 1, 20, expected tm 600\n"
              "index[00] tm[600] type[1] inst[01] Max/Avg/Min[020 020 020]\n");
}

TEST_F(BucketsTrace, SkippedRowIsPrintedAsARecordOnly) {
    count = 1;

    walk({{590, 1, 3, 20}, {600, 7, -2, -40}});

    EXPECT_EQ(trace,
              "required sample count 1, secs per index 60\n"
              "record 590, 1, 3, 20, expected tm 600\n"
              "record 600, 7, -2, -40, expected tm 600\n"
              "index[00] tm[600] fill NULL\n");
}

TEST_F(BucketsTrace, TemperaturesBelowZeroKeepTheirWidthOfThree) {
    count = 1;

    walk({{590, 4, 2, -5}, {600, 4, 2, -120}});

    EXPECT_EQ(trace,
              "required sample count 1, secs per index 60\n"
              "record 590, 4, 2, -5, expected tm 600\n"
              "accumulate for index 0, number 1\n"
              "record 600, 4, 2, -120, expected tm 600\n"
              "index[00] tm[600] type[4] inst[02] Max/Avg/Min[-05 -62 -120]\n");
}

TEST_F(BucketsTrace, MemoryModuleIsPrintedByItsInstanceNotItsSocket) {
    count = 1;

    walk({{600, 3, 128, 45}});

    EXPECT_EQ(trace,
              "required sample count 1, secs per index 60\n"
              "record 600, 3, 128, 45, expected tm 600\n"
              "index[00] tm[600] type[3] inst[128] Max/Avg/Min[045 045 045]\n");
}

TEST_F(BucketsTrace, IndexesAboveNinetyNineTakeThreeDigits) {
    samples = grid_of(102, 0xFF);
    samples[0].tm = 600;
    count = 102;

    walk({{6660, 1, 1, 20}});

    EXPECT_THAT(trace, testing::HasSubstr("index[99] tm[6540] NULL\n"
                                          "index[100] tm[6600] NULL\n"
                                          "index[101] tm[6660] type[1] inst[01] "));
    EXPECT_EQ(samples[101].index, 102);
}

TEST_F(BucketsTrace, WalkWithoutARowPrintsEveryIndexAsFilled) {
    walk({});

    EXPECT_EQ(trace,
              "required sample count 4, secs per index 60\n"
              "index[00] tm[600] fill NULL\n"
              "index[01] tm[660] fill NULL\n"
              "index[02] tm[720] fill NULL\n"
              "index[03] tm[780] fill NULL\n");
}

TEST_F(BucketsTrace, TimesAbove31BitsArePrintedSigned) {
    count = 1;
    samples[0].tm = 4'294'967'290;

    walk({{-10, 1, 1, 20}});

    EXPECT_EQ(trace,
              "required sample count 1, secs per index 60\n"
              "record -10, 1, 1, 20, expected tm -6\n"
              "accumulate for index 0, number 1\n"
              "index[00] tm[-6] type[1] inst[01] Max/Avg/Min[020 020 020]\n");
}
