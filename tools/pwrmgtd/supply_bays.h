// SPDX-License-Identifier: Apache-2.0
// The supply bays on their way into the supply table: made once, and each rewritten when a reading
// shows a change, and only then.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "log.h"
#include "reading.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtd {

// Input-voltage classes of the supply table.
inline constexpr std::uint8_t kHighLine = 0;  // 200 to 240 V
inline constexpr std::uint8_t kLowLine = 1;   // 100 to 127 V

// The class of a measured input voltage, with a tenth of tolerance; nothing between the classes.
std::optional<std::uint8_t> voltage_class_of(std::uint16_t input_v);

// How many bays the machine has: as many as were asked for, otherwise the greater of what the
// platform's properties say and what the source tells of.
int bay_count(std::optional<int> asked_for, std::size_t told_of);

struct BaySetup {
    int count = 0;
    // Labels of a supply whose source tells none.
    Watts input_label_w;
    Watts output_label_w;
};

class Bays {
public:
    explicit Bays(Log& log);

    // Makes the rows, every value unknown. Without a start, readings are not looked at.
    bool start(std::uint32_t connection, const BaySetup& setup);

    // Rewrites the bays of which `reading` tells something new. What the table refuses is tried
    // again with the next reading.
    void take(const Reading& reading);

private:
    using Bay = pwrmgt_psu_property_t;

    Bay after(const Bay& known, const SupplyState& told) const;
    bool write(const Bay& stored, const Bay& wanted);

    Log& log_;
    std::uint32_t connection_ = 0;
    BaySetup setup_;
    std::array<Bay, kSupplies> known_{};
    std::array<Bay, kSupplies> stored_{};
};

}  // namespace pwrmgt::pwrmgtd
