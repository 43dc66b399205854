// SPDX-License-Identifier: Apache-2.0
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>

#include "support/environment.h"
#include "support/second_process.h"
#include "support/temp_file.h"
#include "vekdb_prop.h"

namespace {

constexpr int kFound = 0;
constexpr int kNullArgument = 1;
constexpr int kNoFile = 2;
constexpr int kNoKey = 3;
constexpr int kNotANumber = 4;
constexpr int kTooWide = 5;

class PropertyStore : public testing::Test {
protected:
    void holds(std::string_view text) const { file_.write(text); }

    // What a 32-bit read returns and leaves in an output that starts as 77.
    struct Got {
        int result;
        std::uint32_t value;
        bool operator==(const Got&) const = default;
    };
    static Got dword(const char* key) {
        Got got{-1, 77};
        got.result = propdb_get_dword(key, &got.value);
        return got;
    }

    TempFile file_;
    EnvironmentVariable properties_{"VEKDB_PROPS", file_.path()};
};

TEST_F(PropertyStore, DecimalNumberIsRead) {
    holds("/dc/tavn/dm/planar/0/psu/maxcount = 4\n");

    EXPECT_EQ(dword("/dc/tavn/dm/planar/0/psu/maxcount"), (Got{kFound, 4}));
}

TEST_F(PropertyStore, HexadecimalNumberIsRead) {
    holds("/a=0x1F\n/b = 0Xff\n");

    EXPECT_EQ(dword("/a"), (Got{kFound, 31}));
    EXPECT_EQ(dword("/b"), (Got{kFound, 255}));
}

TEST_F(PropertyStore, LeadingZeroIsStillDecimal) {
    holds("/a = 010\n");

    EXPECT_EQ(dword("/a"), (Got{kFound, 10}));
}

TEST_F(PropertyStore, CommentsAndBlankLinesAreSkipped) {
    holds("# /a = 1\n\n   \n  # text\n/a = 2   # supplies\n");

    EXPECT_EQ(dword("/a"), (Got{kFound, 2}));
}

TEST_F(PropertyStore, LinesWithoutAnEqualsSignAreSkipped) {
    holds("/a\n/a 5\n/a = 6\n");

    EXPECT_EQ(dword("/a"), (Got{kFound, 6}));
}

TEST_F(PropertyStore, KeyIsMatchedAsAWhole) {
    holds("/a/b = 1\n/a = 2\n/ab = 3\n");

    EXPECT_EQ(dword("/a"), (Got{kFound, 2}));
    EXPECT_EQ(dword("/A"), (Got{kNoKey, 77}));
    EXPECT_EQ(dword("a"), (Got{kNoKey, 77}));
}

TEST_F(PropertyStore, OfEqualKeysTheLastHolds) {
    holds("/a = 1\n/b = 5\n/a = 2\n");

    EXPECT_EQ(dword("/a"), (Got{kFound, 2}));
}

TEST_F(PropertyStore, LastOfEqualKeysHoldsAlsoWhenItIsNoNumber) {
    holds("/a = 1\n/a = many\n");

    EXPECT_EQ(dword("/a"), (Got{kNotANumber, 77}));
}

TEST_F(PropertyStore, LastLineNeedsNoNewline) {
    holds("/a = 1\n/b = 2");

    EXPECT_EQ(dword("/b"), (Got{kFound, 2}));
}

TEST_F(PropertyStore, CarriageReturnsAndTabsAreBlanks) {
    holds("\t/a\t=\t3\t\r\n/b=4\r\n");

    EXPECT_EQ(dword("/a"), (Got{kFound, 3}));
    EXPECT_EQ(dword("/b"), (Got{kFound, 4}));
}

TEST_F(PropertyStore, NullKeyIsRefused) {
    holds("/a = 1\n");
    std::uint8_t value = 77;

    EXPECT_EQ(propdb_get_byte(nullptr, &value), kNullArgument);
    EXPECT_EQ(value, 77);
}

TEST_F(PropertyStore, NullOutputIsRefusedByEveryWidth) {
    holds("/a = 1\n");

    EXPECT_EQ(propdb_get_byte("/a", nullptr), kNullArgument);
    EXPECT_EQ(propdb_get_word("/a", nullptr), kNullArgument);
    EXPECT_EQ(propdb_get_dword("/a", nullptr), kNullArgument);
}

TEST_F(PropertyStore, EmptyKeyIsNoKey) {
    holds(" = 1\n");

    EXPECT_EQ(dword(""), (Got{kNoKey, 77}));
}

TEST_F(PropertyStore, EmptyFileHoldsNoKey) {
    holds("");

    EXPECT_EQ(dword("/a"), (Got{kNoKey, 77}));
}

TEST_F(PropertyStore, MissingFileIsNoFile) {
    EXPECT_EQ(dword("/a"), (Got{kNoFile, 77}));
}

TEST_F(PropertyStore, DirectoryIsNoFile) {
    std::filesystem::create_directory(file_.path());

    EXPECT_EQ(dword("/a"), (Got{kNoFile, 77}));
}

TEST_F(PropertyStore, FifoIsNoFileAndDoesNotHoldTheCaller) {
    ASSERT_EQ(mkfifo(file_.path().c_str(), 0600), 0);

    EXPECT_EQ(dword("/a"), (Got{kNoFile, 77}));
}

TEST_F(PropertyStore, FileThatTheCallerMayNotReadIsNoFile) {
    holds("/a = 1\n");
    std::filesystem::permissions(file_.path(), std::filesystem::perms::none);
    const auto as_ordinary_user = [] {
        if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setuid(65534) != 0)) return -1;
        return dword("/a").result;
    };

    SecondProcess other(as_ordinary_user);

    EXPECT_EQ(other.ask(), kNoFile);
}

