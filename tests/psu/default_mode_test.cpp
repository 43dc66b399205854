// SPDX-License-Identifier: Apache-2.0
// The default redundancy mode from the hardware: every log line, the scan of the slots, the calls.
#include "default_mode.h"

using namespace pwrmgt::test;

class DefaultMode : public HardwareTest {};

// -- whole walks

TEST_F(DefaultMode, SuppliesWeakestSlotsThenTheSetter) {
    four_of_label(2400);
    slots(1, {{1, 450}});

    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(2), 0U);

    EXPECT_EQ(
        platform().calls,
        chain({supplies_read(4),
               supplies_read(4),
               {"syslog 11 PSU Config: Matching using GPU code ",
                "dword /ac/dro/therm_config/pci_adapters/max_count_bitmap",
                "word /ac/dro/therm_config/pci_adapters/01/MaxWatt",
                "syslog 8 PSU Config: Found PCIAdapter_MaxWatt [450] for PCIe slot [01]",
                "syslog 8 PSU Config: Selecting PSU config using PCIAdapter_MaxWatt[450] on PCI "
                "Slot [1]",
                "syslog 8 PSU Config: Selected: i=[11] hw_config[2], psu_present[4] "
                "output_label_power[2400], output_gpu_power[450]",
                "quoril", "byte /dc/tavn/dm/planar/0/psu/config_type",
                "open localhost root '' vek_pwr_db 0"},
               policy_read(),
               {"content", "put_char RedunMode 1", "update PowerPolicy where null", "free_content",
                "close", "syslog 8 PSU Config: Selected redun_mode[1]   "}}));
}

TEST_F(DefaultMode, AdapterAboveEveryRowFallsBackWithoutTheScanBySupplies) {
    four_of_label(2400);
    slots(1, {{1, 700}});

    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(2), 0U);

    EXPECT_EQ(log(),
              (Calls{"syslog 11 PSU Config: Matching using GPU code ",
                     "syslog 8 PSU Config: Found PCIAdapter_MaxWatt [700] for PCIe slot [01]",
                     "syslog 8 PSU Config: Selecting PSU config using "
                     "PCIAdapter_MaxWatt[700] on PCI Slot [1]",
                     "syslog 8 PSU Config: Selected redun_mode[2]   "}));
}

TEST_F(DefaultMode, LastMatchingRowWinsWithoutAnAdapter) {
    four_of_label(1800);
    slots(0, {});

    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(2), 0U);

    EXPECT_EQ(log(), (Calls{"syslog 11 PSU Config: Matching using GPU code ",
                            "syslog 11 PSU Config: Could not find PCIAdapter_MaxWatt - selecting "
                            "PSU config based on PSUs ",
                            "syslog 11 PSU Config: selected: i=[6] hw_config[2], psu_present[4] "
                            "output_label_power[1800]",
                            "syslog 11 PSU Config: selected: i=[8] hw_config[2], psu_present[4] "
                            "output_label_power[1800]",
                            "syslog 8 PSU Config: Selected redun_mode[4]   "}));
}

TEST_F(DefaultMode, FirstMatchingRowWinsWithAnAdapter) {
    four_of_label(2400);
    slots(1, {{1, 1}});

    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(2), 0U);

    EXPECT_EQ(platform().named("put_char"), Calls{"put_char RedunMode 1"});
}

TEST_F(DefaultMode, UnreadableBitmapIsLoggedAndLeavesTheSupplies) {
    four_of_label(1800);
    platform().property_missing = 5;

    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(1), 0U);

    EXPECT_EQ(log(), (Calls{"syslog 11 PSU Config: Matching using GPU code ",
                            "syslog 3 PSU Config: Unable to find number of PCIe slots: Prop name "
                            "/ac/dro/therm_config/pci_adapters/max_count_bitmap , return code [5]",
                            "syslog 11 PSU Config: Could not find PCIAdapter_MaxWatt - selecting "
                            "PSU config based on PSUs ",
                            "syslog 11 PSU Config: selected: i=[0] hw_config[1], psu_present[4] "
                            "output_label_power[1800]",
                            "syslog 8 PSU Config: Selected redun_mode[2]   "}));
    EXPECT_EQ(platform().count("word"), 0U);
}

TEST_F(DefaultMode, RefusedModeIsLoggedWithItsCode) {
    four_of_label(1800);
    slots(0, {});
    platform().set_property(kAllowedModesKey, 1);

    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(2), 10U);

    EXPECT_EQ(log().back(), "syslog 8 PSU Config: rc error:[10] Selected redun_mode[4]   ");
    EXPECT_EQ(platform().count("update"), 0U);
}

// -- slots

TEST_F(DefaultMode, EverySlotUpToTheHighestBit) {
    four_of_label(1800);
    slots(0x5, {{1, 100}, {2, 200}, {3, 150}});

    pwrmgt_set_redunmode_per_hwconfig(3);

    EXPECT_EQ(platform().named("word"),
              (Calls{"word /ac/dro/therm_config/pci_adapters/01/MaxWatt",
                     "word /ac/dro/therm_config/pci_adapters/02/MaxWatt",
                     "word /ac/dro/therm_config/pci_adapters/03/MaxWatt"}));
    EXPECT_EQ(log_of_slots(),
              (Calls{"syslog 8 PSU Config: Found PCIAdapter_MaxWatt [100] for PCIe slot [01]",
                     "syslog 8 PSU Config: Found PCIAdapter_MaxWatt [200] for PCIe slot [02]",
                     "syslog 8 PSU Config: Selecting PSU config using PCIAdapter_MaxWatt[200] on "
                     "PCI Slot [2]"}));
}

