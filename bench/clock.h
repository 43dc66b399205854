// SPDX-License-Identifier: Apache-2.0
// The clock of these programs stands still, so that every query sees the same rows.
#pragma once

#include <cstdint>

namespace pwrmgt::bench {

inline constexpr std::int32_t kNow_s = 1'800'000'000;

}  // namespace pwrmgt::bench
