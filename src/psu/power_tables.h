// SPDX-License-Identifier: Apache-2.0
// Power granted per bay status and redundancy mode: one row per status.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "db/status.h"

namespace pwrmgt::psu {

enum class Factor : uint8_t { exact, oversubscribed, unknown };

// Units of the weakest supply, whether they may be oversubscribed, and the redundancy state.
struct Grant {
    uint8_t units;
    Factor factor;
    uint8_t state;
};

inline constexpr Factor Exact = Factor::exact;
inline constexpr Factor Oversubscribed = Factor::oversubscribed;
inline constexpr Grant kUnknown{0, Factor::unknown, db::kUnknownByte};

// clang-format off
inline constexpr std::array<Grant, 7> kMode0{{
    {1, Exact, 0}, {1, Exact, 1}, {1, Exact, 0}, {2, Exact, 0}, {1, Exact, 1}, kUnknown, kUnknown,
}};
inline constexpr std::array<Grant, 7> kMode1{{
    {1, Exact, 0}, {1, Oversubscribed, 1}, {1, Exact, 0}, {2, Exact, 0}, {1, Oversubscribed, 1},
    {2, Oversubscribed, 1}, {2, Oversubscribed, 2},
}};
inline constexpr std::array<Grant, 7> kMode1Crps{{
    {1, Exact, 0}, {1, Oversubscribed, 1}, {1, Exact, 0}, {1, Oversubscribed, 1}, {1, Oversubscribed, 1},
    {1, Oversubscribed, 2}, {2, Oversubscribed, 2},
}};
inline constexpr std::array<Grant, 7> kMode2{{
    {1, Exact, 0}, {2, Exact, 0}, {1, Exact, 0}, {2, Exact, 0}, {2, Exact, 0}, {3, Exact, 0}, {4, Exact, 0},
}};
// Mode 4: one supply is held in reserve.
inline constexpr std::array<Grant, 8> kReserveOne{{
    kUnknown, {1, Exact, 0}, {2, Exact, 0}, {3, Exact, 0}, {1, Exact, 0}, {1, Oversubscribed, 1}, {3, Exact, 0},
    {3, Oversubscribed, 1},
}};
// clang-format on

constexpr Grant grant_of(std::span<const Grant> rows, int32_t status) {
    const bool listed = status >= 0 && static_cast<size_t>(status) < rows.size();
    return listed ? rows[static_cast<size_t>(status)] : kUnknown;
}

// In single precision, cut toward zero.
inline uint32_t oversubscribe(float factor, uint32_t watts) {
    return static_cast<uint32_t>(factor * static_cast<float>(watts));
}

}  // namespace pwrmgt::psu
