// SPDX-License-Identifier: Apache-2.0
#include "sim_test.h"

namespace {

using pwrmgt::ipmi::sim::AuditEntry;
using pwrmgt::ipmi::sim::Requester;

class SimCapping : public SimTest {
protected:
    static Bytes named(const std::string& name) {
        return joined(joined(kCapOf300W, Bytes{1}), name);
    }
};

TEST_F(SimCapping, NothingIsCappedAtFirst) {
    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0, 0, 0xFF, 0xFF, 1}));
}

TEST_F(SimCapping, CapThatIsSetIsReadBack) {
    const Bytes set = capping(kCapOf300W);

    EXPECT_EQ(set, (Bytes{0x00, 0}));
    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0, 1, 0x2C, 0x01, 1}));
}

TEST_F(SimCapping, ModeZeroIsKnown) {
    const Bytes set = capping({0x02, 1, 0x2C, 0x01, 0});

    EXPECT_EQ(set, (Bytes{0x00, 0}));
    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0, 1, 0x2C, 0x01, 0}));
}

TEST_F(SimCapping, ValueOutsideTheMachinesRangeIsAStatus) {
    EXPECT_EQ(capping({0x02, 1, 99, 0, 1}), (Bytes{0x00, 1}));
    EXPECT_EQ(capping({0x02, 1, 100, 0, 1}), (Bytes{0x00, 0}));
    EXPECT_EQ(capping({0x02, 1, 0xD0, 0x07, 1}), (Bytes{0x00, 0}));
    EXPECT_EQ(capping({0x02, 1, 0xD1, 0x07, 1}), (Bytes{0x00, 1}));
}

TEST_F(SimCapping, RangeCanBeSet) {
    set_up([](auto& state) { state.cap_range = {300, 300}; });

    EXPECT_EQ(capping({0x02, 1, 0x2B, 0x01, 1}), (Bytes{0x00, 1}));
    EXPECT_EQ(capping({0x02, 1, 0x2C, 0x01, 1}), (Bytes{0x00, 0}));
    EXPECT_EQ(capping({0x02, 1, 0x2D, 0x01, 1}), (Bytes{0x00, 1}));
}

TEST_F(SimCapping, RefusedCapLeavesTheOneInForce) {
    capping(kCapOf300W);

    capping({0x02, 1, 10, 0, 1});

    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0, 1, 0x2C, 0x01, 1}));
}

TEST_F(SimCapping, SwitchingOffTakesAnyValue) {
    capping(kCapOf300W);

    EXPECT_EQ(capping({0x02, 0, 0, 0, 1}), (Bytes{0x00, 0}));
    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0, 0, 0, 0, 1}));
}

TEST_F(SimCapping, NameOf64BytesIsOnRecordAndOneOf65IsTooLongAFrame) {
    const std::string longest(64, 'n');

    EXPECT_EQ(capping(named(longest)), (Bytes{0x00, 0}));
    EXPECT_EQ(capping(named(longest + 'n')), (Bytes{0xC7}));
    ASSERT_EQ(state().audit.size(), 1u);
    EXPECT_EQ(state().audit[0].name, longest);
}

TEST_F(SimCapping, AuditLogTellsTimeRequesterAndOutcome) {
    capping(named("ada"));
    clock_s = kMidnight + 7;
    capping({0x02, 1, 10, 0, 1});
    capping({0x02, 0, 0, 0, 0, 0});

    EXPECT_EQ(state().audit, (std::vector<AuditEntry>{
                                 {1'700'006'400, Requester::named, "ada", {1, 1, 300}, 0},
                                 {1'700'006'407, Requester::not_told, "", {1, 1, 10}, 1},
                                 {1'700'006'407, Requester::name_left_out, "", {0, 0, 0}, 0},
                             }));
}

TEST_F(SimCapping, EmptyNameIsAName) {
    capping(named(""));

    ASSERT_EQ(state().audit.size(), 1u);
    EXPECT_EQ(state().audit[0].requester, Requester::named);
    EXPECT_EQ(state().audit[0].name, "");
}

TEST_F(SimCapping, AuditLogKeepsTheLast32Requests) {
    for (int i = 0; i < 33; ++i)
        capping(named("asker " + std::to_string(i)));

    ASSERT_EQ(state().audit.size(), 32u);
    EXPECT_EQ(state().audit.front().name, "asker 1");
    EXPECT_EQ(state().audit.back().name, "asker 32");
}

TEST_F(SimCapping, NameThatIsNoUtf8IsKeptReadable) {
    Bytes payload = named("a");
    payload.push_back(0xFF);

    EXPECT_EQ(capping(payload), (Bytes{0x00, 0}));
    EXPECT_EQ(state().audit[0].name, "a\xEF\xBF\xBD");
}

TEST_F(SimCapping, MalformedRequestIsACompletionCodeAndNotOnRecord) {
    EXPECT_EQ(capping({0x02, 2, 0x2C, 0x01, 1}), (Bytes{0xCC}));
    EXPECT_EQ(capping({0x02, 1, 0x2C, 0x01, 2}), (Bytes{0xC9}));
    EXPECT_EQ(capping({0x02, 1, 0x2C, 0x01, 1, 2}), (Bytes{0xCC}));
    EXPECT_EQ(capping({0x02, 1, 0x2C, 0x01, 1, 0, 'x'}), (Bytes{0xCC}));
    EXPECT_EQ(capping({0x02, 1, 0x2C, 0x01}), (Bytes{0xC7}));
    EXPECT_EQ(capping({0x03, 0, 0, 0, 1}), (Bytes{0xCC}));
    EXPECT_EQ(capping({0x03, 0, 0, 0}), (Bytes{0xC7}));
    EXPECT_TRUE(state().audit.empty());
}

}  // namespace
