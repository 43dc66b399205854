// SPDX-License-Identifier: Apache-2.0
// The default redundancy mode for every configuration, label, number of supplies and adapter; the
// exported map behind it, as it stands and changed by a program.
#include <array>
#include <iterator>

#include "default_mode.h"

using namespace pwrmgt::test;

namespace {

struct Expected {
    int32_t config;
    int64_t label_w;
    uint32_t healthy;
    // Mode without an adapter, and with one of up to 450, 600 and 700 W; above it is always 2.
    std::array<int, 4> modes;
};

// Hardware that is not listed selects mode 2.
constexpr Expected kExpected[] = {
    {1, 2400, 4, {1, 1, 1, 1}}, {1, 2600, 4, {1, 1, 1, 1}}, {2, 1800, 4, {4, 4, 4, 2}},
    {2, 2400, 3, {2, 4, 2, 2}}, {2, 2400, 4, {4, 1, 4, 2}}, {2, 2600, 3, {4, 4, 4, 2}},
    {2, 2600, 4, {1, 1, 1, 2}}, {3, 2400, 4, {2, 4, 2, 2}}, {3, 2600, 4, {4, 4, 4, 2}},
};

constexpr std::array<uint32_t, 8> kAdapters{0, 1, 450, 451, 600, 601, 700, 701};

int expected_mode(int32_t config, int64_t label_w, uint32_t healthy, uint32_t adapter_w) {
    if (adapter_w > 700) return 2;
    const size_t limit = adapter_w == 0 ? 0 : adapter_w <= 450 ? 1 : adapter_w <= 600 ? 2 : 3;
    for (const Expected& e : kExpected) {
        if (e.config == config && e.label_w == label_w && e.healthy == healthy) {
            return e.modes[limit];
        }
    }
    return 2;
}

// Puts the exported map back as it was.
class MapKeeper {
public:
    MapKeeper() { std::copy(std::begin(map_), std::end(map_), std::begin(kept_)); }
    ~MapKeeper() { std::copy(std::begin(kept_), std::end(kept_), std::begin(map_)); }
    MapKeeper(const MapKeeper&) = delete;
    MapKeeper& operator=(const MapKeeper&) = delete;

private:
    pwrmgt_redun_mode_map_t (&map_)[28] = default_redun_mode_map;
    pwrmgt_redun_mode_map_t kept_[28];
};

}  // namespace

class DefaultModeMap : public HardwareTest {
protected:
    static Calls chosen(int32_t config) {
        platform().calls.clear();
        platform().operations.clear();
        EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(config), 0U);
        return platform().named("put_char");
    }
    static Calls mode(int number) { return {"put_char RedunMode " + std::to_string(number)}; }
};

// -- as it stands

TEST_F(DefaultModeMap, RowsAreTheseInThisOrder) {
    const std::vector<Row> expected{
        {1, 1800, 700, 4, 2}, {1, 2400, 700, 3, 2}, {1, 2400, 700, 4, 1}, {1, 2600, 700, 3, 2},
        {1, 2600, 700, 4, 1}, {2, 1800, 450, 3, 2}, {2, 1800, 450, 4, 4}, {2, 1800, 600, 3, 2},
        {2, 1800, 600, 4, 4}, {2, 2400, 450, 2, 2}, {2, 2400, 450, 3, 4}, {2, 2400, 450, 4, 1},
        {2, 2400, 600, 3, 2}, {2, 2400, 600, 4, 4}, {2, 2600, 450, 2, 2}, {2, 2600, 450, 3, 4},
        {2, 2600, 450, 4, 1}, {2, 2600, 600, 2, 2}, {2, 2600, 600, 3, 4}, {2, 2600, 600, 4, 1},
        {3, 1800, 450, 4, 2}, {3, 2400, 450, 3, 2}, {3, 2400, 450, 4, 4}, {3, 2400, 600, 4, 2},
        {3, 2600, 450, 3, 2}, {3, 2600, 450, 4, 4}, {3, 2600, 600, 3, 2}, {3, 2600, 600, 4, 4}};

    std::vector<Row> rows;
    for (const pwrmgt_redun_mode_map_t& row : default_redun_mode_map) {
        rows.push_back({row.hw_config, row.output_label_power, row.output_gpu_power,
                        row.psu_present, row.redun_mode});
    }

    EXPECT_EQ(rows, expected);
}

