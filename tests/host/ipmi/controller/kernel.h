// SPDX-License-Identifier: Apache-2.0
// The kernel's IPMI driver as far as this test program sees it: open() and ioctl() on /dev/ipmiN.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

struct KernelRequest {
    std::uint8_t netfn;
    std::uint8_t lun;
    std::uint8_t command;
    std::vector<std::uint8_t> payload;
};

struct Kernel {
    enum class Device { missing, forbidden, fifo, other_device, refusing, hanging, answering };

    Device device = Device::missing;
    // The answer, completion code first; none: the controller keeps silent.
    std::function<std::optional<std::vector<std::uint8_t>>(const KernelRequest&)> answer;
    // Something else comes before each answer: an event of the controller's, the answer to nobody.
    bool noisy = false;
    int opened = 0;
};

extern Kernel kernel;