TEST_F(DefaultMode, EachBitAloneScansAsManySlotsAsItsPlace) {
    four_of_label(1800);
    for (uint32_t bit = 0; bit < 32; ++bit) {
        slots(1U << bit, {});
        platform().calls.clear();

        pwrmgt_set_redunmode_per_hwconfig(1);

        EXPECT_EQ(platform().count("word"), bit + 1) << bit;
    }
}

TEST_F(DefaultMode, HighestBitScansThirtyTwoSlots) {
    four_of_label(1800);
    slots(0x80000000, {{32, 65535}});

    pwrmgt_set_redunmode_per_hwconfig(1);

    EXPECT_EQ(platform().named("word").back(), "word /ac/dro/therm_config/pci_adapters/32/MaxWatt");
    EXPECT_THAT(log(), testing::Contains("syslog 8 PSU Config: Selecting PSU config using "
                                         "PCIAdapter_MaxWatt[65535] on PCI Slot [32]"));
}

TEST_F(DefaultMode, BitmapOfZeroScansNothing) {
    four_of_label(1800);
    slots(0, {{1, 450}});

    pwrmgt_set_redunmode_per_hwconfig(1);

    EXPECT_EQ(platform().count("word"), 0U);
}

TEST_F(DefaultMode, EqualAdaptersKeepTheLowerSlot) {
    four_of_label(1800);
    slots(0b1111, {{1, 300}, {2, 450}, {3, 450}, {4, 449}});

    pwrmgt_set_redunmode_per_hwconfig(3);

    EXPECT_EQ(log_of_slots(),
              (Calls{"syslog 8 PSU Config: Found PCIAdapter_MaxWatt [300] for PCIe slot [01]",
                     "syslog 8 PSU Config: Found PCIAdapter_MaxWatt [450] for PCIe slot [02]",
                     "syslog 8 PSU Config: Selecting PSU config using PCIAdapter_MaxWatt[450] on "
                     "PCI Slot [2]"}));
}

TEST_F(DefaultMode, LargestIsComparedUnsigned) {
    four_of_label(1800);
    slots(0b11, {{1, 32767}, {2, 32768}});

    pwrmgt_set_redunmode_per_hwconfig(3);

    EXPECT_THAT(log(), testing::Contains("syslog 8 PSU Config: Selecting PSU config using "
                                         "PCIAdapter_MaxWatt[32768] on PCI Slot [2]"));
}

TEST_F(DefaultMode, EachSlotsKeyMissingOneByOneIsLoggedWithItsCode) {
    four_of_label(1800);
    slots(0b111, {{1, 450}, {2, 450}, {3, 450}});
    for (size_t missing = 1; missing <= 3; ++missing) {
        platform().calls.clear();
        // A call reads five properties: bitmap, three slots, allowed modes.
        platform().fail(Operation::property, 9, 5 * (missing - 1) + 1 + missing);

        EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(3), 0U);

        const std::string number = "0" + std::to_string(missing);
        EXPECT_THAT(log(), testing::Contains("syslog 3 PSU Config: PCIe slot [" + number +
                                             "] reports 0 power for prop prop_name "
                                             "[/ac/dro/therm_config/pci_adapters/" +
                                             number + "/MaxWatt], return code [9]"));
        EXPECT_THAT(log(), testing::Contains("syslog 8 PSU Config: Selecting PSU config using "
                                             "PCIAdapter_MaxWatt[450] on PCI Slot [" +
                                             std::string(missing == 1 ? "2" : "1") + "]"));
    }
}

TEST_F(DefaultMode, SlotsWithoutPowerAreLoggedAndLeaveTheSupplies) {
    four_of_label(1800);
    platform().property_missing = -2;
    slots(0b1000000010, {{2, 0}, {10, 0}});

    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(1), 0U);

    const Calls lines = log();
    ASSERT_EQ(lines.size(), 14U);
    EXPECT_EQ(lines[1],
              "syslog 3 PSU Config: PCIe slot [01] reports 0 power for prop prop_name "
              "[/ac/dro/therm_config/pci_adapters/01/MaxWatt], return code [-2]");
    EXPECT_EQ(lines[2],
              "syslog 3 PSU Config: PCIe slot [02] reports 0 power for prop prop_name "
              "[/ac/dro/therm_config/pci_adapters/02/MaxWatt]");
    EXPECT_EQ(lines[10],
              "syslog 3 PSU Config: PCIe slot [10] reports 0 power for prop prop_name "
              "[/ac/dro/therm_config/pci_adapters/10/MaxWatt]");
    EXPECT_EQ(lines[11],
              "syslog 11 PSU Config: Could not find PCIAdapter_MaxWatt - selecting PSU config "
              "based on PSUs ");
}

// -- refused

TEST_F(DefaultMode, ConfigurationZeroIsRefusedBeforeAnyCall) {
    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(0), 10U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(DefaultMode, AnyCodeOfTheSuppliesIs17WithNothingLogged) {
    script_supplies({});
    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(1), 17U);
    script_supplies(bays_of_pattern(4, 0));
    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(1), 17U);
    script_policy(policy_with(1, 0));
    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(1), 17U);
    platform().quoril = true;
    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(1), 17U);

    EXPECT_EQ(log(), Calls{});
}

TEST_F(DefaultMode, WeakestLabelFrom8192OnIs17) {
    slots(0, {});
    four_of_label(8191);
    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(1), 0U);

    platform().calls.clear();
    for (const int64_t label_w : {8192, 65534, 65535}) {
        four_of_label(label_w);
        EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(1), 17U) << label_w;
    }
    EXPECT_EQ(log(), Calls{});
}

TEST_F(DefaultMode, NumberOfBaysWithoutAWeakestIs17) {
    script_supplies(bays_of_pattern(3, 7));

    EXPECT_EQ(pwrmgt_set_redunmode_per_hwconfig(1), 17U);
}
