// SPDX-License-Identifier: Apache-2.0
#include "timeout.h"

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace pwrmgt::ipmi {

std::chrono::milliseconds exchange_timeout() {
    constexpr std::uint32_t kDefaultMs = 5000;
    constexpr std::uint32_t kShortestMs = 100;
    constexpr std::uint32_t kLongestMs = 60'000;
    const char* const setting = secure_getenv("VEKDB_IPMI_TIMEOUT_MS");
    const std::string_view text = setting != nullptr ? setting : "";
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool number = error == std::errc{} && end == text.data() + text.size();
    const bool taken = number && value >= kShortestMs && value <= kLongestMs;
    return std::chrono::milliseconds(taken ? value : kDefaultMs);
}

}  // namespace pwrmgt::ipmi
