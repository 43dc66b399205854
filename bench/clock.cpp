// SPDX-License-Identifier: Apache-2.0
// Takes the place of the C library's clock in a program and in the libraries it is linked to.
#include "clock.h"

#include <ctime>

extern "C" std::time_t time(std::time_t* out) noexcept {
    if (out != nullptr) *out = pwrmgt::bench::kNow_s;
    return pwrmgt::bench::kNow_s;
}
