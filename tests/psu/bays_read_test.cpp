// SPDX-License-Identifier: Apache-2.0
// The supply table read back as one record: counts, gaps, and what refuses the reading.
#include <algorithm>
#include <array>
#include <cstring>

#include "psu_test.h"

using namespace pwrmgt::test;

namespace {

Row fields(const pwrmgt_psu_property_t& p) {
    return {p.psu_id,        p.present,           p.input_ac_lost,     p.psu_fault,
            p.input_voltage, p.input_label_power, p.output_label_power};
}

Row counts(const pwrmgt_psus_property_t& psus) {
    return {psus.psu_count, psus.present_count, psus.healthy_count};
}

pwrmgt_psus_property_t filled_with_sevens() {
    pwrmgt_psus_property_t psus;
    std::memset(&psus, 7, sizeof psus);
    return psus;
}

void expect_untouched(const pwrmgt_psus_property_t& psus) {
    const pwrmgt_psus_property_t sevens = filled_with_sevens();
    EXPECT_EQ(std::memcmp(&psus, &sevens, sizeof psus), 0);
}

uint32_t read_once() {
    pwrmgt_psus_property_t psus;
    return pwrmgt_get_psus_property(&psus);
}

}  // namespace

class BaysRead : public PsuTest {
protected:
    pwrmgt_psus_property_t out = filled_with_sevens();
};

// -- filled

TEST_F(BaysRead, RowsComeBackInTheTablesOrder) {
    script_supplies({{2, 1, 0, 0, 16, 2100, 1900}, {1, 1, 0, 0, 1, 2000, 1800}});

    EXPECT_EQ(pwrmgt_get_psus_property(&out), 0U);

    EXPECT_EQ(counts(out), (Row{2, 2, 2}));
    EXPECT_EQ(fields(out.psu[0]), (Row{2, 1, 0, 0, 16, 2100, 1900}));
    EXPECT_EQ(fields(out.psu[1]), (Row{1, 1, 0, 0, 1, 2000, 1800}));
}

TEST_F(BaysRead, GateThenPolicyThenBaysEachOnItsOwnConnection) {
    script_supplies({good_supply(1), good_supply(2)});

    EXPECT_EQ(pwrmgt_get_psus_property(&out), 0U);

    EXPECT_EQ(platform().calls, supplies_read(2));
}

TEST_F(BaysRead, EntriesBeyondTheRowsAreUnknown) {
    script_supplies({good_supply(1), good_supply(2)});

    pwrmgt_get_psus_property(&out);

    for (size_t index = 2; index < 12; ++index) {
        EXPECT_EQ(fields(out.psu[index]), (Row{15, 15, 15, 15, 15, 65535, 65535})) << index;
    }
}

TEST_F(BaysRead, AlignmentByteOfTheRecordIsUntouched) {
    script_supplies({good_supply(1), good_supply(2)});

    pwrmgt_get_psus_property(&out);

    std::array<unsigned char, sizeof out> bytes{};
    std::memcpy(bytes.data(), &out, sizeof out);
    EXPECT_EQ(bytes[3], 7);
}

TEST_F(BaysRead, TwelveRowsFillTheRecord) {
    script_supplies(bays_of_pattern(12, 0xFFF));

    EXPECT_EQ(pwrmgt_get_psus_property(&out), 0U);

    EXPECT_EQ(counts(out), (Row{12, 12, 12}));
    EXPECT_EQ(out.psu[11].psu_id, 12);
}

TEST_F(BaysRead, RowsBeyondTwelveAreReadAndCountedButNotStored) {
    std::array<pwrmgt_psus_property_t, 2> pair{filled_with_sevens(), filled_with_sevens()};
    script_supplies(bays_of_pattern(14, 0x1FFF));  // the fourteenth is faulted

    EXPECT_EQ(pwrmgt_get_psus_property(pair.data()), 0U);

    EXPECT_EQ(counts(pair[0]), (Row{14, 14, 13}));
    EXPECT_EQ(pair[0].psu[11].psu_id, 12);
    expect_untouched(pair[1]);
    EXPECT_EQ(platform().calls, supplies_read(14));
}

TEST_F(BaysRead, RowCountIsCutTo8Bits) {
    std::vector<Row> rows(258, empty_bay());
    rows[0] = good_supply(1);
    script_supplies(rows);

    EXPECT_EQ(pwrmgt_get_psus_property(&out), 0U);

    EXPECT_EQ(counts(out), (Row{2, 1, 1}));
}

TEST_F(BaysRead, CountsWrapIn8BitsBeforeTheyAreJudged) {
    std::vector<Row> rows(256, supply_with(1, kFault, 1));
    rows[0] = good_supply(1);
    script_supplies(rows);

    EXPECT_EQ(pwrmgt_get_psus_property(&out), 17U);

    EXPECT_EQ(counts(out), (Row{0, 0, 1}));
}

// -- counted

TEST_F(BaysRead, OnlyPresentOneCountsAsPresent) {
    for (const int64_t present : {0, 2, 15, 255}) {
        script_supplies({good_supply(1), supply_with(2, kPresent, present)});

        EXPECT_EQ(pwrmgt_get_psus_property(&out), 0U);

        EXPECT_EQ(counts(out), (Row{2, 1, 1})) << present;
    }
}

TEST_F(BaysRead, RowOfBay15IsNeverCounted) {
    script_supplies({good_supply(15), good_supply(2)});

    EXPECT_EQ(pwrmgt_get_psus_property(&out), 0U);

    EXPECT_EQ(counts(out), (Row{2, 1, 1}));
    EXPECT_EQ(fields(out.psu[0]), (Row{15, 1, 0, 0, 0, 2000, 1800}));
}

