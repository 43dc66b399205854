// SPDX-License-Identifier: Apache-2.0
#include "chart.h"

#include <gtest/gtest.h>

#include <sstream>

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr ChartStyle kPlain{Charset::ascii, Zone::utc};
constexpr ChartStyle kBlocks{Charset::utf8, Zone::utc};
constexpr uint32_t kNewest = 1700000010;

std::vector<ChartPoint> points_of(const std::vector<ChartValue>& newest_first) {
    std::vector<ChartPoint> points;
    for (const ChartValue& value : newest_first) {
        points.push_back({kNewest - 30 * static_cast<uint32_t>(points.size()), value});
    }
    return points;
}

// The columns of the lowest row of bars, between the wall and the end of the line.
std::string lowest_row(const std::string& chart) {
    const size_t floor = chart.rfind("\n", chart.find(" +-"));
    const size_t start = chart.rfind("\n", floor - 1) + 1;
    const std::string line = chart.substr(start, floor - start);
    return line.substr(line.find('|') + 1);
}

TEST(Chart, BarsReadFromLeftToRight) {
    const std::string chart =
        chart_text(points_of({ChartValue{80}, ChartValue{40}, ChartValue{0}}), kPlain);

    EXPECT_EQ(chart,
              "80 +  #\n"
              "   |  #\n"
              "   |  #\n"
              "   |  #\n"
              "40 + ##\n"
              "   | ##\n"
              "   | ##\n"
              "   |.##\n"
              " 0 +---\n"
              "    2023-11-14T22:12:30Z ..\n"
              "    2023-11-14T22:13:30Z\n"
              "Lowest 0, highest 80; blank = no reading.\n");
}

TEST(Chart, BlocksShowEighthsOfARow) {
    const std::string chart = chart_text(points_of({ChartValue{5}, ChartValue{80}}), kBlocks);

    EXPECT_NE(chart.find("   │█▄\n 0 └──\n"), std::string::npos) << chart;
}

TEST(Chart, GapsStayBlank) {
    const std::string chart =
        chart_text(points_of({ChartValue{80}, ChartValue{}, ChartValue{80}}), kPlain);

    EXPECT_EQ(lowest_row(chart), "# #");
}

TEST(Chart, ZeroIsMarkedApartFromAGap) {
    const std::string chart =
        chart_text(points_of({ChartValue{0}, ChartValue{}, ChartValue{0}}), kPlain);

    EXPECT_EQ(lowest_row(chart), ". .");
}

TEST(Chart, SixtyPointsHaveAColumnEach) {
    const std::string chart =
        chart_text(points_of(std::vector<ChartValue>(60, ChartValue{10})), kPlain);

    EXPECT_EQ(lowest_row(chart), std::string(60, '#'));
}

TEST(Chart, SixtyOnePointsShareColumnsByTwo) {
    const std::string chart =
        chart_text(points_of(std::vector<ChartValue>(61, ChartValue{10})), kPlain);

    EXPECT_EQ(lowest_row(chart), std::string(31, '#'));
}

TEST(Chart, ColumnWithOneReadingOfTwoShowsThatReading) {
    std::vector<ChartValue> values(120, ChartValue{80});
    values[0] = ChartValue{};
    const std::string chart = chart_text(points_of(values), kPlain);

    EXPECT_EQ(lowest_row(chart), std::string(60, '#'));
}

// The numbers at the axis, from the top.
std::vector<std::string> axis_of(const std::vector<ChartValue>& newest_first) {
    std::istringstream lines(chart_text(points_of(newest_first), kPlain));
    std::vector<std::string> numbers;
    for (std::string line; std::getline(lines, line);) {
        const size_t tick = line.find(" +");
        if (tick != std::string::npos) numbers.push_back(line.substr(0, tick));
    }
    return numbers;
}

TEST(Chart, AxisStartsAtZeroWhenAReadingLiesInTheLowerHalf) {
    EXPECT_EQ(axis_of({ChartValue{388}, ChartValue{193}}),
              (std::vector<std::string>{"400", "200", "  0"}));
    EXPECT_EQ(axis_of({ChartValue{400}, ChartValue{0}}),
              (std::vector<std::string>{"400", "200", "  0"}));
    EXPECT_EQ(axis_of({ChartValue{401}, ChartValue{0}}),
              (std::vector<std::string>{"480", "240", "  0"}));
}

TEST(Chart, AxisStartsBelowTheLowestWhenAllReadingsLieInTheUpperHalf) {
    EXPECT_EQ(axis_of({ChartValue{388}, ChartValue{194}}),
              (std::vector<std::string>{"390", "270", "150"}));
    EXPECT_EQ(axis_of({ChartValue{235}, ChartValue{219}}),
              (std::vector<std::string>{"240", "228", "216"}));
}

TEST(Chart, AxisOfEqualReadingsSpansATenthOfThem) {
    EXPECT_EQ(axis_of({ChartValue{300}, ChartValue{300}}),
              (std::vector<std::string>{"328", "312", "296"}));
}

TEST(Chart, AxisHoldsTheHighestReadingThereIs) {
    EXPECT_EQ(axis_of({ChartValue{65534}}), (std::vector<std::string>{"72000", "68000", "64000"}));
    EXPECT_EQ(axis_of({ChartValue{65534}, ChartValue{0}}),
              (std::vector<std::string>{"80000", "40000", "    0"}));
}

TEST(Chart, AxisOfZerosIsTheSmallestOne) {
    EXPECT_EQ(axis_of({ChartValue{0}}), (std::vector<std::string>{"8", "4", "0"}));
}

TEST(Chart, AxisGoesBelowZeroWithTheReadings) {
    EXPECT_EQ(axis_of({ChartValue{24}, ChartValue{-4}}),
              (std::vector<std::string>{"28", "12", "-4"}));
    EXPECT_EQ(axis_of({ChartValue{-5}, ChartValue{-20}}),
              (std::vector<std::string>{" -4", "-12", "-20"}));
}

TEST(Chart, TimesStandUnderTheEndsWhereTheChartIsWideEnough) {
    const std::string chart =
        chart_text(points_of(std::vector<ChartValue>(42, ChartValue{10})), kPlain);

    EXPECT_NE(chart.find("\n    2023-11-14T21:53:00Z  2023-11-14T22:13:30Z\n"), std::string::npos)
        << chart;
}

TEST(Chart, AllPointsMissingDrawsAnEmptyFrame) {
    const std::string chart = chart_text(points_of({ChartValue{}, ChartValue{}}), kPlain);

    EXPECT_EQ(lowest_row(chart), "");
    EXPECT_NE(chart.find("Lowest -, highest -; blank = no reading.\n"), std::string::npos);
}

TEST(Chart, NoPointsDrawNothing) {
    EXPECT_EQ(chart_text({}, kBlocks), "");
}

}  // namespace
}  // namespace pwrmgt::pwrmgtctl
