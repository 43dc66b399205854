// SPDX-License-Identifier: Apache-2.0
// The range in which a power cap may lie: stored limits, what widens them, the available power.
#include "psu_test.h"

using namespace pwrmgt::test;

namespace {

const char* const kSelect =
    "query PowerPolicy [CapSoftAc,CapMinAc,CapMaxAc,CapSoftDc,CapMinDc,CapMaxDc,"
    "UnstressAdapterPwr,UnstressHddPwr] where null order null";

// Soft, lowest, highest for AC, the same for DC, adapter, disks.
Row limits(int64_t adapter_w, int64_t hdd_w) {
    return {11, 100, 1000, 22, 200, 2000, adapter_w, hdd_w};
}

}  // namespace

class CappingRanges : public PsuTest {
protected:
    uint32_t ask(int32_t domain) {
        return pwrmgt_get_power_capping_ranges(domain, &soft, &max, &min);
    }
    // The stored limits; the maximum is theirs, as no supply can be told.
    Row range_of(const Row& stored, int32_t domain) {
        platform().answer_rows(std::vector<Row>{stored});
        soft = max = min = 77;
        EXPECT_EQ(ask(domain), 0U);
        return {soft, min, max};
    }
    uint16_t soft = 77;
    uint16_t max = 77;
    uint16_t min = 77;
};

// -- stored limits

