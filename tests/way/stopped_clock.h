// SPDX-License-Identifier: Apache-2.0
// The clock of a test program: time() says what the test says, to the library and to the simulated
// firmware alike.
#pragma once

#include <cstdint>

extern std::int64_t stopped_clock_s;
