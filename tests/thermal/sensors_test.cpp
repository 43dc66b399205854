// SPDX-License-Identifier: Apache-2.0
// The number of memory modules per socket: where it comes from and what it folds.
#include "thermal_test.h"

using namespace pwrmgt::test;

class Sensors : public BucketTest {
protected:
    // The memory slot that takes a module, or -1.
    int slot_of_module(int64_t instance) {
        samples = grid_of(4, 0xFF);
        samples[0].tm = 600;
        walk({{600, 3, instance, 33}});
        int found = -1;
        for (int slot = 0; slot < 8; ++slot) {
            if (samples[0].memory[slot].max == 33) found = slot;
        }
        return found;
    }
};

TEST_F(Sensors, UnreadablePropertyFoldsSixteenModulesPerSocket) {
    EXPECT_EQ(slot_of_module(1), 0);
    EXPECT_EQ(slot_of_module(16), 0);
    EXPECT_EQ(slot_of_module(17), 1);
    EXPECT_EQ(slot_of_module(32), 1);
    EXPECT_EQ(slot_of_module(33), 2);
    EXPECT_EQ(slot_of_module(112), 6);
    EXPECT_EQ(slot_of_module(113), 7);
    EXPECT_EQ(slot_of_module(128), 7);
    EXPECT_EQ(slot_of_module(129), -1);
}

TEST_F(Sensors, PropertySaysHowManyModulesFold) {
    platform().set_property(kModulesPerSocket, 6);

    EXPECT_EQ(slot_of_module(6), 0);
    EXPECT_EQ(slot_of_module(7), 1);
    EXPECT_EQ(slot_of_module(48), 7);
    EXPECT_EQ(slot_of_module(49), -1);
}

TEST_F(Sensors, OneModulePerSocketIsItsOwnSlot) {
    platform().set_property(kModulesPerSocket, 1);

    EXPECT_EQ(slot_of_module(1), 0);
    EXPECT_EQ(slot_of_module(8), 7);
    EXPECT_EQ(slot_of_module(9), -1);
}

TEST_F(Sensors, GreatestPropertyFolds255Modules) {
    platform().set_property(kModulesPerSocket, 255);

    EXPECT_EQ(slot_of_module(255), 0);
    EXPECT_EQ(slot_of_module(256), 1);
    EXPECT_EQ(slot_of_module(2040), 7);
    EXPECT_EQ(slot_of_module(2041), -1);
}

TEST_F(Sensors, PropertyOfZeroCountsAsUnreadable) {
    platform().set_property(kModulesPerSocket, 0);

    EXPECT_EQ(slot_of_module(16), 0);
    EXPECT_EQ(slot_of_module(17), 1);
}

TEST_F(Sensors, AnyResultButZeroOfThePropertyReadCountsAsUnreadable) {
    for (const int code : {-1, 1, 9, 255}) {
        platform().reset();
        platform().set_property(kModulesPerSocket, 4);
        platform().fail(Operation::property, code);

        EXPECT_EQ(slot_of_module(16), 0) << code;
    }
}

TEST_F(Sensors, PropertyIsReadAnewByEachWalk) {
    platform().set_property(kModulesPerSocket, 4);
    EXPECT_EQ(slot_of_module(9), 2);

    platform().set_property(kModulesPerSocket, 8);
    EXPECT_EQ(slot_of_module(9), 1);

    platform().set_property(kModulesPerSocket, 9);
    EXPECT_EQ(slot_of_module(9), 0);
}
