// SPDX-License-Identifier: Apache-2.0
#include "plot_data.h"

#include <gtest/gtest.h>

namespace pwrmgt::pwrmgtctl {
namespace {

PlotPoint at(int64_t time_s, int32_t mean, int32_t low, int32_t high) {
    return {time_s, mean, low, high};
}

PlotPoint gap(int64_t time_s) {
    return {time_s, {}, {}, {}};
}

Plot plot_with(PlotUnit unit, const std::vector<PlotPoint>& points) {
    return {"title", unit, 0, 3600, {{"name", points}}, {}};
}

TEST(PlotData, EntriesThatFollowOneAnotherAreOneRun) {
    const PlotRows rows = rows_of({"name", {at(30, 5, 4, 6), at(60, 7, 6, 8)}});

    EXPECT_EQ(rows.lines, "30 5\n60 7\n\n");
    EXPECT_EQ(rows.bands, "30 4 6\n60 6 8\n\n");
    EXPECT_EQ(rows.lone, "");
    EXPECT_EQ(rows.lone_bands, "");
}

TEST(PlotData, GapBreaksLineAndBand) {
    const PlotRows rows = rows_of(
        {"name", {at(30, 5, 4, 6), at(60, 7, 6, 8), gap(90), at(120, 1, 1, 2), at(150, 2, 1, 2)}});

    EXPECT_EQ(rows.lines, "30 5\n60 7\n\n120 1\n150 2\n\n");
    EXPECT_EQ(rows.bands, "30 4 6\n60 6 8\n\n120 1 2\n150 1 2\n\n");
}

TEST(PlotData, EntryBetweenGapsIsALoneOne) {
    const PlotRows rows = rows_of({"name", {gap(30), at(60, 7, 6, 8), gap(90)}});

    EXPECT_EQ(rows.lines, "");
    EXPECT_EQ(rows.bands, "");
    EXPECT_EQ(rows.lone, "60 7\n");
    EXPECT_EQ(rows.lone_bands, "60 6 8\n");
}

TEST(PlotData, BandBreaksWhereOnlyTheMeanIsKnown) {
    const PlotRows rows =
        rows_of({"name", {at(30, 5, 4, 6), {60, 7, {}, {}}, at(90, 5, 4, 6), at(120, 5, 4, 6)}});

    EXPECT_EQ(rows.lines, "30 5\n60 7\n90 5\n120 5\n\n");
    EXPECT_EQ(rows.bands, "90 4 6\n120 4 6\n\n");
    EXPECT_EQ(rows.lone_bands, "30 4 6\n");
}

TEST(PlotData, BandWithoutAMeanIsNotDrawn) {
    const PlotRows rows = rows_of({"name", {{30, {}, 4, 6}, {60, {}, 4, 6}}});

    EXPECT_EQ(rows.bands, "");
    EXPECT_FALSE(has_band({"name", {{30, {}, 4, 6}}}));
}

TEST(PlotData, AxisHoldsBandsWithATwentiethOfRoom) {
    const PlotRange axis = value_axis(plot_with(PlotUnit::watts, {at(30, 200, 100, 300)}));

    EXPECT_EQ(axis.low, 90);
    EXPECT_EQ(axis.high, 310);
}

TEST(PlotData, AxisOfEqualReadingsIsTenHighAtLeast) {
    const PlotRange axis = value_axis(plot_with(PlotUnit::watts, {at(30, 200, 200, 200)}));

    EXPECT_EQ(axis.low, 195);
    EXPECT_EQ(axis.high, 205);
}

TEST(PlotData, AxisOfWattsDoesNotGoBelowZero) {
    const PlotRange axis = value_axis(plot_with(PlotUnit::watts, {at(30, 0, 0, 0)}));

    EXPECT_EQ(axis.low, 0);
    EXPECT_EQ(axis.high, 10);
}

TEST(PlotData, AxisOfDegreesGoesBelowZero) {
    const PlotRange axis = value_axis(plot_with(PlotUnit::degrees, {at(30, -4, -20, 20)}));

    EXPECT_EQ(axis.low, -22);
    EXPECT_EQ(axis.high, 22);
}

TEST(PlotData, AxisOfPercentagesIsAlwaysTheSame) {
    const PlotRange axis = value_axis(plot_with(PlotUnit::percent, {at(30, 5, 4, 6)}));

    EXPECT_EQ(axis.low, -2);
    EXPECT_EQ(axis.high, 102);
}

TEST(PlotData, AxisHoldsTheHighestReadingsThereAre) {
    const PlotRange axis = value_axis(plot_with(PlotUnit::watts, {at(30, 65534, 0, 65534)}));

    EXPECT_EQ(axis.low, 0);
    EXPECT_EQ(axis.high, 68810);
}

TEST(PlotData, LevelNearTheReadingsIsShownAndOneFarAwayIsNot) {
    Plot plot = plot_with(PlotUnit::watts, {at(30, 200, 150, 250)});

    plot.level = PlotLevel{"Cap", 550};
    EXPECT_TRUE(shows_level(plot));
    EXPECT_EQ(value_axis(plot).high, 570);
    plot.level = PlotLevel{"Cap", 551};
    EXPECT_FALSE(shows_level(plot));
    EXPECT_EQ(value_axis(plot).high, 255);
}

TEST(PlotData, MarksOfTheTimeAxisStandOnRoundSteps) {
    EXPECT_EQ(time_step_s(86400, 13), 7200);
    EXPECT_EQ(time_step_s(86400, 8), 10800);
    EXPECT_EQ(time_step_s(3600, 13), 300);
    EXPECT_EQ(time_step_s(60, 13), 10);
    EXPECT_EQ(time_step_s(86400, 1), 43200);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtctl
