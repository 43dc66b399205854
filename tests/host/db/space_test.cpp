// SPDX-License-Identifier: Apache-2.0
// A disk that is full: statements fail, and work again when there is space.
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "database_test.h"

namespace {

namespace fs = std::filesystem;

// Inserts until one fails; false when none did.
bool fill_up(std::uint32_t db, std::uint32_t& stored) {
    for (stored = 0; stored < 20000; ++stored) {
        if (insert_slot(db, "HistPowers24HrMem", static_cast<std::uint16_t>(stored), stored, 1) !=
            0)
            return true;
    }
    return false;
}

std::int64_t count_rows(std::uint32_t db) {
    return select(db, "select count(*) from HistPowers24HrMem", 1)[0][0];
}

int limit_then_lift() {
    std::signal(SIGXFSZ, SIG_IGN);
    const std::uint32_t db = open_database();
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlim_t before = limit.rlim_cur;
    limit.rlim_cur = 300000;
    setrlimit(RLIMIT_FSIZE, &limit);
    std::uint32_t stored = 0;
    if (!fill_up(db, stored)) return 1;
    if (count_rows(db) != stored) return 2;
    limit.rlim_cur = before;
    setrlimit(RLIMIT_FSIZE, &limit);
    if (insert_slot(db, "HistPowers24HrMem", 1, 50000, 1) != 0) return 3;
    return count_rows(db) == stored + 1 ? 0 : 4;
}

constexpr int kNoMount = 77;

int fill_small_disk(const std::string& directory) {
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return kNoMount;
    fs::create_directory(directory);
    if (mount("tmpfs", directory.c_str(), "tmpfs", 0, "size=600k,mode=0700") != 0) return kNoMount;
    const std::uint32_t db = open_database();
    if (db == 0) return 1;
    std::ofstream ballast{directory + "/ballast"};
    ballast << std::string(100000, 'b') << std::flush;
    std::uint32_t stored = 0;
    if (!fill_up(db, stored)) return 2;
    if (count_rows(db) != stored) return 3;
    fs::remove(directory + "/ballast");
    ballast.close();
    if (insert_slot(db, "HistPowers24HrMem", 1, 50000, 1) != 0) return 4;
    return count_rows(db) == stored + 1 ? 0 : 5;
}

class Space : public DatabaseTest {};

TEST_F(Space, FileSizeLimitIsAFailedInsertAndLiftingItHeals) {
    EXPECT_EQ(in_child(limit_then_lift), 0);
}

TEST_F(Space, FullDiskIsAFailedInsertAndSpaceHeals) {
    const int outcome = in_child([&] { return fill_small_disk(files_.runtime); });

    if (outcome == kNoMount) GTEST_SKIP() << "needs the right to mount";
    EXPECT_EQ(outcome, 0);
}

}  // namespace