TEST_F(BaysRead, LostInputOrFaultIsPresentButNotHealthy) {
    for (const Cell cell : {kAcLost, kFault}) {
        for (const int64_t value : {1, 2, 15, 255}) {
            script_supplies({good_supply(1), supply_with(2, cell, value)});

            EXPECT_EQ(pwrmgt_get_psus_property(&out), 0U);

            EXPECT_EQ(counts(out), (Row{2, 2, 1})) << cell << " = " << value;
        }
    }
}

TEST_F(BaysRead, UnknownLabelIsHealthyAllTheSame) {
    script_supplies({supply_with(1, kOutputLabel, 65535)});

    EXPECT_EQ(pwrmgt_get_psus_property(&out), 0U);

    EXPECT_EQ(counts(out), (Row{1, 1, 1}));
}

TEST_F(BaysRead, RowsStillUnknownEndWith17AndTheirCount) {
    script_supplies({{1, 15, 15, 15, 15, 65535, 65535}, {2, 15, 15, 15, 15, 65535, 65535}});

    EXPECT_EQ(pwrmgt_get_psus_property(&out), 17U);

    EXPECT_EQ(counts(out), (Row{2, 0, 0}));
    EXPECT_EQ(fields(out.psu[1]), (Row{2, 15, 15, 15, 15, 65535, 65535}));
}

TEST_F(BaysRead, PresentButNoneHealthyEndsWith17AndAFilledRecord) {
    script_supplies({supply_with(1, kFault, 1), supply_with(2, kAcLost, 1)});

    EXPECT_EQ(pwrmgt_get_psus_property(&out), 17U);

    EXPECT_EQ(counts(out), (Row{2, 2, 0}));
    EXPECT_EQ(fields(out.psu[0]), (Row{1, 1, 0, 1, 0, 2000, 1800}));
    EXPECT_EQ(fields(out.psu[11]), (Row{15, 15, 15, 15, 15, 65535, 65535}));
}

// -- refused

TEST_F(BaysRead, NullPointerIsRefusedBeforeTheGate) {
    EXPECT_EQ(pwrmgt_get_psus_property(nullptr), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(BaysRead, GateIsAskedWithTheEmptyName) {
    platform().quoril = true;

    EXPECT_EQ(pwrmgt_get_psus_property(&out), 10U);

    EXPECT_EQ(platform().calls, Calls{"quoril"});
    expect_untouched(out);
}

TEST_F(BaysRead, RefusedFlagEndsWith10) {
    policy_is_read(2);

    EXPECT_EQ(pwrmgt_get_psus_property(&out), 10U);

    EXPECT_EQ(platform().calls, Calls{"quoril"});
}

TEST_F(BaysRead, IsBladeThreePassesHere) {
    script_policy(policy_with(3, 1));
    script_supplies({good_supply(1)});

    EXPECT_EQ(pwrmgt_get_psus_property(&out), 0U);
}

TEST_F(BaysRead, AnyOtherBladeValueIsRefusedBeforeTheBaysAreRead) {
    for (const int64_t is_blade : {1, 2, 4, 15, 255}) {
        platform().calls.clear();
        script_policy(policy_with(is_blade, 1));

        EXPECT_EQ(pwrmgt_get_psus_property(&out), 10U) << is_blade;

        EXPECT_EQ(platform().calls, chain({{"quoril"}, policy_read()}));
        expect_untouched(out);
    }
}

TEST_F(BaysRead, EmptyTableEndsWith8AndAnUntouchedRecord) {
    EXPECT_EQ(pwrmgt_get_psus_property(&out), 8U);

    EXPECT_EQ(platform().calls, supplies_read(0));
    expect_untouched(out);
}

TEST_F(BaysRead, EmptyPolicyTableEndsWith8BeforeTheBaysAreRead) {
    platform().answer_table("PowerPolicy", {});

    EXPECT_EQ(pwrmgt_get_psus_property(&out), 8U);

    EXPECT_EQ(platform().count("open"), 1U);
    expect_untouched(out);
}

TEST_F(BaysRead, EachFailureHasItsStatus) {
    const auto script = [](Recorder&) {
        fresh_process();
        script_policy(policy_with(0, 1));
        script_supplies({good_supply(1)});
    };

    // Open, select, row count; step and columns of the one row.
    EXPECT_EQ(
        swept_statuses(script, read_once),
        in_turn({policy_outcomes(), {{2}, {3}, {8, 8, 8, 0}}, each_of(5, 17), each_of(3, 0)}));
}

TEST_F(BaysRead, FailureBeforeTheRowsLeavesTheRecordUntouched) {
    size_t untouched = 0;
    const auto script = [&](Recorder&) {
        out = filled_with_sevens();
        fresh_process();
        script_policy(policy_with(0, 1));
        script_supplies({good_supply(1)});
    };

    sweep_faults(
        script, [&] { return pwrmgt_get_psus_property(&out); },
        [&](const Faulted& faulted) {
            if (faulted.status == 0 || faulted.status == 17) return;
            expect_untouched(out);
            ++untouched;
        });

    EXPECT_EQ(untouched, 2U * (1U + 4U + 3U));
}

TEST_F(BaysRead, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    const auto script = [](Recorder&) {
        fresh_process();
        script_policy(policy_with(0, 1));
        script_supplies({good_supply(1)});
    };

    EXPECT_EQ(sweep_exceptions(script, read_once), 30U);
}
