// SPDX-License-Identifier: Apache-2.0
#include "configuration.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <string_view>

namespace pwrmgt::pwrmgtd {
namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// The value without its quotes and without a comment behind it; nothing when quotes do not match.
std::optional<std::string> unquoted(std::string_view text) {
    if (!text.starts_with('"')) return std::string(trimmed(text.substr(0, text.find('#'))));
    const std::size_t end = text.find('"', 1);
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view behind = trimmed(text.substr(end + 1));
    if (!behind.empty() && !behind.starts_with('#')) return std::nullopt;
    return std::string(text.substr(1, end - 1));
}

// One line of the file; the reason why it is none, or nothing.
std::string read_line(std::string_view line, const std::string& origin, Settings& into) {
    line = trimmed(line);
    if (line.empty() || line.starts_with('#')) return {};
    const std::size_t equals = line.find('=');
    const std::string name(trimmed(line.substr(0, equals)));
    if (equals == std::string_view::npos || name.empty()) {
        return "'" + std::string(line) + "' is not name = value";
    }
    const std::optional<std::string> value = unquoted(trimmed(line.substr(equals + 1)));
    if (!value) return name + ": the quotes do not match";
    const auto earlier = std::find_if(into.settings.begin(), into.settings.end(),
                                      [&](const Setting& known) { return known.name == name; });
    if (earlier != into.settings.end()) return name + " stands already in " + earlier->origin;
    into.settings.push_back({name, *value, origin});
    return {};
}

}  // namespace

Settings settings_of_file(const std::string& path) {
    Settings read;
    errno = 0;
    std::ifstream file(path);
    if (!file) return {{}, path + ": " + std::strerror(errno)};
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        const std::string origin = path + ":" + std::to_string(number);
        const std::string reason = read_line(line, origin, read);
        if (!reason.empty()) return {{}, origin + ": " + reason};
    }
    if (file.bad()) return {{}, path + ": " + std::strerror(errno)};
    return read;
}

std::string variable_of(const std::string& name) {
    std::string variable = "PWRMGTD_" + name;
    std::transform(variable.begin(), variable.end(), variable.begin(), [](unsigned char c) {
        return c == '-' ? '_' : static_cast<char>(std::toupper(c));
    });
    return variable;
}

Settings settings_of_environment(const std::vector<std::string>& names) {
    Settings read;
    for (const std::string& name : names) {
        const std::string variable = variable_of(name);
        const char* const value = std::getenv(variable.c_str());
        if (value == nullptr || *value == '\0') continue;
        read.settings.push_back({name, value, variable});
    }
    return read;
}

}  // namespace pwrmgt::pwrmgtd
