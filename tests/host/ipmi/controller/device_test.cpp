// SPDX-License-Identifier: Apache-2.0
// The kernel's IPMI device: a driver that answers, one that hangs, and everything that is none.
#include <gtest/gtest.h>

#include <utility>

#include "controller_test.h"
#include "kernel.h"
#include "vekdb_pwrmgt.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

class Device : public testing::Test {
protected:
    Device() {
        kernel = Kernel{};
        // The log tells a failure once in a row; this one is no test's own.
        const EnvironmentVariable other("VEKDB_IPMI", "between tests");
        exchanged(kDeviceId);
        log_lines.clear();
    }

    static void answering(std::function<std::optional<Bytes>(const KernelRequest&)> answer) {
        kernel.device = Kernel::Device::answering;
        kernel.answer = std::move(answer);
    }

    // The support gate looks into the database.
    TempFile place_;
    EnvironmentVariable state_{"VEKDB_STATE_DIR", place_.directory() + "/state"};
    EnvironmentVariable runtime_{"VEKDB_RUNTIME_DIR", place_.directory() + "/run"};
    EnvironmentVariable platform_{"VEKDB_PLATFORM"};
    EnvironmentVariable setting_{"VEKDB_IPMI", "/dev/ipmi0"};
    EnvironmentVariable timeout_{"VEKDB_IPMI_TIMEOUT_MS", "20000"};
};

TEST_F(Device, MissingOneIsUnreachableAndTheLogTellsItOnce) {
    EXPECT_EQ(exchanged(kGetCap).result, kUnreachable);
    EXPECT_EQ(exchanged(kGetCap).result, kUnreachable);

    EXPECT_EQ(kernel.opened, 2);
    ASSERT_EQ(log_lines.size(), 1u);
    EXPECT_EQ(log_lines[0], "VEKDB_IPMI: No such file or directory, nothing is sent");
}

TEST_F(Device, ForbiddenOneIsUnreachable) {
    kernel.device = Kernel::Device::forbidden;

    EXPECT_EQ(exchanged(kGetCap).result, kUnreachable);
}

TEST_F(Device, WhatIsNoIpmiDeviceIsUnreachable) {
    for (const auto other : {Kernel::Device::other_device, Kernel::Device::fifo}) {
        kernel.device = other;

        const Exchange exchange = exchanged(kGetCap);

        EXPECT_EQ(exchange.result, kUnreachable);
        EXPECT_TRUE(exchange.clean_behind(0));
    }
    ASSERT_EQ(log_lines.size(), 1u);
    EXPECT_EQ(log_lines[0], "VEKDB_IPMI: not an IPMI device, nothing is sent");
}

TEST_F(Device, DriverThatDoesNotTakeTheRequestIsNoAnswer) {
    kernel.device = Kernel::Device::refusing;

    EXPECT_EQ(exchanged(kGetCap).result, kNoAnswer);
}

TEST_F(Device, HangingOneIsGivenUp) {
    const EnvironmentVariable hurry("VEKDB_IPMI_TIMEOUT_MS", "300");
    kernel.device = Kernel::Device::hanging;
    const Stopwatch watch;

    const Exchange exchange = exchanged(kGetCap);

    EXPECT_EQ(exchange.result, kTimedOut);
    EXPECT_TRUE(exchange.clean_behind(0));
    EXPECT_TRUE(watch.within(std::chrono::seconds(15)));
}

TEST_F(Device, AnswerAfterTheEndOfOneExchangeIsNotTheNextOnes) {
    const EnvironmentVariable hurry("VEKDB_IPMI_TIMEOUT_MS", "300");
    kernel.device = Kernel::Device::hanging;
    EXPECT_EQ(exchanged(kGetCap).result, kTimedOut);
    answering([](const KernelRequest&) { return Bytes{0xC1}; });

    EXPECT_EQ(exchanged(kGetCap).completion(), 0xC1);
}

TEST_F(Device, EventsAndOthersAnswersArePassedOver) {
    answering([](const KernelRequest&) { return Bytes{0x00, 0x60, 0x0D}; });
    kernel.noisy = true;

    const Exchange exchange = exchanged(kGetCap);

    EXPECT_EQ(exchange.result, 0);
    EXPECT_EQ(exchange.length, 3u);
    EXPECT_EQ(exchange.buffer[1], 0x60);
}

