// SPDX-License-Identifier: Apache-2.0
// Saved slots reach the disk. This program counts what is flushed, in place of the C library.
#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "database_fixture.h"

namespace {

std::vector<std::string> g_flushed;
int g_error = 0;

}  // namespace

extern "C" int fdatasync(int file) {
    std::error_code ignored;
    g_flushed.push_back(
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file), ignored));
    if (g_error != 0 && g_flushed.back().ends_with("-wal")) {
        errno = g_error;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fdatasync, file));
}

namespace pwrmgt::pwrmgtd::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;

class FlushTest : public DatabaseTest {
protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        const std::array rows{row(kMidnight, 1), row(kMidnight + 30, 2)};
        tables.append(rows);
        // The database flushes the head of a new log by itself.
        tables.save(kMidnight, kMidnight);
        g_flushed.clear();
    }
    void TearDown() override { g_error = 0; }
};

TEST_F(FlushTest, ASaveReachesTheDisk) {
    EXPECT_TRUE(tables.save(kMidnight + 30, kMidnight + 30));

    EXPECT_THAT(g_flushed, ElementsAre(EndsWith("/state/vek_pwr_db.sqlite-wal")));
}

TEST_F(FlushTest, ADiskThatRefusesMakesASaveAFailure) {
    g_error = EIO;

    EXPECT_FALSE(tables.save(kMidnight + 30, kMidnight + 30));
    EXPECT_EQ(log.count("flushing saved slots: Input/output error"), 1U);

    g_error = 0;
    EXPECT_TRUE(tables.save(kMidnight + 30, kMidnight + 30));
    EXPECT_EQ(log.count("flushing saved slots: works again"), 1U);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
