// SPDX-License-Identifier: Apache-2.0
// Power of processors and memory from the energy counters of sys/class/powercap.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "reading.h"

namespace pwrmgt::pwrmgtd {

// One counter of microjoules that starts over at its range.
class EnergyCounter {
public:
    // Mean power since the call before. Nothing the first time, while the counter stands still, and
    // when more time has passed than it can tell: at 2000 W it might have gone round.
    Watts watts(std::int64_t energy_uj, std::int64_t range_uj, std::int64_t now_us);

private:
    std::optional<std::int64_t> last_uj_;
    std::int64_t last_us_ = 0;
};

class KernelEnergy {
public:
    // `root` is where sys/ is.
    explicit KernelEnergy(const std::string& root) : zones_(root + "/sys/class/powercap") {}

    // Power of each processor, of all of them, and of the memory. A sum needs every part. Returns
    // the power of the whole platform where a counter has it.
    Watts read(std::int64_t now_us, Reading& reading);

private:
    Watts zone_watts(const std::string& zone, std::int64_t now_us);

    std::string zones_;
    std::map<std::string, EnergyCounter> counters_;
};

}  // namespace pwrmgt::pwrmgtd
