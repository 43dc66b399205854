// SPDX-License-Identifier: Apache-2.0
// The script for bash, as bash itself completes with it.
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tool.h"

namespace pwrmgt::tooltest {
namespace {

class Completion : public ToolTest {
protected:
    // What bash offers when the last of these words is being typed.
    std::string completed(const std::vector<std::string>& typed) {
        std::string words;
        for (const std::string& word : typed)
            words += " '" + word + "'";
        const Finished finished = launch(
            {{"-c", "source " COMPLETION_FILE "; COMP_WORDS=(pwrmgtctl" + words + "); COMP_CWORD=" +
                        std::to_string(typed.size()) + "; _pwrmgtctl; echo \"${COMPREPLY[*]}\""},
             {},
             std::nullopt,
             Sink::file,
             "/bin/bash"});
        EXPECT_EQ(finished.exit, 0) << finished.err;
        EXPECT_EQ(finished.err, "");
        return finished.out.substr(0, finished.out.size() - 1);
    }
};

TEST_F(Completion, ScriptIsTheOneThatTheToolWrites) {
    const std::string script = tool({"completion", "bash"}).out;
    if (std::getenv("PWRMGTCTL_UPDATE_GOLDEN") != nullptr) {
        std::ofstream(COMPLETION_FILE, std::ios::binary) << script;
    }
    std::ostringstream kept;
    kept << std::ifstream(COMPLETION_FILE, std::ios::binary).rdbuf();

    EXPECT_EQ(kept.str(), script) << "PWRMGTCTL_UPDATE_GOLDEN=1 writes it";
}

TEST_F(Completion, OffersNouns) {
    EXPECT_EQ(completed({"p"}), "power performance psu policy");
}

TEST_F(Completion, OffersVerbs) {
    EXPECT_EQ(completed({"capping", ""}), "get set ranges --help");
}

TEST_F(Completion, OffersOptionsOfTheCommand) {
    EXPECT_EQ(completed({"power", "history", "--per"}), "--period");
    EXPECT_EQ(completed({"psu", "list", "--per"}), "");
}

TEST_F(Completion, OffersOptionsOfACommandWithoutANoun) {
    EXPECT_EQ(completed({"check", "--sup"}), "--supplies");
}

TEST_F(Completion, OffersTheValuesOfAnOption) {
    EXPECT_EQ(completed({"power", "history", "--json", "--period", ""}), "1h 6h 12h 24h");
    EXPECT_EQ(completed({"thermal", "history", "--sensor", "inl"}), "inlet1 inlet2");
}

TEST_F(Completion, OffersTheWordsOfAnArgument) {
    EXPECT_EQ(completed({"settings", "set", "u"}), "unstress-adapter unstress-disk");
    EXPECT_EQ(completed({"capping", "set", "o"}), "on off");
}

TEST_F(Completion, OffersNothingForANumber) {
    EXPECT_EQ(completed({"power", "history", "--minutes", ""}), "");
}

TEST_F(Completion, OffersFilesWhereAFileIsMeant) {
    EXPECT_EQ(completed({"store", "read", "a", "--output", COMPLETION_FILE}), COMPLETION_FILE);
}

TEST_F(Completion, KeepsTheHiddenCommandToItself) {
    EXPECT_EQ(completed({"comp"}), "");
}

}  // namespace
}  // namespace pwrmgt::tooltest
