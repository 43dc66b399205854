// SPDX-License-Identifier: Apache-2.0
// One state for all processes: shared, private, whole, and set aside when it is not.
#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "sim_test.h"
#include "support/second_process.h"

namespace {

namespace fs = std::filesystem;
using pwrmgt::ipmi::sim::encoded;
using pwrmgt::ipmi::sim::State;

mode_t mode_of(const std::string& path) {
    struct stat found {};
    return stat(path.c_str(), &found) == 0 ? found.st_mode & 07777 : 0;
}

// Gives up root, whom no permission stops.
bool become_ordinary() {
    if (geteuid() != 0) return true;
    return setgroups(0, nullptr) == 0 && setgid(65534) == 0 && setuid(65534) == 0;
}

class SimState : public SimTest {
protected:
    void put_state(const std::string& text) const {
        fs::create_directories(directory());
        std::ofstream(state_file(), std::ios::binary) << text;
    }
};

TEST_F(SimState, ReadingMakesNoFile) {
    capping(kGetCap);

    EXPECT_FALSE(fs::exists(directory()));
}

TEST_F(SimState, IsPrivateToItsOwnerWhateverTheUmask) {
    const mode_t before = umask(0);
    capping(kCapOf300W);
    umask(before);

    EXPECT_EQ(mode_of(directory()), 0700u);
    EXPECT_EQ(mode_of(state_file()), 0600u);
    EXPECT_EQ(mode_of(state_file() + ".lock"), 0600u);
    EXPECT_FALSE(fs::exists(state_file() + ".new"));
}

TEST_F(SimState, ProcessSeesWhatAnotherSets) {
    SecondProcess other([] { return std::int64_t{capping(kGetCap)[3]}; });
    EXPECT_EQ(other.ask(), 0xFF);

    capping(kCapOf300W);

    EXPECT_EQ(other.ask(), 0x2C);
}

TEST_F(SimState, FourProcessesLoseNoChange) {
    std::vector<pid_t> children;
    for (std::uint8_t gpu = 0; gpu < 4; ++gpu) {
        const pid_t child = fork();
        if (child == 0) {
            for (std::uint8_t value = 1; value <= 50; ++value)
                answer({0x20, 0x3A, 0, 0x06, 0xC1, gpu, value});
            _exit(testing::Test::HasFailure() ? 1 : 0);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }

    for (const auto& gpu : state().gpus)
        EXPECT_EQ(gpu.byte_cap, 50);
}

TEST_F(SimState, KilledWriterLeavesTheLastState) {
    capping(kCapOf300W);
    int ready[2] = {-1, -1};
    ASSERT_EQ(pipe(ready), 0);
    const pid_t writer = fork();
    if (writer == 0) {
        pwrmgt::ipmi::sim::Transaction transaction;
        std::ofstream(pwrmgt::ipmi::sim::state_path() + ".new") << "half of a sta";
        if (write(ready[1], "!", 1) != 1) _exit(1);
        for (;;)
            pause();
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
    close(ready[0]);
    close(ready[1]);

    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0, 1, 0x2C, 0x01, 1}));
    EXPECT_EQ(capping({0x02, 0, 0, 0, 1}), (Bytes{0x00, 0}));
    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0, 0, 0, 0, 1}));
    EXPECT_TRUE(log_lines.empty());
}

TEST_F(SimState, WriterThatIsStuckMakesTheFirmwareBusyForChangesOnly) {
    capping(kCapOf300W);
    const int held = open((state_file() + ".lock").c_str(), O_RDWR);
    ASSERT_EQ(flock(held, LOCK_EX), 0);

    EXPECT_EQ(capping({0x02, 0, 0, 0, 1}), (Bytes{0xC0}));
    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0, 1, 0x2C, 0x01, 1}));
    close(held);
}

TEST_F(SimState, DamagedFileIsSetAsideWithALogLine) {
    put_state("{\"format\":\"vekdb-ipmi-sim\",\"version\":1,\"cap\":{\"ena");

    EXPECT_EQ(capping(kGetCap), kNoCap);

    EXPECT_FALSE(fs::exists(state_file()));
    EXPECT_EQ(fs::file_size(state_file() + ".corrupt"), 50u);
    EXPECT_EQ(
        log_lines,
        (std::vector<std::string>{"firmware simulator: " + state_file() +
                                  ": damaged or no state of the firmware simulator, moved to " +
                                  state_file() + ".corrupt"}));
}

TEST_F(SimState, DamagedFileIsSetAsideBeforeAChangeToo) {
    put_state("");

    EXPECT_EQ(capping(kCapOf300W), (Bytes{0x00, 0}));

    EXPECT_EQ(fs::file_size(state_file() + ".corrupt"), 0u);
    EXPECT_EQ(capping(kGetCap), (Bytes{0x00, 0, 1, 0x2C, 0x01, 1}));
}

