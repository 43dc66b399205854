// SPDX-License-Identifier: Apache-2.0
// Traces from texts that must be good ones.
#pragma once

#include <gtest/gtest.h>

#include <string_view>

#include "measured_trace.h"
#include "support/temp_file.h"

inline pwrmgt::trace::Trace loaded(std::string_view text) {
    const TempFile file(text);
    pwrmgt::trace::LoadResult result = pwrmgt::trace::load(file.path());
    EXPECT_EQ(result.error, "");
    if (!result.trace) return pwrmgt::trace::Trace({pwrmgt::trace::Reading{}}, 0, 0);
    return *result.trace;
}

inline pwrmgt::trace::Reading first_row(std::string_view text) {
    return loaded(text).readings().front();
}
