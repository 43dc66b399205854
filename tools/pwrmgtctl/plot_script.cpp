// SPDX-License-Identifier: Apache-2.0
// On a screen the band is a bar per entry, of the first series only; files have areas for bands,
// fonts and colours. Words in a script are the tool's own: there is nothing to escape.
#include "plot_script.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "plot_data.h"
#include "print.h"

namespace pwrmgt::pwrmgtctl {
namespace {

// Told apart by people who do not see all colours, and on paper.
constexpr std::array<std::string_view, 8> kColours{"#0072b2", "#d55e00", "#009e73", "#cc79a7",
                                                   "#56b4e9", "#e69f00", "#6a3d9a", "#5f5f5f"};
constexpr std::string_view kLevelColour = "#b00020";
// What a terminal of eight colours shows well on dark and on light.
constexpr std::array<std::string_view, 6> kTextColours{"cyan",    "yellow", "green",
                                                       "magenta", "red",    "blue"};
// What the program makes the lines of its line types of on a screen.
constexpr std::string_view kTextMarks = "*#$%@&=";
constexpr size_t kMostBars = 2;   // series beside which the bars of the first can still be read
constexpr size_t kMostNamed = 3;  // series whose bands are named one by one
constexpr int64_t kMostMarks = 13;
constexpr int kColumnsPerMark = 10;

bool on_screen(const PlotDevice& device) {
    return device.format == PlotFormat::text || device.format == PlotFormat::coloured_text;
}

std::string in_quotes(std::string_view words) {
    return '"' + std::string(words) + '"';
}

// Rows under a name, for the plot command to use.
std::string data_block(const std::string& name, const std::string& rows) {
    return rows.empty() ? std::string() : "$" + name + " << END\n" + rows + "END\n";
}

// The quantity, and its unit in a file and on a screen, which may not have every letter.
struct Words {
    std::string_view quantity;
    std::string_view unit;
    std::string_view unit_on_screen;
};

Words words_of(PlotUnit unit) {
    switch (unit) {
        case PlotUnit::watts:
            return {"Power", "W", "W"};
        case PlotUnit::percent:
            return {"Utilisation", "%", "%"};
        default:
            return {"Temperature", "°C", "C"};
    }
}

bool has_bars(const Plot& plot) {
    return !plot.series.empty() && plot.series.size() <= kMostBars && has_band(plot.series.front());
}

// "2026-11-19 23:50"
std::string minute_text(int64_t time_s) {
    std::string text = time_text(time_s, Zone::utc).substr(0, 16);
    text[10] = ' ';
    return text;
}

std::string terminal_of(const PlotDevice& device) {
    switch (device.format) {
        case PlotFormat::svg:
            return "svg size 1000,480 font 'DejaVu Sans,13' background '#ffffff' noenhanced\n";
        case PlotFormat::png:
            return "pngcairo size 1600,768 fontscale 1.6 linewidth 1.6 pointscale 1.6 font 'DejaVu "
                   "Sans,10' "
                   "background '#ffffff' noenhanced\n";
        default:
            return "dumb size " + std::to_string(device.columns) + ',' +
                   std::to_string(device.rows) + " aspect 2,1 noenhanced " +
                   (device.format == PlotFormat::coloured_text ? "ansi\n" : "mono\n");
    }
}

// The legend of few series stands between the title and the picture, of many beside it.
std::string words_in_file(const Plot& plot) {
    const Words words = words_of(plot.unit);
    const bool named = plot.series.size() <= kMostNamed;
    const bool bands = std::any_of(plot.series.begin(), plot.series.end(), has_band);
    const std::string title = plot.title + (bands && !named ? ", minimum to maximum shaded" : "");
    const std::string legend = named ? "at graph 0.5,1.12 center horizontal" : "right top vertical";
    return "set title " + in_quotes(title) + " font ',15'" + (named ? " offset 0,2.6" : "") +
           "\nset ylabel " +
           in_quotes(std::string(words.quantity) + ", " + std::string(words.unit)) +
           "\nset border 3 lc rgb '#808080'\nset tics textcolor rgb '#303030'\n"
           "set grid back lc rgb '#e4e4e4' lt 1 lw 1\n"
           "set style fill transparent solid 0.22 noborder\nset key outside " +
           legend + " Left reverse samplen 3 width 1\n" +
           (named ? "set tmargin 6\nset rmargin 4\n" : "");
}

std::string frame_of(const Plot& plot, const PlotDevice& device) {
    const PlotRange axis = value_axis(plot);
    const int64_t span_s = plot.end_s - plot.start_s;
    const int64_t most_marks = on_screen(device) ? device.columns / kColumnsPerMark : kMostMarks;
    const int64_t step_s = time_step_s(span_s, most_marks);
    const auto number = [](int64_t value) { return std::to_string(value); };
    return "set encoding utf8\nset terminal " + terminal_of(device) +
           "set xdata time\nset timefmt '%s'\nset tics nomirror\n" + "set format x " +
           (step_s < 60 ? "'%H:%M:%S'\n" : "'%H:%M'\n") + "set xrange ['" + number(plot.start_s) +
           "':'" + number(plot.end_s) + "']\n" + "set xtics " + number(step_s) + '\n' +
           "set yrange [" + number(axis.low) + ':' + number(axis.high) + "]\n" + "set xlabel " +
           in_quotes("Time (UTC), " + minute_text(plot.start_s) + " to " +
                     minute_text(plot.end_s)) +
           '\n' +
           (on_screen(device) ? "set key below horizontal left width 3\n" : words_in_file(plot));
}

// The plot command: elements in the order in which they are painted.
class Elements {
public:
    void add(const std::string& element) { text_ += (text_.empty() ? "" : ", \\\n  ") + element; }
    [[nodiscard]] bool empty() const { return text_.empty(); }
    [[nodiscard]] std::string text() const { return "plot " + text_ + '\n'; }

private:
    std::string text_;
};

// How one series is drawn on a device.
struct Look {
    std::string line;
    std::string lone;
    std::string band;
    std::string lone_band;
};

Look look_on_screen(size_t at) {
    const std::string style = " lt " + std::to_string(at % kTextMarks.size() + 1) + " lc rgb " +
                              in_quotes(kTextColours.at(at % kTextColours.size()));
    const std::string bar = " using 1:2:(0):($3-$2) with vectors nohead lt 0";
    return {" using 1:2 with lines" + style,
            " using 1:2 with points pt " + in_quotes(kTextMarks.substr(at % kTextMarks.size(), 1)) +
                style,
            bar, bar};
}

Look look_in_file(size_t at) {
    const std::string_view colour = kColours.at(at % kColours.size());
    const std::string style =
        " lc rgb " + in_quotes(colour) + (at < kColours.size() ? "" : " dt 2");
    // A lone band has no width to fill: a broad line, as transparent as the areas.
    const std::string faint = " lc rgb " + in_quotes("#c8" + std::string(colour.substr(1)));
    return {" using 1:2 with lines lw 1.8" + style, " using 1:2 with points pt 7 ps 0.7" + style,
            " using 1:2:3 with filledcurves" + style,
            " using 1:2:(0):($3-$2) with vectors nohead lw 4" + faint};
}

void add_bands(const std::string& id, const PlotRows& rows, const Look& look,
               const std::string& title, Elements& elements) {
    if (!rows.bands.empty()) elements.add("$band" + id + look.band + title);
    if (!rows.lone_bands.empty()) {
        elements.add("$loneband" + id + look.lone_band + (rows.bands.empty() ? title : " notitle"));
    }
}

void add_lines(const std::string& id, const PlotRows& rows, const Look& look,
               const std::string& title, Elements& elements) {
    if (!rows.lines.empty()) elements.add("$line" + id + look.line + title);
    if (!rows.lone.empty()) {
        elements.add("$lone" + id + look.lone + (rows.lines.empty() ? title : " notitle"));
    }
}

// Where there is a band, the line has to be told from it.
std::string mean_words(const PlotSeries& series) {
    return has_band(series) ? " mean" : "";
}

// Bands lie below every line.
void add_series(const Plot& plot, const PlotDevice& device, std::string& data, Elements& elements) {
    const bool screen = on_screen(device);
    std::vector<PlotRows> rows;
    for (size_t at = 0; at < plot.series.size(); ++at) {
        const PlotSeries& series = plot.series[at];
        const std::string id = std::to_string(at);
        rows.push_back(rows_of(series));
        data += data_block("line" + id, rows[at].lines) + data_block("lone" + id, rows[at].lone) +
                data_block("band" + id, rows[at].bands) +
                data_block("loneband" + id, rows[at].lone_bands);
        if (screen && (at > 0 || !has_bars(plot))) continue;
        const bool named = !screen && plot.series.size() <= kMostNamed;
        add_bands(id, rows[at], screen ? look_on_screen(at) : look_in_file(at),
                  named ? " title " + in_quotes(series.name + " minimum to maximum") : " notitle",
                  elements);
    }
    for (size_t at = 0; at < rows.size(); ++at) {
        add_lines(std::to_string(at), rows[at], screen ? look_on_screen(at) : look_in_file(at),
                  " title " +
                      in_quotes(plot.series[at].name + (screen ? "" : mean_words(plot.series[at]))),
                  elements);
    }
}

// A level outside the picture is still told in the key.
void add_level(const Plot& plot, const PlotDevice& device, std::string& data, Elements& elements) {
    const std::string value = ' ' + std::to_string(plot.level->value) + '\n';
    data += data_block("level",
                       std::to_string(plot.start_s) + value + std::to_string(plot.end_s) + value);
    const std::string look =
        on_screen(device) ? "lt 6 lc rgb 'red'" : "lw 1.8 dt 2 lc rgb " + in_quotes(kLevelColour);
    elements.add("$level using 1:2 with lines " + look + " title " +
                 in_quotes(plot.level->name + (shows_level(plot) ? "" : ", outside the picture")));
}

}  // namespace

std::string screen_caption(const Plot& plot) {
    const Words words = words_of(plot.unit);
    const std::string caption =
        std::string(words.quantity) + " in " + std::string(words.unit_on_screen);
    if (!has_bars(plot)) return caption + '\n';
    return caption + "; bars: " + plot.series.front().name + " from minimum to maximum\n";
}

std::string plot_script(const Plot& plot, const PlotDevice& device) {
    std::string data;
    std::string frame = frame_of(plot, device);
    Elements elements;
    add_series(plot, device, data, elements);
    if (elements.empty()) {
        // The program draws no axes without an element.
        data += data_block("nothing", std::to_string(plot.start_s) + " NaN\n");
        elements.add("$nothing using 1:2 with lines notitle");
        frame += "set label \"No reading\" at graph 0.5,0.5 center\n";
    }
    if (plot.level) add_level(plot, device, data, elements);
    return data + frame + elements.text();
}

}  // namespace pwrmgt::pwrmgtctl