TEST_F(DefaultModeMap, EveryHardwareGetsItsMode) {
    for (const int64_t label_w : {1799, 1800, 1801, 2400, 2600, 2601}) {
        for (uint32_t healthy = 1; healthy <= 8; ++healthy) {
            script_supplies(bays_of_pattern(8, (1U << healthy) - 1, label_w));
            for (const uint32_t adapter_w : kAdapters) {
                slots(1, {{1, adapter_w}});
                for (const int32_t config : {-1, 1, 2, 3, 4, INT32_MIN}) {
                    ASSERT_EQ(chosen(config),
                              mode(expected_mode(config, label_w, healthy, adapter_w)))
                        << config << ' ' << label_w << ' ' << healthy << ' ' << adapter_w;
                }
            }
        }
    }
}

TEST_F(DefaultModeMap, HealthySuppliesCountNotPresentOnes) {
    script_supplies(bays_of_pattern(4, 0b0111, 2400));
    slots(1, {{1, 450}});

    EXPECT_EQ(chosen(2), mode(4));
}

TEST_F(DefaultModeMap, WeakestSupplyGivesTheLabel) {
    std::vector<Row> rows = bays_of_pattern(4, 15, 2600);
    rows[3] = good_supply(4, 2400);
    script_supplies(rows);
    slots(1, {{1, 600}});

    EXPECT_EQ(chosen(2), mode(4));
}

// -- changed by a program

TEST_F(DefaultModeMap, ChangedRowDecidesAtOnce) {
    const MapKeeper keeper;
    four_of_label(1234);
    slots(1, {{1, 999}});
    default_redun_mode_map[27] = {77, 1234, 999, 4, 3};

    EXPECT_EQ(chosen(77), mode(3));
    EXPECT_THAT(log(), testing::Contains("syslog 8 PSU Config: Selected: i=[27] hw_config[77], "
                                         "psu_present[4] output_label_power[1234], "
                                         "output_gpu_power[999]"));
}

TEST_F(DefaultModeMap, OnlyTheLowByteOfTheNumberOfSuppliesIsCompared) {
    const MapKeeper keeper;
    four_of_label(1234);
    slots(0, {});
    default_redun_mode_map[0] = {77, 1234, 999, 0xABCDEF04, 3};

    EXPECT_EQ(chosen(77), mode(3));
}

TEST_F(DefaultModeMap, NegativeConfigurationIsComparedAsItsBits) {
    const MapKeeper keeper;
    four_of_label(1234);
    slots(0, {});
    default_redun_mode_map[5] = {0xFFFFFFFF, 1234, 999, 4, 3};

    EXPECT_EQ(chosen(-1), mode(3));
    EXPECT_THAT(log(), testing::Contains("syslog 11 PSU Config: selected: i=[5] hw_config[-1], "
                                         "psu_present[4] output_label_power[1234]"));
}

TEST_F(DefaultModeMap, FirstRowWinsWithAnAdapterAndLastWithoutAmongEquals) {
    const MapKeeper keeper;
    four_of_label(1234);
    default_redun_mode_map[3] = {77, 1234, 500, 4, 1};
    default_redun_mode_map[9] = {77, 1234, 500, 4, 3};

    slots(1, {{1, 500}});
    EXPECT_EQ(chosen(77), mode(1));

    slots(0, {});
    EXPECT_EQ(chosen(77), mode(3));
}

TEST_F(DefaultModeMap, ModeAboveFourInARowIsRefusedByTheSetter) {
    const MapKeeper keeper;
    four_of_label(1234);
    slots(0, {});
    default_redun_mode_map[0] = {77, 1234, 500, 4, 5};

    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(77), 10U);

    EXPECT_EQ(log().back(), "syslog 8 PSU Config: rc error:[10] Selected redun_mode[5]   ");
}

// -- failures

TEST_F(DefaultModeMap, EachFailureHasItsStatus) {
    const auto script = [](Recorder&) {
        fresh_process();
        script_policy(policy_with(0, 0));
        platform().set_property(kAllowedModesKey, 3);
        script_supplies(bays_of_pattern(2, 1, 2400));
        slots(1, {{1, 450}});
    };
    const auto act = [] { return pwrmgt_set_redunmode_per_hwconfig(2); };
    // The good supply of the two: a step and its four bytes that tell so.
    const Outcomes good = in_turn({{{0, 0, 17, 0}}, each_of(4, 17)});

    EXPECT_EQ(swept_statuses(script, act), in_turn({policy_outcomes(17),
                                                    {{17}, {17}, {17, 17, 0, 0}},
                                                    good,
                                                    each_of(11, 0),
                                                    policy_outcomes(17),
                                                    each_of(3, 17),
                                                    good,
                                                    {{0}, {0}, {17}},
                                                    each_of(8, 0),
                                                    {{0}, {0}, {10}},  // bitmap, slot, modes
                                                    each_of(1, 2),
                                                    policy_outcomes(),
                                                    {{7}, {0}, {5}}}));  // the setter
    EXPECT_EQ(sweep_exceptions(script, act), 2U * 38U + 3U + 1U + 19U + 3U);
}
