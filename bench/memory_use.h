// SPDX-License-Identifier: Apache-2.0
// How much anonymous memory this process has, as the kernel tells.
#pragma once

#include <cstdio>
#include <fstream>
#include <string>

namespace pwrmgt::bench {

// Prints kilobytes; false when the kernel does not tell.
inline bool print_anonymous_memory() {
    std::ifstream rollup{"/proc/self/smaps_rollup"};
    std::string word;
    while (rollup >> word) {
        long kilobytes = 0;
        if (word != "Anonymous:" || !(rollup >> kilobytes)) continue;
        return std::printf("%ld\n", kilobytes) > 0;
    }
    return false;
}

}  // namespace pwrmgt::bench
