// SPDX-License-Identifier: Apache-2.0
// Slot devices, the power-meter block with its trace, and what one GPU draws.
#include <memory>

#include "captured_output.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace realtime_readings_tests {
namespace {

const std::vector<uint8_t> kSlots{0x00, 0x04, 0x03, 0x02, 0x91, 0x01, 0x00, 0x02,
                                  0x01, 0xFF, 0xFF, 0x00, 0x80, 0x34, 0x12};

std::vector<int64_t> values(const pwrmgt_slot_dev_pwr_t& powers) {
    std::vector<int64_t> all{powers.word};
    all.insert(all.end(), std::begin(powers.value), std::end(powers.value));
    return all;
}

const std::vector<int64_t> kUntouched{7, 7, 7, 7, 7, 7};

}  // namespace

class RealtimeReadings : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        policy_is_read();
    }

    // Reads the meter and hands back what it printed.
    std::string trace_of(const Answer& answer, uint32_t expected) {
        platform().answer_ipmi(answer);
        CapturedOutput output;
        const uint32_t status = pwrmgt_get_power_fpga_meter(block.data());
        const std::string printed = output.text();
        EXPECT_EQ(status, expected);
        return printed;
    }

    pwrmgt_slot_dev_pwr_t slots{7, {7, 7, 7, 7, 7}};
    std::vector<uint8_t> block = std::vector<uint8_t>(256, 0x77);
    uint16_t watts = 7777;
};

// -- slot devices

