// SPDX-License-Identifier: Apache-2.0
// Property files, and a key that is part of the input: what is found must fit what was asked for.
#include <algorithm>

#include "prop/store.h"
#include "scratch_place.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::size_t key_size = size > 0 ? std::min<std::size_t>(data[0] % 32, size - 1) : 0;
    const std::string key = size > 0 ? std::string(data + 1, data + 1 + key_size) : "";
    const std::size_t head = size > 0 ? 1 + key_size : 0;
    const std::string path = pwrmgt::fuzz::ScratchPlace::only().holding(data + head, size - head);
    for (const std::uint32_t max : {0xFFu, 0xFFFFu, 0xFFFFFFFFu}) {
        std::uint32_t value = 0;
        const auto found = pwrmgt::prop::look_up(path.c_str(), key, max, value);
        if (found == pwrmgt::prop::Lookup::found ? value > max : value != 0) std::abort();
    }
    return 0;
}
