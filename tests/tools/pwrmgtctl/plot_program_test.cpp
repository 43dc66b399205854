// SPDX-License-Identifier: Apache-2.0
// The child process, with stand-ins of the plotting program on $PATH.
#include "plot_program.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace pwrmgt::pwrmgtctl {
namespace {

namespace fs = std::filesystem;

constexpr int kPatient = 30000;

class PlotProgram : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = fs::temp_directory_path() / "plot_program_test.XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        place_ = pattern;
        path_ = std::getenv("PATH");
        handler_ = std::signal(SIGPIPE, SIG_IGN);
    }
    void TearDown() override {
        setenv("PATH", path_.c_str(), 1);
        std::signal(SIGPIPE, handler_);
        fs::remove_all(place_);
    }

    // A program of that name that runs these shell commands.
    void stand_in(const std::string& commands) {
        const std::string program = place_ + "/gnuplot";
        std::ofstream(program) << "#!/bin/sh\n" << commands << '\n';
        ASSERT_EQ(chmod(program.c_str(), 0755), 0);
        setenv("PATH", (place_ + ":" + path_).c_str(), 1);
    }

    std::string place_;
    std::string path_;
    sighandler_t handler_ = nullptr;
};

TEST_F(PlotProgram, MissingProgramIsToldWithItsPackage) {
    setenv("PATH", place_.c_str(), 1);

    const Drawn drawn = draw("", kPatient);

    EXPECT_EQ(drawn.exit, Exit::unsupported);
    EXPECT_EQ(drawn.mistake, "gnuplot is not installed, or not on $PATH (package gnuplot-nox)");
}

TEST_F(PlotProgram, ProgramThatTheChildCouldNotStartIsMissingToo) {
    stand_in("exit 127");

    EXPECT_EQ(draw("", kPatient).exit, Exit::unsupported);
}

TEST_F(PlotProgram, PictureIsWhatTheProgramWrites) {
    stand_in("cat");

    const Drawn drawn = draw("set title 'x'\n", kPatient);

    EXPECT_EQ(drawn.exit, Exit::ok);
    EXPECT_EQ(drawn.picture, "set title 'x'\n");
}

TEST_F(PlotProgram, ScriptAndPictureLargerThanAPipePassThrough) {
    stand_in("cat");
    const std::string large(1 << 20, 'x');

    EXPECT_EQ(draw(large, kPatient).picture, large);
}

TEST_F(PlotProgram, StartUpSettingsOfTheUserAreLeftOut) {
    stand_in("printf '%s' \"$1 $LC_ALL $GNUTERM\"; cat >/dev/null");
    setenv("GNUTERM", "x11", 1);

    const Drawn drawn = draw("", kPatient);

    unsetenv("GNUTERM");
    EXPECT_EQ(drawn.picture, "-d C.UTF-8 ");
}

TEST_F(PlotProgram, FailureIsToldInItsLastWords) {
    stand_in(
        "cat >/dev/null; echo half a picture; echo 'line 1:' >&2; echo '  no such thing' >&2; exit "
        "1");

    const Drawn drawn = draw("plot\n", kPatient);

    EXPECT_EQ(drawn.exit, Exit::failure);
    EXPECT_EQ(drawn.mistake, "gnuplot: no such thing");
    EXPECT_EQ(drawn.picture, "");
}

TEST_F(PlotProgram, NoPictureIsAFailure) {
    stand_in("cat >/dev/null");

    EXPECT_EQ(draw("plot\n", kPatient).mistake, "gnuplot: drew nothing");
}

TEST_F(PlotProgram, ProgramThatDoesNotReadItsScriptIsAFailureNotAHang) {
    stand_in("exit 1");

    EXPECT_EQ(draw(std::string(1 << 20, 'x'), kPatient).exit, Exit::failure);
}

TEST_F(PlotProgram, SilentProgramIsEnded) {
    stand_in("exec tail -f /dev/null");

    const Drawn drawn = draw("plot\n", 50);

    EXPECT_EQ(drawn.exit, Exit::failure);
    EXPECT_EQ(drawn.mistake, "gnuplot: gave no answer; ended");
}

TEST_F(PlotProgram, MistakeInAScriptIsAFailureOfTheRealProgramToo) {
    const Drawn drawn = draw("set terminal dumb\nplot nothing_of_the_kind\n", kPatient);

    EXPECT_EQ(drawn.exit, Exit::failure);
    EXPECT_NE(drawn.mistake.find("undefined variable"), std::string::npos) << drawn.mistake;
}

}  // namespace
}  // namespace pwrmgt::pwrmgtctl
