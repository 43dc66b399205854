// SPDX-License-Identifier: Apache-2.0
#include "stopped_clock.h"

std::int64_t stopped_clock_s = 0;

// <ctime> would attach attributes to the plain name; some build settings turn it into the other.
extern "C" {
#ifdef __USE_TIME_BITS64
std::int64_t __time64(std::int64_t* out) {
    if (out != nullptr) *out = stopped_clock_s;
    return stopped_clock_s;
}
#else
long time(long* out) {
    if (out != nullptr) *out = static_cast<long>(stopped_clock_s);
    return static_cast<long>(stopped_clock_s);
}
#endif
}
