// SPDX-License-Identifier: Apache-2.0
#include "output_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace pwrmgt::pwrmgtctl {
namespace {

namespace fs = std::filesystem;

class OutputFile : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = fs::temp_directory_path() / "output_file_test.XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        place_ = pattern;
    }
    void TearDown() override { fs::remove_all(place_); }

    std::string contents(const std::string& path) {
        std::ifstream file(path);
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }
    size_t files() {
        return static_cast<size_t>(std::distance(fs::directory_iterator(place_), {}));
    }

    std::string place_;
};

TEST_F(OutputFile, NewFileHasTheContentsAndOrdinaryPermissions) {
    const mode_t mask = umask(022);

    const std::string mistake = write_file(place_ + "/new", "text\n");

    umask(mask);
    EXPECT_EQ(mistake, "");
    EXPECT_EQ(contents(place_ + "/new"), "text\n");
    EXPECT_EQ(fs::status(place_ + "/new").permissions(), fs::perms{0644});
}

TEST_F(OutputFile, OldFileIsReplacedNotWrittenInto) {
    std::ofstream(place_ + "/old") << "a longer text than the new one";
    fs::create_hard_link(place_ + "/old", place_ + "/reader");

    EXPECT_EQ(write_file(place_ + "/old", "new"), "");

    EXPECT_EQ(contents(place_ + "/old"), "new");
    EXPECT_EQ(contents(place_ + "/reader"), "a longer text than the new one");
}

TEST_F(OutputFile, NothingElseIsLeftBehind) {
    EXPECT_EQ(write_file(place_ + "/one", "text"), "");

    EXPECT_EQ(files(), 1);
}

TEST_F(OutputFile, DirectoryLinkAndDeviceAreLeftAlone) {
    std::ofstream(place_ + "/target") << "kept";
    fs::create_symlink("target", place_ + "/link");

    EXPECT_EQ(write_file(place_, "text"), place_ + ": is there and no regular file; left alone");
    EXPECT_EQ(write_file(place_ + "/link", "text"),
              place_ + "/link: is there and no regular file; left alone");
    EXPECT_EQ(write_file("/dev/null", "text"),
              "/dev/null: is there and no regular file; left alone");
    EXPECT_EQ(contents(place_ + "/target"), "kept");
    EXPECT_EQ(files(), 2);
}

TEST_F(OutputFile, MissingDirectoryIsTold) {
    EXPECT_EQ(write_file(place_ + "/none/file", "text"),
              place_ + "/none/file: No such file or directory");
}

// Where the disk is full the old file stays: here it may not hold more than four bytes.
TEST_F(OutputFile, FileThatCannotBeWrittenWholeLeavesTheOldOne) {
    std::ofstream(place_ + "/old") << "old";
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit four_bytes{4, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &four_bytes), 0);

    const std::string mistake = write_file(place_ + "/old", "more than four bytes");

    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(mistake, place_ + "/old: File too large");
    EXPECT_EQ(contents(place_ + "/old"), "old");
    EXPECT_EQ(files(), 1);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtctl
