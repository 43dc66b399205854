// SPDX-License-Identifier: Apache-2.0
// Readings of the firmware and of a trace. This program is its own IPMI transport.
#include "source.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>

#include "ipmiraw.h"
#include "stand_ins.h"

namespace {

std::array<std::uint8_t, 17> g_answer{};
int g_send_result = 0;

}  // namespace

int send_ipmi_cmd(const std::uint8_t*, std::uint32_t*, std::uint8_t* response,
                  std::uint32_t* response_length) {
    std::copy(g_answer.begin(), g_answer.end(), response);
    *response_length = static_cast<std::uint32_t>(g_answer.size());
    return g_send_result;
}

namespace pwrmgt::pwrmgtd::test {
namespace {

class FirmwareSourceTest : public testing::Test {
protected:
    void SetUp() override {
        g_power_policy_flag = 0;
        g_send_result = 0;
        g_answer = {0, 0x2C, 0x01, 0x0E, 0x01, 60, 0, 30, 0, 10, 20, 30, 40, 0, 0, 0, 0};
    }

    CollectingLog log;
    FirmwareSource source{log};
};

TEST_F(FirmwareSourceTest, AnAnswerIsAReading) {
    const Reading reading = source.read(0);

    EXPECT_EQ(reading.sys_ac_w, 300);
    EXPECT_EQ(reading.sys_dc_w, 270);
    EXPECT_EQ(reading.cpu_w, 60);
    EXPECT_EQ(reading.mem_w, 30);
    EXPECT_EQ(reading.sys_pct, 10);
    EXPECT_EQ(reading.cpu_pct, 20);
    EXPECT_EQ(reading.mem_pct, 30);
    EXPECT_EQ(reading.io_pct, 40);
    EXPECT_EQ(reading.supplies[0].ac_w, std::nullopt);
}

TEST_F(FirmwareSourceTest, TellsOfNoSupply) {
    EXPECT_EQ(source.supplies(), 0U);
    EXPECT_EQ(source.read(0).supply_states[0].present, std::nullopt);
}

TEST_F(FirmwareSourceTest, MarkersAreMissingReadings) {
    g_answer = {0,    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                0xFF, 0xFF, 0xFF, 0xFF, 0,    0,    0,    0};

    const Reading reading = source.read(0);

    EXPECT_EQ(reading.sys_ac_w, std::nullopt);
    EXPECT_EQ(reading.sys_dc_w, std::nullopt);
    EXPECT_EQ(reading.cpu_w, std::nullopt);
    EXPECT_EQ(reading.mem_w, std::nullopt);
    EXPECT_EQ(reading.sys_pct, std::nullopt);
    EXPECT_EQ(reading.io_pct, std::nullopt);
}

TEST_F(FirmwareSourceTest, ARefusalIsAMissingReadingAndSaidOnce) {
    g_answer[0] = 0xC1;

    EXPECT_EQ(source.read(0).sys_dc_w, std::nullopt);
    EXPECT_EQ(source.read(1).sys_dc_w, std::nullopt);

    EXPECT_EQ(log.lines.size(), 1U);
    EXPECT_EQ(log.count("pwrmgt_get_realtime_powers: status 31"), 1U);
}

TEST_F(FirmwareSourceTest, AnExchangeThatFailsIsAMissingReadingUntilItWorks) {
    g_send_result = -1;
    EXPECT_EQ(source.read(0).sys_dc_w, std::nullopt);

    g_send_result = 0;
    EXPECT_EQ(source.read(1).sys_dc_w, 270);

    EXPECT_EQ(log.count("works again"), 1U);
}

trace::Reading measured(std::int64_t epoch_s) {
    trace::Reading row;
    row.epoch_s = epoch_s;
    row.system_ac_w = 300;
    row.system_dc_w = 270;
    row.cpu_w = 60;
    row.mem_w = 30;
    row.supplies[3] = {41, 40};
    row.supplies[4] = {51, 50};
    row.sys_pct = 10;
    row.io_pct = 40;
    return row;
}

TEST(TraceReading, TakesEveryQuantityOver) {
    const trace::Reading row = measured(0);

    const Reading reading = reading_of(&row);

    EXPECT_EQ(reading.sys_ac_w, 300);
    EXPECT_EQ(reading.sys_dc_w, 270);
    EXPECT_EQ(reading.cpu_w, 60);
    EXPECT_EQ(reading.mem_w, 30);
    EXPECT_EQ(reading.supplies[3].ac_w, 41);
    EXPECT_EQ(reading.supplies[3].dc_w, 40);
    EXPECT_EQ(reading.sys_pct, 10);
    EXPECT_EQ(reading.cpu_pct, std::nullopt);
    EXPECT_EQ(reading.io_pct, 40);
}

TEST(TraceReading, StatesOfSuppliesAreTakenOver) {
    trace::Reading row = measured(0);
    row.supply_states[3] = {true, false, true, 16, 110, 2000, 1800};
    row.supply_states[4].present = false;

    const Reading reading = reading_of(&row);

    EXPECT_EQ(reading.supply_states[3].present, true);
    EXPECT_EQ(reading.supply_states[3].ac_lost, false);
    EXPECT_EQ(reading.supply_states[3].fault, true);
    EXPECT_EQ(reading.supply_states[3].voltage_class, 16);
    EXPECT_EQ(reading.supply_states[3].input_label_w, 2000);
    EXPECT_EQ(reading.supply_states[3].output_label_w, 1800);
    EXPECT_EQ(reading.supply_states[4].present, false);
    EXPECT_EQ(reading.supply_states[0].present, std::nullopt);
}

TEST(TraceReading, AVoltageClassFollowsFromVoltsWhereNoneIsTold) {
    trace::Reading row = measured(0);
    row.supply_states[0].input_v = 232;
    row.supply_states[1].input_v = 110;
    row.supply_states[2].input_v = 12;

    const Reading reading = reading_of(&row);

    EXPECT_EQ(reading.supply_states[0].voltage_class, 0);
    EXPECT_EQ(reading.supply_states[1].voltage_class, 1);
    EXPECT_EQ(reading.supply_states[2].voltage_class, std::nullopt);
}

TEST(TraceReading, NoRowIsAMissingReading) {
    EXPECT_EQ(reading_of(nullptr).supply_states[0].present, std::nullopt);
    EXPECT_EQ(reading_of(nullptr).sys_dc_w, std::nullopt);
}

TEST(TraceSource, PlaysFromMidnightAndStartsOver) {
    constexpr std::int64_t kMidnight = 1748995200;
    trace::Reading second = measured(1060);
    second.cpu_w = 99;
    TraceSource source(trace::Trace({measured(1000), second}, 4, 0), "day.csv");

    EXPECT_EQ(source.read(kMidnight).cpu_w, 60);
    EXPECT_EQ(source.read(kMidnight + 59).cpu_w, 60);
    EXPECT_EQ(source.read(kMidnight + 60).cpu_w, 99);
    EXPECT_EQ(source.read(kMidnight + 61).cpu_w, 60);
    EXPECT_EQ(source.name(), "trace day.csv");
    EXPECT_EQ(source.supplies(), 4U);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
