// SPDX-License-Identifier: Apache-2.0
#include "datagram.h"

#include <algorithm>
#include <array>

namespace pwrmgt::ipmi::openipmi {
namespace {

using Bytes = std::span<const std::uint8_t>;

// Version, reserved, no acknowledgement wanted, class IPMI.
constexpr std::array<std::uint8_t, 4> kRmcp{0x06, 0x00, 0xFF, 0x07};
constexpr std::size_t kOlderHead = 14;
constexpr std::size_t kHead = 16;
// Addresses, function, sequence, command and checksums around an answer.
constexpr std::size_t kAround = 7;
constexpr std::size_t kLongest = 256 + kAround;
// The same in whole blocks of 16 bytes, behind one more. Up to 264 bytes of answer may be in there:
// behind its room OpenIPMI has eight bytes that mean nothing in an answer.
constexpr std::size_t kLongestEncrypted = 288;

// Without authentication, in no session: the question before every log-in, which log-ins there are.
bool awaited_outside(Bytes datagram) {
    return datagram.size() >= kOlderHead + kAround && datagram.size() <= kOlderHead + kLongest &&
           std::all_of(datagram.begin() + 9, datagram.begin() + 13,
                       [](std::uint8_t byte) { return byte == 0; });
}

struct Payload {
    std::uint8_t type;
    std::size_t shortest;
    std::size_t longest;
};

constexpr std::array<Payload, 4> kPayloads{{
    {0x00, kAround, kLongestEncrypted},  // answer within a session
    {0x11, 8, 36},                       // session opened
    {0x13, 8, 60},                       // second and fourth message of the log-in
    {0x15, 8, 28},
}};

bool awaited_payload(Bytes datagram) {
    constexpr std::uint8_t kType = 0x3F;
    constexpr std::uint8_t kEncrypted = 0x80;
    if (datagram.size() < kHead) return false;
    const std::size_t length = datagram[14] + 256U * datagram[15];
    const auto payload = std::ranges::find(
        kPayloads, static_cast<std::uint8_t>(datagram[5] & kType), &Payload::type);
    if (payload == kPayloads.end() || datagram.size() < kHead + length) return false;
    if ((datagram[5] & kEncrypted) == 0 && length > kLongest) return false;
    return length >= payload->shortest && length <= payload->longest;
}

}  // namespace

bool awaited(Bytes datagram) {
    constexpr std::uint8_t kNoAuthentication = 0x00;
    constexpr std::uint8_t kRmcpPlus = 0x06;
    if (datagram.size() <= kRmcp.size() || datagram.size() > kLongestDatagram) return false;
    if (!std::equal(kRmcp.begin(), kRmcp.end(), datagram.begin())) return false;
    switch (datagram[kRmcp.size()]) {
        case kNoAuthentication:
            return awaited_outside(datagram);
        case kRmcpPlus:
            return awaited_payload(datagram);
        default:
            return false;
    }
}

}  // namespace pwrmgt::ipmi::openipmi