TEST_F(Device, FrameArrivesAsItIs) {
    KernelRequest seen{};
    answering([&seen](const KernelRequest& request) {
        seen = request;
        return Bytes{0x00, 0x01, 0x02};
    });

    const Exchange exchange = exchanged({0x20, 0x3A, 0x02, 0x32, 0x03, 0, 0, 0, 0});

    EXPECT_EQ(seen.netfn, 0x3A);
    EXPECT_EQ(seen.lun, 2);
    EXPECT_EQ(seen.command, 0x32);
    EXPECT_EQ(seen.payload, (Bytes{0x03, 0, 0, 0, 0}));
    EXPECT_EQ(exchange.result, 0);
    EXPECT_EQ(exchange.length, 3u);
    EXPECT_EQ(exchange.buffer[2], 0x02);
    EXPECT_TRUE(exchange.clean_behind(3));
}

TEST_F(Device, AnswerOf256BytesArrivesAndNoMore) {
    for (const std::size_t length : {255u, 256u, 257u, 272u, 273u, 1000u}) {
        answering([length](const KernelRequest&) { return Bytes(length, 0x5A); });

        const Exchange exchange = exchanged(kGetCap);

        EXPECT_EQ(exchange.result, 0);
        EXPECT_EQ(exchange.length, std::min<std::size_t>(length, 256));
        EXPECT_TRUE(exchange.clean_behind(exchange.length));
    }
}

TEST_F(Device, EmptyAnswerIsNone) {
    answering([](const KernelRequest&) { return Bytes{}; });

    const Exchange exchange = exchanged(kGetCap);

    EXPECT_EQ(exchange.result, kNoAnswer);
    EXPECT_TRUE(exchange.clean_behind(0));
}

TEST_F(Device, LongestRequestArrivesAndALongerOneIsNotSent) {
    std::size_t seen = 0;
    answering([&seen](const KernelRequest& request) {
        seen = request.payload.size();
        return Bytes{0x00};
    });
    Bytes longest(4 + 256, 0x11);
    longest[0] = 0x20;
    longest[1] = 0x3A;
    longest[2] = 0x00;
    Bytes longer = longest;
    longer.push_back(0x11);

    EXPECT_EQ(exchanged(longest).result, 0);
    EXPECT_EQ(seen, 256u);
    EXPECT_EQ(exchanged(longer).result, kNoRequest);
    EXPECT_EQ(kernel.opened, 1);
}

TEST_F(Device, NoDescriptorIsLeftBehind) {
    const EnvironmentVariable hurry("VEKDB_IPMI_TIMEOUT_MS", "100");
    answering([](const KernelRequest&) { return Bytes{0x00}; });
    exchanged(kGetCap);
    const auto before = open_descriptors();

    for (const auto device :
         {Kernel::Device::missing, Kernel::Device::fifo, Kernel::Device::refusing,
          Kernel::Device::hanging, Kernel::Device::answering}) {
        kernel.device = device;
        exchanged(kGetCap);
    }

    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(Device, LibrarySetsAndReadsTheCap) {
    Bytes cap{0, 0, 0, 0};
    answering([&cap](const KernelRequest& request) -> std::optional<Bytes> {
        if (request.payload[0] == 0x02) {
            cap.assign(request.payload.begin() + 1, request.payload.begin() + 5);
            return Bytes{0, 0};
        }
        return Bytes{0, 0, cap[0], cap[1], cap[2], cap[3]};
    });
    std::uint8_t enable = 9;
    std::uint8_t mode = 9;
    std::uint16_t watts = 9;

    EXPECT_EQ(pwrmgt_set_power_capping_policy(1, 1, 640), 0u);
    EXPECT_EQ(pwrmgt_get_power_capping_policy(&enable, &mode, &watts), 0u);
    EXPECT_EQ(enable, 1);
    EXPECT_EQ(mode, 1);
    EXPECT_EQ(watts, 640);
}

}  // namespace
