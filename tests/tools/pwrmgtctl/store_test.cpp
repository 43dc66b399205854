// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <fstream>
#include <sstream>

#include "firmware_tool.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

class Store : public FirmwareTest {
protected:
    void TearDown() override {
        std::filesystem::remove(output_);
        FirmwareTest::TearDown();
    }
    std::string written() const {
        std::ostringstream text;
        text << std::ifstream(output_, std::ios::binary).rdbuf();
        return text.str();
    }

    const std::string output_ = state_directory() + "/block";
};

TEST_F(Store, ReadPutsTheBytesOnStandardOutputAsTheyAre) {
    const std::string bytes("one\r\n\0\xff\x01 two", 12);
    put_file("a", bytes);

    const Finished run = tool({"store", "read", "a"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, bytes);
}

TEST_F(Store, EmptyFileIsNoByte) {
    put_file("a", "");

    const Finished run = tool({"store", "read", "a"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "");
}

TEST_F(Store, HexIsADumpForPeople) {
    put_file("a", "0123456789abcdef\x7f\n");

    EXPECT_EQ(tool({"store", "read", "a", "--hex"}).out,
              "a: 18 bytes; asked of the firmware\n"
              "0000  30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66  0123456789abcdef\n"
              "0010  7f 0a                                            ..\n");
}

TEST_F(Store, JsonHasTextWhereThereIsOne) {
    put_file("a", "hello\n");

    const json document = json_of({"store", "read", "a", "--json"});

    EXPECT_EQ(document, parsed(R"({
        "schema": "pwrmgtctl.store.read/1", "source": "firmware", "database": null,
        "asked_at_s": 1700000010, "asked_at_utc": "2023-11-14T22:13:30Z", "name": "a",
        "size_bytes": 6, "may_be_longer": false, "output": null,
        "data_hex": "68656c6c6f0a", "data_text": "hello\n"})"));
}

TEST_F(Store, JsonOfOtherBytesHasNoText) {
    put_file("a", "\xff");

    const json document = json_of({"store", "read", "a", "--json"});

    EXPECT_EQ(document["data_hex"], "ff");
    EXPECT_TRUE(document["data_text"].is_null());
}

TEST_F(Store, OutputFileGetsTheBytes) {
    put_file("a", "hello\n");

    const Finished run = tool({"store", "read", "a", "--output", output_});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(run.out, "a: 6 bytes, written to " + output_ + "; asked of the firmware\n");
    EXPECT_EQ(written(), "hello\n");
}

TEST_F(Store, OutputFileThatCannotBeWrittenIsExit1) {
    put_file("a", "hello\n");

    const Finished run =
        tool({"store", "read", "a", "--output", state_directory() + "/none/block"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("No such file or directory"), std::string::npos) << run.err;
}

TEST_F(Store, FileOf200BytesMayBeLonger) {
    put_file("a", std::string(201, 'x'));

    const Finished run = tool({"store", "read", "a"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, std::string(200, 'x'));
    EXPECT_EQ(run.err, "pwrmgtctl: only the first 200 bytes can be read; the file may be longer\n");
}

TEST_F(Store, FileOf199BytesIsWhole) {
    put_file("a", std::string(199, 'x'));

    const Finished run = tool({"store", "read", "a"});

    EXPECT_EQ(run.out, std::string(199, 'x'));
    EXPECT_EQ(run.err, "");
}

TEST_F(Store, NameOf112CharactersIsAskedFor) {
    put_file(std::string(112, 'n'), "x");

    EXPECT_EQ(tool({"store", "read", std::string(112, 'n')}).out, "x");
}

TEST_F(Store, NameOf113CharactersIsAMistake) {
    EXPECT_EQ(tool({"store", "read", std::string(113, 'n')}).exit, 2);
}

TEST_F(Store, FileThatIsNotThereIsExit1) {
    expect_refusal({"store", "read", "a"}, 1,
                   "the firmware did not answer for a, refused, or has no such file (status 31)");
}

class StoreFault : public Store, public ::testing::WithParamInterface<const char*> {};

TEST_P(StoreFault, IsExit1WithoutAByte) {
    put_file("a", "hello\n");
    fail_always("0x90", "", GetParam());

    expect_refusal({"store", "read", "a"}, 1,
                   "the firmware did not answer for a, refused, or has no such file (status 31)");
}

INSTANTIATE_TEST_SUITE_P(EveryKind, StoreFault,
                         ::testing::Values("busy", "no-answer", "late:1", "completion:0xC3"));

// A number of data bytes above what was asked for is refused before a byte is looked at.
TEST_F(Store, GarbageIsExit1) {
    put_file("a", "hello\n");
    fail_always("0x90", "0x02", "garbage");

    EXPECT_EQ(tool({"store", "read", "a"}).exit, 1);
}

}  // namespace
}  // namespace pwrmgt::tooltest
