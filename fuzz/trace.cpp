// SPDX-License-Identifier: Apache-2.0
// Trace files: loaded or refused, and what is loaded has a row for every second that it plays.
#include <measured_trace.h>

#include "scratch_place.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = pwrmgt::fuzz::ScratchPlace::only().holding(data, size);
    const auto loaded = pwrmgt::trace::load(path);
    if (loaded.trace.has_value() != loaded.error.empty()) std::abort();
    if (!loaded.trace) return 0;
    for (const std::int64_t now_s : {0L, 1'700'000'000L, 4'294'967'295L}) {
        loaded.trace->reading_at(loaded.trace->live_second(now_s));
    }
    return 0;
}
