// SPDX-License-Identifier: Apache-2.0
// Builds request frames and exchanges them with the platform firmware.
#include "policy/ipmi.h"

#include <algorithm>

#include "ipmiraw.h"

namespace pwrmgt::policy {

namespace {

constexpr uint8_t kResponder = 0x20;
constexpr uint8_t kLun = 0;

}  // namespace

Request::Request(uint8_t netfn, uint8_t command) {
    u8(kResponder).u8(netfn).u8(kLun).u8(command);
}

Request& Request::u8(uint8_t value) {
    frame_[length_++] = value;
    return *this;
}

Request& Request::le16(uint16_t value) {
    return u8(static_cast<uint8_t>(value)).u8(static_cast<uint8_t>(value >> 8));
}

Request& Request::be16(uint16_t value) {
    return u8(static_cast<uint8_t>(value >> 8)).u8(static_cast<uint8_t>(value));
}

Request& Request::bytes(std::span<const uint8_t> values) {
    for (const uint8_t value : values) {
        u8(value);
    }
    return *this;
}

Request& Request::zeros(size_t count) {
    length_ += static_cast<uint32_t>(count);
    return *this;
}

uint16_t Reply::le16(size_t at) const {
    return static_cast<uint16_t>(bytes_[at] | bytes_[at + 1] << 8);
}

uint16_t Reply::be16(size_t at) const {
    return static_cast<uint16_t>(bytes_[at] << 8 | bytes_[at + 1]);
}

uint32_t Reply::le32(size_t at) const {
    return le16(at) | static_cast<uint32_t>(le16(at + 2)) << 16;
}

std::span<const uint8_t> Reply::received() const {
    return {bytes_.data(), std::min<size_t>(length_, bytes_.size())};
}

int exchange(const Request& request, Reply& reply) {
    uint32_t request_length = request.length();
    return send_ipmi_cmd(request.data(), &request_length, reply.bytes_.data(), &reply.length_);
}

}  // namespace pwrmgt::policy
