// SPDX-License-Identifier: Apache-2.0
// Pieces of the command line that several commands use.
#include "command.h"

#include <algorithm>
#include <charconv>

namespace pwrmgt::pwrmgtctl {

namespace {

std::string listed(const std::vector<std::string>& words) {
    std::string list;
    for (const std::string& word : words) {
        list += (list.empty() ? "" : " ") + word;
    }
    return list;
}

}  // namespace

CLI::Validator one_of(const std::vector<std::string>& words) {
    return CLI::IsMember(words).description("").name(listed(words));
}

CLI::Validator whole_number(int64_t lowest, int64_t highest) {
    return CLI::Range(lowest, highest).description("");
}

CLI::Validator watts_or(const std::vector<std::string>& words) {
    constexpr uint32_t kMostWatts = 65534;
    const auto check = [words](std::string& text) -> std::string {
        if (std::find(words.begin(), words.end(), text) != words.end()) return {};
        uint32_t number = 0;
        const char* end = text.data() + text.size();
        const auto [rest, error] = std::from_chars(text.data(), end, number);
        if (error == std::errc{} && rest == end && number <= kMostWatts) return {};
        return "'" + text + "' is neither 0 to 65534 watts nor one of: " + listed(words);
    };
    return CLI::Validator(check, "", listed(words));
}

CLI::Validator text_up_to(size_t most) {
    const auto check = [most](std::string& text) -> std::string {
        if (!text.empty() && text.size() <= most) return {};
        return "must be 1 to " + std::to_string(most) + " characters long";
    };
    return CLI::Validator(check, "", "");
}

void add_watch_options(CLI::App& command, WatchOptions& options) {
    command
        .add_option("--watch", options.seconds,
                    "Show again every SECONDS until interrupted; 2 when left out")
        ->expected(0, 1)
        ->check(CLI::Range(0.01, 86400.0).description(""))
        ->type_name("[SECONDS]");
    command.add_option("--watch-count", options.times, "Show N times and end")
        ->check(whole_number(1, 1'000'000))
        ->type_name("N");
}

}  // namespace pwrmgt::pwrmgtctl
