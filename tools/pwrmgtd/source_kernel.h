// SPDX-License-Identifier: Apache-2.0
// What the kernel of this machine measures. docs/pwrmgtd.md has the table of what becomes what.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "kernel_chips.h"
#include "kernel_energy.h"
#include "kernel_load.h"
#include "kernel_supplies.h"
#include "source.h"

namespace pwrmgt::pwrmgtd {

class KernelSource final : public Source {
public:
    // Microseconds that no setting of the clock changes.
    using Timer = std::function<std::int64_t()>;

    struct Place {
        std::string root;                  // where sys/ and proc/ are; "" for the real ones
        std::vector<std::string> devices;  // of the supplies, in their order
    };

    KernelSource(Place place, Timer timer, Log& log);

    Reading read(std::int64_t now_s) override;
    std::string name() const override;
    std::size_t supplies() const override { return supplies_.count(); }

private:
    void find();

    std::string root_;
    Timer timer_;
    KernelEnergy energy_;
    KernelLoad load_;
    KernelSupplies supplies_;
    std::vector<Chip> chips_;
    std::int64_t found_at_us_;
};

}  // namespace pwrmgt::pwrmgtd
