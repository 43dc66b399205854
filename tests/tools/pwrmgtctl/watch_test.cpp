// SPDX-License-Identifier: Apache-2.0
// Views that are shown again and again, in a pipe and on a terminal.
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <sstream>

#include "tool.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

constexpr const char* kEnter = "\x1b[?1049h\x1b[?25l";
constexpr const char* kLeave = "\x1b[?25h\x1b[?1049l";

class Watch : public ToolTest {};

TEST_F(Watch, ShowsAsOftenAsAskedWithABlankLineBetween) {
    store_realtime(kReading, kNow);

    const std::string once = tool({"power", "realtime"}).out;
    const Finished run = tool({"power", "realtime", "--watch", "0.01", "--watch-count", "3"});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(run.out, once + '\n' + once + '\n' + once);
}

TEST_F(Watch, JsonIsADocumentPerLine) {
    store_realtime(kReading, kNow);

    const Finished run =
        tool({"power", "realtime", "--watch", "0.01", "--watch-count", "2", "--json"});

    const std::vector<std::string> lines = lines_of(run.out);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(parsed(lines[0])["system"]["dc_w"], 300);
    EXPECT_EQ(parsed(lines[1])["schema"], "pwrmgtctl.power.realtime/1");
}

TEST_F(Watch, WithoutAReadingSaysSoEachTimeAndEndsWithTheLastExitCode) {
    const Finished run = tool({"power", "realtime", "--watch", "0.01", "--watch-count", "2"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "pwrmgtctl: no real-time reading is stored (status 8)\n"
              "pwrmgtctl: no real-time reading is stored (status 8)\n");
}

TEST_F(Watch, EveryLiveViewCanBeWatched) {
    const std::vector<std::vector<std::string>> views{
        {"power", "realtime"},   {"power", "available"},   {"psu", "list"},
        {"thermal", "realtime"}, {"gpu", "realtime", "0"}, {"meter", "slots"}};
    for (std::vector<std::string> view : views) {
        view.emplace_back("--watch-count=1");

        EXPECT_NE(tool(view).exit, 2) << view[0] << ' ' << view[1];
    }
}

TEST_F(Watch, LeftReaderEndsTheView) {
    store_realtime(kReading, kNow);

    const Finished run =
        launch({{"power", "realtime", "--watch", "0.01"}, {}, kNow, Sink::left_reader, nullptr});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "");
}

// A tool whose standard output is a descriptor of the test's.
class Running {
public:
    Running(const std::vector<std::string>& arguments, int output) {
        child_ = fork();
        if (child_ != 0) return;
        dup2(output, STDOUT_FILENO);
        std::vector<char*> argv{const_cast<char*>("pwrmgtctl")};
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        execv(tool_path(), argv.data());
        _exit(127);
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
    ~Running() {
        if (child_ <= 0) return;
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }

    // The exit code after a signal, or minus the signal that ended it.
    int end_with(int signal) {
        kill(child_, signal);
        int status = 0;
        waitpid(child_, &status, 0);
        child_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    pid_t child_ = -1;
};

// Reads until the text has come, or nothing more does.
std::string read_until(int descriptor, const std::string& text) {
    std::string got;
    char buffer[4096];
    while (got.find(text) == std::string::npos) {
        const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
        if (count <= 0) break;
        got.append(buffer, static_cast<size_t>(count));
    }
    return got;
}

TEST_F(Watch, InterruptionEndsAViewInAPipeWithExit0) {
    store_realtime(kReading, kNow);
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    Running view({"power", "realtime", "--watch", "3600"}, ends[1]);
    close(ends[1]);
    const std::string shown = read_until(ends[0], "I/O utilisation, %            5\n");

    const int exit = view.end_with(SIGINT);
    const std::string rest = read_until(ends[0], "nothing more");
    close(ends[0]);

    EXPECT_EQ(exit, 0) << shown;
    EXPECT_EQ(rest, "");
}

TEST_F(Watch, InterruptionGivesTheTerminalBackWithTheLastShowing) {
    store_realtime(kReading, kNow);
    int terminal = -1;
    int tool_side = -1;
    ASSERT_EQ(openpty(&terminal, &tool_side, nullptr, nullptr, nullptr), 0);
    fcntl(terminal, F_SETFD, FD_CLOEXEC);
    Running view({"power", "realtime", "--watch", "3600"}, tool_side);
    const std::string shown = read_until(terminal, "I/O utilisation, %            5");

    const int exit = view.end_with(SIGTERM);
    close(tool_side);
    const std::string rest = read_until(terminal, "I/O utilisation, %            5");
    close(terminal);

    EXPECT_EQ(exit, 0);
    EXPECT_EQ(shown.substr(0, 21), std::string(kEnter) + "\x1b[H\x1b[2J");
    EXPECT_NE(rest.find(std::string(kLeave) + "Stored reading of "), std::string::npos) << rest;
}

}  // namespace
}  // namespace pwrmgt::tooltest
