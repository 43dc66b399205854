// SPDX-License-Identifier: Apache-2.0
#include "mode_words.h"

#include <array>

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr std::array<const char*, 5> kModes{
    "redundant",
    "redundant, may be oversubscribed",
    "not redundant",
    "without a power of its own",
    "one supply in reserve",
};

}  // namespace

std::string redundancy_words(const Value& mode) {
    if (!mode) return "not set";
    const std::string number = std::to_string(*mode);
    return *mode < kModes.size() ? number + ", " + kModes[*mode] : number + ", not known";
}

std::string redundancy_modes_help() {
    std::string text;
    for (uint32_t mode = 0; mode < kModes.size(); ++mode) {
        text += "  " + std::to_string(mode) + "  " + kModes[mode] + '\n';
    }
    return text;
}

}  // namespace pwrmgt::pwrmgtctl
