// SPDX-License-Identifier: Apache-2.0
#include "measured_trace.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "loaded.h"
#include "support/temp_file.h"

namespace {

using pwrmgt::trace::load;
using pwrmgt::trace::LoadResult;
using pwrmgt::trace::Reading;
using pwrmgt::trace::Trace;

// The error of a text that must be refused, without the file's name.
std::string refused(std::string_view text) {
    const TempFile file(text);
    const LoadResult result = load(file.path());
    EXPECT_FALSE(result.trace.has_value());
    EXPECT_EQ(result.error.substr(0, file.path().size()), file.path());
    return result.error.substr(file.path().size());
}

TEST(MeasuredTrace, MissingFileIsNamedWithTheReason) {
    const TempFile file;

    const LoadResult result = load(file.path());

    EXPECT_FALSE(result.trace.has_value());
    EXPECT_EQ(result.error, file.path() + ": No such file or directory");
}

TEST(MeasuredTrace, DirectoryIsRefused) {
    const TempFile file;

    const LoadResult result = load(file.directory());

    EXPECT_EQ(result.error, file.directory() + ": not a regular file");
}

TEST(MeasuredTrace, FileAbove64MebibytesIsRefusedUnread) {
    const TempFile file("epoch_s\n1\n");
    std::filesystem::resize_file(file.path(), (std::uintmax_t{64} << 20) + 1);

    const LoadResult result = load(file.path());

    EXPECT_EQ(result.error, file.path() + ": larger than 64 MiB");
}

struct BadText {
    const char* name;
    std::string_view text;
    const char* error;
};

class MeasuredTraceRefusal : public testing::TestWithParam<BadText> {};

TEST_P(MeasuredTraceRefusal, TellsLineAndReason) {
    const std::string error = refused(GetParam().text);

    EXPECT_EQ(error, GetParam().error);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(BadTexts, MeasuredTraceRefusal, testing::Values(
    BadText{"Empty", "", ":1: no header line"},
    BadText{"BlankLinesOnly", "\n\n", ":2: no header line"},
    BadText{"NoTimeColumn", "time,sys_power_W\n1,2\n", ":1: no epoch_s column"},
    BadText{"NoRows", "epoch_s,sys_power_W\n", ":1: no rows after the header"},
    BadText{"TimeColumnTwice", "epoch_s,epoch_s\n1,2\n", ":1: column 'epoch_s' stands twice"},
    BadText{"ColumnTwice", "epoch_s,cpu1_C,cpu1_C\n1,2,3\n", ":1: column 'cpu1_C' stands twice"},
    BadText{"TwoSourcesOfSupplyPower", "epoch_s,psu1_ac_in_W,probe1_active_power_W\n1,2,3\n",
            ":1: AC power of supplies from both psuN and probeN columns"},
    BadText{"WordInCell", "epoch_s,sys_power_W\n1,2\n2,high\n",
            ":3: sys_power_W: 'high' is not a number"},
    BadText{"UnitInCell", "epoch_s,sys_power_W\n1,20W\n", ":2: sys_power_W: '20W' is not a number"},
    BadText{"NotANumberCell", "epoch_s,sys_power_W\n1,nan\n",
            ":2: sys_power_W: 'nan' is not a number"},
    BadText{"InfiniteCell", "epoch_s,sys_power_W\n1,inf\n",
            ":2: sys_power_W: 'inf' is not a number"},
    BadText{"LongCell", "epoch_s,sys_power_W\n1,abcdefghijklmnopqrstuvwxyz\n",
            ":2: sys_power_W: 'abcdefghijklmnopqrstuvwx...' is not a number"},
    BadText{"UnprintableCell", "epoch_s,sys_power_W\n1,a\x1b[1m\n",
            ":2: sys_power_W: 'a?[1m' is not a number"},
    BadText{"EmptyTime", "epoch_s,sys_power_W\n,2\n", ":2: epoch_s: '' is not a number"},
    BadText{"NegativeTime", "epoch_s\n-1\n", ":2: epoch_s: '-1' is not a time of 32 bits"},
    BadText{"TimeOf33Bits", "epoch_s\n4294967296\n",
            ":2: epoch_s: '4294967296' is not a time of 32 bits"},
    BadText{"TimeGoesBack", "epoch_s\n60\n59\n", ":3: epoch_s: '59' is before the row above"},
    BadText{"MissingCells", "epoch_s,cpu_power_W,mem_power_W\n1,2\n",
            ":2: 2 cells where the header has 3"},
    BadText{"TooManyCells", "epoch_s\n1,2\n", ":2: 2 cells where the header has 1"},
    BadText{"BlankLinesCount", "epoch_s\n\n1\n\nx\n", ":5: epoch_s: 'x' is not a number"}),
    [](const testing::TestParamInfo<BadText>& test) { return std::string(test.param.name); });
// clang-format on

TEST(MeasuredTrace, ColumnsAreFoundByNameInAnyOrder) {
    const Reading row = first_row(
        "mem_power_W,io_util_pct,epoch_s,cpu8_C,exhaust_C,sys_util_pct,sys_power_W,ambient_C,"
        "cpu_util_pct,cpu1_C,mem_util_pct,cpu_power_W\n"
        "30,4,1000,48,25,1,270,20,2,41,3,60\n");

    EXPECT_EQ(row.epoch_s, 1000);
    EXPECT_EQ(row.system_ac_w, 270);
    EXPECT_EQ(row.cpu_w, 60);
    EXPECT_EQ(row.mem_w, 30);
    EXPECT_EQ(row.sys_pct, 1);
    EXPECT_EQ(row.cpu_pct, 2);
    EXPECT_EQ(row.mem_pct, 3);
    EXPECT_EQ(row.io_pct, 4);
    EXPECT_EQ(row.ambient_c, 20);
    EXPECT_EQ(row.exhaust_c, 25);
    EXPECT_EQ(row.cpu_c[0], 41);
    EXPECT_EQ(row.cpu_c[7], 48);
}

TEST(MeasuredTrace, UnknownColumnsMayHoldAnything) {
    const Reading row = first_row(
        "timestamp_utc,epoch_s,cpu9_C,psu13_ac_in_W,psu0_ac_in_W,cpu_C,cpux_C,sys_power_W\n"
        "2025-06-03T00:00:11Z,1000,hot,a,b,c,d,270\n");

    EXPECT_EQ(row.system_ac_w, 270);
}

TEST(MeasuredTrace, CarriageReturnsSpacesAndAByteOrderMarkAreNoPartOfACell) {
    const Reading row = first_row(
        "\xEF\xBB\xBF"
        "epoch_s, sys_power_W\r\n1000 , 270\r\n");

    EXPECT_EQ(row.epoch_s, 1000);
    EXPECT_EQ(row.system_ac_w, 270);
}

TEST(MeasuredTrace, LastLineNeedsNoNewline) {
    const Trace trace = loaded("epoch_s,cpu_power_W\n1000,60\n1060,61");

    ASSERT_EQ(trace.readings().size(), 2u);
    EXPECT_EQ(trace.readings()[1].cpu_w, 61);
}

TEST(MeasuredTrace, EmptyCellIsNoReading) {
    const Reading row = first_row("epoch_s,cpu_power_W,mem_power_W,cpu_util_pct\n1000,,30,\n");

    EXPECT_EQ(row.cpu_w, std::nullopt);
    EXPECT_EQ(row.mem_w, 30);
    EXPECT_EQ(row.cpu_pct, std::nullopt);
}

TEST(MeasuredTrace, WattsFrom0To65534AreReadings) {
    const Trace trace = loaded("epoch_s,cpu_power_W,mem_power_W\n1000,0,65534\n");

    EXPECT_EQ(trace.readings()[0].cpu_w, 0);
    EXPECT_EQ(trace.readings()[0].mem_w, 65534);
    EXPECT_EQ(trace.ignored_values(), 0u);
}

TEST(MeasuredTrace, NegativeWattsAndWattsAbove65534AreNoReadingAndCounted) {
    const Trace trace =
        loaded("epoch_s,cpu_power_W,mem_power_W,sys_power_W\n1000,-1,65535,1e300\n");

    EXPECT_EQ(trace.readings()[0].cpu_w, std::nullopt);
    EXPECT_EQ(trace.readings()[0].mem_w, std::nullopt);
    EXPECT_EQ(trace.readings()[0].system_ac_w, std::nullopt);
    EXPECT_EQ(trace.ignored_values(), 3u);
}

TEST(MeasuredTrace, PercentagesAbove100AreNoReadingAndCounted) {
    const Trace trace = loaded("epoch_s,sys_util_pct,cpu_util_pct,io_util_pct\n1000,100,101,-1\n");

    EXPECT_EQ(trace.readings()[0].sys_pct, 100);
    EXPECT_EQ(trace.readings()[0].cpu_pct, std::nullopt);
    EXPECT_EQ(trace.readings()[0].io_pct, std::nullopt);
    EXPECT_EQ(trace.ignored_values(), 2u);
}

TEST(MeasuredTrace, TemperaturesMayBeBelowZeroButNotAbsurd) {
    const Trace trace =
        loaded("epoch_s,ambient_C,exhaust_C,cpu1_C,cpu2_C\n1000,-128,255,-129,256\n");

    EXPECT_EQ(trace.readings()[0].ambient_c, -128);
    EXPECT_EQ(trace.readings()[0].exhaust_c, 255);
    EXPECT_EQ(trace.readings()[0].cpu_c[0], std::nullopt);
    EXPECT_EQ(trace.readings()[0].cpu_c[1], std::nullopt);
    EXPECT_EQ(trace.ignored_values(), 2u);
}

TEST(MeasuredTrace, FractionsAreRoundedToTheNearestWholeNumber) {
    const Reading row =
        first_row("epoch_s,cpu_power_W,mem_power_W,cpu_util_pct\n1000,59.5,30.4,7.6\n");

    EXPECT_EQ(row.cpu_w, 60);
    EXPECT_EQ(row.mem_w, 30);
    EXPECT_EQ(row.cpu_pct, 8);
}

}  // namespace
