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

class Request {
public:
    Request(uint8_t netfn, uint8_t command);

    Request& u8(uint8_t value);
    Request& zeros(size_t count);

    const uint8_t* frame() const { return frame_.data(); }
    uint32_t length() const { return length_; }

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
    uint32_t le32(size_t at) const;

private:
    friend int exchange(const Request& request, Reply& reply);

    std::array<uint8_t, kCapacity> bytes_{};
    uint32_t length_ = 0;
};

// Sends and receives; the result is the transport's own, 0 when the exchange took place. Length and
// completion code are the caller's to look at.
int exchange(const Request& request, Reply& reply);

}  // namespace pwrmgt::policy
