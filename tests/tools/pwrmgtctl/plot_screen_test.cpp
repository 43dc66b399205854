// SPDX-License-Identifier: Apache-2.0
#include "plot_screen.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

namespace pwrmgt::pwrmgtctl {
namespace {

class PlotScreen : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"COLUMNS", "LINES", "NO_COLOR"}) {
            unsetenv(name);
        }
        setenv("TERM", "xterm", 1);
    }
    void TearDown() override {
        if (terminal_ >= 0) close(terminal_);
        if (keyboard_ >= 0) close(keyboard_);
    }

    PlotDevice on_terminal(unsigned short columns, unsigned short rows) {
        winsize size{rows, columns, 0, 0};
        EXPECT_EQ(openpty(&keyboard_, &terminal_, nullptr, nullptr, &size), 0);
        return screen_behind(terminal_);
    }

    int keyboard_ = -1;
    int terminal_ = -1;
};

TEST_F(PlotScreen, TerminalGivesSizeAndColours) {
    const PlotDevice screen = on_terminal(100, 30);

    EXPECT_EQ(screen.format, PlotFormat::coloured_text);
    EXPECT_EQ(screen.columns, 100);
    EXPECT_EQ(screen.rows, 26);
}

TEST_F(PlotScreen, NoColorMakesItPlain) {
    setenv("NO_COLOR", "1", 1);

    EXPECT_EQ(on_terminal(100, 30).format, PlotFormat::text);
}

TEST_F(PlotScreen, TerminalThatKnowsNoColoursGetsNone) {
    setenv("TERM", "dumb", 1);

    EXPECT_EQ(on_terminal(100, 30).format, PlotFormat::text);
}

TEST_F(PlotScreen, TinyTerminalsAreDrawnForAtTheSmallestSizeThatCanBeRead) {
    const PlotDevice screen = on_terminal(10, 5);

    EXPECT_EQ(screen.columns, 40);
    EXPECT_EQ(screen.rows, 12);
}

TEST_F(PlotScreen, HugeTerminalsAreNotFilled) {
    const PlotDevice screen = on_terminal(500, 200);

    EXPECT_EQ(screen.columns, 200);
    EXPECT_EQ(screen.rows, 40);
}

TEST_F(PlotScreen, TerminalWithoutASizeIsTakenForTheUsualOne) {
    const PlotDevice screen = on_terminal(0, 0);

    EXPECT_EQ(screen.columns, 80);
    EXPECT_EQ(screen.rows, 20);
}

TEST_F(PlotScreen, AnythingElseIsPlainAndOfTheSizeTold) {
    setenv("COLUMNS", "120", 1);
    setenv("LINES", "40", 1);

    const PlotDevice screen = screen_behind(-1);

    EXPECT_EQ(screen.format, PlotFormat::text);
    EXPECT_EQ(screen.columns, 120);
    EXPECT_EQ(screen.rows, 36);
}

TEST_F(PlotScreen, SizeThatIsNoNumberIsTakenForTheUsualOne) {
    setenv("COLUMNS", "wide", 1);
    setenv("LINES", "-3", 1);

    const PlotDevice screen = screen_behind(-1);

    EXPECT_EQ(screen.columns, 80);
    EXPECT_EQ(screen.rows, 20);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtctl
