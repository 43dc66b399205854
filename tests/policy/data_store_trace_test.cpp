// SPDX-License-Identifier: Apache-2.0
// What a data-store read prints, byte by byte.
#include "store_answers.h"

using namespace pwrmgt::test;

namespace {

const std::string kAsked =
    "pwrmgt_ds_file_read() filename_sz:1.\n"
    "<>Req cmd/open file: 20 2E 00 90 00 00 00 01 01 01 F0 00 00 00 00 00 61 \n";
const std::string kOpenedTrace =
    "Recv: 00 A1 A2 A3 11 22 33 44 "
    "Req cmd/read file: 20 2E 00 90 00 00 00 02 11 22 33 44 00 00 00 00 C8 00 \n";
const std::string kThirtyTwo =
    "0001 0203 0405 0607 0809 0A0B 0C0D 0E0F \n"
    "1011 1213 1415 1617 1819 1A1B 1C1D 1E1F \n";

}  // namespace

class DataStoreTrace : public StoreTest {
protected:
    // What follows the two exchanges of a read of `size` bytes.
    std::string dump_of(uint32_t size) {
        const Outcome outcome = read_answered(store_answer(size), 256);
        EXPECT_EQ(outcome.status, 0U);
        EXPECT_THAT(outcome.printed, testing::StartsWith(kAsked + kOpenedTrace));
        return outcome.printed.substr((kAsked + kOpenedTrace).size());
    }
};

TEST_F(DataStoreTrace, WholeReadIsTracedLikeThis) {
    EXPECT_EQ(read_answered(store_answer(2), 256).printed,
              "pwrmgt_ds_file_read() filename_sz:1.\n"
              "<>Req cmd/open file: 20 2E 00 90 00 00 00 01 01 01 F0 00 00 00 00 00 61 \n"
              "Recv: 00 A1 A2 A3 11 22 33 44 "
              "Req cmd/read file: 20 2E 00 90 00 00 00 02 11 22 33 44 00 00 00 00 C8 00 \n"
              "recv_data_sz is 0x2 \n"
              "0001 \n");
}

TEST_F(DataStoreTrace, EmptyFileIsANewline) {
    EXPECT_EQ(dump_of(0), "recv_data_sz is 0x0 \n\n");
}

TEST_F(DataStoreTrace, OddByteHasNoSpace) {
    EXPECT_EQ(dump_of(1), "recv_data_sz is 0x1 \n00\n");
    EXPECT_EQ(dump_of(15), "recv_data_sz is 0xf \n0001 0203 0405 0607 0809 0A0B 0C0D 0E\n");
}

TEST_F(DataStoreTrace, SixteenBytesAreALineOfTheirOwn) {
    EXPECT_EQ(dump_of(16), "recv_data_sz is 0x10 \n0001 0203 0405 0607 0809 0A0B 0C0D 0E0F \n\n");
}

TEST_F(DataStoreTrace, SeventeenthByteStartsTheNextLine) {
    EXPECT_EQ(dump_of(17), "recv_data_sz is 0x11 \n0001 0203 0405 0607 0809 0A0B 0C0D 0E0F \n10\n");
}

TEST_F(DataStoreTrace, FullBlockIsTwelveLinesAndAHalf) {
    const std::string dump = dump_of(200);

    EXPECT_THAT(dump, testing::StartsWith("recv_data_sz is 0xc8 \n" + kThirtyTwo));
    EXPECT_THAT(dump, testing::EndsWith("B0B1 B2B3 B4B5 B6B7 B8B9 BABB BCBD BEBF \n"
                                        "C0C1 C2C3 C4C5 C6C7 \n"));
    EXPECT_EQ(dump.size(), 22U + 200U * 2U + 100U + 12U + 1U);
}

TEST_F(DataStoreTrace, OverflowIsALineInsteadOfTheDump) {
    EXPECT_EQ(read_answered(store_answer(3), 8).printed,
              kAsked + kOpenedTrace + "recv_data_sz is 0x3 \nThere will be an array overflow.\n");
    EXPECT_EQ(read_answered(store_answer(3), 9).printed,
              kAsked + kOpenedTrace + "recv_data_sz is 0x3 \n0001 02\n");
}

TEST_F(DataStoreTrace, LargestSizeIsTracedUnsigned) {
    EXPECT_EQ(
        read_answered({0, 0, 0, 0, 0xFF, 0xFF}, 256).printed,
        kAsked + kOpenedTrace + "recv_data_sz is 0xffff \nThere will be an array overflow.\n");
}

// -- failures

TEST_F(DataStoreTrace, FailedOpenPrintsItsResultAndTheFirstByteWithoutANewline) {
    platform().fail(Operation::ipmi, -1);
    EXPECT_EQ(read("a", 256).printed, kAsked + "rc:-1, faild code:0xee");

    platform().answer_ipmi({.bytes = {0xC1, 1, 2}, .sent = 5});
    EXPECT_EQ(read("a", 256).printed, kAsked + "rc:5, faild code:0xc1");

    platform().answer_ipmi({.bytes = {0, 1, 2}, .sent = 6});
    EXPECT_EQ(read("a", 256).printed, kAsked + "rc:6, faild code:0x0");
}

TEST_F(DataStoreTrace, RefusedOpenPrintsItsCompletionCodeWithoutANewline) {
    platform().answer_ipmi({.bytes = {0xC9, 1, 2}});

    EXPECT_EQ(read("a", 256).printed, kAsked + "rc:0, faild code:0xc9");
}

TEST_F(DataStoreTrace, FailedReadPrintsNoMessage) {
    platform().answer_ipmi({.bytes = kOpened});
    platform().answer_ipmi({.bytes = store_answer(1), .sent = 2});
    EXPECT_EQ(read("a", 256).printed, kAsked + kOpenedTrace);

    EXPECT_EQ(read_answered({0xC9, 0, 0, 0, 1, 0, 0}, 256).printed, kAsked + kOpenedTrace);
}

// -- the answer to the open

TEST_F(DataStoreTrace, EmptyAnswerIsTracedAsNoBytes) {
    buffer[0] = 0;
    platform().answer_ipmi({.bytes = {0}, .told = 0});
    platform().answer_ipmi({.bytes = store_answer(0)});

    EXPECT_EQ(read("a", 256).printed,
              kAsked +
                  "Recv: "
                  "Req cmd/read file: 20 2E 00 90 00 00 00 02 EE EE EE EE 00 00 00 00 C8 00 \n"
                  "recv_data_sz is 0x0 \n\n");
}

TEST_F(DataStoreTrace, AnswerIsTracedUpTo256BytesWhateverIsTold) {
    for (const uint32_t told : {256U, 257U, 4'294'967'295U}) {
        platform().answer_ipmi({.bytes = kOpened, .told = told});
        platform().answer_ipmi({.bytes = store_answer(0)});
        buffer.assign(256, 0xEE);

        std::string received = "Recv: 00 A1 A2 A3 11 22 33 44 ";
        for (int at = 8; at < 256; ++at) {
            received += "EE ";
        }
        EXPECT_THAT(read("a", 256).printed,
                    testing::StartsWith(kAsked + received + "Req cmd/read file: "));
    }
}
