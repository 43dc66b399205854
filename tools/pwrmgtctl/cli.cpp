// SPDX-License-Identifier: Apache-2.0
#include "cli.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

namespace pwrmgt::pwrmgtctl::cli {

namespace {

std::string listed(const std::vector<std::string>& words) {
    std::string list;
    for (const std::string& word : words) {
        list += (list.empty() ? "" : " ") + word;
    }
    return list;
}

}  // namespace

Check::Check(const CLI::Validator& validator)
    : validator_(std::make_shared<const CLI::Validator>(validator)) {}

Check::Check(const std::function<std::string(const std::string&)>& mistake,
             const std::vector<std::string>& words)
    : Check(CLI::Validator([mistake](std::string& text) { return mistake(text); }, "",
                           listed(words))) {}

Check one_of(const std::vector<std::string>& words) {
    return Check(CLI::IsMember(words).description("").name(listed(words)));
}

Check whole_number(int64_t lowest, int64_t highest) {
    return Check(CLI::Range(lowest, highest).description(""));
}

Check number(double lowest, double highest) {
    return Check(CLI::Range(lowest, highest).description(""));
}

Check watts_or(const std::vector<std::string>& words) {
    constexpr uint32_t kMostWatts = 65534;
    const auto mistake = [words](const std::string& text) -> std::string {
        if (std::find(words.begin(), words.end(), text) != words.end()) return {};
        uint32_t number = 0;
        const char* end = text.data() + text.size();
        const auto [rest, error] = std::from_chars(text.data(), end, number);
        if (error == std::errc{} && rest == end && number <= kMostWatts) return {};
        return "'" + text + "' is neither 0 to 65534 watts nor one of: " + listed(words);
    };
    return Check(mistake, words);
}

Check text_up_to(size_t most) {
    return Check([most](const std::string& text) -> std::string {
        if (!text.empty() && text.size() <= most) return {};
        return "must be 1 to " + std::to_string(most) + " characters long";
    });
}

Option Option::required() {
    option_->required();
    return *this;
}

Option Option::check(const Check& check) {
    option_->check(*check.validator_);
    return *this;
}

Option Option::type_name(const std::string& name) {
    option_->type_name(name);
    return *this;
}

Option Option::show_default() {
    option_->capture_default_str();
    return *this;
}

Option Option::needs(Option other) {
    option_->needs(other.option_);
    return *this;
}

Option Option::excludes(Option other) {
    option_->excludes(other.option_);
    return *this;
}

Option Option::may_lack_value() {
    option_->expected(0, 1);
    return *this;
}

Option Option::may_be_repeated() {
    option_->expected(1)->take_all();
    return *this;
}

Command Command::add_command(const std::string& name, const std::string& description) {
    return Command(app_->add_subcommand(name, description));
}

Command Command::command(const std::string& name) const {
    return Command(app_->get_subcommand(name));
}

Option Command::add_flag(const std::string& name, bool& given, const std::string& help) {
    return Option(app_->add_flag(name, given, help));
}

template <class Value>
Option Command::add_option(const std::string& name, Value& value, const std::string& help) {
    return Option(app_->add_option(name, value, help));
}

Option Command::option(const std::string& name) const {
    return Option(app_->get_option(name));
}

bool Command::has_option(const std::string& name) const {
    return app_->get_option_no_throw(name) != nullptr;
}

bool Command::given(const std::string& name) const {
    return app_->count(name) > 0;
}

void Command::footer(const std::string& text) {
    app_->footer(text);
}

void Command::when_parsed(const std::function<void()>& act) {
    app_->callback(act);
}

template Option Command::add_option(const std::string&, std::string&, const std::string&);
template Option Command::add_option(const std::string&, int32_t&, const std::string&);
template Option Command::add_option(const std::string&, uint32_t&, const std::string&);
template Option Command::add_option(const std::string&, int64_t&, const std::string&);
template Option Command::add_option(const std::string&, std::optional<std::string>&,
                                    const std::string&);
template Option Command::add_option(const std::string&, std::optional<uint32_t>&,
                                    const std::string&);
template Option Command::add_option(const std::string&, std::vector<std::string>&,
                                    const std::string&);
template Option Command::add_option(const std::string&, std::vector<double>&, const std::string&);

}  // namespace pwrmgt::pwrmgtctl::cli
