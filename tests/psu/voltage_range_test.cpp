// SPDX-License-Identifier: Apache-2.0
// The input-voltage range of one supply.
#include "psu_test.h"

using namespace pwrmgt::test;

namespace {

struct Range {
    uint32_t type = 7;
    uint16_t low = 7;
    uint16_t high = 7;
};

Row fields(const Range& range) {
    return {range.type, range.low, range.high};
}

}  // namespace

class VoltageRange : public PsuTest {
protected:
    uint32_t ask(int32_t bay) {
        return pwrmgt_get_psu_voltage_range(bay, &range.type, &range.low, &range.high);
    }
    Range range;
};

TEST_F(VoltageRange, EveryClassHasItsRange) {
    for (int64_t voltage = 0; voltage < 256; ++voltage) {
        script_supplies({supply_with(1, kVoltage, voltage)});
        const bool known = voltage == 0 || voltage == 1 || voltage == 16;

        EXPECT_EQ(ask(1), known ? 0U : 31U) << voltage;

        EXPECT_EQ(fields(range), (voltage == 0    ? Row{0, 200, 240}
                                  : voltage == 1  ? Row{0, 100, 127}
                                  : voltage == 16 ? Row{1, 240, 240}
                                                  : Row{15, 0, 0}))
            << voltage;
    }
}

TEST_F(VoltageRange, BayIsTheRowsPlace) {
    script_supplies({supply_with(9, kVoltage, 16), supply_with(8, kVoltage, 1)});

    EXPECT_EQ(ask(2), 0U);

    EXPECT_EQ(fields(range), (Row{0, 100, 127}));
    EXPECT_EQ(platform().calls, supplies_read(2));
}

TEST_F(VoltageRange, BayOutsideTheTableIsRefusedWithNothingWritten) {
    script_supplies({good_supply(1), good_supply(2)});

    for (const int32_t bay : {0, -1, 3, 12, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(ask(bay), 19U) << bay;
    }
    EXPECT_EQ(fields(range), (Row{7, 7, 7}));

    EXPECT_EQ(ask(2), 0U);
}

TEST_F(VoltageRange, BayAboveTwelveHasNoneHoweverManyRowsThereAre) {
    script_supplies(bays_of_pattern(14, 0x3FFF));

    EXPECT_EQ(ask(12), 0U);
    EXPECT_EQ(ask(13), 19U);
    EXPECT_EQ(ask(14), 19U);
}

TEST_F(VoltageRange, EmptyBayIsRefusedWithNothingWritten) {
    script_supplies({good_supply(1), supply_with(2, kId, 15), supply_with(3, kPresent, 0)});

    EXPECT_EQ(ask(2), 3U);
    EXPECT_EQ(ask(3), 3U);

    EXPECT_EQ(fields(range), (Row{7, 7, 7}));
}

TEST_F(VoltageRange, DefectiveSupplyHasARangeAllTheSame) {
    script_supplies({good_supply(1), {2, 15, 1, 1, 1, 65535, 65535}});

    EXPECT_EQ(ask(2), 0U);

    EXPECT_EQ(fields(range), (Row{0, 100, 127}));
}

TEST_F(VoltageRange, AnyNullPointerIsRefusedBeforeAnyCall) {
    EXPECT_EQ(pwrmgt_get_psu_voltage_range(1, nullptr, &range.low, &range.high), 1U);
    EXPECT_EQ(pwrmgt_get_psu_voltage_range(1, &range.type, nullptr, &range.high), 1U);
    EXPECT_EQ(pwrmgt_get_psu_voltage_range(1, &range.type, &range.low, nullptr), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_EQ(fields(range), (Row{7, 7, 7}));
}

TEST_F(VoltageRange, CodeOfTheReaderComesBackEvenForABayOutOfRange) {
    script_supplies(bays_of_pattern(2, 0));
    EXPECT_EQ(ask(1), 17U);
    EXPECT_EQ(ask(0), 17U);

    script_supplies({});
    EXPECT_EQ(ask(1), 8U);

    platform().quoril = true;
    EXPECT_EQ(ask(1), 10U);

    EXPECT_EQ(fields(range), (Row{7, 7, 7}));
}

TEST_F(VoltageRange, EachFailureHasItsStatus) {
    const auto script = [](Recorder&) {
        fresh_process();
        script_policy(policy_with(0, 1));
        script_supplies({good_supply(1)});
    };
    const auto act = [&] { return ask(1); };

    // Open, select, row count; step and columns of the one row.
    EXPECT_EQ(
        swept_statuses(script, act),
        in_turn({policy_outcomes(), {{2}, {3}, {8, 8, 8, 0}}, each_of(5, 17), {{31}, {0}, {0}}}));
    EXPECT_EQ(sweep_exceptions(script, act), 30U);
}
