// SPDX-License-Identifier: Apache-2.0
#include "sim_test.h"

namespace {

const Bytes kReading{0x01, 0, 0, 0, 0};
const Bytes kMeter{0x04, 0, 0, 0, 0};
const Bytes kSlots{0x04, 0x08, 0, 0, 0, 0};

class SimReadings : public SimTest {};

TEST_F(SimReadings, RealTimeReadingKeepsToTheCap) {
    capping({0x02, 1, 0xE8, 0x03, 1});

    EXPECT_EQ(capping(kReading), (Bytes{0x00, 0xE8, 0x03, 0xC4, 0x03, 0x53, 0x01, 0x2C, 0x01, 11,
                                        12, 13, 14, 0x00, 0x0A, 0x54, 0x65}));
}

TEST_F(SimReadings, RealTimeReadingIsAsMeasuredAgainWhenTheCapIsOff) {
    capping({0x02, 1, 0xE8, 0x03, 1});

    capping({0x02, 0, 0xE8, 0x03, 1});

    EXPECT_EQ(exchanged(kRealtimeRequest).le16(1), 1270u);
}

TEST_F(SimReadings, MeterHoldsTimePowersAndSupplies) {
    EXPECT_EQ(capping(kMeter), (Bytes{0x00, 0x00, 0x0A, 0x54, 0x65, 0xF6, 0x04, 0xC9, 0x04, 0x58,
                                      0x02, 0x2C, 0x01, 1, 0x00, 0x05, 0xC9, 0x04}));
}

TEST_F(SimReadings, MeterKeepsToTheCap) {
    capping({0x02, 1, 0x7B, 0x02, 1});

    EXPECT_EQ(capping(kMeter), (Bytes{0x00, 0x00, 0x0A, 0x54, 0x65, 0x7B, 0x02, 0x64, 0x02, 0x00,
                                      0x00, 0x1F, 0x01, 1, 0x80, 0x02, 0x64, 0x02}));
}

TEST_F(SimReadings, MeterWithoutATraceHasNothing) {
    const EnvironmentVariable none("VEKDB_SIM_TRACE");

    EXPECT_EQ(capping(kMeter), (Bytes{0xCB}));
}

TEST_F(SimReadings, SlotDevicesHaveNoReadingUntilOneIsSet) {
    const Bytes before = capping(kSlots);
    set_up([](auto& state) { state.slot_w = {25, 0, 0xFFFF, 300, 1}; });

    EXPECT_EQ(before, (Bytes{0x00, 0x00, 0x0A, 0x54, 0x65, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                             0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(capping(kSlots),
              (Bytes{0x00, 0x00, 0x0A, 0x54, 0x65, 25, 0, 0, 0, 0xFF, 0xFF, 0x2C, 0x01, 1, 0}));
}

TEST_F(SimReadings, FillingBytesMustBeZero) {
    EXPECT_EQ(capping({0x04, 0, 0, 0, 1}), (Bytes{0xCC}));
    EXPECT_EQ(capping({0x04, 0x08, 0, 0, 0, 1}), (Bytes{0xCC}));
    EXPECT_EQ(capping({0x04, 0x07, 0, 0, 0, 0}), (Bytes{0xCC}));
}

TEST_F(SimReadings, MeterAndSlotDevicesDifferByTheirLength) {
    EXPECT_EQ(capping({0x04, 0, 0, 0}), (Bytes{0xC7}));
    EXPECT_EQ(capping({0x04, 0x08, 0, 0, 0, 0, 0}), (Bytes{0xC7}));
}

}  // namespace
