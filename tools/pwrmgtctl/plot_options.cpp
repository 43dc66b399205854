// SPDX-License-Identifier: Apache-2.0
#include "plot_options.h"

#include <algorithm>
#include <string_view>

#include "common/stdout_guard.h"
#include "output_file.h"
#include "plot_program.h"
#include "plot_screen.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr const char* kStandardOutput = "-";

// A picture is drawn before its file is touched: a failure leaves what is there.
Outcome to_file(const Plot& plot, PlotFormat format, const std::string& file) {
    const Drawn drawn = draw(plot_script(plot, {format}), kPlotSilenceMs);
    if (drawn.exit != Exit::ok) return fail(drawn.exit, drawn.mistake);
    if (file == kStandardOutput) return succeed(drawn.picture);
    const std::string mistake = write_file(file, drawn.picture);
    if (!mistake.empty()) return fail(Exit::failure, mistake);
    return succeed(file + ": " + plot.title + '\n');
}

// A line without what changes colours, which fill its end: "\x1b[0;39m".
bool is_empty(std::string_view line) {
    while (!line.empty()) {
        if (line.front() == '\x1b') {
            line.remove_prefix(std::min(line.find('m'), line.size() - 1) + 1);
        } else if (line.front() == ' ' || line.front() == '\f') {
            line.remove_prefix(1);
        } else {
            return false;
        }
    }
    return true;
}

// The program fills its screen with spaces and empty lines; colours stay.
std::string trimmed(const std::string& picture) {
    std::string text;
    size_t start = 0;
    while (start < picture.size()) {
        const size_t end = std::min(picture.find('\n', start), picture.size());
        const std::string line = picture.substr(start, end - start);
        if (!is_empty(line)) text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
        start = end + 1;
    }
    return text;
}

// Colours end with the picture.
std::string uncoloured(std::string text, PlotFormat format) {
    return format == PlotFormat::coloured_text ? std::move(text) + "\x1b[0m" : text;
}

Outcome to_screen(const Plot& plot, const PlotText& text) {
    const PlotDevice screen = screen_behind(common::StdoutGuard::real_output());
    const Drawn drawn = draw(plot_script(plot, screen), kPlotSilenceMs);
    if (drawn.exit != Exit::ok) return fail(drawn.exit, drawn.mistake);
    return succeed(text.headline + screen_caption(plot) +
                   uncoloured(trimmed(drawn.picture), screen.format) + text.closing);
}

}  // namespace

void add_plot_options(cli::Command command, PlotOptions& options,
                      const std::vector<cli::Option>& others) {
    const std::vector<cli::Option> pictures{
        command.add_flag("--plot", options.screen, "Draw it on the screen instead of a table"),
        command.add_option("--svg", options.svg, "Draw it into an SVG file").type_name("FILE"),
        command.add_option("--png", options.png, "Draw it into a PNG file").type_name("FILE")};
    for (cli::Option picture : pictures) {
        for (const cli::Option& other : others) {
            picture.excludes(other);
        }
    }
}

Outcome plot_outcome(const Plot& plot, const PlotOptions& options, const PlotText& text) {
    const int on_output = (options.screen ? 1 : 0) + (options.svg == kStandardOutput ? 1 : 0) +
                          (options.png == kStandardOutput ? 1 : 0);
    if (on_output > 1) {
        return fail(Exit::usage, "standard output takes one picture");
    }
    Outcome outcome;
    const auto add = [&outcome](const Outcome& next) {
        if (outcome.exit == Exit::ok) {
            outcome.exit = next.exit;
            outcome.document += next.document;
            outcome.error = next.error;
        }
    };
    if (options.screen) add(to_screen(plot, text));
    if (!options.svg.empty()) add(to_file(plot, PlotFormat::svg, options.svg));
    if (!options.png.empty()) add(to_file(plot, PlotFormat::png, options.png));
    return outcome;
}

}  // namespace pwrmgt::pwrmgtctl
