// SPDX-License-Identifier: Apache-2.0
// LAN sessions with another project's controller: exchanges, and what becomes of the session.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "controller_test.h"
#include "steady_clock.h"
#include "support/second_process.h"

namespace {

class LanSession : public ControllerTest {};

TEST_F(LanSession, ControllerTellsItsIdentity) {
    const Exchange exchange = exchanged(kDeviceId);

    EXPECT_EQ(exchange.result, 0);
    EXPECT_EQ(exchange.length, 16u);
    EXPECT_EQ(exchange.completion(), 0x00);
    EXPECT_EQ(exchange.buffer[1], 0x17);
    EXPECT_EQ(exchange.buffer[2], 0x03);
    EXPECT_TRUE(exchange.clean_behind(16));
}

TEST_F(LanSession, UnknownOemCommandIsCompletionCodeC1) {
    const Exchange exchange = exchanged({0x20, 0x3A, 0, 0x77, 0x01});

    EXPECT_EQ(exchange.result, 0);
    EXPECT_EQ(exchange.length, 1u);
    EXPECT_EQ(exchange.completion(), 0xC1);
    EXPECT_TRUE(exchange.clean_behind(1));
}

TEST_F(LanSession, OneSessionServesManyExchanges) {
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(exchanged(kGetCap).result, 0);

    EXPECT_EQ(relay_.logins(), 1);
}

TEST_F(LanSession, SessionIdleFor31SecondsIsOpenedAnew) {
    exchanged(kDeviceId);
    clock_ahead_s += 29;
    EXPECT_EQ(exchanged(kDeviceId).result, 0);
    EXPECT_EQ(relay_.logins(), 1);

    clock_ahead_s += 31;

    EXPECT_EQ(exchanged(kDeviceId).result, 0);
    EXPECT_EQ(relay_.logins(), 2);
}

TEST_F(LanSession, ThreadsTakeTurns) {
    std::atomic<int> answered{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&answered] {
            for (int exchange = 0; exchange < 25; ++exchange) {
                const Exchange done = exchanged(kGetCap);
                if (done.result == 0 && done.length == 6) ++answered;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(answered, 100);
    EXPECT_EQ(relay_.logins(), 1);
}

TEST_F(LanSession, ForkedChildHasASessionOfItsOwn) {
    exchanged(kDeviceId);
    SecondProcess child([] { return exchanged(kDeviceId).length; });

    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(child.ask(), 16);
        EXPECT_EQ(exchanged(kDeviceId).length, 16u);
    }
    EXPECT_EQ(relay_.logins(), 2);
}

TEST_F(LanSession, ForkBesideAWaitingExchangeLeavesTheChildFree) {
    exchanged(kDeviceId);
    std::atomic<bool> held{false};
    std::atomic<bool> forked{false};
    relay_.change_answers([&](const Datagram& answer) {
        held = true;
        held.notify_all();
        forked.wait(false);
        return std::vector<Datagram>{answer};
    });
    std::thread waiting([] { EXPECT_EQ(exchanged(kDeviceId).length, 16u); });
    held.wait(false);

    // Nobody relays for the child; what counts is that it does not hang.
    SecondProcess child([] {
        const EnvironmentVariable hurry("VEKDB_IPMI_TIMEOUT_MS", "100");
        return exchanged(kDeviceId).result;
    });
    EXPECT_EQ(child.ask(), kTimedOut);
    forked = true;
    forked.notify_all();
    waiting.join();
}

TEST_F(LanSession, ProgramThatEndsClosesItsSession) {
    // How many datagrams such a program sends. The exchange behind it passes the relay behind all
    // of them.
    const auto sent_by_program = [this](const char* argument) {
        exchanged(kDeviceId);
        const int before = relay_.requests();
        const pid_t child = fork();
        if (child == 0) {
            execl(SHORT_PROGRAM, SHORT_PROGRAM, argument, nullptr);
            _exit(127);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
        exchanged(kDeviceId);
        return relay_.requests() - before;
    };

    const int without_farewell = sent_by_program("abruptly");
    const int with_farewell = sent_by_program(nullptr);

    EXPECT_EQ(with_farewell, without_farewell + 1);
}

TEST_F(LanSession, NoDescriptorIsLeftBehindByAnotherSetting) {
    const std::string to = "@127.0.0.1:" + std::to_string(peer_.port());
    const auto exchange_as = [&](const char* user) {
        const EnvironmentVariable straight("VEKDB_IPMI", user + to);
        return exchanged(kDeviceId).result;
    };
    exchange_as("lan://operator:pass:w@rd");
    const auto before = open_descriptors();

    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(exchange_as("lan://nobody:pass"), kRefused);
        EXPECT_EQ(exchange_as("lan://operator:pass:w@rd"), 0);
    }

    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(LanSession, DescriptorsAreClosedInProgramsThatAreStarted) {
    exchanged(kDeviceId);

    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const int descriptor = std::atoi(entry.path().filename().c_str());
        std::error_code gone;
        const auto what = std::filesystem::read_symlink(entry.path(), gone);
        if (gone || descriptor <= 2 || !what.string().starts_with("socket:")) continue;
        EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << what;
    }
}

TEST_F(LanSession, NameOfAHostIsLookedUp) {
    const EnvironmentVariable by_name(
        "VEKDB_IPMI", "lan://operator:pass:w@rd@localhost:" + std::to_string(relay_.port()));

    EXPECT_EQ(exchanged(kDeviceId).result, 0);
}

TEST_F(LanSession, RestartedControllerIsFoundAgain) {
    exchanged(kDeviceId);
    const EnvironmentVariable hurry("VEKDB_IPMI_TIMEOUT_MS", "300");
    exchanged(kDeviceId);
    const Peer successor;
    relay_.lead_to(successor.port());

    const int first = exchanged(kDeviceId).result;
    const EnvironmentVariable patience("VEKDB_IPMI_TIMEOUT_MS", "20000");

    EXPECT_EQ(first, kTimedOut);
    EXPECT_EQ(exchanged(kDeviceId).result, 0);
}

}  // namespace
