// SPDX-License-Identifier: Apache-2.0
#include "supply_bays.h"

#include <gmock/gmock.h>

#include <string>

#include "database_fixture.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

class BaysTest : public DatabaseTest {
protected:
    static SupplyState sound() {
        SupplyState state;
        state.present = true;
        state.ac_lost = false;
        state.fault = false;
        return state;
    }
    static Reading told(std::size_t supply, const SupplyState& state) {
        Reading reading;
        reading.supply_states[supply - 1] = state;
        return reading;
    }

    void take(std::size_t supply, const SupplyState& state) {
        tables.show(told(supply, state), 1748995200);
    }
    std::int64_t column(int bay, const char* name) {
        return number("PsuPropertyMem", name, "PsuId=" + std::to_string(bay));
    }
    int rows() { return bays_with("PsuId>0"); }
};

class PropertyTest : public testing::Test {
protected:
    TempFile file_;
    EnvironmentVariable properties_{"VEKDB_PROPS", file_.path()};
};

TEST_F(BaysTest, AStartMakesEveryBayUnknown) {
    EXPECT_TRUE(tables.start_bays({3, {}, {}}));

    EXPECT_EQ(bays_with("Present=15 and InputAcLost=15 and PsuFault=15 and InputVoltage=15 and "
                        "InputLablePower=65535 and OutputLablePower=65535"),
              3);
    EXPECT_EQ(rows(), 3);
}

TEST_F(BaysTest, ABayHoldsWhatTheSourceTells) {
    tables.start_bays({12, {}, {}});
    SupplyState state = sound();
    state.ac_lost = true;
    state.voltage_class = kLowLine;
    state.input_label_w = 2000;
    state.output_label_w = 1800;

    take(12, state);

    EXPECT_EQ(column(12, "Present"), 1);
    EXPECT_EQ(column(12, "InputAcLost"), 1);
    EXPECT_EQ(column(12, "PsuFault"), 0);
    EXPECT_EQ(column(12, "InputVoltage"), 1);
    EXPECT_EQ(column(12, "InputLablePower"), 2000);
    EXPECT_EQ(column(12, "OutputLablePower"), 1800);
    EXPECT_EQ(column(11, "Present"), 15);
}

TEST_F(BaysTest, ABayIsRewrittenOnlyWhenItsSupplyChanges) {
    tables.start_bays({2, {}, {}});
    take(1, sound());
    ASSERT_EQ(raw("UPDATE PsuPropertyMem SET OutputLablePower=7"), 0);

    take(1, sound());
    take(2, sound());
    EXPECT_EQ(column(1, "OutputLablePower"), 7);
    EXPECT_EQ(column(2, "OutputLablePower"), 65535);

    SupplyState failed = sound();
    failed.fault = true;
    take(1, failed);
    EXPECT_EQ(column(1, "OutputLablePower"), 65535);
    EXPECT_EQ(column(1, "PsuFault"), 1);
}

TEST_F(BaysTest, EveryColumnAloneIsAChange) {
    tables.start_bays({1, {}, {}});
    SupplyState state = sound();
    take(1, state);

    state.ac_lost = true;
    take(1, state);
    EXPECT_EQ(column(1, "InputAcLost"), 1);
    state.fault = true;
    take(1, state);
    EXPECT_EQ(column(1, "PsuFault"), 1);
    state.voltage_class = kHighLine;
    take(1, state);
    EXPECT_EQ(column(1, "InputVoltage"), 0);
    state.input_label_w = 900;
    take(1, state);
    EXPECT_EQ(column(1, "InputLablePower"), 900);
    state.output_label_w = 800;
    take(1, state);
    EXPECT_EQ(column(1, "OutputLablePower"), 800);
    state.present = false;
    take(1, state);
    EXPECT_EQ(column(1, "Present"), 0);
}

TEST_F(BaysTest, WhatIsNotToldStays) {
    tables.start_bays({1, {}, {}});
    SupplyState state = sound();
    state.output_label_w = 1800;
    state.ac_lost = true;
    take(1, state);

    tables.show(Reading{}, 1748995201);
    SupplyState fault_only;
    fault_only.fault = true;
    take(1, fault_only);

    EXPECT_EQ(column(1, "Present"), 1);
    EXPECT_EQ(column(1, "InputAcLost"), 1);
    EXPECT_EQ(column(1, "PsuFault"), 1);
    EXPECT_EQ(column(1, "OutputLablePower"), 1800);
}

