// SPDX-License-Identifier: Apache-2.0
// Frames of the OEM IPMI commands: a request built byte by byte, a reply read by place.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace pwrmgt::policy {

// Completion code of a command that the firmware carried out.
inline constexpr uint8_t kCompleted = 0;

// Network functions and commands.
inline constexpr uint8_t kOemNetfn = 0x3A;
inline constexpr uint8_t kCappingCommand = 0x32;
inline constexpr uint8_t kGpuCapCommand = 0x06;
inline constexpr uint8_t kGpuPowerCommand = 0xDB;
inline constexpr uint8_t kGroupNetfn = 0x2E;
inline constexpr uint8_t kStoreCommand = 0x90;

class Request {
public:
    Request(uint8_t netfn, uint8_t command);

    Request& u8(uint8_t value);
    Request& le16(uint16_t value);
    Request& be16(uint16_t value);
    Request& bytes(std::span<const uint8_t> values);
    Request& zeros(size_t count);

    const uint8_t* data() const { return frame_.data(); }
    uint32_t length() const { return length_; }
    std::span<const uint8_t> frame() const { return {frame_.data(), length_}; }

private:
    std::array<uint8_t, 128> frame_{};
    uint32_t length_ = 0;
};

class Reply {
public:
    // A reply never holds more than this: the transport's contract.
    static constexpr size_t kCapacity = 256;

    uint8_t completion() const { return bytes_[0]; }
    uint32_t length() const { return length_; }
    uint8_t u8(size_t at) const { return bytes_[at]; }
    uint16_t le16(size_t at) const;
    uint16_t be16(size_t at) const;
    uint32_t le32(size_t at) const;

    // What was received: the length told, or all there is room for when that is less.
    std::span<const uint8_t> received() const;

private:
    friend int exchange(const Request& request, Reply& reply);

    std::array<uint8_t, kCapacity> bytes_{};
    uint32_t length_ = 0;
};

// Sends and receives; the result is the transport's own, 0 when the exchange took place. Length and
// completion code are the caller's to look at.
int exchange(const Request& request, Reply& reply);

// The exchange took place and the firmware carried the command out, whatever the answer's length.
inline bool completed(int failed, const Reply& reply) {
    return failed == 0 && reply.completion() == kCompleted;
}

}  // namespace pwrmgt::policy
