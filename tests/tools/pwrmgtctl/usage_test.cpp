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
    EXPECT_NE(run.out.find("  pwrmgtctl power history --period 24h --plot\n"), std::string::npos);
}

TEST_F(Usage, EveryCommandHasHelpWithAnExample) {
    // clang-format off
    const std::vector<std::vector<std::string>> commands{
        {"power", "history"}, {"psu", "history"}, {"performance", "history"}, {"power", "summary"}, {"cpu", "history"},
        {"cpu", "latest"}, {"power", "realtime"}, {"policy", "get"}, {"psu", "list"}, {"psu", "voltage"}, {"redundancy", "get"},
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
    {{"power"}, "A subcommand is required"},
    {{"rubbish"}, "rubbish"},
    {{"power", "history", "--period", "2h"}, "--period"},
    {{"power", "history", "--period", ""}, "--period"},
    {{"power", "history", "--domain", "psu"}, "--domain"},
    {{"power", "history", "--entries", "0"}, "--entries"},
    {{"power", "history", "--entries", "121"}, "--entries"},
    {{"power", "history", "--entries", "-1"}, "--entries"},
    {{"power", "history", "--entries", "many"}, "--entries"},
    {{"power", "history", "--entries", "4294967297"}, "--entries"},
    {{"power", "history", "--json", "--plot"}, "--plot"},
    {{"power", "history", "--json", "--svg", "x.svg"}, "--svg"},
    {{"power", "history", "--png"}, "--png"},
    {{"power", "history", "--json", "--local"}, "--local"},
    {{"power", "history", "--local", "--plot"}, "--plot"},
    {{"power", "history", "--plot", "--oldest-first"}, "--oldest-first"},
    {{"power", "history", "--minutes", "0"}, "--minutes"},
    {{"power", "history", "--minutes", "1441"}, "--minutes"},
    {{"power", "history", "--minutes", "5", "--samples-per-entry", "0"}, "--samples-per-entry"},
    {{"power", "history", "--minutes", "5", "--samples-per-entry", "25"}, "--samples-per-entry"},
    {{"power", "history", "--minutes", "5", "--end", "yesterday"}, "'yesterday' is no time"},
    {{"power", "history", "--end", "now"}, "--minutes"},
    {{"power", "history", "--samples-per-entry", "2"}, "--minutes"},
    {{"power", "history", "--minutes", "5", "--period", "1h"}, "--period"},
    {{"power", "history", "--minutes", "5", "--entries", "1"}, "--entries"},
    {{"psu", "history"}, "N is required"},
    {{"psu", "history", "0"}, "N"},
    {{"psu", "history", "13"}, "N"},
    {{"psu", "history", "1", "2"}, "2"},
    {{"power", "summary"}, "--minutes is required"},
    {{"power", "summary", "--minutes", "0"}, "--minutes"},
    {{"power", "summary", "--minutes", "1441"}, "--minutes"},
    {{"power", "summary", "--minutes", "5", "--domain", "disk"}, "--domain"},
    {{"psu", "summary", "13", "--minutes", "5"}, "N"},
    {{"psu", "summary", "--minutes", "5"}, "N is required"},
    {{"cpu"}, "A subcommand is required"},
    {{"cpu", "history", "0"}, "N"},
    {{"cpu", "history", "9"}, "N"},
    {{"cpu", "history", "--rows", "0"}, "--rows"},
    {{"cpu", "history", "--rows", "21"}, "--rows"},
    {{"cpu", "latest", "--rows", "1"}, "--rows"},
    {{"power", "realtime", "--plot"}, "--plot"},
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
    {{"policy", "get", "rubbish"}, "rubbish"},
    {{"history", "power"}, "history"},
    {{"power", "history", "--csv", "--json"}, "--json"},
    {{"power", "history", "--csv", "--plot"}, "--plot"},
    {{"power", "history", "--csv", "--local"}, "--local"},
    {{"power", "realtime", "--watch", "0"}, "--watch"},
    {{"power", "realtime", "--watch", "soon"}, "--watch"},
    {{"power", "realtime", "--watch-count", "0"}, "--watch-count"},
    {{"power", "history", "--watch"}, "--watch"},
    {{"policy", "get", "--live", "--widened"}, "--widened"},
    {{"policy", "set", "--ac-min", "65535"}, "'65535' is neither 0 to 65534 watts nor one of: none"},
    {{"policy", "set", "--ac-min", "some"}, "'some' is neither"},
    {{"policy", "set", "--blade", "2"}, "--blade"},
    {{"capping", "set"}, "CAP is required"},
    {{"capping", "set", "65535"}, "'65535' is neither 0 to 65534 watts nor one of: on off"},
    {{"capping", "set", "-1"}, "-1"},
    {{"capping", "set", "500", "--mode", "255"}, "--mode"},
    {{"capping", "set", "500", "--audit", ""}, "--audit"},
    {{"gpu", "get"}, "N is required"},
    {{"gpu", "get", "256"}, "N"},
    {{"gpu", "get", "0", "--kind", "8"}, "--kind"},
    {{"gpu", "set", "0"}, "CAP is required"},
    {{"gpu", "set", "0", "65535"}, "CAP"},
    {{"settings", "get", "fan"}, "NAME"},
    {{"settings", "set", "maximizer"}, "VALUE is required"},
    {{"settings", "set", "cpu-caps", "1"}, "NAME"},
    {{"settings", "set", "unstress-disk", "65535"}, "VALUE"},
    {{"store", "read"}, "NAME is required"},
    {{"store", "read", ""}, "NAME"},
    {{"store", "read", "a", "--hex", "--json"}, "--json"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Every, UsageMistake, ::testing::ValuesIn(kMistakes));

TEST_F(Usage, Bay12IsAccepted) {
    EXPECT_EQ(tool({"psu", "history", "12"}).exit, 4);
}

TEST_F(Usage, HundredAndTwentyEntriesAreAccepted) {
    EXPECT_EQ(tool({"power", "history", "--entries", "120"}).exit, 4);
}

}  // namespace
}  // namespace pwrmgt::tooltest
