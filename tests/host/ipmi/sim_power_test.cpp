// SPDX-License-Identifier: Apache-2.0
#include "ipmi/sim_power.h"

#include "sim_test.h"

namespace {

using pwrmgt::ipmi::sim::bent;
using pwrmgt::ipmi::sim::State;
using pwrmgt::trace::Reading;

Reading measured() {
    Reading reading;
    reading.system_ac_w = 1270;
    reading.system_dc_w = 1225;
    reading.cpu_w = 600;
    reading.mem_w = 300;
    reading.supplies[0] = {1280, 1225};
    reading.supplies[1].ac_in_w = 635;
    reading.cpu_pct = 40;
    return reading;
}

State capped_at(std::uint16_t cap_w) {
    State state;
    state.cap = {1, 1, cap_w};
    return state;
}

TEST(SimPower, CapAtTheDrawChangesNothing) {
    const Reading reading = bent(measured(), capped_at(1270));

    EXPECT_EQ(reading.system_ac_w, 1270);
    EXPECT_EQ(reading.system_dc_w, 1225);
    EXPECT_EQ(reading.cpu_w, 600);
    EXPECT_EQ(reading.supplies[0].ac_in_w, 1280);
}

TEST(SimPower, CapBelowTheDrawIsBorneByTheProcessors) {
    const Reading reading = bent(measured(), capped_at(1000));

    EXPECT_EQ(reading.system_ac_w, 1000);
    EXPECT_EQ(reading.system_dc_w, 964);
    EXPECT_EQ(reading.cpu_w, 339);
    EXPECT_EQ(reading.mem_w, 300);
    EXPECT_EQ(reading.cpu_pct, 40);
}

TEST(SimPower, MemoryBearsWhatTheProcessorsCannot) {
    const Reading reading = bent(measured(), capped_at(500));

    EXPECT_EQ(reading.system_ac_w, 500);
    EXPECT_EQ(reading.system_dc_w, 482);
    EXPECT_EQ(reading.cpu_w, 0);
    EXPECT_EQ(reading.mem_w, 157);
}

TEST(SimPower, SuppliesFallInTheProportionOfTheSystem) {
    const Reading reading = bent(measured(), capped_at(635));

    EXPECT_EQ(reading.supplies[0].ac_in_w, 640);
    EXPECT_EQ(reading.supplies[0].dc_out_w, 612);
    EXPECT_EQ(reading.supplies[1].ac_in_w, 317);
    EXPECT_EQ(reading.supplies[1].dc_out_w, std::nullopt);
}

TEST(SimPower, CapThatIsOffChangesNothing) {
    State state = capped_at(500);
    state.cap.enable = 0;

    EXPECT_EQ(bent(measured(), state).system_ac_w, 1270);
}

TEST(SimPower, WhatIsNotMeasuredStaysWithoutAReading) {
    Reading without_cpu = measured();
    without_cpu.cpu_w.reset();
    Reading nothing;

    const Reading reading = bent(without_cpu, capped_at(1000));

    EXPECT_EQ(reading.system_ac_w, 1000);
    EXPECT_EQ(reading.cpu_w, std::nullopt);
    EXPECT_EQ(reading.mem_w, 39);
    EXPECT_EQ(bent(nothing, capped_at(100)).system_ac_w, std::nullopt);
    EXPECT_EQ(bent(nothing, capped_at(100)).cpu_w, std::nullopt);
}

TEST(SimPower, ProcessorAboveItsCapDrawsItsCap) {
    State state;
    state.cpus = 4;
    state.cpu_cap_w[0] = 100;
    state.cpu_cap_w[1] = 150;

    const Reading reading = bent(measured(), state);

    EXPECT_EQ(reading.cpu_w, 550);
    EXPECT_EQ(reading.system_dc_w, 1175);
    EXPECT_EQ(reading.system_ac_w, 1218);
    EXPECT_EQ(reading.mem_w, 300);
}

TEST(SimPower, FirstProcessorsShareWhatIsLeftOver) {
    State state;
    state.cpus = 7;  // 86 W for the first five, 85 W for the others
    state.cpu_cap_w.fill(85);

    EXPECT_EQ(bent(measured(), state).cpu_w, 595);
}

TEST(SimPower, PowerOfZeroIsNotDivided) {
    Reading off = measured();
    off.system_ac_w = 200;
    off.system_dc_w = 0;
    off.cpu_w = 10;
    State state = capped_at(100);
    state.cpu_cap_w.fill(1);

    const Reading reading = bent(off, state);

    EXPECT_EQ(reading.cpu_w, 4);
    EXPECT_EQ(reading.system_dc_w, 0);
    EXPECT_EQ(reading.system_ac_w, 100);
}

TEST(SimPower, LargestReadingsDoNotOverflow) {
    Reading largest = measured();
    largest.system_ac_w = 65534;
    largest.system_dc_w = 65534;

    const Reading reading = bent(largest, capped_at(65533));

    EXPECT_EQ(reading.system_ac_w, 65533);
    EXPECT_EQ(reading.system_dc_w, 65533);
    EXPECT_EQ(reading.cpu_w, 599);
}

}  // namespace
