// SPDX-License-Identifier: Apache-2.0
// Which datagrams OpenIPMI may see. What it does not ask for it takes all the same, and does not
// look twice (libopenipmi 2.0.33): an unknown payload ends in a null pointer, an answer of more
// than 256 bytes overwrites what lies behind its room. Anybody can send a datagram.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace pwrmgt::ipmi::openipmi {

// OpenIPMI would cut a longer one.
inline constexpr std::size_t kLongestDatagram = 384;

// Whether it is an answer of a kind that a log-in or an exchange waits for.
bool awaited(std::span<const std::uint8_t> datagram);

}  // namespace pwrmgt::ipmi::openipmi
