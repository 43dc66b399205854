// SPDX-License-Identifier: Apache-2.0
// How busy the machine is, from proc/stat and proc/meminfo.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "reading.h"

namespace pwrmgt::pwrmgtd {

class KernelLoad {
public:
    // `root` is where proc/ is.
    explicit KernelLoad(std::string root) : root_(std::move(root)) {}

    // Since the call before: the share of processor time in use (processor), spent waiting for
    // disks (I/O), and both (system). Memory that is not available, now.
    void read(Reading& reading);

private:
    struct Times {
        std::int64_t busy = 0;
        std::int64_t waiting = 0;
        std::int64_t all = 0;
    };

    std::optional<Times> times() const;
    Percent memory() const;

    std::string root_;
    std::optional<Times> last_;
};

}  // namespace pwrmgt::pwrmgtd
