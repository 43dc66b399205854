// SPDX-License-Identifier: Apache-2.0
#include "tool.h"

namespace pwrmgt::tooltest {
namespace {

class Usage : public ToolTest {};

TEST_F(Usage, HelpTellsExitCodesAndExamples) {
    const Finished run = tool({"--help"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_NE(run.out.find("  4  nothing recorded\n"), std::string::npos);
    EXPECT_NE(run.out.find("  pwrmgtctl history power --period 24h --plot\n"), std::string::npos);
}

TEST_F(Usage, EveryCommandHasHelpWithAnExample) {
    // clang-format off
    const std::vector<std::vector<std::string>> commands{
        {"history", "power"}, {"history", "psu"}, {"history", "performance"}, {"summary"}, {"cpu", "history"},
        {"cpu", "latest"}, {"realtime"}, {"policy"}, {"psu", "list"}, {"psu", "voltage"}, {"redundancy", "get"},
        {"redundancy", "set"}, {"redundancy", "auto"}, {"power", "available"}, {"capping", "ranges"},
        {"thermal", "history"}, {"thermal", "realtime"},
    };
    // clang-format on
    for (std::vector<std::string> command : commands) {
        command.emplace_back("--help");

        const Finished run = tool(command);

        EXPECT_EQ(run.exit, 0) << run.err;
        EXPECT_NE(run.out.find("Example"), std::string::npos) << run.out;
        EXPECT_NE(run.out.find("--json"), std::string::npos) << run.out;
    }
}

TEST_F(Usage, VersionIsOneLine) {
    const Finished run = tool({"--version"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "pwrmgtctl " PWRMGTCTL_VERSION "\n");
}

struct Mistake {
    std::vector<std::string> arguments;
    const char* said;
};

class UsageMistake : public ToolTest, public ::testing::WithParamInterface<Mistake> {};

TEST_P(UsageMistake, IsExit2AndNamesTheArgument) {
    const Mistake& mistake = GetParam();

    const Finished run = tool(mistake.arguments);

    EXPECT_EQ(run.exit, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.substr(0, 11), "pwrmgtctl: ");
    EXPECT_NE(run.err.find(mistake.said), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("\nTry 'pwrmgtctl --help'.\n"), std::string::npos) << run.err;
}

// clang-format off
const Mistake kMistakes[] = {
    {{}, "A subcommand is required"},
    {{"history"}, "A subcommand is required"},
    {{"rubbish"}, "rubbish"},
    {{"history", "power", "--period", "2h"}, "--period"},
    {{"history", "power", "--period", ""}, "--period"},
    {{"history", "power", "--domain", "psu"}, "--domain"},
    {{"history", "power", "--entries", "0"}, "--entries"},
    {{"history", "power", "--entries", "121"}, "--entries"},
    {{"history", "power", "--entries", "-1"}, "--entries"},
    {{"history", "power", "--entries", "many"}, "--entries"},
    {{"history", "power", "--entries", "4294967297"}, "--entries"},
    {{"history", "power", "--json", "--plot"}, "--plot"},
    {{"history", "power", "--json", "--svg", "x.svg"}, "--svg"},
    {{"history", "power", "--png"}, "--png"},
    {{"history", "power", "--json", "--local"}, "--local"},
    {{"history", "power", "--local", "--plot"}, "--plot"},
    {{"history", "power", "--plot", "--oldest-first"}, "--oldest-first"},
    {{"history", "power", "--minutes", "0"}, "--minutes"},
    {{"history", "power", "--minutes", "1441"}, "--minutes"},
    {{"history", "power", "--minutes", "5", "--samples-per-entry", "0"}, "--samples-per-entry"},
    {{"history", "power", "--minutes", "5", "--samples-per-entry", "25"}, "--samples-per-entry"},
    {{"history", "power", "--minutes", "5", "--end", "yesterday"}, "'yesterday' is no time"},
    {{"history", "power", "--end", "now"}, "--minutes"},
    {{"history", "power", "--samples-per-entry", "2"}, "--minutes"},
    {{"history", "power", "--minutes", "5", "--period", "1h"}, "--period"},
    {{"history", "power", "--minutes", "5", "--entries", "1"}, "--entries"},
    {{"history", "psu"}, "N is required"},
    {{"history", "psu", "0"}, "N"},
    {{"history", "psu", "13"}, "N"},
    {{"history", "psu", "1", "2"}, "2"},
    {{"summary"}, "--minutes is required"},
    {{"summary", "--minutes", "0"}, "--minutes"},
    {{"summary", "--minutes", "1441"}, "--minutes"},
    {{"summary", "--minutes", "5", "--domain", "disk"}, "--domain"},
    {{"summary", "--minutes", "5", "--domain", "psu", "--psu", "13"}, "--psu"},
    {{"cpu"}, "A subcommand is required"},
    {{"cpu", "history", "0"}, "N"},
    {{"cpu", "history", "9"}, "N"},
    {{"cpu", "history", "--rows", "0"}, "--rows"},
    {{"cpu", "history", "--rows", "21"}, "--rows"},
    {{"cpu", "latest", "--rows", "1"}, "--rows"},
    {{"realtime", "--plot"}, "--plot"},
    {{"psu", "voltage"}, "N is required"},
    {{"psu", "voltage", "0"}, "N"},
    {{"psu", "voltage", "13"}, "N"},
    {{"redundancy", "set"}, "MODE is required"},
    {{"redundancy", "set", "5"}, "MODE"},
    {{"redundancy", "auto", "0"}, "HWCONFIG"},
    {{"redundancy", "auto", "4"}, "HWCONFIG"},
    {{"power"}, "A subcommand is required"},
    {{"capping", "ranges", "--ac"}, "--ac"},
    {{"thermal", "history", "--entries", "0"}, "--entries"},
    {{"thermal", "history", "--entries", "1441"}, "--entries"},
    {{"thermal", "history", "--minutes", "1441"}, "--minutes"},
    {{"thermal", "history", "--minutes", "60", "--minutes-per-entry", "13"}, "--minutes-per-entry"},
    {{"thermal", "history", "--minutes", "60", "--period", "1h"}, "--period"},
    {{"thermal", "history", "--end", "now"}, "--minutes"},
    {{"thermal", "history", "--plot", "--sensor", "cpu9"}, "--sensor"},
    {{"policy", "rubbish"}, "rubbish"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Every, UsageMistake, ::testing::ValuesIn(kMistakes));

TEST_F(Usage, Bay12IsAccepted) {
    EXPECT_EQ(tool({"history", "psu", "12"}).exit, 4);
}

TEST_F(Usage, HundredAndTwentyEntriesAreAccepted) {
    EXPECT_EQ(tool({"history", "power", "--entries", "120"}).exit, 4);
}

}  // namespace
}  // namespace pwrmgt::tooltest
