// SPDX-License-Identifier: Apache-2.0
// The configuration file, the environment, and who wins.
#include "configuration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "environment.h"
#include "options.h"
#include "temp_file.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class ConfigurationTest : public testing::Test {
protected:
    // What a command line comes to with `file_` as the configuration.
    Parsed parse(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"pwrmgtd", "--config", file_.path()});
        std::vector<const char*> argv;
        for (const std::string& argument : arguments) {
            argv.push_back(argument.c_str());
        }
        return parse_options(static_cast<int>(argv.size()), argv.data());
    }
    // The error of such a file, without its name.
    std::string refused(const std::string& text) {
        file_.write(text);
        const Parsed parsed = parse({});
        EXPECT_FALSE(parsed.options) << text;
        EXPECT_EQ(parsed.exit, Exit::usage) << text;
        EXPECT_EQ(parsed.text.substr(0, file_.path().size()), file_.path()) << parsed.text;
        return parsed.text.substr(file_.path().size());
    }

    TempFile file_;
};

TEST_F(ConfigurationTest, LinesAreNamesAndValues) {
    file_.write(
        "# all of it\n\n  persist-every=20 # rows\r\ntrace = \"a day # 1.csv\"  # quoted\n"
        "source = trace\nverbose = true");

    const Settings read = settings_of_file(file_.path());

    EXPECT_EQ(read.error, "");
    ASSERT_THAT(read.settings, SizeIs(4));
    EXPECT_EQ(read.settings[0].name, "persist-every");
    EXPECT_EQ(read.settings[0].value, "20");
    EXPECT_EQ(read.settings[0].origin, file_.path() + ":3");
    EXPECT_EQ(read.settings[1].value, "a day # 1.csv");
    EXPECT_EQ(read.settings[3].value, "true");
}

TEST_F(ConfigurationTest, AFileSetsWhatTheCommandLineLeavesOpen) {
    file_.write("persist-every = 20\nsample-interval = 5\nverbose = true\nbays = 8\n");

    const Parsed parsed = parse({"--sample-interval", "10"});

    ASSERT_TRUE(parsed.options) << parsed.text;
    EXPECT_EQ(parsed.options->rhythm.persist_slots, 20);
    EXPECT_EQ(parsed.options->rhythm.sample_interval_s, 10);
    EXPECT_EQ(parsed.options->bays, 8);
    EXPECT_TRUE(parsed.options->verbose);
}

TEST_F(ConfigurationTest, TheEnvironmentWinsOverTheFileAndTheCommandLineOverBoth) {
    file_.write("persist-every = 20\nsample-interval = 5\nbays = 8\n");
    EnvironmentVariable persist("PWRMGTD_PERSIST_EVERY", "30");
    EnvironmentVariable bays("PWRMGTD_BAYS", "6");
    EnvironmentVariable interval("PWRMGTD_SAMPLE_INTERVAL", "");

    const Parsed parsed = parse({"--bays", "2"});

    ASSERT_TRUE(parsed.options) << parsed.text;
    EXPECT_EQ(parsed.options->rhythm.persist_slots, 30);
    EXPECT_EQ(parsed.options->rhythm.sample_interval_s, 5);
    EXPECT_EQ(parsed.options->bays, 2);
}

TEST_F(ConfigurationTest, ATraceOfTheFileIsNoObstacleToAnotherSource) {
    file_.write("source = trace\ntrace = day.csv\n");

    EXPECT_EQ(parse({}).options->trace_file, "day.csv");
    EXPECT_EQ(parse({"--source", "firmware"}).options->source, SourceKind::firmware);
    EXPECT_EQ(parse({"--trace", "other.csv"}).options->trace_file, "other.csv");
}