TEST_F(SimState, SecondDamagedFileTakesThePlaceOfTheFirst) {
    put_state("first");
    capping(kGetCap);
    put_state("number two");

    capping(kGetCap);

    EXPECT_EQ(text_of(state_file() + ".corrupt"), "number two");
}

TEST_F(SimState, ForeignFilesAreSetAside) {
    for (const char* text :
         {"[]", "null", "{}", "{\"format\":\"other\",\"version\":1}", "\xFF\xFE"}) {
        put_state(text);

        EXPECT_EQ(capping(kGetCap), kNoCap) << text;
        EXPECT_EQ(text_of(state_file() + ".corrupt"), text);
        fs::remove(state_file() + ".corrupt");
    }
}

TEST_F(SimState, LinkDirectoryAndFifoInItsPlaceAreSetAside) {
    const std::string target = place_.directory() + "/target";
    std::ofstream(target) << encoded(State{});
    fs::create_directories(directory());
    fs::create_symlink(target, state_file());
    EXPECT_EQ(capping(kGetCap), kNoCap);
    EXPECT_TRUE(fs::is_symlink(state_file() + ".corrupt"));

    mkfifo(state_file().c_str(), 0600);
    EXPECT_EQ(capping(kCapOf300W), (Bytes{0x00, 0}));
    EXPECT_TRUE(fs::is_fifo(state_file() + ".corrupt"));
    EXPECT_EQ(text_of(target), encoded(State{}));
}

TEST_F(SimState, FileAboveOneMebibyteIsSetAside) {
    put_state(encoded(State{}) + std::string(1 << 20, ' '));

    EXPECT_EQ(capping(kGetCap), kNoCap);

    EXPECT_TRUE(fs::exists(state_file() + ".corrupt"));
}

TEST_F(SimState, FileOfANewerVersionIsLeftAlone) {
    put_state("{\"format\":\"vekdb-ipmi-sim\",\"version\":2}");

    EXPECT_EQ(capping(kGetCap), (Bytes{0xD3}));
    EXPECT_EQ(capping(kCapOf300W), (Bytes{0xD3}));
    EXPECT_EQ(capping({0x05}), (Bytes{0xC1}));

    EXPECT_EQ(text_of(state_file()), "{\"format\":\"vekdb-ipmi-sim\",\"version\":2}");
    EXPECT_EQ(log_lines, (std::vector<std::string>{"firmware simulator: " + state_file() +
                                                   ": made by a newer version"}));
}

TEST_F(SimState, DirectoryThatCannotBeMadeRefusesChangesAndReadings) {
    const EnvironmentVariable below_a_file("VEKDB_RUNTIME_DIR", trace_file_.path() + "/run");

    EXPECT_EQ(capping(kCapOf300W), (Bytes{0xD3}));
    EXPECT_EQ(capping(kGetCap), (Bytes{0xD3}));
    EXPECT_EQ(capping({0x05}), (Bytes{0xC1}));
}

TEST_F(SimState, RelativeDirectoryIsRefused) {
    const EnvironmentVariable relative("VEKDB_RUNTIME_DIR", "run");

    EXPECT_EQ(capping(kCapOf300W), (Bytes{0xD3}));
    EXPECT_EQ(capping(kGetCap), (Bytes{0xD3}));
}

TEST_F(SimState, DirectoryThatMayNotBeWrittenServesReadingsAndRefusesChanges) {
    chmod(place_.directory().c_str(), 0755);
    capping(kCapOf300W);
    chmod(state_file().c_str(), 0644);
    chmod(trace_file_.directory().c_str(), 0755);
    chmod(directory().c_str(), 0555);

    EXPECT_EQ(in_child([] {
                  if (!become_ordinary()) return 1;
                  if (capping({0x02, 0, 0, 0, 1}) != Bytes{0xD3}) return 2;
                  if (capping(kGetCap) != Bytes{0x00, 0, 1, 0x2C, 0x01, 1}) return 3;
                  return exchanged(kRealtimeRequest).le16(1) == 300 ? 0 : 4;
              }),
              0);
    chmod(directory().c_str(), 0755);
}

TEST_F(SimState, FullDiskRefusesTheChangeAndKeepsTheState) {
    capping(kCapOf300W);
    const std::string before = text_of(state_file());

    EXPECT_EQ(in_child([] {
                  // As a full disk: no file may grow at all.
                  signal(SIGXFSZ, SIG_IGN);
                  const rlimit none{0, 0};
                  if (setrlimit(RLIMIT_FSIZE, &none) != 0) return 1;
                  return capping({0x02, 0, 0, 0, 1}) == Bytes{0xD3} ? 0 : 2;
              }),
              0);
    EXPECT_EQ(text_of(state_file()), before);
    EXPECT_FALSE(fs::exists(state_file() + ".new"));
}

}  // namespace
