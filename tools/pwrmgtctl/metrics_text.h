// SPDX-License-Identifier: Apache-2.0
// Gauges as OpenMetrics text, which is at the same time the older text format that file collectors
// read: no sample carries a time of its own.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "missing.h"

namespace pwrmgt::pwrmgtctl {

using Labels = std::vector<std::pair<const char*, std::string>>;

// Gauges of one name. Its last word is the unit, where there is one.
struct Gauge {
    const char* name;
    const char* unit;  // "" for a plain number
    const char* help;
};

class MetricsText {
public:
    // A series without a value is left out. Series of one gauge follow one another.
    void add(const Gauge& gauge, const Labels& labels, const Value& value);
    void add_degrees(const Gauge& gauge, const Labels& labels, int32_t value);
    // Hundredths, exactly: 5 % is 0.05.
    void add_ratio(const Gauge& gauge, const Labels& labels, const Value& percent);

    // Everything that was added, and the mark of the end.
    [[nodiscard]] std::string text() const;

private:
    void add_line(const Gauge& gauge, const Labels& labels, const std::string& value);

    std::string text_;
    std::string last_;  // name of the gauge that was added to last
};

}  // namespace pwrmgt::pwrmgtctl
