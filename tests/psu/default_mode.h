// SPDX-License-Identifier: Apache-2.0
// Hardware for the choice of a default mode: supplies of one label, adapter slots, the log.
#pragma once

#include <cstdio>
#include <map>
#include <string>

#include "psu_test.h"

namespace pwrmgt::test {

class HardwareTest : public PsuTest {
protected:
    // The stored mode is one that no hardware selects, so that each choice is written.
    void SetUp() override {
        PsuTest::SetUp();
        script_policy(policy_with(0, 0));
        platform().set_property(kAllowedModesKey, 3);
    }

    static void four_of_label(int64_t label_w) { script_supplies(bays_of_pattern(4, 15, label_w)); }

    static void adapter(int slot, uint32_t max_w) {
        char key[128];
        std::snprintf(key, sizeof key, "/ac/dro/therm_config/pci_adapters/%02d/MaxWatt", slot);
        platform().set_property(key, max_w);
    }
    static void slots(uint32_t bitmap, const std::map<int, uint32_t>& adapters) {
        platform().set_property("/ac/dro/therm_config/pci_adapters/max_count_bitmap", bitmap);
        for (const auto& [slot, max_w] : adapters) {
            adapter(slot, max_w);
        }
    }

    static Calls log() { return platform().named("syslog"); }

    // The log lines about slots: without the opening line and what follows the choice of one.
    static Calls log_of_slots() {
        Calls lines;
        for (const std::string& line : log()) {
            if (line.find("PCI") != std::string::npos) lines.push_back(line);
        }
        return lines;
    }
};

}  // namespace pwrmgt::test
