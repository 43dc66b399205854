// SPDX-License-Identifier: Apache-2.0
// A peer, a relay before it, and the setting that leads the library there.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>

#include "../exchange.h"
#include "../stand_ins.h"
#include "peer.h"
#include "relay.h"
#include "support/environment.h"

inline const std::vector<std::uint8_t> kDeviceId{0x20, 0x06, 0, 0x01};
inline const std::vector<std::uint8_t> kGetCap{0x20, 0x3A, 0, 0x32, 0x03, 0, 0, 0, 0};

inline std::ptrdiff_t open_descriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                         std::filesystem::directory_iterator());
}

// No machine is so slow that this is over, and none so patient that a hanging test goes unnoticed.
class Stopwatch {
public:
    bool within(std::chrono::seconds bound) const {
        return std::chrono::steady_clock::now() - start_ < bound;
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

class ControllerTest : public testing::Test {
protected:
    ControllerTest() { log_lines.clear(); }

    Peer peer_;
    Relay relay_{peer_.port()};
    EnvironmentVariable setting_{"VEKDB_IPMI", lan_setting(relay_.port())};
    EnvironmentVariable timeout_{"VEKDB_IPMI_TIMEOUT_MS", "20000"};
};
