// SPDX-License-Identifier: Apache-2.0
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "sim_test.h"

namespace {

namespace fs = std::filesystem;

Bytes open_request(const std::string& name) {
    return joined({0x20, 0x2E, 0, 0x90, 0x12, 0x34, 0x56, 0x01, 0x01, 0x01, 0xF0, 0, 0, 0, 0, 0},
                  name);
}

Bytes read_request(const Bytes& handle, std::uint8_t offset, std::uint16_t wanted) {
    const Bytes behind{offset,
                       0,
                       0,
                       0,
                       static_cast<std::uint8_t>(wanted & 0xFF),
                       static_cast<std::uint8_t>(wanted >> 8)};
    return joined(joined({0x20, 0x2E, 0, 0x90, 0x12, 0x34, 0x56, 0x02}, handle), behind);
}

class SimStore : public SimTest {
protected:
    SimStore() { fs::create_directories(directory() + "/store"); }

    void put(const std::string& name, const std::string& text) const {
        std::ofstream(directory() + "/store/" + name, std::ios::binary) << text;
    }
    static Bytes handle_of(const std::string& name) {
        const Bytes opened = answer(open_request(name));
        EXPECT_EQ(opened.size(), 8u);
        return {opened.end() - 4, opened.end()};
    }
};

TEST_F(SimStore, OpenedFileIsAHandleBehindTheEnterpriseNumber) {
    put("boot.log", "x");

    EXPECT_EQ(answer(open_request("boot.log")), (Bytes{0x00, 0x12, 0x34, 0x56, 1, 0, 0, 0}));
    EXPECT_EQ(answer(open_request("boot.log")), (Bytes{0x00, 0x12, 0x34, 0x56, 2, 0, 0, 0}));
}

TEST_F(SimStore, ReadFileIsItsSizeAndItsBytes) {
    put("boot.log", std::string("a\0\xFFz", 4));

    const Bytes read = answer(read_request(handle_of("boot.log"), 0, 200));

    EXPECT_EQ(read, (Bytes{0x00, 0x12, 0x34, 0x56, 4, 0, 'a', 0, 0xFF, 'z'}));
}

TEST_F(SimStore, ReadStartsAtTheOffsetAndTakesNoMoreThanWanted) {
    put("digits", "0123456789");
    const Bytes handle = handle_of("digits");

    EXPECT_EQ(answer(read_request(handle, 8, 200)),
              (Bytes{0x00, 0x12, 0x34, 0x56, 2, 0, '8', '9'}));
    EXPECT_EQ(answer(read_request(handle, 3, 1)), (Bytes{0x00, 0x12, 0x34, 0x56, 1, 0, '3'}));
    EXPECT_EQ(answer(read_request(handle, 10, 200)), (Bytes{0x00, 0x12, 0x34, 0x56, 0, 0}));
    EXPECT_EQ(answer(read_request(handle, 0, 0)), (Bytes{0x00, 0x12, 0x34, 0x56, 0, 0}));
}

TEST_F(SimStore, ReadNeverExceedsAResponse) {
    put("large", std::string(1000, 'l'));
    const Bytes handle = handle_of("large");

    const Bytes two_hundred = answer(read_request(handle, 0, 200));
    const Bytes all = answer(read_request(handle, 0, 1000));

    EXPECT_EQ(two_hundred.size(), 206u);
    EXPECT_EQ(all.size(), 256u);
    EXPECT_EQ(all[4], 250);
}

TEST_F(SimStore, HandleOfOneProcessIsReadInAnother) {
    put("boot.log", "x");
    const Bytes handle = handle_of("boot.log");

    EXPECT_EQ(in_child([&] { return answer(read_request(handle, 0, 200)).size() == 7 ? 0 : 1; }),
              0);
}

TEST_F(SimStore, UnknownNameAndHandleAreNotPresent) {
    EXPECT_EQ(answer(open_request("boot.log")), (Bytes{0xCB}));
    EXPECT_EQ(answer(read_request({1, 0, 0, 0}, 0, 200)), (Bytes{0xCB}));
    EXPECT_EQ(answer(read_request({0, 0, 0, 0}, 0, 200)), (Bytes{0xCB}));
}

TEST_F(SimStore, FileThatIsGoneIsNotPresent) {
    put("boot.log", "x");
    const Bytes handle = handle_of("boot.log");

    fs::remove(directory() + "/store/boot.log");

    EXPECT_EQ(answer(read_request(handle, 0, 200)), (Bytes{0xCB}));
}

TEST_F(SimStore, SeventeenthHandleTakesThePlaceOfTheFirst) {
    put("boot.log", "x");
    const Bytes first = handle_of("boot.log");
    const Bytes second = handle_of("boot.log");

    for (int i = 0; i < 15; ++i)
        handle_of("boot.log");

    EXPECT_EQ(answer(read_request(first, 0, 200)), (Bytes{0xCB}));
    EXPECT_EQ(answer(read_request(second, 0, 200)).size(), 7u);
    EXPECT_EQ(state().open_files.size(), 16u);
}

TEST_F(SimStore, HandleAfterTheLastNumberIsOne) {
    put("boot.log", "x");
    set_up([](auto& state) { state.next_handle = 0xFFFFFFFF; });

    EXPECT_EQ(handle_of("boot.log"), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(handle_of("boot.log"), (Bytes{1, 0, 0, 0}));
}

TEST_F(SimStore, NameThatCouldLeadElsewhereIsRefused) {
    put("boot.log", "x");

    for (const std::string name : {"../ipmi-sim.json", "/etc/passwd", "..", ".", "", "./boot.log",
                                   "boot.log/", "boot\nlog"}) {
        EXPECT_EQ(answer(open_request(name)), (Bytes{0xCC})) << name;
    }
    EXPECT_EQ(answer(open_request(std::string("boot.log\0", 9))), (Bytes{0xCC}));
}

TEST_F(SimStore, LinkDirectoryAndFifoAreNoFiles) {
    fs::create_symlink("/etc/passwd", directory() + "/store/link");
    fs::create_directory(directory() + "/store/directory");
    mkfifo((directory() + "/store/fifo").c_str(), 0600);

    for (const char* name : {"link", "directory", "fifo"})
        EXPECT_EQ(answer(open_request(name)), (Bytes{0xCB})) << name;
}

TEST_F(SimStore, LinkThatReplacesAnOpenFileIsNotFollowed) {
    put("boot.log", "x");
    const Bytes handle = handle_of("boot.log");
    fs::remove(directory() + "/store/boot.log");

    fs::create_symlink("/etc/passwd", directory() + "/store/boot.log");

    EXPECT_EQ(answer(read_request(handle, 0, 200)), (Bytes{0xCB}));
}

TEST_F(SimStore, DirectoryCanBeChosen) {
    const TempFile elsewhere("chosen");
    const EnvironmentVariable chosen("VEKDB_SIM_STORE", elsewhere.directory());

    const Bytes read = answer(read_request(handle_of("file"), 0, 200));

    EXPECT_EQ(read, (Bytes{0x00, 0x12, 0x34, 0x56, 6, 0, 'c', 'h', 'o', 's', 'e', 'n'}));
}

TEST_F(SimStore, NameOf112CharactersIsTheLongest) {
    const std::string longest(112, 'n');
    put(longest, "x");

    EXPECT_EQ(answer(open_request(longest)).size(), 8u);
    EXPECT_EQ(answer(open_request(longest + 'n')), (Bytes{0xC7}));
}

TEST_F(SimStore, MalformedRequestIsRefused) {
    put("boot.log", "x");
    Bytes other_parameters = open_request("boot.log");
    other_parameters[10] = 0xF1;
    Bytes too_short = read_request({1, 0, 0, 0}, 0, 200);
    too_short.pop_back();

    EXPECT_EQ(answer(other_parameters), (Bytes{0xCC}));
    EXPECT_EQ(answer(too_short), (Bytes{0xC7}));
    EXPECT_EQ(answer({0x20, 0x2E, 0, 0x90, 0x12, 0x34, 0x56}), (Bytes{0xC1}));
    EXPECT_EQ(answer({0x20, 0x2E, 0, 0x90, 0x12, 0x34, 0x56, 0x03}), (Bytes{0xC1}));
}

}  // namespace
