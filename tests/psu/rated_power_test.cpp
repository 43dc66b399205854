// SPDX-License-Identifier: Apache-2.0
// The reader of the rated-power file: the last number counts, anything else is told on standard
// error and is 0.
#include "psu/rated_power.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "captured_output.h"
#include "temp_file.h"

using pwrmgt::psu::read_rated_power_file;
using pwrmgt::test::CapturedError;

namespace {

struct Reading {
    uint32_t watts;
    std::string complaint;

    bool operator==(const Reading&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Reading& reading) {
    return out << reading.watts << " W '" << reading.complaint << "'";
}

Reading read_path(const std::string& path) {
    CapturedError error;
    const uint32_t watts = read_rated_power_file(path.c_str());
    return {watts, error.text()};
}

Reading read(std::string_view text) {
    const TempFile file(text);
    return read_path(file.path());
}

Reading quietly(uint32_t watts) {
    return {watts, ""};
}

}  // namespace

// -- numbers

TEST(RatedPower, LastLineCounts) {
    EXPECT_EQ(read("1200\n1600\n"), quietly(1600));
    EXPECT_EQ(read("1600\n1200\n800\n"), quietly(800));
    EXPECT_EQ(read("1600\n0\n"), quietly(0));
}

TEST(RatedPower, LastLineNeedsNoNewline) {
    EXPECT_EQ(read("1200\n1600"), quietly(1600));
    EXPECT_EQ(read("7"), quietly(7));
}

TEST(RatedPower, EmptyFileIsZeroWithoutAComplaint) {
    EXPECT_EQ(read(""), quietly(0));
}

TEST(RatedPower, LeadingBlanksAndTrailingTextAreLeftOut) {
    EXPECT_EQ(read("  \t1600 W\n"), quietly(1600));
    EXPECT_EQ(read("1600abc\n"), quietly(1600));
    EXPECT_EQ(read("1600\r\n"), quietly(1600));
    EXPECT_EQ(read("1600.9\n"), quietly(1600));
    EXPECT_EQ(read("1600-1\n"), quietly(1600));
    EXPECT_EQ(read("\v\f+12\n"), quietly(12));
}

TEST(RatedPower, NumbersAreDecimal) {
    EXPECT_EQ(read("0x10\n"), quietly(0));
    EXPECT_EQ(read("0010\n"), quietly(10));
}

// -- 32 bits

TEST(RatedPower, HighestNumberIs4294967295) {
    EXPECT_EQ(read("4294967295\n"), quietly(4294967295U));
    EXPECT_EQ(read("4294967296\n"), (Reading{0, "out of range: 4294967296\n"}));
    EXPECT_EQ(read("00000000004294967295\n"), quietly(4294967295U));
}

TEST(RatedPower, NumberAbove64BitsIsOutOfRange) {
    EXPECT_EQ(read("18446744073709551615\n"), (Reading{0, "out of range: 18446744073709551615\n"}));
    EXPECT_EQ(read("18446744073709551616\n"), (Reading{0, "out of range: 18446744073709551616\n"}));
}

TEST(RatedPower, RangeErrorOfAnEarlierCallIsNotThisOne) {
    const TempFile file("1600\n");

    errno = ERANGE;
    EXPECT_EQ(read_rated_power_file(file.path().c_str()), 1600U);
}

TEST(RatedPower, MinusWrapsIn32Bits) {
    EXPECT_EQ(read("-1\n"), quietly(4294967295U));
    EXPECT_EQ(read(" -1600 W\n"), quietly(4294965696U));
    EXPECT_EQ(read("-0\n"), quietly(0));
    EXPECT_EQ(read("-4294967295\n"), quietly(1));
    EXPECT_EQ(read("-4294967296\n"), (Reading{0, "out of range: -4294967296\n"}));
    EXPECT_EQ(read("-18446744073709551615\n"),
              (Reading{0, "out of range: -18446744073709551615\n"}));
    EXPECT_EQ(read("-99999999999999999999999\n"),
              (Reading{0, "out of range: -99999999999999999999999\n"}));
}

// -- complaints

TEST(RatedPower, LineWithoutANumberEndsTheReading) {
    EXPECT_EQ(read("1200\nabc\n"), (Reading{0, "invalid input: abc\n"}));
    EXPECT_EQ(read("1200\nabc\n1600\nxyz\n"), (Reading{0, "invalid input: abc\n"}));
    EXPECT_EQ(read("abc"), (Reading{0, "invalid input: abc\n"}));
}

TEST(RatedPower, EmptyAndBlankLinesHoldNoNumber) {
    EXPECT_EQ(read("\n"), (Reading{0, "invalid input: \n"}));
    EXPECT_EQ(read("1600\n\n"), (Reading{0, "invalid input: \n"}));
    EXPECT_EQ(read("1600\n \t \n"), (Reading{0, "invalid input:  \t \n"}));
}

TEST(RatedPower, SignWithoutDigitsIsNoNumber) {
    EXPECT_EQ(read("-\n"), (Reading{0, "invalid input: -\n"}));
    EXPECT_EQ(read("- 5\n"), (Reading{0, "invalid input: - 5\n"}));
    EXPECT_EQ(read("+-5\n"), (Reading{0, "invalid input: +-5\n"}));
    EXPECT_EQ(read("W 1600\n"), (Reading{0, "invalid input: W 1600\n"}));
}

TEST(RatedPower, OutOfRangeEndsTheReading) {
    EXPECT_EQ(read("1200\n4294967296 W\n1600\n"), (Reading{0, "out of range: 4294967296 W\n"}));
}

TEST(RatedPower, LineWithAPercentSignIsToldAsItStands) {
    EXPECT_EQ(read("%s%n\n"), (Reading{0, "invalid input: %s%n\n"}));
}

TEST(RatedPower, LongLineIsToldWhole) {
    const std::string line(100000, 'x');

    EXPECT_EQ(read(line + "\n"), (Reading{0, "invalid input: " + line + "\n"}));
}

TEST(RatedPower, MissingFileIsToldWithItsPath) {
    const TempFile none;

    EXPECT_EQ(read_path(none.path()), (Reading{0, "can not open file: " + none.path() + "\n"}));
}

TEST(RatedPower, PathThatCannotBeReadIsZero) {
    const TempFile file;

    EXPECT_EQ(read_path(file.directory()).watts, 0U);
}
