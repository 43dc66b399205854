// SPDX-License-Identifier: Apache-2.0
#include "firmware_tool.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

class Meter : public FirmwareTest {};

// Completion code, time, four powers, two supplies of two powers: 22 bytes.
TEST_F(Meter, ReadDumpsAsManyBytesAsTheFirmwareAnswered) {
    const Finished run = tool_with({kTrace}, {"meter", "read"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "Power meter: 22 bytes, 0 s old; asked of the firmware\n"
              "0000  00 e7 f0 53 65 22 01 e1 00 3c 00 23 00 02 55 00  ...Se\"...<.#..U.\n"
              "0010  4b 00 a5 00 96 00                                K.....\n");
}

TEST_F(Meter, ReadAsJsonHasTheBytesInHexadecimal) {
    const json document = parsed(tool_with({kTrace}, {"meter", "read", "--json"}).out);

    EXPECT_EQ(document["size_bytes"], 22);
    EXPECT_EQ(document["block_hex"], "00e7f053652201e1003c0023000255004b00a5009600");
}

TEST_F(Meter, TraceOfTheLibraryStaysOutOfTheDocument) {
    const Finished run = tool_with({kTrace}, {"meter", "read"});

    EXPECT_EQ(run.out.find("pwrmgt_get_power_fpga_meter"), std::string::npos);
}

TEST_F(Meter, StretchedBlockIsShownToItsLastByte) {
    fail_always("0x32", "0x04", "long:256");

    const json document = parsed(tool_with({kTrace}, {"meter", "read", "--json"}).out);

    EXPECT_EQ(document["size_bytes"], 256);
}

TEST_F(Meter, FirmwareWithoutAReadingIsExit1) {
    expect_refusal({"meter", "read"}, 1,
                   "the firmware did not answer for the power meter, refused, or answered another "
                   "length (status 31)");
}

TEST_F(Meter, SlotsShowTheFivePowers) {
    firmware({"slots", "25", "0", "none"});

    const Finished run = tool({"meter", "slots"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out,
              "Powers of slot devices, 0 s old; asked of the firmware\n"
              "Slot device   W\n"
              "1            25\n"
              "2             0\n"
              "3             -\n"
              "4             -\n"
              "5             -\n");
}

TEST_F(Meter, SlotsAsJsonHaveNullForNoReading) {
    firmware({"slots", "25", "0", "none"});

    const json document = json_of({"meter", "slots", "--json"});

    EXPECT_EQ(document["slot_w"], parsed("[25, 0, null, null, null]"));
    EXPECT_EQ(document["age_s"], 0);
    EXPECT_EQ(document["stale"], false);
}

class MeterFault : public Meter, public ::testing::WithParamInterface<const char*> {};

TEST_P(MeterFault, OfTheSlotsIsExit1WithStatus31) {
    fail_always("0x32", "0x04", GetParam());

    expect_refusal({"meter", "slots"}, 1,
                   "the firmware did not answer for the powers of the slot devices, refused, or "
                   "answered another length (status 31)");
}

INSTANTIATE_TEST_SUITE_P(EveryKind, MeterFault,
                         ::testing::Values("busy", "no-answer", "late:1", "short", "long"));

}  // namespace
}  // namespace pwrmgt::tooltest
