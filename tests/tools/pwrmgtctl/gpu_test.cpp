// SPDX-License-Identifier: Apache-2.0
#include "firmware_tool.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

class Gpu : public FirmwareTest {
protected:
    void SetUp() override {
        FirmwareTest::SetUp();
        firmware({"gpus", "2", "--draw", "250"});
    }
};

TEST_F(Gpu, WithoutACapHasNone) {
    EXPECT_EQ(tool({"gpu", "get", "1"}).out, "Cap of GPU 1: none; asked of the firmware\n");
    EXPECT_TRUE(json_of({"gpu", "get", "1", "--json"})["cap_w"].is_null());
}

TEST_F(Gpu, SetIsReadBack) {
    const Finished run = tool({"gpu", "set", "0", "300"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "Cap of GPU 0 set: 300 W; asked of the firmware\nRead back: 300 W\n");
    EXPECT_EQ(firmware_state()["gpus"][0]["cap_w"], 300);
}

TEST_F(Gpu, ZeroWattsTakeTheCapAway) {
    tool({"gpu", "set", "0", "300"});

    const json document = json_of({"gpu", "set", "0", "0", "--json"});

    EXPECT_EQ(document, parsed(R"({
        "schema": "pwrmgtctl.gpu.set/1", "source": "firmware", "database": null,
        "asked_at_s": 1700000010, "asked_at_utc": "2023-11-14T22:13:30Z", "gpu": 0, "kind": 16,
        "set": null, "read_back": null, "as_set": true})"));
}

TEST_F(Gpu, ByteCapIsANumberOfTheFirmwaresMeaning) {
    tool({"gpu", "set", "1", "200", "--kind", "32"});

    EXPECT_EQ(tool({"gpu", "get", "1", "--kind", "32"}).out,
              "Cap of GPU 1: 200; asked of the firmware\n");
    EXPECT_EQ(json_of({"gpu", "get", "1", "--kind", "32", "--json"})["cap"], 200);
}

TEST_F(Gpu, ByteCapAbove255IsAMistake) {
    expect_refusal({"gpu", "set", "1", "256", "--kind", "32"}, 2, "--kind 32 takes 0 to 255");
}

TEST_F(Gpu, RealtimeTellsWhatItDrawsUnderItsCap) {
    tool({"gpu", "set", "0", "200"});

    EXPECT_EQ(tool({"gpu", "realtime", "0"}).out,
              "GPU 0 draws 200 W, 0 s old; asked of the firmware\n");
    EXPECT_EQ(json_of({"gpu", "realtime", "1", "--json"})["power_w"], 250);
}

TEST_F(Gpu, RealtimeWithoutAReadingIsADashAndNull) {
    firmware({"gpus", "1", "--draw", "none"});

    EXPECT_EQ(tool({"gpu", "realtime", "0"}).out,
              "GPU 0 draws -, 0 s old; asked of the firmware\n");
    EXPECT_TRUE(json_of({"gpu", "realtime", "0", "--json"})["power_w"].is_null());
}

TEST_F(Gpu, OneThatTheMachineDoesNotHaveIsExit1) {
    expect_refusal({"gpu", "get", "2"}, 1,
                   "the firmware did not answer for the cap of a GPU, refused, or answered another "
                   "length (status 31)");
}

// "garbage" answers with another word than was set.
TEST_F(Gpu, CapThatReadsBackDifferentlyIsExit1) {
    fail_always("0x06", "0xC0", "garbage");

    const Finished run = tool({"gpu", "set", "0", "300"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_NE(run.err.find("another value is held than was set: "), std::string::npos) << run.err;
}

class GpuFault : public Gpu, public ::testing::WithParamInterface<const char*> {};

TEST_P(GpuFault, IsExit1WithStatus31) {
    fail_always("0xDB", "", GetParam());

    expect_refusal({"gpu", "realtime", "0"}, 1,
                   "the firmware did not answer for the power of a GPU, refused, or answered "
                   "another length (status 31)");
}

INSTANTIATE_TEST_SUITE_P(EveryKind, GpuFault,
                         ::testing::Values("busy", "no-answer", "late:1", "completion:0xC9"));

}  // namespace
}  // namespace pwrmgt::tooltest
