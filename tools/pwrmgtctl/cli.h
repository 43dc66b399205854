// SPDX-License-Identifier: Apache-2.0
// How a command describes its options and arguments. CLI11 does the work; its headers, which take
// longer to compile than any command, are left to the few files that need all of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
class Validator;
}  // namespace CLI

namespace pwrmgt::pwrmgtctl::cli {

// What a value has to be.
class Check {
public:
    // `mistake` tells what is wrong with a text, nothing when it is right. The words that can be
    // listed are for the completion of the shell; the help has them in the option's own text.
    explicit Check(const std::function<std::string(const std::string&)>& mistake,
                   const std::vector<std::string>& words = {});
    explicit Check(const CLI::Validator& validator);

private:
    friend class Option;
    std::shared_ptr<const CLI::Validator> validator_;
};

// Takes these words only.
Check one_of(const std::vector<std::string>& words);

Check whole_number(int64_t lowest, int64_t highest);
Check number(double lowest, double highest);

// Takes 0 to 65534 watts, or one of these words. 65535 is no power but a marker.
Check watts_or(const std::vector<std::string>& words);

// Takes a text of 1 to `most` bytes.
Check text_up_to(size_t most);

// An option or argument of a command, which owns it. Each function returns the option again.
class Option {
public:
    explicit Option(CLI::Option* option) : option_(option) {}

    Option required();
    Option check(const Check& check);
    Option type_name(const std::string& name);  // " ": the help shows none
    Option show_default();
    Option needs(Option other);
    Option excludes(Option other);
    Option may_lack_value();  // stands for itself without one
    Option may_be_repeated();

private:
    CLI::Option* option_;
};

// A command, or a family of commands. The parser owns it.
class Command {
public:
    explicit Command(CLI::App* app) : app_(app) {}

    Command add_command(const std::string& name, const std::string& description);
    [[nodiscard]] Command command(const std::string& name) const;
    Option add_flag(const std::string& name, bool& given, const std::string& help);
    // `Value` is one of those at the end of cli.cpp. A name without dashes is an argument.
    template <class Value>
    Option add_option(const std::string& name, Value& value, const std::string& help);
    [[nodiscard]] Option option(const std::string& name) const;
    [[nodiscard]] bool has_option(const std::string& name) const;
    [[nodiscard]] bool given(const std::string& name) const;
    void footer(const std::string& text);
    void when_parsed(const std::function<void()>& act);

private:
    CLI::App* app_;
};

}  // namespace pwrmgt::pwrmgtctl::cli