TEST_F(CappingRanges, DomainZeroIsAcAndAnyOtherDc) {
    EXPECT_EQ(range_of(limits(0, 0), 0), (Row{0, 100, 1000}));
    for (const int32_t domain : {1, 2, -1, 256, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(range_of(limits(0, 0), domain), (Row{0, 200, 2000})) << domain;
    }
}

TEST_F(CappingRanges, SoftIsAlwaysZero) {
    Row stored = limits(0, 0);
    stored[0] = stored[3] = 65535;

    EXPECT_EQ(range_of(stored, 0)[0], 0);
    EXPECT_EQ(range_of(stored, 1)[0], 0);
}

TEST_F(CappingRanges, FirstRowCounts) {
    platform().answer_rows(std::vector<Row>{limits(0, 0), {9, 9, 9, 9, 9, 9, 9, 9}});

    EXPECT_EQ(ask(0), 0U);

    EXPECT_EQ(min, 100);
    EXPECT_EQ(max, 1000);
}

TEST_F(CappingRanges, UnsetLimitsStay65535) {
    EXPECT_EQ(range_of({0, 65535, 65535, 0, 65535, 65535, 10, 20}, 0), (Row{0, 65535, 65535}));
    EXPECT_EQ(range_of({0, 65535, 1000, 0, 65535, 65535, 10, 20}, 0), (Row{0, 65535, 1030}));
    EXPECT_EQ(range_of({0, 100, 65535, 0, 65535, 65535, 10, 20}, 0), (Row{0, 130, 65535}));
}

// -- widened

TEST_F(CappingRanges, BothUnstressPowersWidenMinimumAndMaximum) {
    EXPECT_EQ(range_of(limits(30, 7), 0), (Row{0, 137, 1037}));
    EXPECT_EQ(range_of(limits(30, 7), 1), (Row{0, 237, 2037}));
}

TEST_F(CappingRanges, UnstressBoundsDiffer) {
    EXPECT_EQ(range_of(limits(549, 351), 0), (Row{0, 1000, 1900}));
    EXPECT_EQ(range_of(limits(550, 351), 0), (Row{0, 100, 1000}));
    EXPECT_EQ(range_of(limits(549, 352), 0), (Row{0, 100, 1000}));
    EXPECT_EQ(range_of(limits(352, 0), 0), (Row{0, 452, 1352}));
}

TEST_F(CappingRanges, OneUnstressPowerOutOfBoundsDisablesBoth) {
    EXPECT_EQ(range_of(limits(550, 0), 0), (Row{0, 100, 1000}));
    EXPECT_EQ(range_of(limits(0, 352), 0), (Row{0, 100, 1000}));
    EXPECT_EQ(range_of(limits(65535, 65535), 0), (Row{0, 100, 1000}));
}

TEST_F(CappingRanges, WideningWrapsIn16Bits) {
    EXPECT_EQ(range_of({0, 65534, 65000, 0, 0, 0, 549, 351}, 0), (Row{0, 898, 364}));
    EXPECT_EQ(range_of({0, 65530, 100, 0, 0, 0, 5, 0}, 0), (Row{0, 65535, 105}));
}

// -- available power

TEST_F(CappingRanges, AvailablePowerIsTheMaximum) {
    script_supplies(bays_of_pattern(2, 3));
    platform().answer_rows(std::vector<Row>{limits(30, 7)});

    EXPECT_EQ(ask(0), 0U);

    EXPECT_EQ(max, 2160);
    EXPECT_EQ(min, 137);
}

TEST_F(CappingRanges, MaximumIsCutTo16Bits) {
    g_psu_config_info = 12;
    script_policy(policy_with(0, 2));
    struct Cut {
        uint32_t bays;
        int64_t label_w;
        uint16_t max;
    };
    // Eight of 8191 W are 65528 W, nine of 7282 W are 65538 W, twelve of 8191 W are 98292 W.
    for (const Cut& cut : {Cut{0xFF, 8191, 65528}, {0x1FF, 7282, 2}, {0xFFF, 8191, 32756}}) {
        script_supplies(bays_of_pattern(12, cut.bays, cut.label_w));
        platform().answer_rows(std::vector<Row>{limits(0, 0)});

        EXPECT_EQ(ask(0), 0U);

        EXPECT_EQ(max, cut.max) << cut.label_w;
    }
}

TEST_F(CappingRanges, AvailablePowerOfZeroIsTheMaximumToo) {
    g_psu_config_info = 12;
    script_policy(policy_with(0, 4));
    script_supplies(bays_of_pattern(12, 0xFFF));
    platform().answer_rows(std::vector<Row>{limits(0, 0)});

    EXPECT_EQ(ask(0), 0U);

    EXPECT_EQ(max, 0);
}

TEST_F(CappingRanges, ModeWithoutAPowerKeepsTheStoredMaximum) {
    script_policy(policy_with(0, 3));
    script_supplies(bays_of_pattern(2, 3));

    EXPECT_EQ(range_of(limits(30, 7), 1), (Row{0, 237, 2037}));
}

// -- calls

TEST_F(CappingRanges, OpensTheDatabaseItself) {
    script_supplies(bays_of_pattern(2, 3));
    platform().answer_rows(std::vector<Row>{limits(0, 0)});

    EXPECT_EQ(ask(0), 0U);

    EXPECT_EQ(
        platform().calls,
        chain({{"quoril", kOpen, kSelect, "row_count", "step", "short_uint 0", "short_uint 1",
                "short_uint 2", "short_uint 6", "short_uint 7", "free_result", "quoril", "quoril"},
               policy_read(),
               {"quoril", "byte /ac/tavn/power/psu_installed",
                "byte /dc/tavn/power/oversubscription_support"},
               policy_read(),
               {"quoril", "byte /ac/tavn/power/psu_config_info",
                "byte /ac/tavn/power/psu_config_info"},
               supplies_read(2),
               supplies_read(2),
               {"close"}}));
}

TEST_F(CappingRanges, DcColumnsAreTheNextThree) {
    policy_is_read();
    platform().answer_rows(std::vector<Row>{limits(0, 0)});

    ask(1);

    const Calls reads = platform().named("short_uint");
    EXPECT_EQ(
        Calls(reads.begin(), reads.begin() + 5),
        (Calls{"short_uint 3", "short_uint 4", "short_uint 5", "short_uint 6", "short_uint 7"}));
}

// -- refused

TEST_F(CappingRanges, AnyNullPointerIsRefusedBeforeTheGate) {
    EXPECT_EQ(pwrmgt_get_power_capping_ranges(0, nullptr, &max, &min), 1U);
    EXPECT_EQ(pwrmgt_get_power_capping_ranges(0, &soft, nullptr, &min), 1U);
    EXPECT_EQ(pwrmgt_get_power_capping_ranges(0, &soft, &max, nullptr), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_EQ((Row{soft, max, min}), (Row{77, 77, 77}));
}

TEST_F(CappingRanges, GateIsAskedWithTheEmptyName) {
    platform().quoril = true;

    EXPECT_EQ(ask(0), 10U);

    EXPECT_EQ(platform().calls, Calls{"quoril"});
}

TEST_F(CappingRanges, EmptyPolicyTableEndsWith8) {
    platform().answer_table("PowerPolicy", {});

    EXPECT_EQ(ask(0), 8U);

    EXPECT_EQ(platform().calls,
              (Calls{"quoril", kOpen, kSelect, "row_count", "free_result", "close"}));
    EXPECT_EQ((Row{soft, max, min}), (Row{77, 77, 77}));
}

TEST_F(CappingRanges, ColumnThatCannotBeReadStaysUnset) {
    for (size_t column = 1; column <= 3; ++column) {
        platform().reset();
        script_policy(policy_with(0, 3));
        platform().answer_rows(std::vector<Row>{limits(30, 7)});
        platform().fail(Operation::column, 1, column);

        EXPECT_EQ(ask(0), 0U);

        EXPECT_EQ((Row{soft, min, max}), (column == 1   ? Row{0, 137, 1037}
                                          : column == 2 ? Row{0, 65535, 1037}
                                                        : Row{0, 137, 65535}));
    }
}

TEST_F(CappingRanges, UnstressPowerThatCannotBeReadIsZero) {
    platform().fail(Operation::column, 1, 4);

    EXPECT_EQ(range_of(limits(30, 7), 0), (Row{0, 107, 1007}));
}

TEST_F(CappingRanges, EachFailureBeforeTheRowHasItsStatusAndAnyLaterIsSuccess) {
    const auto script = [this](Recorder& recorder) {
        soft = max = min = 77;
        fresh_process();
        recorder.answer_rows(std::vector<Row>{limits(0, 0)});
        script_policy(policy_with(0, 0));
        script_supplies(bays_of_pattern(2, 3));
    };
    const auto act = [this] { return ask(0); };

    // Open, select, row count; step and columns of the row, the available power.
    EXPECT_EQ(swept_statuses(script, act),
              in_turn({{{2}, {3}, {8, 8, 8, 0}}, each_of(6 + 118, 0)}));
    sweep_faults(script, act, [&](const Faulted& faulted) {
        if (faulted.status == 0) {
            EXPECT_EQ(soft, 0);
        } else {
            EXPECT_EQ((Row{soft, max, min}), (Row{77, 77, 77}));
        }
    });
    EXPECT_EQ(sweep_exceptions(script, act), 9U + 118U);
}
