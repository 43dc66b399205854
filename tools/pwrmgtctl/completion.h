// SPDX-License-Identifier: Apache-2.0
// What a shell can complete, taken from the commands themselves.
#pragma once

#include <string>
#include <vector>

namespace pwrmgt::pwrmgtctl {

struct CompletionOption {
    std::string name;  // "--period"
    enum class Value { none, word, file } value;
    std::vector<std::string> words;  // the values that can be listed
};

struct CompletionCommand {
    std::string path;  // "power history", or "check" for a command without a noun
    std::vector<CompletionOption> options;
    std::vector<std::string> words;  // of its arguments
};

// Every command that can be run, but for hidden ones.
std::vector<CompletionCommand> completion_tree();

// The script for bash.
std::string bash_completion(const std::vector<CompletionCommand>& commands);

}  // namespace pwrmgt::pwrmgtctl
