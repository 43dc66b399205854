// SPDX-License-Identifier: Apache-2.0
// Who may use the directories and files, and who may not.
#include <grp.h>
#include <sys/stat.h>

#include <filesystem>

#include "database_test.h"

namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;

mode_t mode_of(const std::string& path) {
    struct stat found {};
    return stat(path.c_str(), &found) == 0 ? found.st_mode & 07777 : 0;
}

// Gives up root, whom no permission stops.
bool become_ordinary() {
    if (geteuid() != 0) return true;
    return setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0;
}

class Files : public DatabaseTest {
protected:
    void SetUp() override { chmod(place_.directory().c_str(), 0755); }
};

TEST_F(Files, AreMadePrivateToTheirOwnerWhateverTheUmask) {
    const mode_t before = umask(0);
    const std::uint32_t db = open_database();
    insert_slot(db, "HistPowers24Hr", 1, 30, 1);
    umask(before);

    EXPECT_EQ(mode_of(files_.state), 0700u);
    EXPECT_EQ(mode_of(files_.runtime), 0700u);
    EXPECT_EQ(mode_of(persistent_path()), 0600u);
    EXPECT_EQ(mode_of(memory_path()), 0600u);
    EXPECT_EQ(mode_of(persistent_path() + "-wal"), 0600u);
    EXPECT_EQ(mode_of(memory_path() + "-shm"), 0600u);
    vek_db_close(db);
}

TEST_F(Files, MissingParentDirectoriesAreMade) {
    const EnvironmentVariable deep{"VEKDB_STATE_DIR", place_.directory() + "/a/b/c"};
    const std::uint32_t db = open_database();

    EXPECT_NE(db, 0u);
    EXPECT_TRUE(fs::exists(place_.directory() + "/a/b/c/vek_pwr_db.sqlite"));
    vek_db_close(db);
}

TEST_F(Files, DirectoryThatOthersMayWriteToIsRefusedAndLoggedOnce) {
    fs::create_directory(files_.state);
    chmod(files_.state.c_str(), 0777);

    EXPECT_EQ(open_database(), 0u);
    EXPECT_EQ(log_lines(), (std::vector<std::string>{"vekdb: the database did not open: " +
                                                     files_.state + ": others may write to it"}));
}

TEST_F(Files, RelativeDirectoryIsRefused) {
    const EnvironmentVariable relative{"VEKDB_RUNTIME_DIR", "run"};

    EXPECT_EQ(open_database(), 0u);
    EXPECT_EQ(log_lines().back(), "vekdb: the database did not open: run: not an absolute path");
}

TEST_F(Files, FileInThePlaceOfADirectoryIsRefused) {
    TempFile file{"text"};
    const EnvironmentVariable state{"VEKDB_STATE_DIR", file.path()};

    EXPECT_EQ(open_database(), 0u);
    EXPECT_EQ(log_lines().back(),
              "vekdb: the database did not open: " + file.path() + ": not a directory");
}

TEST_F(Files, DirectoryThatCannotBeMadeIsAnOpenThatFails) {
    chmod(place_.directory().c_str(), 0555);

    EXPECT_EQ(in_child([&] {
                  if (!become_ordinary()) return 2;
                  if (open_database() != 0) return 1;
                  return log_lines().size() == 1 &&
                                 log_lines()[0].find("cannot be made: Permission denied") !=
                                     std::string::npos
                             ? 0
                             : 3;
              }),
              0);
    chmod(place_.directory().c_str(), 0755);
}

TEST_F(Files, ReaderWithoutWritePermissionReadsAndCannotWrite) {
    const std::uint32_t db = open_database();
    insert_slot(db, "HistPowers24HrMem", 1, 30, 100);
    raw(db, "insert into PowerPolicy (_id) values (0)");
    for (const std::string& directory : {files_.state, files_.runtime}) {
        for (const auto& file : fs::directory_iterator(directory))
            chmod(file.path().c_str(), 0444);
        chmod(directory.c_str(), 0555);
    }

    EXPECT_EQ(in_child([&] {
                  if (!become_ordinary()) return 2;
                  const std::uint32_t mine = open_database();
                  if (mine == 0) return 3;
                  if (select(mine, "select _id from HistPowers24HrMem", 1) != Table{{1}}) return 4;
                  if (insert_slot(mine, "HistPowers24HrMem", 2, 60, 1) == 0) return 5;
                  return raw(mine, "delete from PowerPolicy") == 0 ? 6 : 0;
              }),
              0);
    EXPECT_EQ(select(db, "select _id from PowerPolicy", 1), (Table{{0}}));
    vek_db_close(db);
    for (const std::string& directory : {files_.state, files_.runtime})
        chmod(directory.c_str(), 0755);
}

TEST_F(Files, DirectoryOfAnotherUserIsRefused) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root, to have two users";
    fs::create_directory(files_.state);
    ASSERT_EQ(chown(files_.state.c_str(), 12345, 12345), 0);
    chmod(files_.state.c_str(), 0755);

    EXPECT_EQ(
        in_child([&] {
            if (!become_ordinary() || open_database() != 0) return 1;
            return log_lines().back().find("belongs to another user") == std::string::npos ? 2 : 0;
        }),
        0);
}

TEST_F(Files, RootLeavesTheFilesToTheDirectorysOwner) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root";
    for (const std::string& directory : {files_.state, files_.runtime}) {
        fs::create_directory(directory);
        ASSERT_EQ(chown(directory.c_str(), kNobody, kNobody), 0);
        chmod(directory.c_str(), 0700);
    }
    const std::uint32_t db = open_database();
    insert_slot(db, "HistPowers24HrMem", 1, 30, 1);

    EXPECT_EQ(in_child([&] {
                  if (!become_ordinary()) return 1;
                  const std::uint32_t mine = open_database();
                  return insert_slot(mine, "HistPowers24HrMem", 2, 60, 1) == 0 ? 0 : 2;
              }),
              0);
    vek_db_close(db);
}

TEST_F(Files, OnlyTheTablesNamedMemAreInTheRuntimeOne) {
    const std::uint32_t db = open_database();

    EXPECT_EQ(
        select(db,
               "select count(*), sum(name like '%Mem') from main.sqlite_schema where type='table'",
               2),
        (Table{{4, 0}}));
    EXPECT_EQ(
        select(db,
               "select count(*), sum(name like '%Mem') from mem.sqlite_schema where type='table'",
               2),
        (Table{{7, 7}}));
    vek_db_close(db);
}

}  // namespace
