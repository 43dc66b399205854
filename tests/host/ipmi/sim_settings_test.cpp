// SPDX-License-Identifier: Apache-2.0
// Zero-output mode, processor caps and GPUs.
#include "sim_test.h"

namespace {

class SimSettings : public SimTest {};

Bytes gpu(const Bytes& payload) {
    return answer(joined({0x20, 0x3A, 0, 0x06}, payload));
}

Bytes consumption(std::uint8_t index) {
    return answer({0x20, 0x3A, 0, 0xDB, 0x01, 0x02, index});
}

TEST_F(SimSettings, ZeroOutputModeIsReadBack) {
    EXPECT_EQ(capping({0x06, 0x01, 0x00}), (Bytes{0x00, 0}));

    EXPECT_EQ(capping({0x06, 0x01, 0x01, 1}), (Bytes{0x00}));

    EXPECT_EQ(capping({0x06, 0x01, 0x00}), (Bytes{0x00, 1}));
}

TEST_F(SimSettings, ZeroOutputModeAboveOneIsOutOfRange) {
    EXPECT_EQ(capping({0x06, 0x01, 0x01, 2}), (Bytes{0xC9}));
    EXPECT_EQ(capping({0x06, 0x01, 0x00}), (Bytes{0x00, 0}));
}

TEST_F(SimSettings, MalformedZeroOutputRequestIsRefused) {
    EXPECT_EQ(capping({0x06, 0x02, 0x01, 1}), (Bytes{0xCC}));
    EXPECT_EQ(capping({0x06, 0x01, 0x00, 1}), (Bytes{0xCC}));
    EXPECT_EQ(capping({0x06, 0x01, 0x01}), (Bytes{0xCC}));
    EXPECT_EQ(capping({0x06, 0x01}), (Bytes{0xC7}));
    EXPECT_EQ(capping({0x06, 0x01, 0x01, 1, 0}), (Bytes{0xC7}));
}

TEST_F(SimSettings, ProcessorCapsAreEighteenBytesWithEveryPlace) {
    set_up([](auto& state) {
        state.cpus = 2;
        state.cpu_cap_w[0] = 300;
        state.cpu_cap_w[1] = 150;
    });

    EXPECT_EQ(capping({0x09}), (Bytes{0x00, 2, 0x2C, 0x01, 150, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                      0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST_F(SimSettings, ProcessorCapsTakeNoData) {
    EXPECT_EQ(capping({0x09, 0}), (Bytes{0xC7}));
}

TEST_F(SimSettings, GpuWordCapIsBigEndianAndReadBack) {
    EXPECT_EQ(gpu({0xC0, 1}), (Bytes{0x00, 0, 0}));

    EXPECT_EQ(gpu({0xC0, 1, 0x01, 0x2C}), (Bytes{0x00}));

    EXPECT_EQ(gpu({0xC0, 1}), (Bytes{0x00, 0x01, 0x2C}));
    EXPECT_EQ(gpu({0xC0, 0}), (Bytes{0x00, 0, 0}));
    EXPECT_EQ(state().gpus[1].cap_w, 300);
}

TEST_F(SimSettings, GpuByteCapIsAValueOfItsOwn) {
    gpu({0xC0, 3, 0x01, 0x2C});

    EXPECT_EQ(gpu({0xC1, 3, 80}), (Bytes{0x00}));

    EXPECT_EQ(gpu({0xC1, 3}), (Bytes{0x00, 80}));
    EXPECT_EQ(gpu({0xC0, 3}), (Bytes{0x00, 0x01, 0x2C}));
}

TEST_F(SimSettings, GpuBeyondTheMachinesIsOutOfRange) {
    EXPECT_EQ(gpu({0xC0, 3}), (Bytes{0x00, 0, 0}));
    EXPECT_EQ(gpu({0xC0, 4}), (Bytes{0xC9}));
    EXPECT_EQ(gpu({0xC0, 4, 0, 1}), (Bytes{0xC9}));
    EXPECT_EQ(gpu({0xC1, 4}), (Bytes{0xC9}));
    EXPECT_EQ(gpu({0xC1, 4, 1}), (Bytes{0xC9}));
    EXPECT_EQ(consumption(4), (Bytes{0xC9}));
}

TEST_F(SimSettings, MachineWithoutGpusHasNone) {
    set_up([](auto& state) { state.gpus.clear(); });

    EXPECT_EQ(gpu({0xC0, 0}), (Bytes{0xC9}));
}

TEST_F(SimSettings, GpuFrameOfAnotherLengthIsRefused) {
    EXPECT_EQ(gpu({0xC0}), (Bytes{0xC7}));
    EXPECT_EQ(gpu({0xC0, 0, 1}), (Bytes{0xC7}));
    EXPECT_EQ(gpu({0xC0, 0, 0, 1, 0}), (Bytes{0xC7}));
    EXPECT_EQ(gpu({0xC1, 0, 0, 1}), (Bytes{0xC7}));
    EXPECT_EQ(gpu({0xC2, 0}), (Bytes{0xC1}));
}

TEST_F(SimSettings, GpuDrawsWhatWasSetForItButNeverMoreThanItsCap) {
    const Bytes unset = consumption(0);
    set_up([](auto& state) { state.gpus[0].draw_w = 400; });
    const Bytes uncapped = consumption(0);
    gpu({0xC0, 0, 0x01, 0x2C});
    const Bytes capped = consumption(0);
    gpu({0xC0, 0, 0x01, 0x91});

    EXPECT_EQ(unset, (Bytes{0x00, 0xFF, 0xFF}));
    EXPECT_EQ(uncapped, (Bytes{0x00, 0x90, 0x01}));
    EXPECT_EQ(capped, (Bytes{0x00, 0x2C, 0x01}));
    EXPECT_EQ(consumption(0), (Bytes{0x00, 0x90, 0x01}));
}

TEST_F(SimSettings, CapMakesNoReadingOutOfNone) {
    gpu({0xC0, 0, 0x01, 0x2C});

    EXPECT_EQ(consumption(0), (Bytes{0x00, 0xFF, 0xFF}));
}

TEST_F(SimSettings, MalformedConsumptionRequestIsRefused) {
    EXPECT_EQ(answer({0x20, 0x3A, 0, 0xDB, 0x01, 0x03, 0}), (Bytes{0xCC}));
    EXPECT_EQ(answer({0x20, 0x3A, 0, 0xDB, 0x02, 0x02, 0}), (Bytes{0xC1}));
    EXPECT_EQ(answer({0x20, 0x3A, 0, 0xDB, 0x01, 0x02}), (Bytes{0xC7}));
}

}  // namespace
