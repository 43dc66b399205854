// SPDX-License-Identifier: Apache-2.0
// A C++ process that does nothing but tell its memory: what every reader has too.
#include "memory_use.h"

int main() {
    return pwrmgt::bench::print_anonymous_memory() ? 0 : 1;
}
