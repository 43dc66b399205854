// SPDX-License-Identifier: Apache-2.0
#include "completion.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <sstream>

#include "command.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr const char* kHead =
    "# SPDX-License-Identifier: Apache-2.0\n"
    "# bash completion of pwrmgtctl, written by `pwrmgtctl completion bash`.\n"
    "_pwrmgtctl() {\n"
    "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}\n"
    "    local words='' command=${COMP_WORDS[1]}\n"
    "    COMPREPLY=()\n";

constexpr const char* kTail =
    "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$cur\")\n"
    "}\n"
    "complete -F _pwrmgtctl pwrmgtctl\n";

// A validator that lists its words has them for a name (one_of(), watts_or()).
std::vector<std::string> words_of(CLI::Option& option) {
    std::vector<std::string> words;
    for (int at = 0;; ++at) {
        const CLI::Validator* validator = nullptr;
        try {
            validator = option.get_validator(at);
        } catch (const CLI::OptionNotFound&) {
            return words;
        }
        std::istringstream names(validator->get_name());
        for (std::string word; names >> word;) {
            words.push_back(word);
        }
    }
}

CompletionOption option_of(CLI::Option& option) {
    using Value = CompletionOption::Value;
    const std::string name = option.get_lnames().empty() ? "-" + option.get_snames().front()
                                                         : "--" + option.get_lnames().front();
    if (option.get_expected_max() == 0) return {name, Value::none, {}};  // a flag
    const bool file = option.get_type_name() == "FILE";
    return {name, file ? Value::file : Value::word, words_of(option)};
}

CompletionCommand command_of(CLI::App& command, std::string path) {
    CompletionCommand completed{std::move(path), {}, {}};
    for (CLI::Option* option : command.get_options()) {
        if (!option->nonpositional()) {
            const std::vector<std::string> words = words_of(*option);
            completed.words.insert(completed.words.end(), words.begin(), words.end());
            continue;
        }
        completed.options.push_back(option_of(*option));
    }
    return completed;
}

bool hidden(const CLI::App& command) {
    return command.get_group().empty();
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

// The nouns in their order, each with its verbs; a command without a noun has none.
std::vector<std::pair<std::string, std::vector<std::string>>> nouns_of(
    const std::vector<CompletionCommand>& commands) {
    std::vector<std::pair<std::string, std::vector<std::string>>> nouns;
    for (const CompletionCommand& command : commands) {
        const size_t space = command.path.find(' ');
        const std::string noun = command.path.substr(0, space);
        if (nouns.empty() || nouns.back().first != noun) nouns.push_back({noun, {}});
        if (space != std::string::npos)
            nouns.back().second.push_back(command.path.substr(space + 1));
    }
    return nouns;
}

std::string case_line(const std::string& pattern, const std::string& words) {
    return "            '" + pattern + "') words='" + words + "' ;;\n";
}

// What follows an option: its words, a file, or something that only the user knows.
std::string value_lines(const CompletionCommand& command) {
    using Value = CompletionOption::Value;
    std::string text;
    for (const CompletionOption& option : command.options) {
        if (option.value == Value::none || option.name == "--watch") continue;
        const std::string pattern = "        '" + command.path + ' ' + option.name + "') ";
        if (option.value == Value::file) {
            text += pattern + "mapfile -t COMPREPLY < <(compgen -f -- \"$cur\"); return ;;\n";
        } else if (option.words.empty()) {
            text += pattern + "return ;;\n";
        } else {
            text += pattern + "words='" + joined(option.words) + "' ;;\n";
        }
    }
    return text;
}

std::string command_line(const CompletionCommand& command) {
    std::vector<std::string> words = command.words;
    for (const CompletionOption& option : command.options) {
        words.push_back(option.name);
    }
    return case_line(command.path, joined(words));
}

}  // namespace

std::vector<CompletionCommand> completion_tree() {
    CLI::App app;
    Action none;
    add_commands(app, none);
    std::vector<CompletionCommand> commands;
    const auto all = [](const CLI::App*) { return true; };
    for (CLI::App* noun : app.get_subcommands(all)) {
        if (hidden(*noun)) continue;
        const std::vector<CLI::App*> verbs = noun->get_subcommands(all);
        if (verbs.empty()) commands.push_back(command_of(*noun, noun->get_name()));
        for (CLI::App* verb : verbs) {
            commands.push_back(command_of(*verb, noun->get_name() + ' ' + verb->get_name()));
        }
    }
    return commands;
}

std::string bash_completion(const std::vector<CompletionCommand>& commands) {
    std::string nouns;
    std::string verbs;
    for (const auto& [noun, its_verbs] : nouns_of(commands)) {
        nouns += noun + ' ';
        if (!its_verbs.empty()) verbs += case_line(noun, joined(its_verbs));
    }
    std::string values;
    std::string options;
    for (const CompletionCommand& command : commands) {
        values += value_lines(command);
        options += command_line(command);
    }
    return kHead +
           ("    if ((COMP_CWORD == 1)); then\n        words='" + nouns + "--help --version'\n") +
           "        mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$cur\")\n"
           "        return\n"
           "    fi\n"
           "    if ((COMP_CWORD == 2)); then\n"
           "        case $command in\n" +
           verbs +
           "        esac\n"
           "        if [[ $words ]]; then\n"
           "            mapfile -t COMPREPLY < <(compgen -W \"$words --help\" -- \"$cur\")\n"
           "            return\n"
           "        fi\n"
           "    elif [[ ${COMP_WORDS[2]} != -* ]]; then\n"
           "        command+=\" ${COMP_WORDS[2]}\"\n"
           "    fi\n"
           "    case \"$command $prev\" in\n" +
           values + "        *) case $command in\n" + options +
           "        esac ;;\n"
           "    esac\n" +
           kTail;
}

}  // namespace pwrmgt::pwrmgtctl
