// SPDX-License-Identifier: Apache-2.0
// One exchange through the library's door, with a response buffer whose end is watched.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "ipmiraw.h"

// What send_ipmi_cmd() returns.
inline constexpr int kNullArgument = 1;
inline constexpr int kNoRequest = 2;
inline constexpr int kNotBuilt = 3;
inline constexpr int kUnknownTransport = 4;
inline constexpr int kNoAnswer = 5;
inline constexpr int kTimedOut = 7;
inline constexpr int kRefused = 8;
inline constexpr int kUnreachable = 9;

struct Exchange {
    int result = -1;
    std::uint32_t length = 0;
    std::array<std::uint8_t, 300> buffer{};

    std::uint8_t completion() const { return buffer[0]; }
    unsigned le16(std::size_t at) const {
        return buffer[at] + (static_cast<unsigned>(buffer[at + 1]) << 8);
    }
    std::uint32_t le32(std::size_t at) const {
        return le16(at) + (static_cast<std::uint32_t>(le16(at + 2)) << 16);
    }
    // Nothing behind the answer was written.
    bool clean_behind(std::size_t at) const {
        return std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(at), buffer.end(),
                           [](std::uint8_t byte) { return byte == 0xEE; });
    }
};

inline Exchange exchanged(std::vector<std::uint8_t> request) {
    Exchange exchange;
    exchange.buffer.fill(0xEE);
    auto request_length = static_cast<std::uint32_t>(request.size());
    exchange.result =
        send_ipmi_cmd(request.data(), &request_length, exchange.buffer.data(), &exchange.length);
    return exchange;
}

inline const std::vector<std::uint8_t> kRealtimeRequest{0x20, 0x3A, 0, 0x32, 0x01, 0, 0, 0, 0};
