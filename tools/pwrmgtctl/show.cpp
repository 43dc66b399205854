// SPDX-License-Identifier: Apache-2.0
#include "show.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace pwrmgt::pwrmgtctl {
namespace {

// Control sequences of a terminal: a screen of its own without a cursor, and back.
constexpr std::string_view kEnter = "\x1b[?1049h\x1b[?25l";
constexpr std::string_view kLeave = "\x1b[?25h\x1b[?1049l";
constexpr std::string_view kClear = "\x1b[H\x1b[2J";

int number(Exit exit) {
    return static_cast<int>(exit);
}

int report(Exit exit, const std::string& words) {
    std::fprintf(stderr, "pwrmgtctl: %s\n", words.c_str());
    return number(exit);
}

int told_output_error(int error, Exit unwritten) {
    // A reader that left early, such as head, knows; nobody else has to be told.
    if (error == EPIPE) return number(unwritten);
    return report(unwritten, std::string("standard output: ") + std::strerror(error));
}

int show_once(const Action& action, common::StdoutGuard& standard_output) {
    const Outcome outcome = action();
    if (!outcome.document.empty()) {
        const int error = standard_output.write(outcome.document);
        if (error != 0) return told_output_error(error, outcome.unwritten);
    }
    if (!outcome.error.empty()) return report(outcome.exit, outcome.error);
    return number(outcome.exit);
}

// Signals that end a view. They are taken one by one while it waits, never inside the library.
class Ending {
public:
    Ending() {
        sigemptyset(&signals_);
        for (const int signal : std::array{SIGINT, SIGTERM, SIGHUP}) {
            sigaddset(&signals_, signal);
        }
        sigprocmask(SIG_BLOCK, &signals_, nullptr);
    }

    // Whether one came before the time was over.
    [[nodiscard]] bool came_within(double seconds) const {
        const double whole = std::floor(seconds);
        timespec left{static_cast<time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
        while (sigtimedwait(&signals_, nullptr, &left) < 0) {
            if (errno != EINTR) return false;
            left = {0, 0};  // a stopped process that goes on shows at once
        }
        return true;
    }

private:
    sigset_t signals_{};
};

// One showing after the other: over each other on a terminal, below each other elsewhere.
class View {
public:
    explicit View(common::StdoutGuard& output) : output_(output), terminal_(output.is_terminal()) {
        if (terminal_) error_ = output_.add(kEnter);
    }

    void put(const Outcome& outcome, bool lines) {
        std::string frame(terminal_ ? kClear : std::string_view());
        if (!terminal_ && !lines && shown_ && !outcome.document.empty()) frame += '\n';
        last_ = outcome.document;
        if (terminal_ && !outcome.error.empty()) last_ += "pwrmgtctl: " + outcome.error + '\n';
        if (!terminal_ && !outcome.error.empty()) report(outcome.exit, outcome.error);
        shown_ = true;
        if (error_ == 0) error_ = output_.add(frame + last_);
    }

    // Gives the terminal back with the last showing on it. The first error of writing.
    [[nodiscard]] int end() {
        const std::string farewell = terminal_ ? std::string(kLeave) + last_ : std::string();
        const int error = output_.write(farewell);
        return error_ != 0 ? error_ : error;
    }

    [[nodiscard]] bool broken() const { return error_ != 0; }

private:
    common::StdoutGuard& output_;
    bool terminal_;
    bool shown_ = false;
    int error_ = 0;
    std::string last_;
};

int show_watched(const Action& action, const Watch& watch, common::StdoutGuard& standard_output) {
    const Ending ending;
    View view(standard_output);
    Outcome outcome;
    for (uint32_t times = 1;; ++times) {
        outcome = action();
        view.put(outcome, watch.lines);
        if (view.broken() || times == watch.times) break;
        if (ending.came_within(watch.every_s)) {
            outcome.exit = Exit::ok;
            break;
        }
    }
    const int error = view.end();
    return error != 0 ? told_output_error(error, outcome.unwritten) : number(outcome.exit);
}

}  // namespace

int show(const Action& action, common::StdoutGuard& standard_output) {
    try {
        return action.watch ? show_watched(action, *action.watch, standard_output)
                            : show_once(action, standard_output);
    } catch (const std::exception& failure) {
        return report(Exit::failure, failure.what());
    }
}

}  // namespace pwrmgt::pwrmgtctl
