// SPDX-License-Identifier: Apache-2.0
// System power from what a trace measures: one number, sums over supplies, or a wall meter.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "loaded.h"
#include "measured_trace.h"

namespace {

using pwrmgt::trace::Reading;

TEST(SystemPower, OneSystemPowerCountsAsAcAndDc) {
    const Reading row = first_row("epoch_s,sys_power_W\n1000,270\n");

    EXPECT_EQ(row.system_ac_w, 270);
    EXPECT_EQ(row.system_dc_w, 270);
}

constexpr std::string_view kTwoSupplies =
    "epoch_s,sys_power_W,psu1_ac_in_W,psu1_dc_out_W,psu2_ac_in_W,psu2_dc_out_W\n";

TEST(SystemPower, SystemDcIsTheSumOverTheSupplies) {
    const Reading row = first_row(std::string(kTwoSupplies) + "1000,270,95,80,160,145\n");

    EXPECT_EQ(row.system_ac_w, 270);
    EXPECT_EQ(row.system_dc_w, 225);
    EXPECT_EQ(row.supplies[0].ac_in_w, 95);
    EXPECT_EQ(row.supplies[0].dc_out_w, 80);
    EXPECT_EQ(row.supplies[1].ac_in_w, 160);
    EXPECT_EQ(row.supplies[1].dc_out_w, 145);
}

TEST(SystemPower, RowWithoutOneSupplyValueHasNoSystemPower) {
    const Reading row = first_row(std::string(kTwoSupplies) + "1000,270,95,80,,145\n");

    EXPECT_EQ(row.system_ac_w, std::nullopt);
    EXPECT_EQ(row.system_dc_w, std::nullopt);
    EXPECT_EQ(row.supplies[1].ac_in_w, std::nullopt);
    EXPECT_EQ(row.supplies[1].dc_out_w, 145);
}

TEST(SystemPower, RowWithSuppliesButNoSystemPowerHasNeitherAcNorDc) {
    const Reading row = first_row(std::string(kTwoSupplies) + "1000,,95,80,160,145\n");

    EXPECT_EQ(row.system_ac_w, std::nullopt);
    EXPECT_EQ(row.system_dc_w, std::nullopt);
}

TEST(SystemPower, SuppliesWithoutDcColumnsLeaveOneSystemPower) {
    const Reading row = first_row("epoch_s,sys_power_W,psu1_ac_in_W\n1000,270,280\n");

    EXPECT_EQ(row.system_ac_w, 270);
    EXPECT_EQ(row.system_dc_w, 270);
    EXPECT_EQ(row.supplies[0].dc_out_w, std::nullopt);
}

TEST(SystemPower, OneSupplyWithoutADcColumnLeavesNoSystemPower) {
    const Reading row = first_row(
        "epoch_s,sys_power_W,psu1_ac_in_W,psu1_dc_out_W,psu2_ac_in_W\n1000,270,95,80,160\n");

    EXPECT_EQ(row.system_ac_w, std::nullopt);
    EXPECT_EQ(row.system_dc_w, std::nullopt);
}

TEST(SystemPower, SumAbove65534WattsIsNoSystemPower) {
    const Reading row = first_row(std::string(kTwoSupplies) + "1000,270,95,65534,160,1\n");

    EXPECT_EQ(row.system_ac_w, std::nullopt);
    EXPECT_EQ(row.system_dc_w, std::nullopt);
}

TEST(SystemPower, SupplyCountIsTheHighestNumberedColumn) {
    EXPECT_EQ(loaded("epoch_s,sys_power_W\n1,2\n").supply_count(), 0u);
    EXPECT_EQ(loaded(std::string(kTwoSupplies) + "1,2,3,4,5,6\n").supply_count(), 2u);
    EXPECT_EQ(loaded("epoch_s,psu12_dc_out_W\n1,2\n").supply_count(), 12u);
}

constexpr std::string_view kTwoProbes = "epoch_s,probe1_active_power_W,probe2_active_power_W\n";

TEST(SystemPower, WallMeterGivesAcPerSupplyAndLeavesItsDcUnknown) {
    const Reading row = first_row(std::string(kTwoProbes) + "1000,28.5,29.4\n");

    EXPECT_EQ(row.supplies[0].ac_in_w, 29);
    EXPECT_EQ(row.supplies[1].ac_in_w, 29);
    EXPECT_EQ(row.supplies[0].dc_out_w, std::nullopt);
    EXPECT_EQ(row.supplies[1].dc_out_w, std::nullopt);
}

TEST(SystemPower, WallMeterSumIsTheOneSystemPower) {
    const Reading row = first_row(std::string(kTwoProbes) + "1000,28,30\n");

    EXPECT_EQ(row.system_ac_w, 58);
    EXPECT_EQ(row.system_dc_w, 58);
}

TEST(SystemPower, WallMeterRowWithoutOneProbeHasNoSystemPower) {
    const Reading row = first_row(std::string(kTwoProbes) + "1000,28,\n");

    EXPECT_EQ(row.system_ac_w, std::nullopt);
    EXPECT_EQ(row.system_dc_w, std::nullopt);
    EXPECT_EQ(row.supplies[0].ac_in_w, 28);
}

}  // namespace
