// SPDX-License-Identifier: Apache-2.0
#include "measured_trace.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "support/temp_file.h"

namespace {

using pwrmgt::trace::load;
using pwrmgt::trace::LoadResult;
using pwrmgt::trace::Reading;
using pwrmgt::trace::Trace;

// Loads a text that must be a good trace.
Trace loaded(std::string_view text) {
    const TempFile file(text);
    LoadResult result = load(file.path());
    EXPECT_EQ(result.error, "");
    if (!result.trace) return Trace({Reading{}}, 0, 0);
    return *result.trace;
}

// The error of a text that must be refused, without the file's name.
std::string refused(std::string_view text) {
    const TempFile file(text);
    const LoadResult result = load(file.path());
    EXPECT_FALSE(result.trace.has_value());
    EXPECT_EQ(result.error.substr(0, file.path().size()), file.path());
    return result.error.substr(file.path().size());
}

Reading first_row(std::string_view text) {
    return loaded(text).readings().front();
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

TEST(MeasuredTrace, OneSystemPowerCountsAsAcAndDc) {
    const Reading row = first_row("epoch_s,sys_power_W\n1000,270\n");

    EXPECT_EQ(row.system_ac_w, 270);
    EXPECT_EQ(row.system_dc_w, 270);
}

constexpr std::string_view kTwoSupplies =
    "epoch_s,sys_power_W,psu1_ac_in_W,psu1_dc_out_W,psu2_ac_in_W,psu2_dc_out_W\n";

TEST(MeasuredTrace, SystemDcIsTheSumOverTheSupplies) {
    const Reading row = first_row(std::string(kTwoSupplies) + "1000,270,95,80,160,145\n");

    EXPECT_EQ(row.system_ac_w, 270);
    EXPECT_EQ(row.system_dc_w, 225);
    EXPECT_EQ(row.supplies[0].ac_in_w, 95);
    EXPECT_EQ(row.supplies[0].dc_out_w, 80);
    EXPECT_EQ(row.supplies[1].ac_in_w, 160);
    EXPECT_EQ(row.supplies[1].dc_out_w, 145);
}

TEST(MeasuredTrace, RowWithoutOneSupplyValueHasNoSystemPower) {
    const Reading row = first_row(std::string(kTwoSupplies) + "1000,270,95,80,,145\n");

    EXPECT_EQ(row.system_ac_w, std::nullopt);
    EXPECT_EQ(row.system_dc_w, std::nullopt);
    EXPECT_EQ(row.supplies[1].ac_in_w, std::nullopt);
    EXPECT_EQ(row.supplies[1].dc_out_w, 145);
}

TEST(MeasuredTrace, RowWithSuppliesButNoSystemPowerHasNeitherAcNorDc) {
    const Reading row = first_row(std::string(kTwoSupplies) + "1000,,95,80,160,145\n");

    EXPECT_EQ(row.system_ac_w, std::nullopt);
    EXPECT_EQ(row.system_dc_w, std::nullopt);
}

TEST(MeasuredTrace, SuppliesWithoutDcColumnsLeaveOneSystemPower) {
    const Reading row = first_row("epoch_s,sys_power_W,psu1_ac_in_W\n1000,270,280\n");

    EXPECT_EQ(row.system_ac_w, 270);
    EXPECT_EQ(row.system_dc_w, 270);
    EXPECT_EQ(row.supplies[0].dc_out_w, std::nullopt);
}

TEST(MeasuredTrace, OneSupplyWithoutADcColumnLeavesNoSystemPower) {
    const Reading row = first_row(
        "epoch_s,sys_power_W,psu1_ac_in_W,psu1_dc_out_W,psu2_ac_in_W\n1000,270,95,80,160\n");

    EXPECT_EQ(row.system_ac_w, std::nullopt);
    EXPECT_EQ(row.system_dc_w, std::nullopt);
}

TEST(MeasuredTrace, SumAbove65534WattsIsNoSystemPower) {
    const Reading row = first_row(std::string(kTwoSupplies) + "1000,270,95,65534,160,1\n");

    EXPECT_EQ(row.system_ac_w, std::nullopt);
    EXPECT_EQ(row.system_dc_w, std::nullopt);
}

TEST(MeasuredTrace, SupplyCountIsTheHighestNumberedColumn) {
    EXPECT_EQ(loaded("epoch_s,sys_power_W\n1,2\n").supply_count(), 0u);
    EXPECT_EQ(loaded(std::string(kTwoSupplies) + "1,2,3,4,5,6\n").supply_count(), 2u);
    EXPECT_EQ(loaded("epoch_s,psu12_dc_out_W\n1,2\n").supply_count(), 12u);
}

constexpr std::string_view kTwoProbes = "epoch_s,probe1_active_power_W,probe2_active_power_W\n";

TEST(MeasuredTrace, WallMeterGivesAcPerSupplyAndLeavesItsDcUnknown) {
    const Reading row = first_row(std::string(kTwoProbes) + "1000,28.5,29.4\n");

    EXPECT_EQ(row.supplies[0].ac_in_w, 29);
    EXPECT_EQ(row.supplies[1].ac_in_w, 29);
    EXPECT_EQ(row.supplies[0].dc_out_w, std::nullopt);
    EXPECT_EQ(row.supplies[1].dc_out_w, std::nullopt);
}

TEST(MeasuredTrace, WallMeterSumIsTheOneSystemPower) {
    const Reading row = first_row(std::string(kTwoProbes) + "1000,28,30\n");

    EXPECT_EQ(row.system_ac_w, 58);
    EXPECT_EQ(row.system_dc_w, 58);
}

TEST(MeasuredTrace, WallMeterRowWithoutOneProbeHasNoSystemPower) {
    const Reading row = first_row(std::string(kTwoProbes) + "1000,28,\n");

    EXPECT_EQ(row.system_ac_w, std::nullopt);
    EXPECT_EQ(row.system_dc_w, std::nullopt);
    EXPECT_EQ(row.supplies[0].ac_in_w, 28);
}

TEST(MeasuredTrace, RowHoldsFromItsOwnSecondUntilTheNextRow) {
    const Trace trace = loaded("epoch_s,cpu_power_W\n1000,60\n1063,61\n");

    EXPECT_EQ(trace.reading_at(999), nullptr);
    ASSERT_NE(trace.reading_at(1000), nullptr);
    EXPECT_EQ(trace.reading_at(1000)->cpu_w, 60);
    ASSERT_NE(trace.reading_at(1062), nullptr);
    EXPECT_EQ(trace.reading_at(1062)->cpu_w, 60);
    ASSERT_NE(trace.reading_at(1063), nullptr);
    EXPECT_EQ(trace.reading_at(1063)->cpu_w, 61);
}

TEST(MeasuredTrace, RowHoldsNoLongerThan90Seconds) {
    const Trace trace = loaded("epoch_s,cpu_power_W\n1000,60\n2000,61\n");

    EXPECT_NE(trace.reading_at(1089), nullptr);
    EXPECT_EQ(trace.reading_at(1090), nullptr);
    EXPECT_NE(trace.reading_at(2089), nullptr);
    EXPECT_EQ(trace.reading_at(2090), nullptr);
}

TEST(MeasuredTrace, HoldLimitMayBeChosen) {
    const Trace trace = loaded("epoch_s,cpu_power_W\n1000,60\n");

    EXPECT_NE(trace.reading_at(1019, 20), nullptr);
    EXPECT_EQ(trace.reading_at(1020, 20), nullptr);
}

TEST(MeasuredTrace, RowThatNoSensorAnsweredEndsTheRowBefore) {
    const Trace trace = loaded("epoch_s,sdr_rows,cpu_power_W\n1000,115,60\n1060,0,\n1120,1,61\n");

    EXPECT_NE(trace.reading_at(1059), nullptr);
    EXPECT_EQ(trace.reading_at(1060), nullptr);
    EXPECT_EQ(trace.reading_at(1119), nullptr);
    EXPECT_NE(trace.reading_at(1120), nullptr);
}

TEST(MeasuredTrace, ValuesInARowThatNoSensorAnsweredAreNotReadings) {
    const Trace trace = loaded("epoch_s,sdr_rows,cpu_power_W\n1000,0,60\n");

    EXPECT_FALSE(trace.readings()[0].answered);
    EXPECT_EQ(trace.readings()[0].cpu_w, std::nullopt);
    EXPECT_EQ(trace.reading_at(1000), nullptr);
}

TEST(MeasuredTrace, OfTwoRowsInOneSecondTheLaterHolds) {
    const Trace trace = loaded("epoch_s,cpu_power_W\n1000.2,60\n1000.9,61\n");

    ASSERT_NE(trace.reading_at(1000), nullptr);
    EXPECT_EQ(trace.reading_at(1000)->cpu_w, 61);
}

TEST(MeasuredTrace, LivePlayStartsAtMidnightAndStartsOverAtTheEnd) {
    const Trace trace = loaded("epoch_s,cpu_power_W\n1000,60\n1060,61\n");

    EXPECT_EQ(trace.live_second(1'700'006'400), 1000);  // 2023-11-15 00:00:00 UTC
    EXPECT_EQ(trace.live_second(1'700'006'460), 1060);
    EXPECT_EQ(trace.live_second(1'700'006'461), 1000);
    EXPECT_EQ(trace.live_second(1'700'092'799), 1023);  // 23:59:59
    EXPECT_EQ(trace.live_second(1'700'092'800), 1000);
}

TEST(MeasuredTrace, LivePlayOfOneRowStaysOnIt) {
    const Trace trace = loaded("epoch_s,cpu_power_W\n1000,60\n");

    EXPECT_EQ(trace.live_second(1'700'012'345), 1000);
}

}  // namespace
