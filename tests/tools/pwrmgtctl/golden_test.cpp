// SPDX-License-Identifier: Apache-2.0
// The text of every command, and the help of each, as kept in golden/. PWRMGTCTL_UPDATE_GOLDEN=1
// writes the files instead of comparing them.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "command.h"
#include "completion.h"
#include "machine.h"

namespace pwrmgt::tooltest {
namespace {

namespace fs = std::filesystem;

const fs::path kGolden = GOLDEN_DIRECTORY;

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

// The clock stands still, so that only the directories of this run differ.
std::string normalised(const std::string& text) {
    return replaced(replaced(text, runtime_directory(), "RUN"), state_directory(), "STATE");
}

std::string read(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

void expect_as_kept(const std::string& name, const std::string& output) {
    const fs::path path = kGolden / name;
    if (std::getenv("PWRMGTCTL_UPDATE_GOLDEN") != nullptr) {
        std::ofstream(path, std::ios::binary) << output;
        return;
    }
    EXPECT_EQ(output, read(path)) << "PWRMGTCTL_UPDATE_GOLDEN=1 writes " << path;
}

std::vector<std::string> words_of(const std::string& path) {
    std::istringstream stream(path);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

class Golden : public MachineTest, public ::testing::WithParamInterface<Command> {};

TEST_P(Golden, TextIsAsKept) {
    const Command& command = GetParam();

    const Finished finished = run(command, {});

    EXPECT_EQ(finished.exit, command.exit) << finished.err;
    expect_as_kept(command.name + ".txt", normalised(finished.out));
}

class GoldenCsv : public Golden {};

TEST_P(GoldenCsv, IsAsKept) {
    const Command& command = GetParam();

    const Finished finished = run(command, {"--csv"});

    EXPECT_EQ(finished.exit, 0) << finished.err;
    expect_as_kept(command.name + ".csv", finished.out);
}

std::vector<Command> histories() {
    std::vector<Command> commands;
    for (const Command& command : every_command()) {
        if (command.csv) commands.push_back(command);
    }
    return commands;
}

std::string name_of(const ::testing::TestParamInfo<Command>& info) {
    return replaced(info.param.name, "-", "_");
}

INSTANTIATE_TEST_SUITE_P(Every, Golden, ::testing::ValuesIn(every_command()), name_of);
INSTANTIATE_TEST_SUITE_P(Every, GoldenCsv, ::testing::ValuesIn(histories()), name_of);

class GoldenHelp : public ToolTest {};

TEST_F(GoldenHelp, OfEveryCommandIsAsKept) {
    expect_as_kept("help.txt", tool({"--help"}).out);
    for (const pwrmgtctl::CompletionCommand& command : pwrmgtctl::completion_tree()) {
        std::vector<std::string> arguments = words_of(command.path);
        arguments.emplace_back("--help");

        const Finished finished = tool(arguments);

        EXPECT_EQ(finished.exit, 0) << command.path;
        EXPECT_NE(finished.out.find("Example"), std::string::npos) << command.path;
        expect_as_kept("help-" + replaced(command.path, " ", "-") + ".txt", finished.out);
    }
}

TEST(GoldenCommands, NoCommandIsLeftOut) {
    std::set<std::string> seen;
    for (const Command& command : every_command()) {
        const bool alone = command.arguments[0] == "check";
        seen.insert(alone ? command.arguments[0]
                          : command.arguments[0] + ' ' + command.arguments[1]);
    }
    seen.insert("metrics");  // compared in its own tests

    for (const pwrmgtctl::CompletionCommand& command : pwrmgtctl::completion_tree()) {
        EXPECT_EQ(seen.count(command.path), 1U) << command.path;
    }
}

TEST(GoldenCommands, NoKeptFileIsWithoutACommand) {
    std::set<std::string> names{"help.txt"};
    for (const Command& command : every_command()) {
        names.insert(command.name + ".txt");
        if (command.csv) names.insert(command.name + ".csv");
    }
    for (const pwrmgtctl::CompletionCommand& command : pwrmgtctl::completion_tree()) {
        names.insert("help-" + replaced(command.path, " ", "-") + ".txt");
    }

    for (const auto& entry : fs::directory_iterator(kGolden)) {
        EXPECT_EQ(names.count(entry.path().filename()), 1U) << entry.path();
    }
}

}  // namespace
}  // namespace pwrmgt::tooltest
