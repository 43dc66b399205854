// SPDX-License-Identifier: Apache-2.0
// A CSV file as lines and cells, without quoting: measured traces hold numbers and plain names.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace pwrmgt::trace {

// Reads a whole regular file of at most 64 MiB. Returns the reason when that fails, else "".
std::string read_file(const std::string& path, std::string& text);

// Hands out the lines of a text that are not blank, with their numbers from 1.
class Lines {
public:
    explicit Lines(std::string_view text) : rest_(text) {}

    bool next();
    std::string_view line() const { return line_; }
    std::size_t number() const { return number_; }

private:
    std::string_view rest_;
    std::string_view line_;
    std::size_t number_ = 0;
};

// Splits a line at its commas; spaces around a cell are no part of it.
void split(std::string_view line, std::vector<std::string_view>& cells);

// A cell as it may stand in a message: short and printable.
std::string quoted(std::string_view cell);

}  // namespace pwrmgt::trace
