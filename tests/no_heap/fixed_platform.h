// SPDX-License-Identifier: Apache-2.0
// A platform that answers from fixed numbers and allocates nothing unless a test asks it to.
#pragma once

#include <cstdint>

namespace pwrmgt::test {

struct FixedPlatform {
    int rows = 2880;               // of every select
    uint32_t newest = 86'400'000;  // stamp of the first row; each next one is 30 seconds older
    bool allocates_on_open = false;
    int calls = 0;
};

FixedPlatform& fixed_platform();

}  // namespace pwrmgt::test