TEST_F(PropertyStore, FileAboveOneMebibyteIsNoFile) {
    const std::string comment = "#" + std::string(62, 'c') + "\n";
    std::string text = "/a = 1\n\n";
    while (text.size() + comment.size() <= (1u << 20))
        text += comment;
    text += std::string((1u << 20) - text.size(), '\n');
    holds(text);
    EXPECT_EQ(dword("/a"), (Got{kFound, 1}));

    holds(text + "\n");

    EXPECT_EQ(dword("/a"), (Got{kNoFile, 77}));
}

TEST_F(PropertyStore, LineOf1024BytesIsReadAndALongerOneIsSkipped) {
    const std::string blanks(1024 - std::string_view("/a =1").size(), ' ');
    holds("/a = 9\n/a =" + blanks + "1\n");
    EXPECT_EQ(dword("/a"), (Got{kFound, 1}));

    holds("/a = 9\n/a =" + blanks + " 1\n/b = 2\n");

    EXPECT_EQ(dword("/a"), (Got{kFound, 9}));
    EXPECT_EQ(dword("/b"), (Got{kFound, 2}));
}

TEST_F(PropertyStore, LineAcrossReadBlocksIsOneLine) {
    std::string text;
    while (text.size() < 4096 - 4)
        text += '\n';
    holds(text + "/key = 12345\n");

    EXPECT_EQ(dword("/key"), (Got{kFound, 12345}));
}

TEST_F(PropertyStore, BinaryGarbageAroundAKeyIsSkipped) {
    std::string garbage;
    for (int byte = 0; byte < 256; ++byte)
        garbage += static_cast<char>(byte);
    holds(garbage + std::string(5000, '\0') + garbage + "\n/a = 7\n" + garbage);

    EXPECT_EQ(dword("/a"), (Got{kFound, 7}));
}

struct BadNumber {
    const char* name;
    const char* text;
    int result;
};

class PropertyStoreRefusal : public PropertyStore, public testing::WithParamInterface<BadNumber> {};

TEST_P(PropertyStoreRefusal, LeavesTheOutput) {
    holds(std::string("/a = ") + GetParam().text + "\n");

    EXPECT_EQ(dword("/a"), (Got{GetParam().result, 77}));
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Numbers, PropertyStoreRefusal, testing::Values(
    BadNumber{"Nothing", "", kNotANumber},
    BadNumber{"Word", "four", kNotANumber},
    BadNumber{"Negative", "-1", kNotANumber},
    BadNumber{"PlusSign", "+1", kNotANumber},
    BadNumber{"Fraction", "1.5", kNotANumber},
    BadNumber{"TrailingText", "12V", kNotANumber},
    BadNumber{"TwoNumbers", "1 2", kNotANumber},
    BadNumber{"HexWithoutDigits", "0x", kNotANumber},
    BadNumber{"HexTwice", "0x0x1", kNotANumber},
    BadNumber{"HexDigitInDecimal", "1f", kNotANumber},
    BadNumber{"Of33Bits", "4294967296", kTooWide},
    BadNumber{"Of36Bits", "0xFFFFFFFFF", kTooWide},
    BadNumber{"OfAHundredDigits", "1000000000000000000000000000000000000000000000000000000000000000000",
              kTooWide},
    BadNumber{"WideWithTrailingText", "99999999999x", kNotANumber}),
    [](const testing::TestParamInfo<BadNumber>& test) { return std::string(test.param.name); });
// clang-format on

TEST_F(PropertyStore, ByteHolds255AndNot256) {
    holds("/a = 255\n/b = 256\n");
    std::uint8_t value = 77;

    EXPECT_EQ(propdb_get_byte("/b", &value), kTooWide);
    EXPECT_EQ(value, 77);
    EXPECT_EQ(propdb_get_byte("/a", &value), kFound);
    EXPECT_EQ(value, 255);
}

TEST_F(PropertyStore, WordHolds65535AndNot65536) {
    holds("/a = 65535\n/b = 65536\n");
    std::uint16_t value = 77;

    EXPECT_EQ(propdb_get_word("/b", &value), kTooWide);
    EXPECT_EQ(value, 77);
    EXPECT_EQ(propdb_get_word("/a", &value), kFound);
    EXPECT_EQ(value, 65535);
}

TEST_F(PropertyStore, DwordHolds4294967295) {
    holds("/a = 4294967295\n");

    EXPECT_EQ(dword("/a"), (Got{kFound, 4294967295}));
}

TEST_F(PropertyStore, EditIsSeenAtOnceByAnotherProcess) {
    holds("/a = 1\n");
    SecondProcess other([] { return dword("/a").value; });
    EXPECT_EQ(other.ask(), 1);

    holds("/a = 2\n");

    EXPECT_EQ(other.ask(), 2);
}

TEST_F(PropertyStore, FileMovedIntoPlaceIsSeenAtOnceByAnotherProcess) {
    holds("/a = 1\n");
    SecondProcess other([] { return dword("/a").value; });
    EXPECT_EQ(other.ask(), 1);

    const TempFile edited("/a = 3\n");
    std::filesystem::rename(edited.path(), file_.path());

    EXPECT_EQ(other.ask(), 3);
}

TEST_F(PropertyStore, NoFileStaysOpen) {
    holds("/a = 1\n");
    const auto open_files = [] {
        const std::filesystem::directory_iterator entries("/proc/self/fd");
        return std::distance(begin(entries), end(entries));
    };
    const auto before = open_files();

    for (int i = 0; i < 10; ++i)
        dword("/a");

    EXPECT_EQ(open_files(), before);
}

}  // namespace
