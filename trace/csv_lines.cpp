// SPDX-License-Identifier: Apache-2.0
#include "csv_lines.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace pwrmgt::trace {
namespace {

constexpr std::uintmax_t kMaxFileBytes = std::uintmax_t{64} << 20;
constexpr std::string_view kBlanks = " \t\r";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

std::string read_file(const std::string& path, std::string& text) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (error) return error.message();
    if (!std::filesystem::is_regular_file(status)) return "not a regular file";
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error) return error.message();
    if (size > kMaxFileBytes) return "larger than 64 MiB";

    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::generic_category().message(errno != 0 ? errno : EIO);
    text.resize(static_cast<std::size_t>(size));
    file.read(text.data(), static_cast<std::streamsize>(size));
    if (file.bad()) return "cannot be read";
    text.resize(static_cast<std::size_t>(file.gcount()));
    return {};
}

bool Lines::next() {
    while (!rest_.empty()) {
        const std::size_t end = rest_.find('\n');
        line_ = trimmed(rest_.substr(0, end));
        rest_ = end == std::string_view::npos ? std::string_view{} : rest_.substr(end + 1);
        ++number_;
        if (!line_.empty()) return true;
    }
    return false;
}

void split(std::string_view line, std::vector<std::string_view>& cells) {
    cells.clear();
    for (;;) {
        const std::size_t comma = line.find(',');
        cells.push_back(trimmed(line.substr(0, comma)));
        if (comma == std::string_view::npos) return;
        line.remove_prefix(comma + 1);
    }
}

std::string quoted(std::string_view cell) {
    constexpr std::size_t kLongest = 24;
    std::string text(cell.substr(0, kLongest));
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return "'" + text + (cell.size() > kLongest ? "...'" : "'");
}

}  // namespace pwrmgt::trace
