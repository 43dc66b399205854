// SPDX-License-Identifier: Apache-2.0
#include "sim_test.h"

namespace {

using pwrmgt::ipmi::sim::Fault;
using pwrmgt::ipmi::sim::kind_text;
using pwrmgt::ipmi::sim::set_kind;

constexpr int kTimedOut = 7;

class SimFaults : public SimTest {
protected:
    static void add(std::uint8_t command, std::optional<std::uint8_t> operation, const char* kind,
                    std::uint32_t times) {
        Fault fault{command, operation, {}, {}, times};
        EXPECT_TRUE(set_kind(fault, kind)) << kind;
        set_up([&](auto& state) { state.faults.push_back(fault); });
    }
    static void once(std::uint8_t operation, const char* kind) { add(0x32, operation, kind, 1); }
};

TEST_F(SimFaults, BusyIsACompletionCodeAndNothingIsDone) {
    once(0x02, "busy");

    EXPECT_EQ(capping(kCapOf300W), (Bytes{0xC0}));
    EXPECT_EQ(capping(kGetCap), kNoCap);
    EXPECT_EQ(capping(kCapOf300W), (Bytes{0x00, 0}));
}

TEST_F(SimFaults, SilenceIsAFailedSendAndNothingIsDone) {
    once(0x02, "no-answer");

    const Exchange exchange = exchanged({0x20, 0x3A, 0, 0x32, 0x02, 1, 0x2C, 0x01, 1});

    EXPECT_EQ(exchange.result, kNoAnswer);
    EXPECT_EQ(exchange.length, 0u);
    EXPECT_TRUE(exchange.clean_behind(0));
    EXPECT_EQ(capping(kGetCap), kNoCap);
}

TEST_F(SimFaults, LateAnswerIsGivenUpThoughTheFirmwareDidIt) {
    once(0x02, "late:1");

    const Exchange exchange = exchanged({0x20, 0x3A, 0, 0x32, 0x02, 1, 0x2C, 0x01, 1});

    EXPECT_EQ(exchange.result, kTimedOut);
    EXPECT_EQ(exchange.length, 0u);
    EXPECT_TRUE(exchange.clean_behind(0));
    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0, 1, 0x2C, 0x01, 1}));
}

TEST_F(SimFaults, LateAnswerTakesItsTime) {
    once(0x03, "late");
    timespec from{};
    timespec to{};

    clock_gettime(CLOCK_MONOTONIC, &from);
    const Exchange exchange = exchanged({0x20, 0x3A, 0, 0x32, 0x03, 0, 0, 0, 0});
    clock_gettime(CLOCK_MONOTONIC, &to);

    EXPECT_EQ(exchange.result, kTimedOut);
    EXPECT_GE((to.tv_sec - from.tv_sec) * 1000 + (to.tv_nsec - from.tv_nsec) / 1'000'000, 49);
}

TEST_F(SimFaults, ShortAnswerLacksItsEndButNeverItsCompletionCode) {
    once(0x03, "short");
    once(0x03, "short:2");
    once(0x03, "short:200");
    add(0x06, 0xC1, "short", 1);

    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0, 0, 0xFF, 0xFF}));
    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0}));
    EXPECT_EQ(capping(kGetCap), kNoCap);
    EXPECT_EQ(answer({0x20, 0x3A, 0, 0x06, 0xC1, 0, 1}), (Bytes{0x00}));
}

TEST_F(SimFaults, LongAnswerHasMoreBytesUpTo256) {
    once(0x03, "long");
    once(0x03, "long:256");
    once(0x03, "long:3");

    const Bytes by_one = capping(kGetCap);
    const Bytes longest = capping(kGetCap);

    EXPECT_EQ(by_one, (Bytes{0x00, 0, 0, 0xFF, 0xFF, 1, 0xA5}));
    EXPECT_EQ(longest.size(), 256u);
    EXPECT_EQ(longest[255], 0xA5);
    EXPECT_EQ(capping(kGetCap), kNoCap);
}

TEST_F(SimFaults, GarbageHasTheRightLengthAndAGoodCompletionCode) {
    once(0x03, "garbage");

    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0xA4, 0xA7, 0xA6, 0xA1, 0xA0}));
}

TEST_F(SimFaults, CompletionCodeStandsAloneAndNothingIsDone) {
    once(0x02, "completion:0xC3");

    EXPECT_EQ(capping(kCapOf300W), (Bytes{0xC3}));
    EXPECT_EQ(capping(kGetCap), kNoCap);
}

