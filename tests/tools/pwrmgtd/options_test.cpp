// SPDX-License-Identifier: Apache-2.0
#include "options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pwrmgt::pwrmgtd {
namespace {

using testing::AllOf;
using testing::HasSubstr;

// On a machine without a configuration.
Parsed parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), {"--config", ""});
    arguments.insert(arguments.begin(), "pwrmgtd");
    return parse_options(static_cast<int>(arguments.size()), arguments.data());
}

TEST(Options, NoneMeansRecordingFromTheFirmware) {
    const Parsed parsed = parse({});

    ASSERT_TRUE(parsed.options) << parsed.text;
    EXPECT_EQ(parsed.options->source, SourceKind::firmware);
    EXPECT_EQ(parsed.options->rhythm.sample_interval_s, 1);
    EXPECT_EQ(parsed.options->rhythm.persist_slots, 10);
    EXPECT_EQ(parsed.options->redundancy_mode, 255U);
    EXPECT_EQ(parsed.options->replay_file, "");
    EXPECT_FALSE(parsed.options->verbose);
}

TEST(Options, TheKernelIsASourceWithARootAndSupplyDevices) {
    const Parsed parsed = parse(
        {"--source", "kernel", "--kernel-root", "/tree", "--supply-devices", "7-0058,7-0059"});

    ASSERT_TRUE(parsed.options) << parsed.text;
    EXPECT_EQ(parsed.options->source, SourceKind::kernel);
    EXPECT_EQ(parsed.options->kernel_root, "/tree");
    EXPECT_EQ(parsed.options->supply_devices, "7-0058,7-0059");
}

TEST(Options, SuppliesAreReadAndOtherwiseLeftToTheSource) {
    const Parsed none = parse({});
    const Parsed all = parse({"--bays", "8", "--psu-label", "1800", "--psu-input-label", "2000"});

    ASSERT_TRUE(none.options && all.options) << all.text;
    EXPECT_EQ(none.options->bays, std::nullopt);
    EXPECT_EQ(none.options->psu_label_w, std::nullopt);
    EXPECT_EQ(none.options->psu_input_label_w, std::nullopt);
    EXPECT_EQ(all.options->bays, 8);
    EXPECT_EQ(all.options->psu_label_w, 1800);
    EXPECT_EQ(all.options->psu_input_label_w, 2000);
}

TEST(Options, AReplayIsReadWithItsEnd) {
    const Parsed parsed = parse({"--replay", "day.csv", "--until", "2025-06-04T00:00:10Z"});

    ASSERT_TRUE(parsed.options) << parsed.text;
    EXPECT_EQ(parsed.options->replay_file, "day.csv");
    EXPECT_EQ(parsed.options->until_s, 1748995210);
    EXPECT_FALSE(parsed.options->then_run);
}

TEST(Options, AReplayUntilNowLeavesTheTimeToTheClock) {
    const Parsed parsed = parse({"--replay", "day.csv", "--until", "now", "--then-run"});

    ASSERT_TRUE(parsed.options) << parsed.text;
    EXPECT_EQ(parsed.options->until_s, std::nullopt);
    EXPECT_TRUE(parsed.options->then_run);
}

TEST(Options, EdgesOfTheRangesAreTaken) {
    for (const auto& arguments :
         std::vector<std::vector<const char*>>{{"--sample-interval", "1"},
                                               {"--sample-interval", "30"},
                                               {"--persist-every", "1"},
                                               {"--persist-every", "2880"},
                                               {"--redundancy-mode", "0"},
                                               {"--redundancy-mode", "4"},
                                               {"--clock-wait", "0"},
                                               {"--clock-wait", "604800"},
                                               {"--bays", "1"},
                                               {"--bays", "12"},
                                               {"--psu-label", "1"},
                                               {"--psu-label", "8191"},
                                               {"--psu-input-label", "8191"},
                                               {"--replay", "f", "--until", "86401"},
                                               {"--replay", "f", "--until", "2147483647"}}) {
        EXPECT_TRUE(parse(arguments).options) << arguments[0] << ' ' << arguments.back();
    }
}

TEST(Options, WrongOnesAreUsageErrors) {
    for (const auto& arguments :
         std::vector<std::vector<const char*>>{{"--sample-interval", "0"},
                                               {"--sample-interval", "31"},
                                               {"--sample-interval", "x"},
                                               {"--persist-every", "0"},
                                               {"--persist-every", "2881"},
                                               {"--redundancy-mode", "5"},
                                               {"--clock-wait", "-1"},
                                               {"--clock-wait", "604801"},
                                               {"--bays", "0"},
                                               {"--bays", "13"},
                                               {"--psu-label", "0"},
                                               {"--psu-label", "8192"},
                                               {"--psu-input-label", "-1"},
                                               {"--source", "oracle"},
                                               {"--source", "0"},
                                               {"--source", "trace"},
                                               {"--trace", "f"},
                                               {"--until", "now"},
                                               {"--then-run"},
                                               {"--replay"},
                                               {"--replay", ""},
                                               {"--replay", "f", "--until", "noon"},
                                               {"--replay", "f", "--until", "86400"},
                                               {"--replay", "f", "--until", "2147483648"},
                                               {"--unknown"},
                                               {"argument"}}) {
        const Parsed parsed = parse(arguments);

        EXPECT_FALSE(parsed.options) << arguments[0];
        EXPECT_EQ(parsed.exit, Exit::usage) << arguments[0];
        EXPECT_THAT(parsed.text, HasSubstr("--help")) << arguments[0];
    }
}

TEST(Options, HelpNamesEveryOptionAndExitCode) {
    const Parsed parsed = parse({"--help"});

    EXPECT_FALSE(parsed.options);
    EXPECT_EQ(parsed.exit, Exit::ok);
    EXPECT_THAT(
        parsed.text,
        AllOf(HasSubstr("--source"), HasSubstr("--kernel-root"), HasSubstr("--supply-devices"),
              HasSubstr("--trace"), HasSubstr("--sample-interval"), HasSubstr("--persist-every"),
              HasSubstr("--redundancy-mode"), HasSubstr("--clock-wait"), HasSubstr("--bays"),
              HasSubstr("--psu-label"), HasSubstr("--psu-input-label"), HasSubstr("--replay"),
              HasSubstr("--until"), HasSubstr("--then-run"), HasSubstr("--verbose"),
              HasSubstr("--version"), HasSubstr("--config"), HasSubstr("--check-config")));
    EXPECT_THAT(parsed.text, AllOf(HasSubstr("0 ended"), HasSubstr("1 failure"),
                                   HasSubstr("2 wrong"), HasSubstr("3 another")));
}

TEST(Options, VersionIsOneLine) {
    const Parsed parsed = parse({"--version"});

    EXPECT_EQ(parsed.exit, Exit::ok);
    EXPECT_EQ(parsed.text, "pwrmgtd " PWRMGTD_VERSION "\n");
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd
