// SPDX-License-Identifier: Apache-2.0
// Supplies out of PMBus chips: who they are, how they are, and how they come and go.
#include "kernel_supplies.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>

#include "kernel_fixture.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

class KernelSuppliesTest : public KernelTest {
protected:
    void set(const std::string& file, const std::string& text) const {
        write("sys/class/hwmon/hwmon0/" + file, text);
    }
    // Supply 1 as it is now.
    SupplyState now(KernelSource& source) { return source.read(0).supply_states[0]; }
};

TEST_F(KernelSuppliesTest, ASupplyTellsItsPowerStateVoltageAndLabels) {
    supply("hwmon0", "7-0058", 220);
    KernelSource source = make({});

    const Reading reading = source.read(0);

    EXPECT_EQ(source.supplies(), 1U);
    EXPECT_EQ(reading.supplies[0].ac_w, 220);
    EXPECT_EQ(reading.supplies[0].dc_w, 200);
    const SupplyState& state = reading.supply_states[0];
    EXPECT_EQ(state.present, true);
    EXPECT_EQ(state.ac_lost, false);
    EXPECT_EQ(state.fault, false);
    EXPECT_EQ(state.voltage_class, 0);
    EXPECT_EQ(state.input_label_w, 2000);
    EXPECT_EQ(state.output_label_w, 1800);
    EXPECT_EQ(reading.supply_states[1].present, std::nullopt);
    EXPECT_EQ(log.count("supply 1 is 7-0058, pmbus"), 1U);
}

TEST_F(KernelSuppliesTest, OutputsAreAddedUp) {
    supply("hwmon0", "7-0058", 220);
    set("power3_label", "pout2");
    set("power3_input", "12000000");
    KernelSource source = make({});

    EXPECT_EQ(source.read(0).supplies[0].dc_w, 212);
}

TEST_F(KernelSuppliesTest, AnInputIsLostByItsVoltsOrItsAlarm) {
    supply("hwmon0", "7-0058", 220);
    KernelSource source = make({});

    set("in1_input", "29000");
    EXPECT_EQ(now(source).ac_lost, true);
    EXPECT_EQ(now(source).fault, false);
    set("in1_input", "110000");
    EXPECT_EQ(now(source).ac_lost, false);
    EXPECT_EQ(now(source).voltage_class, 1);
    set("in1_lcrit_alarm", "1");
    EXPECT_EQ(now(source).ac_lost, true);
    EXPECT_EQ(now(source).fault, false);
}

TEST_F(KernelSuppliesTest, AFaultIsThatOfAnOutputOrAPart) {
    supply("hwmon0", "7-0058", 220);
    KernelSource source = make({});

    set("in2_lcrit_alarm", "1");
    EXPECT_EQ(now(source).fault, true);
    set("in2_lcrit_alarm", "0");
    EXPECT_EQ(now(source).fault, false);
    set("fan1_fault", "1");
    EXPECT_EQ(now(source).fault, true);
    EXPECT_EQ(now(source).ac_lost, false);
}

TEST_F(KernelSuppliesTest, ASupplyWithoutAnAnswerIsGoneAfterThreeReadings) {
    supply("hwmon0", "7-0058", 220);
    KernelSource source = make({});
    EXPECT_EQ(now(source).present, true);

    for (const char* file : {"in1_input", "power1_input", "power2_input"}) {
        set(file, "");
    }
    EXPECT_EQ(now(source).present, std::nullopt);
    EXPECT_EQ(now(source).present, std::nullopt);
    EXPECT_EQ(now(source).present, false);
    EXPECT_EQ(now(source).present, false);

    set("power1_input", "100000000");
    EXPECT_EQ(now(source).present, true);
}

TEST_F(KernelSuppliesTest, ASupplyWhoseDriverIsGoneIsNotThere) {
    supply("hwmon0", "7-0058", 220);
    supply("hwmon1", "7-0059", 180);
    KernelSource source = make({});

    remove("sys/class/hwmon/hwmon0");
    const Reading reading = read_after(source, 30);

    EXPECT_EQ(reading.supply_states[0].present, false);
    EXPECT_EQ(reading.supply_states[1].present, true);
    EXPECT_EQ(reading.sys_ac_w, 180);
}

TEST_F(KernelSuppliesTest, SuppliesAreNumberedByTheNaturalOrderOfTheirDevices) {
    supply("hwmon0", "10-0058", 300);
    supply("hwmon1", "7-0059", 200);
    supply("hwmon10", "7-0058", 100);
    KernelSource source = make({});

    const Reading reading = source.read(0);

    EXPECT_EQ(reading.supplies[0].ac_w, 100);
    EXPECT_EQ(reading.supplies[1].ac_w, 200);
    EXPECT_EQ(reading.supplies[2].ac_w, 300);
}

TEST_F(KernelSuppliesTest, ASupplyThatComesLaterTakesTheNextNumber) {
    supply("hwmon0", "7-0059", 200);
    KernelSource source = make({});
    supply("hwmon1", "7-0058", 100);

    EXPECT_EQ(read_after(source, 29).supplies[1].ac_w, std::nullopt);
    const Reading reading = read_after(source, 1);

    EXPECT_EQ(reading.supplies[0].ac_w, 200);
    EXPECT_EQ(reading.supplies[1].ac_w, 100);
}

TEST_F(KernelSuppliesTest, NamedDevicesKeepTheirNumbersWhetherTheyAreThereOrNot) {
    supply("hwmon0", "7-0058", 100);
    KernelSource source = make({"7-0059", "7-0058"});

    const Reading reading = source.read(0);

    EXPECT_EQ(source.supplies(), 2U);
    EXPECT_EQ(reading.supply_states[0].present, false);
    EXPECT_EQ(reading.supplies[1].ac_w, 100);
}

TEST_F(KernelSuppliesTest, ARegulatorIsNoSupply) {
    chip("hwmon0", "8-0040",
         {{"name", "tps53679"},
          {"in1_label", "vin"},
          {"in1_input", "12000"},
          {"power1_label", "pin"},
          {"power1_input", "50000000"},
          {"power2_label", "pout1"},
          {"power2_input", "45000000"}});
    chip("hwmon1", "coretemp.0", {{"name", "coretemp"}, {"temp1_input", "40000"}});
    KernelSource source = make({});

    EXPECT_EQ(source.supplies(), 0U);
    EXPECT_EQ(source.read(0).sys_ac_w, std::nullopt);
}

TEST_F(KernelSuppliesTest, WhatASupplyDoesNotTellIsNotKnownOrTakenForSound) {
    chip("hwmon0", "7-0058",
         {{"name", "pmbus"}, {"power1_label", "pin"}, {"power1_input", "100499999"}});
    KernelSource source = make({"7-0058"});

    const Reading reading = source.read(0);

    EXPECT_EQ(reading.supplies[0].ac_w, 100);
    EXPECT_EQ(reading.supplies[0].dc_w, std::nullopt);
    const SupplyState& state = reading.supply_states[0];
    EXPECT_EQ(state.ac_lost, false);
    EXPECT_EQ(state.fault, false);
    EXPECT_EQ(state.voltage_class, std::nullopt);
    EXPECT_EQ(state.output_label_w, std::nullopt);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
