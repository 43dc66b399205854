// SPDX-License-Identifier: Apache-2.0
// Completion codes with which the simulated firmware answers.
#pragma once

#include <cstdint>

namespace pwrmgt::ipmi::sim {

inline constexpr std::uint8_t kSuccess = 0x00;
inline constexpr std::uint8_t kBusy = 0xC0;
inline constexpr std::uint8_t kInvalidCommand = 0xC1;
inline constexpr std::uint8_t kInvalidForLun = 0xC2;
inline constexpr std::uint8_t kInvalidLength = 0xC7;
inline constexpr std::uint8_t kOutOfRange = 0xC9;
inline constexpr std::uint8_t kNotPresent = 0xCB;
inline constexpr std::uint8_t kInvalidField = 0xCC;
inline constexpr std::uint8_t kUnavailable = 0xD3;  // the state cannot be read or kept
inline constexpr std::uint8_t kUnspecified = 0xFF;

}  // namespace pwrmgt::ipmi::sim
