// SPDX-License-Identifier: Apache-2.0
#include "bytes_text.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr size_t kPerLine = 16;

bool printable(uint8_t byte) {
    return byte >= ' ' && byte <= '~';
}

std::string hex_byte(uint8_t byte) {
    std::array<char, 3> text{};
    std::snprintf(text.data(), text.size(), "%02x", unsigned{byte});
    return text.data();
}

}  // namespace

std::string hex_dump(Bytes bytes) {
    std::string text;
    for (size_t first = 0; first < bytes.size(); first += kPerLine) {
        const Bytes line = bytes.subspan(first, std::min(kPerLine, bytes.size() - first));
        text += hex_byte(static_cast<uint8_t>(first >> 8)) +
                hex_byte(static_cast<uint8_t>(first & 0xFF)) + ' ';
        for (const uint8_t byte : line) {
            text += ' ' + hex_byte(byte);
        }
        text += std::string((kPerLine - line.size()) * 3 + 2, ' ');
        for (const uint8_t byte : line) {
            text += printable(byte) ? static_cast<char>(byte) : '.';
        }
        text += '\n';
    }
    return text;
}

std::string hex_digits(Bytes bytes) {
    std::string text;
    for (const uint8_t byte : bytes) {
        text += hex_byte(byte);
    }
    return text;
}

bool is_plain_text(Bytes bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) {
        return printable(byte) || byte == '\n' || byte == '\r' || byte == '\t';
    });
}

}  // namespace pwrmgt::pwrmgtctl
