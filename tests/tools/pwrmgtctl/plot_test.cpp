// SPDX-License-Identifier: Apache-2.0
// Pictures as a user asks for them; what the files show is in plot_picture_test.py.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>

#include "tool.h"
#include "vekdb_client.h"

namespace pwrmgt::tooltest {
namespace {

namespace fs = std::filesystem;

class Plot : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        fs::create_directories(place_);
    }
    void TearDown() override {
        fs::remove_all(place_);
        ToolTest::TearDown();
    }
    void store_temperature(int16_t kind, int16_t instance, int16_t degrees, uint32_t time_s) {
        struct {
            uint32_t timestamp;
            uint16_t count;
            thermal_hist_entry_t entry;
        } record{time_s, 1, {static_cast<uint8_t>(kind), static_cast<uint8_t>(instance), degrees}};
        thermal_hist_update_t update{};
        update.timestamp = record.timestamp;
        update.count = record.count;
        update.entries[0] = record.entry;
        ASSERT_EQ(thermal_update_thermal_hist_table(connection(), &update), 0U);
    }

    const std::string place_ = state_directory() + "/pictures";
};

TEST_F(Plot, HistoryOnTheScreen) {
    for (uint32_t back = 0; back < 10; ++back) {
        if (back != 4 && back != 5) store_slot(back, slot_of(static_cast<uint16_t>(300 - back)));
    }

    const Finished run =
        tool_with({"COLUMNS=60", "LINES=24"},
                  {"power", "history", "--domain", "memory", "--minutes", "5", "--plot"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    const std::vector<std::string> lines = lines_of(run.out);
    ASSERT_GT(lines.size(), 12U);
    EXPECT_EQ(lines[0],
              "Memory power, last 5 min up to 2023-11-14T22:13:30Z: 10 entries of 30 s, oldest on "
              "the left; newest reading 0 s old; database " +
                  working_file());
    EXPECT_EQ(lines[1], "Power in W; bars: DC from minimum to maximum");
    EXPECT_EQ(lines[lines.size() - 2], "      Time (UTC), 2023-11-14 22:08 to 2023-11-14 22:13");
    // The mean is 40 W throughout, and open where nothing was read.
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
        return std::regex_match(line, std::regex("  40 \\|[*]{10,} {10,}[*]{10,} *\\|"));
    })) << run.out;
}