TEST_F(ConfigurationTest, AMistakeIsToldWithItsLine) {
    EXPECT_EQ(refused("\nsample-interval = 99\n"),
              ":2: sample-interval: Value 99 not in range 1 to 30");
    EXPECT_EQ(refused("sampling = 1\n"), ":1: there is no setting 'sampling'");
    EXPECT_EQ(refused("replay = day.csv\n"), ":1: there is no setting 'replay'");
    EXPECT_EQ(refused("bays = 2\nbays = 4\n"), ":2: bays stands already in " + file_.path() + ":1");
    EXPECT_EQ(refused("[supplies]\n"), ":1: '[supplies]' is not name = value");
    EXPECT_EQ(refused("verbose\n"), ":1: 'verbose' is not name = value");
    EXPECT_EQ(refused("= 3\n"), ":1: '= 3' is not name = value");
    EXPECT_EQ(refused("trace = \"day.csv\n"), ":1: trace: the quotes do not match");
    EXPECT_EQ(refused("trace = \"day.csv\" or so\n"), ":1: trace: the quotes do not match");
    EXPECT_EQ(refused("trace =\n"), ":1: trace has no value");
    EXPECT_THAT(refused("bays = many\n"), HasSubstr(":1: "));
    EXPECT_THAT(refused("verbose = perhaps\n"), HasSubstr(":1: "));
}

TEST_F(ConfigurationTest, AMistakeInTheEnvironmentIsToldWithItsVariable) {
    EnvironmentVariable bays("PWRMGTD_BAYS", "13");
    file_.write("");

    const Parsed parsed = parse({"--bays", "2"});

    EXPECT_EQ(parsed.exit, Exit::usage);
    EXPECT_EQ(parsed.text, "PWRMGTD_BAYS: bays: Value 13 not in range 1 to 12");
}

TEST_F(ConfigurationTest, AFileThatWasAskedForMustBeThere) {
    const std::string missing = file_.directory() + "/none";
    const std::vector<const char*> argv{"pwrmgtd", "--config", missing.c_str()};

    const Parsed parsed = parse_options(3, argv.data());

    EXPECT_EQ(parsed.exit, Exit::usage);
    EXPECT_EQ(parsed.text, missing + ": No such file or directory");
}

TEST_F(ConfigurationTest, ADirectoryIsNoFile) {
    EXPECT_THAT(settings_of_file(file_.directory()).error, HasSubstr(file_.directory() + ": "));
}

TEST_F(ConfigurationTest, TheEnvironmentNamesTheFileWhereTheCommandLineDoesNot) {
    file_.write("bays = 8\n");
    EnvironmentVariable named("PWRMGTD_CONFIG", file_.path());
    const std::vector<const char*> from_environment{"pwrmgtd"};
    const std::vector<const char*> none{"pwrmgtd", "--config", ""};

    EXPECT_EQ(parse_options(1, from_environment.data()).options->bays, 8);
    EXPECT_EQ(parse_options(3, none.data()).options->bays, std::nullopt);
}

TEST_F(ConfigurationTest, TheConfigurationInForceIsAConfigurationFile) {
    file_.write("persist-every = 20\n");
    EnvironmentVariable interval("PWRMGTD_SAMPLE_INTERVAL", "5");

    const Parsed shown = parse({"--check-config", "--psu-label", "1800", "--verbose"});

    EXPECT_FALSE(shown.options);
    EXPECT_EQ(shown.exit, Exit::ok);
    EXPECT_THAT(shown.text, AllOf(HasSubstr("source = \"firmware\"  # built in\n"),
                                  HasSubstr("# bays is not set\n"),
                                  HasSubstr("persist-every = 20  # " + file_.path() + ":1\n"),
                                  HasSubstr("sample-interval = 5  # PWRMGTD_SAMPLE_INTERVAL\n"),
                                  HasSubstr("psu-label = 1800  # command line\n"),
                                  HasSubstr("verbose = true  # command line\n")));
    const TempFile again(shown.text);
    EXPECT_EQ(settings_of_file(again.path()).error, "");
    EXPECT_THAT(settings_of_file(again.path()).settings, SizeIs(6));
}

TEST_F(ConfigurationTest, ACheckReadsTheTraceToo) {
    file_.write("source = trace\ntrace = /nonexistent/day.csv\n");

    const Parsed checked = parse({"--check-config"});

    EXPECT_EQ(checked.exit, Exit::failure);
    EXPECT_EQ(checked.text, "/nonexistent/day.csv: No such file or directory");
}

TEST(Variables, AreNamedAfterTheSetting) {
    EXPECT_EQ(variable_of("sample-interval"), "PWRMGTD_SAMPLE_INTERVAL");
    EXPECT_THAT(settings_of_environment({}).settings, IsEmpty());
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
