// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "sim_test.h"
#include "support/second_process.h"

namespace {

constexpr const char* kTrace =
    "epoch_s,sdr_rows,sys_power_W,psu1_ac_in_W,psu1_dc_out_W,cpu_power_W,mem_power_W,"
    "sys_util_pct,cpu_util_pct,mem_util_pct,io_util_pct\n"
    "1000,9,1270,1280,1225,600,300,11,12,13,14\n"
    "1060,9,,,,,,,,,\n"
    "1120,0,,,,,,,,,\n"
    "1180,9,400,410,390,61,31,0,100,0,1\n";

class FirmwareSim : public testing::Test {
protected:
    FirmwareSim() {
        clock_s = kMidnight;
        log_lines.clear();
    }

    TempFile file_{kTrace};
    EnvironmentVariable runtime_{"VEKDB_RUNTIME_DIR", file_.directory() + "/run"};
    EnvironmentVariable transport_{"VEKDB_IPMI", "sim"};
    EnvironmentVariable trace_{"VEKDB_SIM_TRACE", file_.path()};
};

TEST_F(FirmwareSim, ClockOfThisProgramIsInForce) {
    clock_s = 12345;

    EXPECT_EQ(std::time(nullptr), 12345);
}

TEST_F(FirmwareSim, RealtimeAnswerHasSeventeenBytes) {
    const Exchange exchange = exchanged(kRealtimeRequest);

    EXPECT_EQ(exchange.result, 0);
    EXPECT_EQ(exchange.length, 17u);
    EXPECT_EQ(exchange.completion(), 0x00);
    EXPECT_TRUE(exchange.clean_behind(17));
}

TEST_F(FirmwareSim, RealtimeAnswerHoldsTheRowInForce) {
    clock_s = kMidnight + 42;

    const Exchange exchange = exchanged(kRealtimeRequest);

    EXPECT_EQ(exchange.le16(1), 1270u);
    EXPECT_EQ(exchange.le16(3), 1225u);
    EXPECT_EQ(exchange.le16(5), 600u);
    EXPECT_EQ(exchange.le16(7), 300u);
    EXPECT_EQ(exchange.buffer[9], 11);
    EXPECT_EQ(exchange.buffer[10], 12);
    EXPECT_EQ(exchange.buffer[11], 13);
    EXPECT_EQ(exchange.buffer[12], 14);
}

TEST_F(FirmwareSim, RealtimeAnswerEndsWithTheWallClockTimeOfTheRow) {
    clock_s = kMidnight + 42;
    EXPECT_EQ(exchanged(kRealtimeRequest).le32(13), 1'700'006'400u);

    clock_s = kMidnight + 181 + 3;

    EXPECT_EQ(exchanged(kRealtimeRequest).le32(13), 1'700'006'581u);
}

TEST_F(FirmwareSim, EmptyCellsAreTheNoReadingMarkers) {
    clock_s = kMidnight + 60;

    const Exchange exchange = exchanged(kRealtimeRequest);

    EXPECT_EQ(exchange.completion(), 0x00);
    for (const std::size_t at : {1u, 3u, 5u, 7u})
        EXPECT_EQ(exchange.le16(at), 0xFFFFu) << at;
    for (const std::size_t at : {9u, 10u, 11u, 12u})
        EXPECT_EQ(exchange.buffer[at], 0xFF) << at;
}

TEST_F(FirmwareSim, OutageOfTheSourceIsTheNoReadingMarkersNow) {
    clock_s = kMidnight + 130;

    const Exchange exchange = exchanged(kRealtimeRequest);

    EXPECT_EQ(exchange.completion(), 0x00);
    EXPECT_EQ(exchange.length, 17u);
    EXPECT_EQ(exchange.le16(1), 0xFFFFu);
    EXPECT_EQ(exchange.buffer[12], 0xFF);
    EXPECT_EQ(exchange.le32(13), 1'700'006'530u);
}

TEST_F(FirmwareSim, TraceStartsOverAfterItsLastRow) {
    clock_s = kMidnight + 180;
    EXPECT_EQ(exchanged(kRealtimeRequest).le16(1), 400u);

    clock_s = kMidnight + 181;

    EXPECT_EQ(exchanged(kRealtimeRequest).le16(1), 1270u);
}

TEST_F(FirmwareSim, MeasuredServerDayIsPlayed) {
    const EnvironmentVariable measured(
        "VEKDB_SIM_TRACE", std::string(MEASURED_DATA_DIR) + "/server_4socket_24h_60s.csv");

    const Exchange exchange = exchanged(kRealtimeRequest);

    EXPECT_EQ(exchange.le16(1), 270u);
    EXPECT_EQ(exchange.le16(3), 225u);
    EXPECT_EQ(exchange.le16(5), 60u);
    EXPECT_EQ(exchange.le16(7), 30u);
    EXPECT_EQ(exchange.buffer[9], 0);
}

TEST_F(FirmwareSim, WithoutATraceThereIsNothingToMeasure) {
    const EnvironmentVariable none("VEKDB_SIM_TRACE");

    const Exchange exchange = exchanged(kRealtimeRequest);

    EXPECT_EQ(exchange.result, 0);
    EXPECT_EQ(exchange.length, 1u);
    EXPECT_EQ(exchange.completion(), 0xCB);
    EXPECT_TRUE(log_lines.empty());
}

TEST_F(FirmwareSim, TraceThatCannotBeReadIsNotPresentAndToldOnce) {
    file_.write("epoch_s,sys_power_W\n1000,high\n");

    const Exchange first = exchanged(kRealtimeRequest);
    const Exchange second = exchanged(kRealtimeRequest);

    EXPECT_EQ(first.completion(), 0xCB);
    EXPECT_EQ(second.completion(), 0xCB);
    ASSERT_EQ(log_lines.size(), 1u);
    EXPECT_EQ(log_lines[0],
              "VEKDB_SIM_TRACE: " + file_.path() + ":2: sys_power_W: 'high' is not a number");
}

TEST_F(FirmwareSim, TraceThatIsReplacedIsReadAgain) {
    EXPECT_EQ(exchanged(kRealtimeRequest).le16(1), 1270u);

    file_.write("epoch_s,sys_power_W\n1000,999\n");

    EXPECT_EQ(exchanged(kRealtimeRequest).le16(1), 999u);
}

TEST_F(FirmwareSim, EditedTraceIsSeenAtOnceByAnotherProcess) {
    SecondProcess other(
        [] { return static_cast<std::int64_t>(exchanged(kRealtimeRequest).le16(1)); });
    EXPECT_EQ(other.ask(), 1270);

    file_.write("epoch_s,sys_power_W\n1000,999\n");

    EXPECT_EQ(other.ask(), 999);
    EXPECT_EQ(exchanged(kRealtimeRequest).le16(1), 999u);
}

struct Refusal {
    const char* name;
    std::vector<std::uint8_t> request;
    int completion;
};

class FirmwareSimRefusal : public FirmwareSim, public testing::WithParamInterface<Refusal> {};

TEST_P(FirmwareSimRefusal, IsACompletionCodeAlone) {
    const Exchange exchange = exchanged(GetParam().request);

    EXPECT_EQ(exchange.result, 0);
    EXPECT_EQ(exchange.length, 1u);
    EXPECT_EQ(exchange.completion(), GetParam().completion);
    EXPECT_TRUE(exchange.clean_behind(1));
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Requests, FirmwareSimRefusal, testing::Values(
    Refusal{"RealtimeOf5Bytes", {0x20, 0x3A, 0, 0x32, 0x01}, 0xC7},
    Refusal{"RealtimeOf8Bytes", {0x20, 0x3A, 0, 0x32, 0x01, 0, 0, 0}, 0xC7},
    Refusal{"RealtimeOf10Bytes", {0x20, 0x3A, 0, 0x32, 0x01, 0, 0, 0, 0, 0}, 0xC7},
    Refusal{"RealtimeWithFilling", {0x20, 0x3A, 0, 0x32, 0x01, 0, 0, 0, 1}, 0xCC},
    Refusal{"OtherLun", {0x20, 0x3A, 1, 0x32, 0x01, 0, 0, 0, 0}, 0xC2},
    Refusal{"WithoutOperation", {0x20, 0x3A, 0, 0x32}, 0xC1},
    Refusal{"OtherOperation", {0x20, 0x3A, 0, 0x32, 0x05, 0, 0, 0, 0}, 0xC1},
    Refusal{"OtherCommand", {0x20, 0x3A, 0, 0x33, 0x01, 0, 0, 0, 0}, 0xC1},
    Refusal{"OtherNetworkFunction", {0x20, 0x2E, 0, 0x32, 0x01, 0, 0, 0, 0}, 0xC1}),
    [](const testing::TestParamInfo<Refusal>& test) { return std::string(test.param.name); });
// clang-format on

}  // namespace
