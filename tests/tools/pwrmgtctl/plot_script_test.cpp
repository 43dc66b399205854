// SPDX-License-Identifier: Apache-2.0
// Scripts that the plotting program takes, also for pictures that no command asks for.
#include "plot_script.h"

#include <gtest/gtest.h>

#include "plot_program.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr PlotDevice kScreen{PlotFormat::text, 80, 20};
constexpr PlotDevice kColours{PlotFormat::coloured_text, 80, 20};
constexpr PlotDevice kSvg{PlotFormat::svg};
constexpr PlotDevice kPng{PlotFormat::png};

Plot plot_of_lines(size_t lines) {
    Plot plot{"Title", PlotUnit::degrees, 0, 3600, {}, {}};
    for (size_t at = 0; at < lines; ++at) {
        const auto degrees = static_cast<int32_t>(at);
        plot.series.push_back({"Line " + std::to_string(at),
                               {{600, degrees, degrees - 1, degrees + 1},
                                {1200, degrees + 5, degrees + 4, degrees + 6}}});
    }
    return plot;
}

TEST(PlotScript, PictureWithoutAnyReadingSaysSoOnEveryDevice) {
    for (const PlotDevice& device : {kScreen, kColours, kSvg}) {
        const Drawn drawn = draw(plot_script(plot_of_lines(0), device), kPlotSilenceMs);

        EXPECT_EQ(drawn.exit, Exit::ok) << drawn.mistake;
        EXPECT_NE(drawn.picture.find("No reading"), std::string::npos);
    }
    EXPECT_EQ(draw(plot_script(plot_of_lines(0), kPng), kPlotSilenceMs).exit, Exit::ok);
}

TEST(PlotScript, EveryLineOfTwentyIsInThePicture) {
    const Drawn drawn = draw(plot_script(plot_of_lines(20), kSvg), kPlotSilenceMs);

    ASSERT_EQ(drawn.exit, Exit::ok) << drawn.mistake;
    for (int line = 0; line < 20; ++line) {
        EXPECT_NE(drawn.picture.find("Line " + std::to_string(line)), std::string::npos) << line;
    }
}

TEST(PlotScript, LevelAloneIsDrawn) {
    Plot plot = plot_of_lines(0);
    plot.level = PlotLevel{"Cap 300 W", 300};

    const Drawn drawn = draw(plot_script(plot, kSvg), kPlotSilenceMs);

    EXPECT_EQ(drawn.exit, Exit::ok) << drawn.mistake;
    EXPECT_NE(drawn.picture.find("Cap 300 W"), std::string::npos);
}

TEST(PlotScript, OnlyColouredTextHasColours) {
    const Plot plot = plot_of_lines(2);

    EXPECT_NE(draw(plot_script(plot, kColours), kPlotSilenceMs).picture.find("\x1b["),
              std::string::npos);
    EXPECT_EQ(draw(plot_script(plot, kScreen), kPlotSilenceMs).picture.find('\x1b'),
              std::string::npos);
}

TEST(PlotScript, CaptionTellsWhatBarsAreWhereThereAreBars) {
    EXPECT_EQ(screen_caption(plot_of_lines(1)),
              "Temperature in C; bars: Line 0 from minimum to maximum\n");
    EXPECT_EQ(screen_caption(plot_of_lines(3)), "Temperature in C\n");
}

TEST(PlotScript, ShortSpansTellSeconds) {
    Plot plot = plot_of_lines(1);

    plot.end_s = 60;
    EXPECT_NE(plot_script(plot, kSvg).find("set format x '%H:%M:%S'\n"), std::string::npos);
    plot.end_s = 3600;
    EXPECT_NE(plot_script(plot, kSvg).find("set format x '%H:%M'\n"), std::string::npos);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtctl
