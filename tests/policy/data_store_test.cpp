// SPDX-License-Identifier: Apache-2.0
// The data-store read: frames, names, the size test, what stays in the buffer.
#include "store_answers.h"

using namespace pwrmgt::test;

namespace {

// Header, enterprise number 0, open, parameters, zeros.
const std::string kOpenFrame = "ipmi 20 2E 00 90 00 00 00 01 01 01 F0 00 00 00 00 00";
const std::string kReadFrame = "ipmi 20 2E 00 90 00 00 00 02 11 22 33 44 00 00 00 00 C8 00";

}  // namespace

class DataStore : public StoreTest {};

TEST_F(DataStore, FileIsOpenedThenReadWithTheHandleOfTheAnswer) {
    EXPECT_EQ(read_answered(store_answer(3), 256).status, 0U);

    EXPECT_EQ(platform().calls, (Calls{kOpenFrame + " 61 told 0", kReadFrame + " told 8"}));
}

TEST_F(DataStore, BufferHoldsTheRawAnswerOfTheRead) {
    EXPECT_EQ(read_answered(store_answer(3), 256).status, 0U);

    std::vector<uint8_t> expected(256, 0xEE);
    const std::vector<uint8_t> answer{0, 0xA1, 0xA2, 0xA3, 3, 0, 0, 1, 2};
    std::copy(answer.begin(), answer.end(), expected.begin());
    EXPECT_EQ(buffer, expected);
}

TEST_F(DataStore, LengthToldIsNotResetBeforeTheRead) {
    platform().answer_ipmi({.bytes = kOpened, .told = 123});
    platform().answer_ipmi({.bytes = store_answer(0)});

    EXPECT_EQ(read("a", 256).status, 0U);

    EXPECT_EQ(platform().calls.at(0), kOpenFrame + " 61 told 0");
    EXPECT_EQ(platform().calls.at(1), kReadFrame + " told 123");
}

TEST_F(DataStore, GateIsNotAsked) {
    policy_is_read(2);
    platform().quoril = true;

    EXPECT_EQ(read_answered(store_answer(0), 256).status, 0U);

    EXPECT_EQ(platform().count("quoril"), 0U);
}

// What the buffer held before is passed on when the firmware's answer stops short of it.
TEST_F(DataStore, BufferIsNotCleared) {
    platform().answer_ipmi({.bytes = {0}});
    platform().answer_ipmi({.bytes = {0}});

    const Outcome outcome = read("a", 256);

    EXPECT_EQ(outcome.status, 31U) << "0xEEEE bytes do not fit";
    EXPECT_EQ(platform().calls.at(1),
              "ipmi 20 2E 00 90 00 00 00 02 EE EE EE EE 00 00 00 00 C8 00 told 1");
}

// -- names

TEST_F(DataStore, NullArgumentIs1AndPrintsNothing) {
    const auto refused = [&](const char* name, uint8_t* out) {
        CapturedOutput output;
        const uint32_t status = pwrmgt_ds_file_read(name, out, 256);
        const std::string printed = output.text();
        EXPECT_EQ(status, 1U);
        return printed;
    };

    EXPECT_EQ(refused(nullptr, buffer.data()), "");
    EXPECT_EQ(refused("a", nullptr), "");
    EXPECT_EQ(refused(nullptr, nullptr), "");

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(DataStore, EmptyNameIsSent) {
    platform().answer_ipmi({.bytes = kOpened});
    platform().answer_ipmi({.bytes = store_answer(0)});

    EXPECT_EQ(read("", 256).status, 0U);

    EXPECT_EQ(platform().calls.at(0), kOpenFrame + " told 0");
}

TEST_F(DataStore, NameOf112CharactersIsSentWhole) {
    platform().answer_ipmi({.bytes = kOpened});
    platform().answer_ipmi({.bytes = store_answer(0)});

    EXPECT_EQ(read(std::string(112, 'n').c_str(), 256).status, 0U);

    std::string expected = kOpenFrame;
    for (int at = 0; at < 112; ++at) {
        expected += " 6E";
    }
    EXPECT_EQ(platform().calls.at(0), expected + " told 0");
}

TEST_F(DataStore, NameOf113CharactersIs31WithoutAnyExchange) {
    const Outcome outcome = read(std::string(113, 'n').c_str(), 256);

    EXPECT_EQ(outcome.status, 31U);
    EXPECT_EQ(outcome.printed, "pwrmgt_ds_file_read() filename_sz:113.\n");
    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_EQ(buffer, std::vector<uint8_t>(256, 0xEE));
}

TEST_F(DataStore, NameIsSentByteByByteWhateverItsEncoding) {
    platform().answer_ipmi({.bytes = kOpened});
    platform().answer_ipmi({.bytes = store_answer(0)});

    EXPECT_EQ(read("\xC3\xA9/\x01", 256).status, 0U);

    EXPECT_EQ(platform().calls.at(0), kOpenFrame + " C3 A9 2F 01 told 0");
}

// -- the size of the buffer

TEST_F(DataStore, SizeEqualToTheBufferMinus5IsRefusedAndOneLessIsTaken) {
    EXPECT_EQ(read_answered(store_answer(11), 16).status, 31U);
    EXPECT_EQ(read_answered(store_answer(10), 16).status, 0U);

    EXPECT_EQ(read_answered(store_answer(200), 205).status, 31U);
    EXPECT_EQ(read_answered(store_answer(200), 206).status, 0U);

    EXPECT_EQ(read_answered(store_answer(250), 255).status, 31U);
    EXPECT_EQ(read_answered(store_answer(250), 256).status, 0U);
}

TEST_F(DataStore, RefusedReadLeavesItsAnswerInTheBuffer) {
    EXPECT_EQ(read_answered(store_answer(3), 8).status, 31U);

    EXPECT_EQ(std::vector<uint8_t>(buffer.begin(), buffer.begin() + 10),
              (std::vector<uint8_t>{0, 0xA1, 0xA2, 0xA3, 3, 0, 0, 1, 2, 0xEE}));
}

TEST_F(DataStore, SizeIsComparedSigned) {
    for (const int32_t size : {-2'147'483'647 - 1, -2'147'483'647, -1, 0, 4, 5}) {
        EXPECT_EQ(read_answered(store_answer(0), size).status, 31U) << size;
    }

    EXPECT_EQ(read_answered(store_answer(0), 6).status, 0U);
    EXPECT_EQ(read_answered(store_answer(0), 2'147'483'647).status, 0U);
}

TEST_F(DataStore, LargestSizeToldDoesNotFit256Bytes) {
    for (const std::vector<uint8_t>& told : {std::vector<uint8_t>{0, 0, 0, 0, 0xFF, 0xFF},
                                             {0, 0, 0, 0, 0x00, 0x80},
                                             {0, 0, 0, 0, 0xFB, 0x00},
                                             {0, 0, 0, 0, 0x00, 0x01}}) {
        EXPECT_EQ(read_answered(told, 256).status, 31U);
    }
}

// -- failures

TEST_F(DataStore, FailedOpenIs31AndNothingIsRead) {
    platform().answer_ipmi({.bytes = kOpened, .sent = 4});
    EXPECT_EQ(read("a", 256).status, 31U);

    for (uint32_t completion = 1; completion <= 255; ++completion) {
        platform().answer_ipmi({.bytes = {static_cast<uint8_t>(completion)}});
        EXPECT_EQ(read("a", 256).status, 31U) << completion;
    }

    EXPECT_EQ(platform().count("ipmi"), 256U);
}

TEST_F(DataStore, FailedReadIs31AndIsNotTriedAgain) {
    platform().answer_ipmi({.bytes = kOpened});
    platform().answer_ipmi({.bytes = store_answer(1), .sent = -1});
    EXPECT_EQ(read("a", 256).status, 31U);

    for (uint32_t completion = 1; completion <= 255; ++completion) {
        std::vector<uint8_t> answer = store_answer(1);
        answer[0] = static_cast<uint8_t>(completion);
        EXPECT_EQ(read_answered(answer, 256).status, 31U) << completion;
    }

    EXPECT_EQ(platform().count("ipmi"), 512U);
}

TEST_F(DataStore, EachFailingCallIs31AndAnExceptionPassesThrough) {
    const auto script = [](Recorder& recorder) {
        recorder.answer_ipmi({.bytes = kOpened});
        recorder.answer_ipmi({.bytes = store_answer(1)});
    };
    const auto act = [&] {
        const CapturedOutput silence;
        buffer.assign(256, 0xEE);
        return pwrmgt_ds_file_read("a", buffer.data(), 256);
    };

    // The buffer is not cleared: where an answer ends, the one before it, or what the caller left
    // there, is taken for the rest. Eight bytes are answered to the open and seven to the read.
    EXPECT_EQ(swept_statuses(script, act), (Outcomes{{31, 31, 31, 0, 0, 0, 0, 0, 0, 0, 0},
                                                     {31, 31, 31, 31, 31, 31, 31, 31, 0, 0}}));
    EXPECT_EQ(sweep_exceptions(script, act), 2U);
}
