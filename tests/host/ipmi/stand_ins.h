// SPDX-License-Identifier: Apache-2.0
// The clock and the log of this test program, which the library finds before the system's.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// What time() returns.
extern std::int64_t clock_s;
// The lines given to syslog().
extern std::vector<std::string> log_lines;
