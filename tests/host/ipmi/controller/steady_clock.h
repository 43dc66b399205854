// SPDX-License-Identifier: Apache-2.0
// The steady clock of this test program, which can be put forward.
#pragma once

#include <atomic>
#include <cstdint>

// Seconds by which the steady clock is ahead.
extern std::atomic<std::int64_t> clock_ahead_s;
