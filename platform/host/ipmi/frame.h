// SPDX-License-Identifier: Apache-2.0
// Request and response of one exchange, as every transport sees them.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace pwrmgt::ipmi {

inline constexpr std::size_t kHeaderBytes = 4;
inline constexpr std::size_t kMaxResponseBytes = 256;
// What IPMI's drivers and sessions have room for.
inline constexpr std::size_t kMaxPayloadBytes = 256;
// The responder address of a machine's own controller.
inline constexpr std::uint8_t kController = 0x20;

// A frame of at least kHeaderBytes: responder address, network function, LUN, command, data.
class Request {
public:
    explicit Request(std::span<const std::uint8_t> frame) : frame_(frame) {}

    std::uint8_t responder() const { return frame_[0]; }
    std::uint8_t netfn() const { return frame_[1]; }
    std::uint8_t lun() const { return frame_[2]; }
    std::uint8_t command() const { return frame_[3]; }
    std::span<const std::uint8_t> payload() const { return frame_.subspan(kHeaderBytes); }
    std::size_t length() const { return frame_.size(); }
    std::span<const std::uint8_t> frame() const { return frame_; }

private:
    std::span<const std::uint8_t> frame_;
};

// Whether a real controller can be sent it: a request and no answer, whose fields fit their bits.
inline bool can_be_sent(const Request& request) {
    return request.netfn() <= 0x3E && request.netfn() % 2 == 0 && request.lun() <= 3 &&
           request.payload().size() <= kMaxPayloadBytes;
}

// Completion code and data, put together byte by byte; what does not fit into the 256 bytes that a
// caller has room for is dropped.
class Response {
public:
    void u8(std::uint8_t value) {
        if (length_ < bytes_.size()) bytes_[length_++] = value;
    }
    void le16(std::uint16_t value) {
        u8(static_cast<std::uint8_t>(value & 0xFF));
        u8(static_cast<std::uint8_t>(value >> 8));
    }
    void le32(std::uint32_t value) {
        le16(static_cast<std::uint16_t>(value & 0xFFFF));
        le16(static_cast<std::uint16_t>(value >> 16));
    }
    void be16(std::uint16_t value) {
        u8(static_cast<std::uint8_t>(value >> 8));
        u8(static_cast<std::uint8_t>(value & 0xFF));
    }
    void bytes(std::span<const std::uint8_t> values) {
        for (const std::uint8_t value : values)
            u8(value);
    }

    void cut_to(std::size_t length) { length_ = std::min(length_, length); }
    void overwrite(std::size_t at, std::uint8_t value) {
        if (at < length_) bytes_[at] = value;
    }

    std::span<const std::uint8_t> bytes() const { return std::span(bytes_).first(length_); }
    std::size_t length() const { return length_; }

private:
    std::array<std::uint8_t, kMaxResponseBytes> bytes_{};
    std::size_t length_ = 0;
};

}  // namespace pwrmgt::ipmi
