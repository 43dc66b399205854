// SPDX-License-Identifier: Apache-2.0
#include "kernel_files.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>

#include "reading.h"

namespace pwrmgt::pwrmgtd {

std::optional<std::string> read_word(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line)) return std::nullopt;
    return line;
}

std::optional<std::int64_t> read_number(const std::string& path) {
    const std::optional<std::string> word = read_word(path);
    if (!word) return std::nullopt;
    std::int64_t value = 0;
    const char* const end = word->data() + word->size();
    const auto [stop, error] = std::from_chars(word->data(), end, value);
    if (word->empty() || error != std::errc() || stop != end) return std::nullopt;
    return value;
}

std::vector<std::string> names_in(const std::string& directory) {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        names.push_back(entry->path().filename());
    }
    std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
        return a.size() != b.size() ? a.size() < b.size() : a < b;
    });
    return names;
}

std::optional<std::string> link_name(const std::string& path) {
    std::error_code error;
    const std::filesystem::path target = std::filesystem::read_symlink(path, error);
    if (error) return std::nullopt;
    return target.filename().string();
}

std::optional<std::size_t> place_after(std::string_view text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return std::nullopt;
    text.remove_prefix(prefix.size());
    std::size_t place = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, place);
    if (error != std::errc() || (stop != end && *stop != '-') || place >= kCpus)
        return std::nullopt;
    return place;
}

}  // namespace pwrmgt::pwrmgtd
