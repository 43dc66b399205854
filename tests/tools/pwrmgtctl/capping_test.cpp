// SPDX-License-Identifier: Apache-2.0
#include "firmware_tool.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

class Capping : public FirmwareTest {
protected:
    // A policy that permits caps of 200 to 800 W AC and 100 to 700 W DC.
    void permit_caps() {
        store_policy(0, 1);
        change_policy({{"CapMinAc", 200}, {"CapMaxAc", 800}, {"CapMinDc", 100}, {"CapMaxDc", 700}});
    }
};

TEST_F(Capping, GetTellsSwitchWattsAndMode) {
    const Finished run = tool({"capping", "get"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "Power cap: off, no value, mode 1; asked of the firmware\n");
}

TEST_F(Capping, GetAsJsonHasNullForNoCap) {
    const json document = json_of({"capping", "get", "--json"});

    EXPECT_EQ(document, parsed(R"({
        "schema": "pwrmgtctl.capping.get/1", "source": "firmware", "database": null,
        "asked_at_s": 1700000010, "asked_at_utc": "2023-11-14T22:13:30Z",
        "on": false, "cap_w": null, "mode": 1})"));
}

TEST_F(Capping, SetShowsTheRangeThenTheCapAndWhatWasReadBack) {
    permit_caps();

    const Finished run = tool({"capping", "set", "500"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "Permitted range of a cap, AC: 200 to 800 W\n"
              "Power cap set: on, 500 W, mode 1; asked of the firmware\n"
              "Read back: on, 500 W, mode 1\n");
}

TEST_F(Capping, SetAsJsonHasRangeCapAndWhatWasReadBack) {
    permit_caps();

    const json document =
        json_of({"capping", "set", "500", "--dc", "--mode", "0", "--audit", "ada", "--json"});

    EXPECT_EQ(document, parsed(R"({
        "schema": "pwrmgtctl.capping.set/1", "source": "firmware", "database": null,
        "asked_at_s": 1700000010, "asked_at_utc": "2023-11-14T22:13:30Z",
        "side": "dc", "range": {"min_w": 100, "max_w": 700}, "forced": false, "audit": "ada",
        "set": {"on": true, "cap_w": 500, "mode": 0},
        "read_back": {"on": true, "cap_w": 500, "mode": 0}, "as_set": true})"));
}

TEST_F(Capping, BothEndsOfTheRangeArePermitted) {
    permit_caps();

    EXPECT_EQ(tool({"capping", "set", "200"}).exit, 0);
    EXPECT_EQ(tool({"capping", "set", "800"}).exit, 0);
}

TEST_F(Capping, CapBelowTheRangeIsRefusedWithExit6AndNotSent) {
    permit_caps();

    expect_refusal({"capping", "set", "199"}, 6,
                   "a cap of 199 W is outside the permitted range (AC), 200 to 800 W; --force "
                   "sets it all the same");
    EXPECT_TRUE(audit_log().empty());
}

TEST_F(Capping, CapAboveTheRangeIsRefusedWithExit6) {
    permit_caps();

    expect_refusal({"capping", "set", "701", "--dc"}, 6,
                   "a cap of 701 W is outside the permitted range (DC), 100 to 700 W; --force "
                   "sets it all the same");
}

TEST_F(Capping, ForceSetsACapOutsideTheRange) {
    permit_caps();

    const Finished run = tool({"capping", "set", "199", "--force"});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(firmware_state()["cap"]["value_w"], 199);
}

TEST_F(Capping, RangeThatIsNotKnownIsARefusalUnlessForced) {
    expect_refusal({"capping", "set", "500"}, 4,
                   "no power policy is stored (status 8); --force sets a cap without a known "
                   "range");

    const Finished forced = tool({"capping", "set", "500", "--force"});

    EXPECT_EQ(forced.exit, 0) << forced.err;
    EXPECT_EQ(lines_of(forced.out).front(), "Permitted range of a cap, AC: not known");
}

TEST_F(Capping, LimitsThatAreNotSetPermitEveryCap) {
    store_policy(0, 1);

    const Finished run = tool({"capping", "set", "500"});

    EXPECT_EQ(lines_of(run.out).front(), "Permitted range of a cap, AC: not limited");
}

TEST_F(Capping, OffKeepsTheWattsAndAsksForNoRange) {
    permit_caps();
    tool({"capping", "set", "500"});

    const Finished run = tool({"capping", "set", "off"});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(lines_of(run.out).back(), "Read back: off, 500 W, mode 1");
}

TEST_F(Capping, OnSwitchesTheStoredWattsOnAgain) {
    permit_caps();
    tool({"capping", "set", "500"});
    tool({"capping", "set", "off"});

    const Finished run = tool({"capping", "set", "on"});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(lines_of(run.out).back(), "Read back: on, 500 W, mode 1");
}

TEST_F(Capping, OnWithoutAStoredCapAsksForWatts) {
    permit_caps();

    expect_refusal({"capping", "set", "on"}, 6, "the firmware holds no cap; give watts");
}

TEST_F(Capping, CapOfNothingCannotBeOn) {
    store_policy(0, 1);

    expect_refusal({"capping", "set", "0"}, 6, "a cap of 0 W cannot be on (status 15)");
}

TEST_F(Capping, AuditNameReachesTheFirmwaresLog) {
    permit_caps();

    tool({"capping", "set", "500", "--audit", "night shift"});

    ASSERT_EQ(audit_log().size(), 1U);
    EXPECT_EQ(audit_log()[0]["name"], "night shift");
}

TEST_F(Capping, WithoutAuditNoNameIsSent) {
    permit_caps();

    tool({"capping", "set", "500"});

    ASSERT_EQ(audit_log().size(), 1U);
    EXPECT_TRUE(audit_log()[0]["name"].is_null());
    EXPECT_EQ(audit_log()[0]["name_left_out"], false);
}

TEST_F(Capping, AuditNameOf64CharactersIsSentWhole) {
    permit_caps();

    tool({"capping", "set", "500", "--audit", std::string(64, 'n')});

    EXPECT_EQ(audit_log()[0]["name"], std::string(64, 'n'));
}

TEST_F(Capping, AuditNameOf65CharactersIsAMistake) {
    permit_caps();

    const Finished run = tool({"capping", "set", "500", "--audit", std::string(65, 'n')});

    EXPECT_EQ(run.exit, 2);
    EXPECT_NE(run.err.find("--audit: must be 1 to 64 characters long"), std::string::npos)
        << run.err;
}

// "status:0" accepts without keeping anything.
TEST_F(Capping, FirmwareThatHoldsAnotherCapIsExit1WithBothTold) {
    permit_caps();
    fail_always("0x32", "0x02", "status:0");

    const Finished run = tool({"capping", "set", "500"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(lines_of(run.out).back(), "Read back: off, no value, mode 1");
    EXPECT_EQ(run.err,
              "pwrmgtctl: the firmware holds another cap than was set: off, no value, mode 1\n");
}

TEST_F(Capping, FirmwareThatHoldsAnotherCapIsNotAsSetInJson) {
    permit_caps();
    fail_always("0x32", "0x02", "status:0");

    const json document = parsed(tool({"capping", "set", "500", "--json"}).out);

    EXPECT_EQ(document["as_set"], false);
    EXPECT_EQ(document["read_back"]["on"], false);
}

TEST_F(Capping, CapThatCannotBeReadBackIsExit1WithTheCapTold) {
    permit_caps();
    fail_always("0x32", "0x03", "busy");

    const Finished run = tool({"capping", "set", "500", "--mode", "1"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out,
              "Permitted range of a cap, AC: 200 to 800 W\n"
              "Power cap set: on, 500 W, mode 1; asked of the firmware\n");
    EXPECT_EQ(run.err,
              "pwrmgtctl: the cap was set but not read back: the firmware did not answer for the "
              "cap, refused, or answered another length (status 31)\n");
}

TEST_F(Capping, CapThatTheFirmwareDoesNotTakeIsExit1WithItsStatus) {
    permit_caps();
    firmware({"cap-range", "300", "400"});

    expect_refusal({"capping", "set", "500"}, 1,
                   "the firmware does not take this cap: on, 500 W, mode 1 (status 14)");
}

TEST_F(Capping, PolicyThatRefusesPowerManagementIsExit3) {
    store_policy(2, 1);

    EXPECT_EQ(tool({"capping", "get"}).exit, 3);
    EXPECT_EQ(tool({"capping", "set", "off"}).exit, 3);
}

TEST_F(Capping, UngatedGetIsAnsweredWherePowerManagementIsNotOffered) {
    store_policy(2, 1);

    EXPECT_EQ(tool({"capping", "get", "--ungated"}).exit, 0);
}

struct Fault {
    const char* kind;
    int status;
};

class CappingFault : public Capping, public ::testing::WithParamInterface<Fault> {};

TEST_P(CappingFault, OfAGetIsExit1InWordsWithItsStatus) {
    fail_always("0x32", "0x03", GetParam().kind);

    const Finished run = tool({"capping", "get"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("(status " + std::to_string(GetParam().status) + ")\n"),
              std::string::npos)
        << run.err;
}

TEST_P(CappingFault, OfASetIsExit1InWordsWithItsStatus) {
    permit_caps();
    fail_always("0x32", "0x02", GetParam().kind);

    const Finished run = tool({"capping", "set", "500"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("(status " + std::to_string(GetParam().status) + ")\n"),
              std::string::npos)
        << run.err;
}

const Fault kFaults[] = {
    {"busy", 31}, {"no-answer", 31}, {"late:1", 31},          {"short", 31},
    {"long", 31}, {"garbage", 14},   {"completion:0xC1", 31}, {"status:7", 14}};

INSTANTIATE_TEST_SUITE_P(EveryKind, CappingFault, ::testing::ValuesIn(kFaults));

}  // namespace
}  // namespace pwrmgt::tooltest
