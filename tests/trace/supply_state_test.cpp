// SPDX-License-Identifier: Apache-2.0
// What a row says of a supply beside its power, and what is taken for granted where no column says.
#include <gtest/gtest.h>

#include <string>

#include "loaded.h"
#include "measured_trace.h"

namespace {

using pwrmgt::trace::Reading;
using pwrmgt::trace::SupplyState;

// Supply 1 of a file with these columns and these cells behind the time.
SupplyState state_of(const std::string& columns, const std::string& cells) {
    return first_row("epoch_s," + columns + "\n1," + cells + "\n").supply_states[0];
}

TEST(SupplyState, ColumnsAreReadAsTheyStand) {
    const Reading row = first_row(
        "epoch_s,psu12_present,psu12_ac_lost,psu12_fault,psu12_input_class,psu12_input_V,"
        "psu12_label_in_W,psu12_label_out_W\n1,1,1,0,16,231.6,2000,1800\n");

    const SupplyState& state = row.supply_states[11];
    EXPECT_EQ(state.present, true);
    EXPECT_EQ(state.ac_lost, true);
    EXPECT_EQ(state.fault, false);
    EXPECT_EQ(state.input_class, 16);
    EXPECT_EQ(state.input_v, 232);
    EXPECT_EQ(state.label_in_w, 2000);
    EXPECT_EQ(state.label_out_w, 1800);
}

TEST(SupplyState, ASupplyWithPowerIsThereAndSound) {
    for (const char* column : {"psu1_ac_in_W", "psu1_dc_out_W", "probe1_active_power_W"}) {
        const SupplyState state = state_of(column, "0");

        EXPECT_EQ(state.present, true) << column;
        EXPECT_EQ(state.ac_lost, false) << column;
        EXPECT_EQ(state.fault, false) << column;
        EXPECT_EQ(state.input_class, std::nullopt) << column;
        EXPECT_EQ(state.label_out_w, std::nullopt) << column;
    }
}

TEST(SupplyState, ASupplyWithoutAColumnIsNotTold) {
    const SupplyState state = state_of("psu2_ac_in_W", "100");

    EXPECT_EQ(state.present, std::nullopt);
    EXPECT_EQ(state.ac_lost, std::nullopt);
    EXPECT_EQ(state.fault, std::nullopt);
}

TEST(SupplyState, EmptyCellsTellNothing) {
    const SupplyState state =
        state_of("psu1_present,psu1_ac_lost,psu1_fault,psu1_ac_in_W,cpu1_C", ",,,,20");

    EXPECT_EQ(state.present, std::nullopt);
    EXPECT_EQ(state.ac_lost, std::nullopt);
    EXPECT_EQ(state.fault, std::nullopt);
}

TEST(SupplyState, AnEmptyCellOfAColumnIsNotTakenForSound) {
    const SupplyState state = state_of("psu1_ac_in_W,psu1_ac_lost,psu1_fault", "100,,");

    EXPECT_EQ(state.present, true);
    EXPECT_EQ(state.ac_lost, std::nullopt);
    EXPECT_EQ(state.fault, std::nullopt);
}

TEST(SupplyState, ASupplyThatReportsALostInputIsThere) {
    const SupplyState state = state_of("psu1_ac_in_W,psu1_ac_lost", ",1");

    EXPECT_EQ(state.present, true);
    EXPECT_EQ(state.ac_lost, true);
}

TEST(SupplyState, OfASupplyThatIsNotThereNothingElseIsTold) {
    const SupplyState state =
        state_of("psu1_present,psu1_ac_lost,psu1_fault,psu1_label_out_W", "0,1,1,1800");

    EXPECT_EQ(state.present, false);
    EXPECT_EQ(state.ac_lost, std::nullopt);
    EXPECT_EQ(state.fault, std::nullopt);
    EXPECT_EQ(state.label_out_w, std::nullopt);
}

TEST(SupplyState, AnInputBelow30VoltsIsLostUnlessAColumnSaysOtherwise) {
    EXPECT_EQ(state_of("psu1_ac_in_W,psu1_input_V", "0,29.4").ac_lost, true);
    EXPECT_EQ(state_of("psu1_ac_in_W,psu1_input_V", "0,30").ac_lost, false);
    EXPECT_EQ(state_of("psu1_ac_in_W,psu1_input_V", "0,").ac_lost, std::nullopt);
    EXPECT_EQ(state_of("psu1_ac_lost,psu1_input_V", "0,0").ac_lost, false);
}

TEST(SupplyState, VoltsOfAWallMeterAreTheInput) {
    const SupplyState state = state_of("probe1_active_power_W,probe1_voltage_V", "28.0,231.92");

    EXPECT_EQ(state.input_v, 232);
    EXPECT_EQ(state.ac_lost, false);
}

TEST(SupplyState, ValuesThatCannotBeAreNotTold) {
    const SupplyState state =
        state_of("psu1_present,psu1_ac_lost,psu1_input_class,psu1_input_V,psu1_label_out_W",
                 "2,-1,255,1001,65535");

    EXPECT_EQ(state.present, std::nullopt);
    EXPECT_EQ(state.ac_lost, std::nullopt);
    EXPECT_EQ(state.input_class, std::nullopt);
    EXPECT_EQ(state.input_v, std::nullopt);
    EXPECT_EQ(state.label_out_w, std::nullopt);
}

TEST(SupplyState, ARowWithoutAnAnswerTellsNothing) {
    EXPECT_EQ(state_of("sdr_rows,psu1_present,psu1_fault", "0,0,1").present, std::nullopt);
}

TEST(SupplyState, PowerOfASupplyThatIsNotThereIsNoPartOfTheSystem) {
    const Reading row = first_row(
        "epoch_s,sys_power_W,psu1_ac_in_W,psu1_dc_out_W,psu2_present,psu2_ac_in_W,psu2_dc_out_W\n"
        "1,270,95,80,0,,145\n");

    EXPECT_EQ(row.system_ac_w, 270);
    EXPECT_EQ(row.system_dc_w, 80);
    EXPECT_EQ(row.supplies[1].dc_out_w, std::nullopt);
}

TEST(SupplyState, APresenceColumnAloneIsASupply) {
    EXPECT_EQ(loaded("epoch_s,psu3_present\n1,0\n").supply_count(), 3u);
}

}  // namespace