TEST_F(BaysTest, AnEmptyBayForgetsTheSupplyThatWasThere) {
    tables.start_bays({1, {}, {}});
    SupplyState state = sound();
    state.output_label_w = 1800;
    state.voltage_class = kHighLine;
    take(1, state);

    state.present = false;
    take(1, state);

    EXPECT_EQ(bays_with("PsuId=1 and Present=0 and InputAcLost=15 and PsuFault=15 and "
                        "InputVoltage=15 and OutputLablePower=65535"),
              1);
}

TEST_F(BaysTest, ANewSupplyHasTheLabelsSetUpUntilItTellsItsOwn) {
    tables.start_bays({1, 2000, 1800});
    SupplyState state = sound();
    state.output_label_w = 1600;
    take(1, state);
    EXPECT_EQ(column(1, "InputLablePower"), 2000);
    EXPECT_EQ(column(1, "OutputLablePower"), 1600);

    SupplyState out;
    out.present = false;
    take(1, out);
    take(1, sound());
    EXPECT_EQ(column(1, "OutputLablePower"), 1800);
}

TEST_F(BaysTest, AChangeIsToldOnceInWords) {
    tables.start_bays({2, {}, 1800});
    SupplyState lost = sound();
    lost.ac_lost = true;
    SupplyState out;
    out.present = false;

    take(2, sound());
    take(2, sound());
    take(2, lost);
    take(2, out);

    EXPECT_THAT(log.lines,
                testing::ElementsAre("supply 2: present, AC good, no fault, label 1800 W",
                                     "supply 2: present, AC lost, no fault, label 1800 W",
                                     "supply 2: not there"));
}

TEST_F(BaysTest, WhatTheTableRefusesIsTriedAgain) {
    tables.start_bays({1, {}, {}});
    ASSERT_EQ(raw("DELETE FROM PsuPropertyMem"), 0);
    take(1, sound());
    take(1, sound());
    EXPECT_EQ(log.count("pwrmgt_update_psu_property_table: status 4, the bay has no row"), 1U);

    ASSERT_EQ(raw("INSERT INTO PsuPropertyMem(PsuId) VALUES(1)"), 0);
    take(1, sound());

    EXPECT_EQ(column(1, "Present"), 1);
    EXPECT_EQ(log.count("supply 1: present"), 1U);
}

TEST_F(BaysTest, ASupplyWithoutABayIsToldOnce) {
    tables.start_bays({2, {}, {}});

    take(3, sound());
    take(3, sound());

    EXPECT_EQ(log.count("supplies: supply 3 has no bay, there are 2; --bays tells otherwise"), 1U);
    EXPECT_EQ(rows(), 2);
}

TEST_F(BaysTest, ATableThatIsNotThereIsAFailureToStart) {
    ASSERT_EQ(raw("DROP TABLE PsuPropertyMem"), 0);

    EXPECT_FALSE(tables.start_bays({2, {}, {}}));

    EXPECT_EQ(log.count("pwrmgt_init_psu_property_table: status 3"), 1U);
}

TEST_F(PropertyTest, BaysAreThoseAskedForWhateverIsTold) {
    file_.write("/dc/tavn/dm/planar/0/psu/maxcount = 8\n");

    EXPECT_EQ(bay_count(2, 12), 2);
}

TEST_F(PropertyTest, BaysAreTheGreaterOfWhatPlatformAndSourceTell) {
    file_.write("/dc/tavn/dm/planar/0/psu/maxcount = 8\n");

    EXPECT_EQ(bay_count({}, 0), 8);
    EXPECT_EQ(bay_count({}, 2), 8);
    EXPECT_EQ(bay_count({}, 12), 12);
}

TEST_F(PropertyTest, FourBaysAreAssumedWhereNothingIsTold) {
    EXPECT_EQ(bay_count({}, 0), 4);
    EXPECT_EQ(bay_count({}, 1), 1);
    file_.write("/dc/tavn/dm/planar/0/psu/maxcount = 13\n");
    EXPECT_EQ(bay_count({}, 0), 4);
}

TEST(VoltageClass, IsThatOfTheLineWithATenthOfTolerance) {
    EXPECT_EQ(voltage_class_of(179), std::nullopt);
    EXPECT_EQ(voltage_class_of(180), 0);
    EXPECT_EQ(voltage_class_of(264), 0);
    EXPECT_EQ(voltage_class_of(265), std::nullopt);
    EXPECT_EQ(voltage_class_of(89), std::nullopt);
    EXPECT_EQ(voltage_class_of(90), 1);
    EXPECT_EQ(voltage_class_of(140), 1);
    EXPECT_EQ(voltage_class_of(141), std::nullopt);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
