// SPDX-License-Identifier: Apache-2.0
// What a service manager hears, on a real socket.
#include "service_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <optional>
#include <string>

#include "environment.h"
#include "temp_file.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

using testing::MatchesRegex;

// The socket that a service manager listens on.
class Listener {
public:
    // A name that starts with @ has no file.
    explicit Listener(const std::string& name) : socket_(socket(AF_UNIX, SOCK_DGRAM, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        if (name.front() == '@') address.sun_path[0] = '\0';
        const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
        EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&address), length), 0);
    }
    ~Listener() { close(socket_); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    // The next datagram that has arrived; nothing when there is none.
    std::optional<std::string> heard() const {
        std::array<char, 512> buffer{};
        const ssize_t bytes = recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (bytes < 0) return std::nullopt;
        return std::string(buffer.data(), static_cast<std::size_t>(bytes));
    }

private:
    int socket_;
};

class ServiceManagerTest : public testing::Test {
protected:
    TempFile place_;
    Listener listener_{place_.path()};
    EnvironmentVariable socket_{"NOTIFY_SOCKET", place_.path()};
    EnvironmentVariable interval_{"WATCHDOG_USEC"};
    EnvironmentVariable process_{"WATCHDOG_PID"};
};

TEST_F(ServiceManagerTest, HearsOfStartStatusAndEnd) {
    ServiceManager manager;

    manager.ready("recording from a trace");
    manager.status("two\nlines");
    manager.stopping();

    EXPECT_EQ(listener_.heard(), "READY=1\nSTATUS=recording from a trace");
    EXPECT_EQ(listener_.heard(), "STATUS=two lines");
    EXPECT_EQ(listener_.heard(), "STOPPING=1\nSTATUS=saving the last slots");
    EXPECT_EQ(listener_.heard(), std::nullopt);
}

TEST_F(ServiceManagerTest, HearsOfAReloadWithItsTime) {
    ServiceManager().reloading();

    EXPECT_THAT(listener_.heard().value_or(""), MatchesRegex("RELOADING=1\nMONOTONIC_USEC=[0-9]+"));
}

TEST_F(ServiceManagerTest, HearsNoLifeSignWithoutAWatchdog) {
    ServiceManager().alive();

    EXPECT_EQ(listener_.heard(), std::nullopt);
}

TEST_F(ServiceManagerTest, HearsALifeSignWhenAThirdOfTheIntervalIsOver) {
    EnvironmentVariable interval("WATCHDOG_USEC", "3");
    EnvironmentVariable process("WATCHDOG_PID", std::to_string(getpid()));
    ServiceManager manager;
    manager.ready("");
    listener_.heard();

    // A microsecond has passed after some calls at most.
    std::optional<std::string> sign;
    while (!sign) {
        manager.alive();
        sign = listener_.heard();
    }

    EXPECT_EQ(sign, "WATCHDOG=1");
}

TEST_F(ServiceManagerTest, HearsNoLifeSignBefore) {
    EnvironmentVariable interval("WATCHDOG_USEC", "3600000000");
    ServiceManager manager;
    manager.ready("");
    listener_.heard();

    manager.alive();

    EXPECT_EQ(listener_.heard(), std::nullopt);
}

TEST_F(ServiceManagerTest, AWatchdogOfAnotherProcessOrWithoutANumberIsNone) {
    EnvironmentVariable process("WATCHDOG_PID", "1");
    EnvironmentVariable interval("WATCHDOG_USEC", "1");
    ServiceManager of_another;
    of_another.alive();
    setenv("WATCHDOG_PID", "", 1);
    setenv("WATCHDOG_USEC", "soon", 1);
    ServiceManager without_number;
    without_number.alive();

    EXPECT_EQ(listener_.heard(), std::nullopt);
}

TEST(ServiceManager, MayListenOnANameWithoutAFile) {
    const std::string name = "@pwrmgtd-test-" + std::to_string(getpid());
    const Listener listener(name);
    EnvironmentVariable socket("NOTIFY_SOCKET", name);

    ServiceManager().status("here");

    EXPECT_EQ(listener.heard(), "STATUS=here");
}

TEST(ServiceManager, NobodyListeningIsNoFailure) {
    for (const char* name : {"", "relative", "/nonexistent/socket"}) {
        EnvironmentVariable socket("NOTIFY_SOCKET", name);
        ServiceManager manager;

        manager.ready("here");
        manager.alive();
    }
    EnvironmentVariable socket("NOTIFY_SOCKET", "/" + std::string(200, 'x'));
    ServiceManager().stopping();
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
