// SPDX-License-Identifier: Apache-2.0
#include "plot_screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>

namespace pwrmgt::pwrmgtctl {
namespace {

// Below, nothing can be read; above, the eye loses the axis.
constexpr int kLeastColumns = 40;
constexpr int kMostColumns = 200;
constexpr int kLeastRows = 12;
constexpr int kMostRows = 40;
constexpr int kRowsForWords = 4;  // the line on top, the line below, and the prompt

std::string_view variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

int number_in(const char* name, int otherwise) {
    const std::string_view text = variable(name);
    int value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && rest == text.data() + text.size() && value > 0 ? value
                                                                                  : otherwise;
}

bool wants_colour() {
    return variable("NO_COLOR").empty() && !variable("TERM").empty() && variable("TERM") != "dumb";
}

}  // namespace

PlotDevice screen_behind(int descriptor) {
    PlotDevice screen{PlotFormat::text, number_in("COLUMNS", 80), number_in("LINES", 24)};
    if (isatty(descriptor) == 1) {
        if (wants_colour()) screen.format = PlotFormat::coloured_text;
        winsize size{};
        if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0) {
            screen.columns = size.ws_col;
            screen.rows = size.ws_row;
        }
    }
    screen.columns = std::clamp(screen.columns, kLeastColumns, kMostColumns);
    screen.rows = std::clamp(screen.rows - kRowsForWords, kLeastRows, kMostRows);
    return screen;
}

}  // namespace pwrmgt::pwrmgtctl
