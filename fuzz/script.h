// SPDX-License-Identifier: Apache-2.0
// A fuzzer's input as a script: decisions and values are taken off its front; behind its end all
// are 0.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace pwrmgt::fuzz {

class Script {
public:
    Script(const std::uint8_t* data, std::size_t size) : left_(data, size) {}

    bool ended() const { return left_.empty(); }
    std::uint8_t u8() {
        if (left_.empty()) return 0;
        const std::uint8_t value = left_.front();
        left_ = left_.subspan(1);
        return value;
    }
    std::uint16_t u16() {
        const std::uint8_t low = u8();
        return static_cast<std::uint16_t>(low | u8() << 8);
    }
    std::uint32_t u32() {
        const std::uint16_t low = u16();
        return low | static_cast<std::uint32_t>(u16()) << 16;
    }
    std::int32_t i32() { return static_cast<std::int32_t>(u32()); }
    // One in eight, so that most of a walk goes well.
    bool fails() { return !ended() && u8() % 8 == 7; }

    std::span<const std::uint8_t> bytes(std::size_t count) {
        const auto taken = left_.first(std::min(count, left_.size()));
        left_ = left_.subspan(taken.size());
        return taken;
    }
    std::string text(std::size_t longest) {
        const auto taken = bytes(u16() % (longest + 1));
        return {taken.begin(), taken.end()};
    }

private:
    std::span<const std::uint8_t> left_;
};

}  // namespace pwrmgt::fuzz