TEST_F(SimFaults, StatusHasTheLengthOfItsAnswerAndNothingIsDone) {
    once(0x02, "status:2");
    once(0x03, "status:0x80");

    EXPECT_EQ(capping(kCapOf300W), (Bytes{0x00, 2}));
    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0x80, 0, 0, 0, 0}));
    EXPECT_EQ(capping(kGetCap), kNoCap);
}

TEST_F(SimFaults, FaultBefallsAsManyExchangesAsAskedFor) {
    add(0x32, 0x03, "busy", 3);

    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(capping(kGetCap), (Bytes{0xC0})) << i;
    EXPECT_EQ(capping(kGetCap), kNoCap);
    EXPECT_TRUE(state().faults.empty());
}

TEST_F(SimFaults, FaultOfEveryTimeStays) {
    add(0x32, 0x03, "busy", 0);

    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(capping(kGetCap), (Bytes{0xC0})) << i;
    EXPECT_EQ(state().faults.size(), 1u);
}

TEST_F(SimFaults, FaultsOfOneRequestFollowOneAnother) {
    once(0x03, "completion:1");
    once(0x03, "completion:2");

    EXPECT_EQ(capping(kGetCap), (Bytes{1}));
    EXPECT_EQ(capping(kGetCap), (Bytes{2}));
    EXPECT_EQ(capping(kGetCap), kNoCap);
}

TEST_F(SimFaults, OtherOperationsAndCommandsAreSpared) {
    once(0x03, "busy");

    EXPECT_EQ(capping(kCapOf300W), (Bytes{0x00, 0}));
    EXPECT_EQ(answer({0x20, 0x3A, 0, 0x06, 0xC1, 0}), (Bytes{0x00, 0}));
    EXPECT_EQ(capping(kGetCap), (Bytes{0xC0}));
}

TEST_F(SimFaults, FaultWithoutAnOperationBefallsTheWholeCommand) {
    add(0x32, {}, "busy", 2);

    EXPECT_EQ(capping(kGetCap), (Bytes{0xC0}));
    EXPECT_EQ(capping(kCapOf300W), (Bytes{0xC0}));
}

TEST_F(SimFaults, OperationOfTheDataStoreStandsBehindTheEnterpriseNumber) {
    add(0x90, 0x01, "completion:0xC4", 1);
    const Bytes read{0x20, 0x2E, 0, 0x90, 1, 0, 0, 0x02, 1, 0, 0, 0, 0, 0, 0, 0, 200, 0};
    const Bytes open{0x20, 0x2E, 0, 0x90, 2, 0, 0, 0x01, 1, 1, 0xF0, 0, 0, 0, 0, 0, 'x'};

    EXPECT_EQ(answer(read), (Bytes{0xCB}));
    EXPECT_EQ(answer(open), (Bytes{0xC4}));
    EXPECT_EQ(answer(open), (Bytes{0xCB}));
}

TEST_F(SimFaults, FaultOfOneProcessBefallsAnother) {
    EXPECT_EQ(in_child([] {
                  add(0x32, 0x03, "busy", 1);
                  return 0;
              }),
              0);

    EXPECT_EQ(capping(kGetCap), (Bytes{0xC0}));
    EXPECT_EQ(capping(kGetCap), kNoCap);
}

TEST(SimFaultText, EveryKindIsReadAndWrittenBack) {
    for (const char* text : {"busy", "no-answer", "late", "late:1", "late:5000", "short", "short:1",
                             "short:256", "long", "long:256", "garbage", "completion:0x01",
                             "completion:0xFF", "status:0x00", "status:0xFF"}) {
        Fault fault;

        EXPECT_TRUE(set_kind(fault, text)) << text;
        EXPECT_EQ(kind_text(fault), text);
    }
}

TEST(SimFaultText, WhatIsNoKindLeavesTheFaultAlone) {
    for (const char* text : {"",
                             "Busy",
                             "busy:1",
                             "busy ",
                             "late:",
                             "late:0",
                             "late:5001",
                             "late:x",
                             "late:1x",
                             "late:-1",
                             "short:0",
                             "short:257",
                             "long:257",
                             "garbage:1",
                             "completion",
                             "completion:0",
                             "completion:0x100",
                             "completion:0x",
                             "status",
                             "status:256",
                             ":1"}) {
        Fault fault;

        EXPECT_FALSE(set_kind(fault, text)) << text;
        EXPECT_EQ(fault, Fault{}) << text;
    }
}

}  // namespace
