// SPDX-License-Identifier: Apache-2.0
// What ties the daemon to its process: the lock, the wall clock and the signals.
#include <gtest/gtest.h>
#include <signal.h>
#include <time.h>

#include <fstream>
#include <string>

#include "clock.h"
#include "lock.h"
#include "temp_file.h"

namespace pwrmgt::pwrmgtd {
namespace {

using Outcome = InstanceLock::Outcome;

TEST(InstanceLock, IsTakenOnce) {
    const TempFile place;
    InstanceLock first;
    InstanceLock second;
    std::string reason;

    EXPECT_EQ(first.take(place.path(), reason), Outcome::taken);
    EXPECT_EQ(second.take(place.path(), reason), Outcome::held_by_another);
    EXPECT_NE(reason.find("process " + std::to_string(getpid())), std::string::npos) << reason;
    EXPECT_NE(reason.find(place.path()), std::string::npos) << reason;
}

TEST(InstanceLock, EndsWithItsHolder) {
    const TempFile place;
    std::string reason;
    {
        InstanceLock first;
        ASSERT_EQ(first.take(place.path(), reason), Outcome::taken);
    }
    InstanceLock second;

    EXPECT_EQ(second.take(place.path(), reason), Outcome::taken);
}

TEST(InstanceLock, AnOldFileOfADeadProcessIsNoObstacle) {
    const TempFile place("99999999\n");
    InstanceLock lock;
    std::string reason;

    EXPECT_EQ(lock.take(place.path(), reason), Outcome::taken);

    std::string line;
    std::getline(std::ifstream(place.path()) >> std::ws, line);
    EXPECT_EQ(line, std::to_string(getpid()));
}

TEST(InstanceLock, APlaceThatCannotBeWrittenIsAFailure) {
    const TempFile place("a file, not a directory");
    InstanceLock lock;
    std::string reason;

    EXPECT_EQ(lock.take(place.path() + "/lock", reason), Outcome::failed);

    EXPECT_NE(reason.find("Not a directory"), std::string::npos) << reason;
}

TEST(SystemClock, TellsTheTimeOfDay) {
    SystemClock clock;
    const time_t before = time(nullptr);

    const std::int64_t now_s = clock.now();

    EXPECT_GE(now_s, before);
    EXPECT_LE(now_s, before + 60);
}

TEST(SystemClock, CountsSecondsThatNoSettingChanges) {
    SystemClock clock;
    timespec before{};
    clock_gettime(CLOCK_MONOTONIC, &before);

    const std::int64_t elapsed_s = clock.elapsed();

    EXPECT_GE(elapsed_s, before.tv_sec);
    EXPECT_LE(elapsed_s, before.tv_sec + 60);
}

TEST(SystemClock, WaitsForTheSecond) {
    SystemClock clock;
    const std::int64_t next_s = clock.now() + 1;

    while (clock.now() < next_s) {
        ASSERT_EQ(clock.wait_until(next_s), Wake::time);
    }

    EXPECT_GE(clock.now(), next_s);
}

TEST(SystemClock, WaitsASecondAtMost) {
    SystemClock clock;
    timespec before{};
    clock_gettime(CLOCK_MONOTONIC, &before);

    EXPECT_EQ(clock.wait_until(clock.now() + 3600), Wake::time);

    timespec after{};
    clock_gettime(CLOCK_MONOTONIC, &after);
    EXPECT_LT(after.tv_sec - before.tv_sec, 60);
}

TEST(SystemClock, ATimeThatHasPassedIsNotWaitedFor) {
    SystemClock clock;

    EXPECT_EQ(clock.wait_until(0), Wake::time);
}

TEST(SystemClock, ASignalThatCameEarlierIsTheEndOfTheNextWait) {
    for (const int signal : {SIGTERM, SIGINT}) {
        SystemClock clock;
        raise(signal);

        EXPECT_EQ(clock.wait_until(clock.now() + 3600), Wake::stop) << signal;
    }
}

TEST(SystemClock, AHangupAsksForAReloadOnce) {
    SystemClock clock;
    raise(SIGHUP);

    EXPECT_EQ(clock.wait_until(clock.now() + 3600), Wake::reload);
    EXPECT_EQ(clock.wait_until(0), Wake::time);
}

TEST(SystemClock, TheFirstUserSignalAsksForASaveOnce) {
    SystemClock clock;
    raise(SIGUSR1);

    EXPECT_EQ(clock.wait_until(clock.now() + 3600), Wake::save);
    EXPECT_EQ(clock.wait_until(0), Wake::time);
}

TEST(SystemClock, TheMostUrgentOfSeveralSignalsComesFirst) {
    SystemClock clock;
    raise(SIGUSR1);
    raise(SIGHUP);

    EXPECT_EQ(clock.wait_until(0), Wake::reload);
    EXPECT_EQ(clock.wait_until(0), Wake::save);
    raise(SIGHUP);
    raise(SIGTERM);
    EXPECT_EQ(clock.wait_until(0), Wake::stop);
}

TEST(SystemClock, AHangupThatTheStarterIgnoresIsIgnored) {
    std::signal(SIGHUP, SIG_IGN);
    {
        SystemClock clock;
        raise(SIGHUP);

        EXPECT_EQ(clock.wait_until(0), Wake::time);
    }
    std::signal(SIGHUP, SIG_DFL);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd
