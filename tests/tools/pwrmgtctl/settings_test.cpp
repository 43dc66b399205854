// SPDX-License-Identifier: Apache-2.0
#include "firmware_tool.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

class Settings : public FirmwareTest {};

TEST_F(Settings, GetShowsAllOfThem) {
    store_policy(0, 1);
    firmware({"processors", "2", "--caps", "150", "none"});

    const Finished run = tool({"settings", "get"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "Settings of the policy and of the firmware; database " + persistent_file() +
                           "\n"
                           "Setting                        Value\n"
                           "Maximizer status                   0\n"
                           "Unstress power of adapters, W      0\n"
                           "Unstress power of disks, W         0\n"
                           "Zero-output mode                   0\n"
                           "Cap of processor 1, W            150\n"
                           "Cap of processor 2, W              -\n");
}

TEST_F(Settings, GetAsJsonHasUnitsInItsKeys) {
    store_policy(0, 1);
    firmware({"processors", "2", "--caps", "150", "none"});

    const json document = json_of({"settings", "get", "--json"});

    EXPECT_EQ(document["maximizer_status"], 0);
    EXPECT_EQ(document["unstress_adapter_w"], 0);
    EXPECT_EQ(document["unstress_disk_w"], 0);
    EXPECT_EQ(document["zero_output_mode"], 0);
    EXPECT_EQ(document["cpu_cap_w"], parsed("[150, null]"));
    EXPECT_EQ(document["errors"], json::array());
}

TEST_F(Settings, GetOfOneShowsThatOne) {
    const json document = json_of({"settings", "get", "zero-output", "--json"});

    EXPECT_EQ(document["zero_output_mode"], 0);
    EXPECT_FALSE(document.contains("maximizer_status"));
}

TEST_F(Settings, WhatCannotBeReadIsToldBesideTheOthers) {
    const Finished run = tool({"settings", "get"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(lines_of(run.out)[2], "Maximizer status                   -");
    EXPECT_EQ(lines_of(run.out)[5], "Zero-output mode                   0");
    EXPECT_EQ(run.err,
              "pwrmgtctl: maximizer: no power policy is stored (status 8)\n"
              "pwrmgtctl: unstress-adapter: no power policy is stored (status 8)\n"
              "pwrmgtctl: unstress-disk: no power policy is stored (status 8)\n");
}

TEST_F(Settings, OneThatCannotBeReadAloneIsNoDocument) {
    expect_refusal({"settings", "get", "maximizer"}, 4,
                   "maximizer: no power policy is stored (status 8)");
}

TEST_F(Settings, MaximizerIsNotOfferedWherePowerManagementIsNot) {
    store_policy(2, 1);

    expect_refusal({"settings", "get", "maximizer"}, 3,
                   "maximizer: power management is not offered on this platform (status 10)");
}

struct Change {
    const char* name;
    const char* value;
    const char* shown;
};

class SettingsChange : public Settings, public ::testing::WithParamInterface<Change> {};

TEST_P(SettingsChange, IsStoredAndReadBack) {
    store_policy(0, 1);
    const auto& [name, value, shown] = GetParam();

    const Finished run = tool({"settings", "set", name, value});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(lines_of(run.out).back(), std::string("Read back: ") + shown);
}

const Change kChanges[] = {{"maximizer", "1", "1"},
                           {"maximizer", "254", "254"},
                           {"unstress-adapter", "75", "75 W"},
                           {"unstress-adapter", "65534", "65534 W"},
                           {"unstress-disk", "40", "40 W"},
                           {"zero-output", "1", "1"}};

INSTANTIATE_TEST_SUITE_P(Every, SettingsChange, ::testing::ValuesIn(kChanges));

TEST_F(Settings, ValueThatASettingDoesNotTakeIsAMistake) {
    expect_refusal({"settings", "set", "zero-output", "2"}, 2, "zero-output takes 0 to 1");
    expect_refusal({"settings", "set", "maximizer", "255"}, 2, "maximizer takes 0 to 254");
}

TEST_F(Settings, WithoutAPolicyRowNothingIsStored) {
    expect_refusal({"settings", "set", "unstress-disk", "40"}, 4,
                   "no power policy is stored (status 8)");
}

// The library returns 0 whatever completion code the firmware gives.
TEST_F(Settings, ZeroOutputModeThatTheFirmwareRefusesIsExit1) {
    fail_always("0x32", "0x06", "busy");

    const Finished run = tool({"settings", "set", "zero-output", "1"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "pwrmgtctl: another value is held than was set: none\n");
}

TEST_F(Settings, ZeroOutputModeThatWasNotToldIsADash) {
    fail_always("0x32", "0x06", "busy");

    const Finished run = tool({"settings", "get", "zero-output"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(lines_of(run.out).back(), "Zero-output mode      -");
}

TEST_F(Settings, FirmwareThatIsNotReachedIsExit1WithTheTransportsResult) {
    fail_always("0x32", "0x06", "no-answer");

    const Finished run = tool({"settings", "set", "zero-output", "1"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.find("pwrmgtctl: the request did not reach the firmware (status "), 0U)
        << run.err;
}

TEST_F(Settings, ProcessorCapsThatTheFirmwareRefusesTellItsCompletionCode) {
    fail_always("0x32", "0x09", "completion:0xC1");

    expect_refusal({"settings", "get", "cpu-caps"}, 1,
                   "cpu-caps: the request for the processors' caps did not reach the firmware, or "
                   "it refused with this completion code (status 193)");
}

TEST_F(Settings, ProcessorCapsOf19BytesAreRefused) {
    fail_always("0x32", "0x09", "long:19");

    expect_refusal({"settings", "get", "cpu-caps"}, 1,
                   "cpu-caps: the firmware answered for the processors' caps with another length "
                   "(status 31)");
}

}  // namespace
}  // namespace pwrmgt::tooltest
