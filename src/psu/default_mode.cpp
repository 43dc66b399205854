// SPDX-License-Identifier: Apache-2.0
// The default redundancy mode, chosen from the hardware: supplies, their label, the largest
// adapter.
#include <syslog.h>

#include <bit>
#include <cstdint>

#include "db/status.h"
#include "db/text.h"
#include "psu/bays.h"
#include "vekdb_prop.h"

// clang-format off
pwrmgt_redun_mode_map_t default_redun_mode_map[PWRMGT_REDUN_MODE_ROWS] = {
    {1, 1800, 700, 4, 2}, {1, 2400, 700, 3, 2}, {1, 2400, 700, 4, 1}, {1, 2600, 700, 3, 2},
    {1, 2600, 700, 4, 1},
    {2, 1800, 450, 3, 2}, {2, 1800, 450, 4, 4}, {2, 1800, 600, 3, 2}, {2, 1800, 600, 4, 4},
    {2, 2400, 450, 2, 2}, {2, 2400, 450, 3, 4}, {2, 2400, 450, 4, 1}, {2, 2400, 600, 3, 2},
    {2, 2400, 600, 4, 4}, {2, 2600, 450, 2, 2}, {2, 2600, 450, 3, 4}, {2, 2600, 450, 4, 1},
    {2, 2600, 600, 2, 2}, {2, 2600, 600, 3, 4}, {2, 2600, 600, 4, 1},
    {3, 1800, 450, 4, 2}, {3, 2400, 450, 3, 2}, {3, 2400, 450, 4, 4}, {3, 2400, 600, 4, 2},
    {3, 2600, 450, 3, 2}, {3, 2600, 450, 4, 4}, {3, 2600, 600, 3, 2}, {3, 2600, 600, 4, 4},
};
// clang-format on

using namespace pwrmgt;
using namespace pwrmgt::psu;

namespace {

// Log priorities are these numbers; two of them carry a facility.
constexpr int kUserError = 11;
constexpr int kError = 3;
constexpr int kUserEmergency = 8;

constexpr uint32_t kFallbackMode = 2;
constexpr const char* kBitmapKey = "/ac/dro/therm_config/pci_adapters/max_count_bitmap";

struct Hardware {
    int32_t config;
    uint8_t healthy;
    uint32_t label_w;

    bool matches(const pwrmgt_redun_mode_map_t& row) const {
        return row.hw_config == static_cast<uint32_t>(config) &&
               static_cast<uint8_t>(row.psu_present) == healthy &&
               row.output_label_power == label_w;
    }
};

struct Adapter {
    uint16_t max_w = 0;
    int slot = 0;
};

void look_at_slot(int slot, Adapter& largest) {
    const db::Text<128> key("/ac/dro/therm_config/pci_adapters/%02d/MaxWatt", slot);
    uint16_t max_w = 0;
    const int failed = propdb_get_word(key.c_str(), &max_w);
    if (failed != 0) {
        syslog(kError,
               "PSU Config: PCIe slot [%02d] reports 0 power for prop prop_name [%s], return code "
               "[%d]",
               slot, key.c_str(), failed);
    } else if (max_w == 0) {
        syslog(kError, "PSU Config: PCIe slot [%02d] reports 0 power for prop prop_name [%s]", slot,
               key.c_str());
    } else if (max_w > largest.max_w) {
        largest = {max_w, slot};
        syslog(kUserEmergency, "PSU Config: Found PCIAdapter_MaxWatt [%d] for PCIe slot [%02d]",
               max_w, slot);
    }
}

// Of equal adapters the one in the lower slot; power 0 when none tells any.
Adapter largest_adapter() {
    uint32_t bitmap = 0;
    const int failed = propdb_get_dword(kBitmapKey, &bitmap);
    if (failed != 0) {
        syslog(kError,
               "PSU Config: Unable to find number of PCIe slots: Prop name "
               "/ac/dro/therm_config/pci_adapters/max_count_bitmap , return code [%d]",
               failed);
        return {};
    }
    Adapter largest;
    // Kept: every slot number up to the highest set bit, set or not. [EverySlotUpToTheHighestBit]
    const int slots = static_cast<int>(std::bit_width(bitmap));
    for (int slot = 1; slot <= slots; ++slot) {
        look_at_slot(slot, largest);
    }
    return largest;
}

uint32_t mode_by_adapter(const Hardware& hardware, const Adapter& largest) {
    syslog(kUserEmergency,
           "PSU Config: Selecting PSU config using PCIAdapter_MaxWatt[%d] on PCI Slot [%d]",
           largest.max_w, largest.slot);
    int index = 0;
    for (const pwrmgt_redun_mode_map_t& row : default_redun_mode_map) {
        if (hardware.matches(row) && row.output_gpu_power >= largest.max_w) {
            syslog(kUserEmergency,
                   "PSU Config: Selected: i=[%d] hw_config[%d], psu_present[%d] "
                   "output_label_power[%d], output_gpu_power[%d]",
                   index, hardware.config, hardware.healthy, static_cast<int>(hardware.label_w),
                   row.output_gpu_power);
            return row.redun_mode;
        }
        ++index;
    }
    return kFallbackMode;
}

// Kept: the last matching row wins, where the scan by adapter takes the first.
// [LastMatchingRowWinsWithoutAnAdapter]
uint32_t mode_by_supplies(const Hardware& hardware) {
    syslog(kUserError,
           "PSU Config: Could not find PCIAdapter_MaxWatt - selecting PSU config based on PSUs ");
    uint32_t mode = kFallbackMode;
    int index = 0;
    for (const pwrmgt_redun_mode_map_t& row : default_redun_mode_map) {
        if (hardware.matches(row)) {
            mode = row.redun_mode;
            syslog(kUserError,
                   "PSU Config: selected: i=[%d] hw_config[%d], psu_present[%d] "
                   "output_label_power[%d]",
                   index, hardware.config, hardware.healthy, static_cast<int>(hardware.label_w));
        }
        ++index;
    }
    return mode;
}

uint32_t set_mode(uint32_t mode) {
    const uint32_t failed = pwrmgt_set_power_redundant_mode(static_cast<int32_t>(mode));
    if (failed != 0) {
        syslog(kUserEmergency, "PSU Config: rc error:[%d] Selected redun_mode[%d]   ",
               static_cast<int>(failed), static_cast<int>(mode));
        return failed;
    }
    syslog(kUserEmergency, "PSU Config: Selected redun_mode[%d]   ", static_cast<int>(mode));
    return code(db::Status::ok);
}

}  // namespace

extern "C" uint32_t pwrmgt_set_redunmode_per_hwconfig(int32_t hw_config) {
    if (hw_config == 0) return code(db::Status::unsupported);
    Psus psus{};
    if (pwrmgt_get_psus_property(&psus) != 0) return code(db::Status::supplies_unusable);
    const std::optional<uint32_t> label_w = weakest_label_w();
    if (!label_w) return code(db::Status::supplies_unusable);

    const Hardware hardware{hw_config, psus.healthy_count, *label_w};
    syslog(kUserError, "PSU Config: Matching using GPU code ");
    const Adapter largest = largest_adapter();
    return set_mode(largest.max_w != 0 ? mode_by_adapter(hardware, largest)
                                       : mode_by_supplies(hardware));
}