TEST_F(Plot, OneEntryIsDrawn) {
    store_slot(0, slot_of(300));

    const Finished run = tool({"power", "history", "--domain", "cpu", "--plot"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_NE(run.out.find('*'), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("1 entry of 30 s"), std::string::npos) << run.out;
}

TEST_F(Plot, PlainTextHasNoColours) {
    store_slot(0, slot_of(300));

    const Finished run = tool_with({"TERM=xterm"}, {"power", "history", "--plot"});

    EXPECT_EQ(run.out.find('\x1b'), std::string::npos);
}

TEST_F(Plot, TimingIsTheLastLine) {
    store_slot(0, slot_of(300));

    const std::vector<std::string> lines =
        lines_of(tool({"power", "history", "--plot", "--timing"}).out);

    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back().substr(0, 15), "The query took ");
}

TEST_F(Plot, EveryProcessorIsALine) {
    pwrmgt_cpu_pwr_sample_t row{0,
                                kNow - 30,
                                {60, 61, PWRMGT_NO_POWER, PWRMGT_NO_POWER, PWRMGT_NO_POWER,
                                 PWRMGT_NO_POWER, PWRMGT_NO_POWER, PWRMGT_NO_POWER}};
    ASSERT_EQ(pwrmgt_update_cpu_pwr_hist_table(connection(), row), 0U);

    const Finished run = tool({"cpu", "history", "--plot"});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_NE(run.out.find("CPU 2"), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("CPU 3"), std::string::npos) << run.out;
}

TEST_F(Plot, SensorsThatAreNamedAreDrawnAndNoOthers) {
    store_temperature(1, 1, 24, kNow - 60);
    store_temperature(2, 1, 58, kNow - 60);
    store_temperature(2, 2, 61, kNow - 60);

    const Finished all = tool({"thermal", "history", "--plot"});
    const Finished some =
        tool({"thermal", "history", "--plot", "--sensor", "inlet1", "--sensor", "cpu2"});

    EXPECT_EQ(all.exit, 0) << all.err;
    EXPECT_NE(all.out.find("CPU 1"), std::string::npos) << all.out;
    EXPECT_EQ(some.exit, 0) << some.err;
    EXPECT_NE(some.out.find("Inlet 1"), std::string::npos) << some.out;
    EXPECT_NE(some.out.find("CPU 2"), std::string::npos) << some.out;
    EXPECT_EQ(some.out.find("CPU 1"), std::string::npos) << some.out;
}

TEST_F(Plot, SensorWithoutReadingsIsNoData) {
    store_temperature(1, 1, 24, kNow - 60);

    const Finished run = tool({"thermal", "history", "--plot", "--sensor", "cpu3"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "pwrmgtctl: no reading of the sensors asked for in the span\n");
}

TEST_F(Plot, EmptyHistoryLeavesNoFile) {
    const Finished run = tool({"power", "history", "--svg", place_ + "/day.svg"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_FALSE(fs::exists(place_ + "/day.svg"));
}

TEST_F(Plot, WithoutTheProgramIsExit3AndLeavesTheOldFile) {
    store_slot(0, slot_of(300));
    std::ofstream(place_ + "/day.svg") << "old";

    const Finished run =
        tool_with({"PATH=" + place_}, {"power", "history", "--svg", place_ + "/day.svg"});

    EXPECT_EQ(run.exit, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "pwrmgtctl: gnuplot is not installed, or not on $PATH (package gnuplot-nox)\n");
    EXPECT_EQ(fs::file_size(place_ + "/day.svg"), 3);
}

TEST_F(Plot, FilesAreToldInALineEach) {
    store_slot(0, slot_of(300));
    const std::string svg = place_ + "/day.svg";
    const std::string png = place_ + "/day.png";

    const Finished run = tool({"power", "history", "--svg", svg, "--png", png});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(run.out, svg + ": System power, 1 h, entries of 30 s\n" + png +
                           ": System power, 1 h, entries of 30 s\n");
    EXPECT_TRUE(fs::exists(svg));
    EXPECT_TRUE(fs::exists(png));
}

TEST_F(Plot, FileThatCannotBeMadeIsExit1) {
    store_slot(0, slot_of(300));

    const Finished run = tool({"power", "history", "--svg", place_ + "/none/day.svg"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "pwrmgtctl: " + place_ + "/none/day.svg: No such file or directory\n");
}

TEST_F(Plot, WhatIsNoRegularFileIsLeftAlone) {
    store_slot(0, slot_of(300));

    const Finished device = tool({"power", "history", "--png", "/dev/full"});
    const Finished directory = tool({"power", "history", "--svg", place_});

    EXPECT_EQ(device.exit, 1);
    EXPECT_EQ(device.err, "pwrmgtctl: /dev/full: is there and no regular file; left alone\n");
    EXPECT_EQ(directory.exit, 1);
}

TEST_F(Plot, PictureOnFullStandardOutputIsExit1) {
    store_slot(0, slot_of(300));

    const Finished run =
        launch({{"power", "history", "--svg", "-"}, {}, kNow, Sink::full_device, nullptr});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "pwrmgtctl: standard output: No space left on device\n");
}

TEST_F(Plot, StandardOutputTakesOnePictureOnly) {
    store_slot(0, slot_of(300));

    EXPECT_EQ(tool({"power", "history", "--svg", "-", "--plot"}).exit, 2);
    EXPECT_EQ(tool({"power", "history", "--svg", "-", "--png", "-"}).exit, 2);
    EXPECT_EQ(tool({"power", "history", "--png", "-", "--plot"}).exit, 2);
}

}  // namespace
}  // namespace pwrmgt::tooltest
