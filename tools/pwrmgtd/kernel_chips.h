// SPDX-License-Identifier: Apache-2.0
// The sensor chips of sys/class/hwmon: which channels each has, and what they read.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "reading.h"

namespace pwrmgt::pwrmgtd {

// One channel, "…/hwmon3/power1" for power1_input, power1_label and so on.
struct Channel {
    std::string base;
    std::string label;  // in lower case; empty where the chip gives none

    // A value that cannot be is nothing, as one that cannot be read.
    Watts watts() const;
    std::optional<std::uint16_t> volts() const;
    Celsius degrees() const;

    std::optional<std::int64_t> attribute(const char* name) const;
};

struct Chip {
    std::string name;    // of the driver: "coretemp", "pmbus"
    std::string device;  // what it sits on: "coretemp.0", "7-0058"; the chip itself where unknown
    std::vector<Channel> powers;
    std::vector<Channel> voltages;
    std::vector<Channel> temperatures;
    std::vector<std::string> alarms;  // files that say 1 when an output or a part is at fault

    // The channel of that label among some; null when there is none.
    static const Channel* labelled(const std::vector<Channel>& channels, const char* label);
};

// All chips in the natural order of their devices. `root` is where sys/ is.
std::vector<Chip> find_chips(const std::string& root);

}  // namespace pwrmgt::pwrmgtd
