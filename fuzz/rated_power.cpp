// SPDX-License-Identifier: Apache-2.0
// The rated-power file that another process writes.
#include "psu/rated_power.h"

#include "scratch_place.h"

// Its complaints are part of what it does, but not to be read here.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = pwrmgt::fuzz::ScratchPlace::only().holding(data, size);
    pwrmgt::psu::read_rated_power_file(path.c_str());
    return 0;
}
