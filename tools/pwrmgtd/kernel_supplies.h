// SPDX-License-Identifier: Apache-2.0
// Power supplies among the sensor chips, as the kernel's PMBus drivers show them.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "kernel_chips.h"
#include "log.h"
#include "reading.h"

namespace pwrmgt::pwrmgtd {

class KernelSupplies {
public:
    // `devices`: those of supplies 1, 2, ... in their order; none: they are found by themselves.
    KernelSupplies(std::vector<std::string> devices, Log& log)
        : devices_(std::move(devices)), finds_(devices_.empty()), log_(log) {}

    // Looks for new supplies, unless they were named.
    void find(const std::vector<Chip>& chips);

    void read(const std::vector<Chip>& chips, Reading& reading);

    std::size_t count() const { return devices_.size(); }

private:
    std::vector<std::string> devices_;
    bool finds_;
    Log& log_;
    std::array<int, kSupplies> silent_{};  // readings without an answer in a row
};

}  // namespace pwrmgt::pwrmgtd
