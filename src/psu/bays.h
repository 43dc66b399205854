// SPDX-License-Identifier: Apache-2.0
// The supply table as a record, and what a usable supply is.
#pragma once

#include <cstdint>
#include <optional>

#include "vekdb_pwrmgt.h"

namespace pwrmgt::psu {

using Psu = pwrmgt_psu_property_t;
using Psus = pwrmgt_psus_property_t;

// Bytes 15, powers 65535.
Psu unknown_psu();

// Powered and healthy, whatever its label.
bool delivers(const Psu& psu);

// Powered, healthy, and its label is known.
bool usable(const Psu& psu);

// Usable supplies among bays `first` to `last`, 1-based.
uint32_t count_usable(const Psus& psus, uint32_t first, uint32_t last);

// The table as the exported reader fills it; also when no supply is healthy (17). Nothing when it
// cannot be read.
std::optional<Psus> read_bays();

// Label output power of the weakest supply, watts; nothing when it is unknown or 8192 and above.
std::optional<uint32_t> weakest_label_w();

}  // namespace pwrmgt::psu