TEST_F(RealtimeReadings, SlotDevicesAreCopiedInOrder) {
    platform().answer_ipmi({.bytes = kSlots});

    EXPECT_EQ(pwrmgt_get_realtime_slot_dev_powers(&slots), 0U);

    EXPECT_EQ(platform().calls, (Calls{"quoril", "ipmi 20 3A 00 32 04 08 00 00 00 00 told 0"}));
    EXPECT_EQ(values(slots), (std::vector<int64_t>{2'432'828'164, 1, 258, 65535, 32768, 0x1234}));
}

TEST_F(RealtimeReadings, SlotDevicesWithoutAnOutputAre1BeforeTheGate) {
    policy_is_read(2);

    EXPECT_EQ(pwrmgt_get_realtime_slot_dev_powers(nullptr), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(RealtimeReadings, SlotDevicesAreNotOfferedWhereTheRowSaysSo) {
    policy_is_read(2);

    EXPECT_EQ(pwrmgt_get_realtime_slot_dev_powers(&slots), 10U);

    EXPECT_EQ(platform().calls, Calls{"quoril"});
    EXPECT_EQ(values(slots), kUntouched);
}

TEST_F(RealtimeReadings, QuorilOffersTheReadingAndNotTheSlotDevices) {
    platform().quoril = true;
    pwrmgt_realtime_pwr_t reading{};
    platform().answer_ipmi({.bytes = std::vector<uint8_t>(17, 0)});

    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 0U);
    EXPECT_EQ(pwrmgt_get_realtime_slot_dev_powers(&slots), 10U);

    EXPECT_EQ(platform().count("ipmi"), 1U);
}

TEST_F(RealtimeReadings, SlotDeviceAnswerOf14Or16BytesIs31) {
    for (const uint32_t length : {0U, 14U, 16U}) {
        platform().answer_ipmi({.bytes = kSlots, .told = length});

        EXPECT_EQ(pwrmgt_get_realtime_slot_dev_powers(&slots), 31U) << length;
    }

    EXPECT_EQ(values(slots), kUntouched);
}

TEST_F(RealtimeReadings, FailingSendOfTheSlotDevicesIs31) {
    const auto script = [](Recorder& recorder) {
        g_power_policy_flag = 0;
        recorder.answer_ipmi({.bytes = kSlots});
    };
    const auto act = [&] { return pwrmgt_get_realtime_slot_dev_powers(&slots); };

    EXPECT_EQ(swept_statuses(script, act), each_of(1, 31));
    EXPECT_EQ(sweep_exceptions(script, act), 1U);
}

// -- power meter

TEST_F(RealtimeReadings, MeterBlockIsCopiedWithItsCompletionCode) {
    EXPECT_EQ(trace_of({.bytes = {0, 1, 2, 3}}, 0),
              "pwrmgt_get_power_fpga_meter() rc=0, resp[0]=0x0, resp_sz=4\n");

    std::vector<uint8_t> expected(256, 0x77);
    expected[0] = 0;
    expected[1] = 1;
    expected[2] = 2;
    expected[3] = 3;
    EXPECT_EQ(block, expected);
    EXPECT_EQ(platform().calls, Calls{"ipmi 20 3A 00 32 04 00 00 00 00 told 0"});
}

TEST_F(RealtimeReadings, MeterBlockOf256BytesIsCopiedWhole) {
    std::vector<uint8_t> bytes(256);
    for (size_t at = 0; at < bytes.size(); ++at) {
        bytes[at] = static_cast<uint8_t>(at);
    }

    EXPECT_EQ(trace_of({.bytes = bytes}, 0),
              "pwrmgt_get_power_fpga_meter() rc=0, resp[0]=0x0, resp_sz=256\n");

    EXPECT_EQ(block, bytes);
}

TEST_F(RealtimeReadings, EmptyMeterBlockWritesNothing) {
    EXPECT_EQ(trace_of({.bytes = {0}, .told = 0}, 0),
              "pwrmgt_get_power_fpga_meter() rc=0, resp[0]=0x0, resp_sz=0\n");

    EXPECT_EQ(block, std::vector<uint8_t>(256, 0x77));
}

TEST_F(RealtimeReadings, MeterIsTracedOnEveryFailure) {
    EXPECT_EQ(trace_of({.bytes = {0xC1, 5}}, 31),
              "pwrmgt_get_power_fpga_meter() rc=0, resp[0]=0xc1, resp_sz=2\n");
    EXPECT_EQ(trace_of({.bytes = {0, 5}, .sent = -7}, 31),
              "pwrmgt_get_power_fpga_meter() rc=-7, resp[0]=0x0, resp_sz=2\n");
    platform().fail(Operation::ipmi, 3, 3);
    EXPECT_EQ(trace_of({}, 31), "pwrmgt_get_power_fpga_meter() rc=3, resp[0]=0x0, resp_sz=0\n");

    EXPECT_EQ(block, std::vector<uint8_t>(256, 0x77));
}

TEST_F(RealtimeReadings, MeterCopiesNoMoreThan256BytesWhateverIsTold) {
    std::vector<uint8_t> bytes(256, 9);
    bytes[0] = 0;

    EXPECT_EQ(trace_of({.bytes = bytes, .told = 257}, 0),
              "pwrmgt_get_power_fpga_meter() rc=0, resp[0]=0x0, resp_sz=257\n");
    EXPECT_EQ(trace_of({.bytes = bytes, .told = 4'294'967'295U}, 0),
              "pwrmgt_get_power_fpga_meter() rc=0, resp[0]=0x0, resp_sz=-1\n");

    EXPECT_EQ(block, bytes);
}

TEST_F(RealtimeReadings, MeterWithoutAnOutputIs1AndPrintsNothing) {
    CapturedOutput output;

    const uint32_t status = pwrmgt_get_power_fpga_meter(nullptr);

    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(status, 1U);
    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(RealtimeReadings, FailingSendOfTheMeterIs31) {
    const auto script = [](Recorder& recorder) { recorder.answer_ipmi({.bytes = {0, 1}}); };
    const auto act = [&] {
        const CapturedOutput silence;
        return pwrmgt_get_power_fpga_meter(block.data());
    };

    // Two bytes are answered; one, none, and three are taken as well.
    EXPECT_EQ(swept_statuses(script, act), (Outcomes{{31, 31, 0, 0, 0}}));
    EXPECT_EQ(sweep_exceptions(script, act), 1U);
}

// -- one GPU

TEST_F(RealtimeReadings, GpuConsumptionIsLittleEndian) {
    platform().answer_ipmi({.bytes = {0, 0x2C, 0x01}});

    EXPECT_EQ(pwrmgt_get_gpu_power_consumption(9, &watts), 0U);

    EXPECT_EQ(watts, 300);
    EXPECT_EQ(platform().calls, Calls{"ipmi 20 3A 00 DB 01 02 09 told 0"});
}

TEST_F(RealtimeReadings, GpuConsumptionOf0StaysZero) {
    platform().answer_ipmi({.bytes = {0, 0, 0}});

    EXPECT_EQ(pwrmgt_get_gpu_power_consumption(255, &watts), 0U);

    EXPECT_EQ(watts, 0);
}

TEST_F(RealtimeReadings, GpuConsumptionWithoutAnOutputIsSentAllTheSame) {
    platform().answer_ipmi({.bytes = {0, 1, 2}});
    platform().answer_ipmi({.bytes = {0xC9, 1, 2}});

    EXPECT_EQ(pwrmgt_get_gpu_power_consumption(0, nullptr), 0U);
    EXPECT_EQ(pwrmgt_get_gpu_power_consumption(0, nullptr), 31U);
}

TEST_F(RealtimeReadings, MeterAndGpuAskNoGate) {
    policy_is_read(2);
    platform().quoril = true;

    EXPECT_NE(trace_of({.bytes = {0}}, 0), "");
    platform().answer_ipmi({.bytes = {0, 1, 2}});
    EXPECT_EQ(pwrmgt_get_gpu_power_consumption(0, &watts), 0U);

    EXPECT_EQ(platform().count("quoril"), 0U);
}

TEST_F(RealtimeReadings, FailingSendOfTheGpuIs31) {
    const auto script = [](Recorder& recorder) { recorder.answer_ipmi({.bytes = {0, 1, 2}}); };
    const auto act = [] {
        uint16_t out = 0;
        return pwrmgt_get_gpu_power_consumption(1, &out);
    };

    // Three bytes are answered; fewer and more are taken as well.
    EXPECT_EQ(swept_statuses(script, act), (Outcomes{{31, 31, 0, 0, 0, 0}}));
    EXPECT_EQ(sweep_exceptions(script, act), 1U);
}

}  // namespace realtime_readings_tests
