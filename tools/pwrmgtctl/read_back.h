// SPDX-License-Identifier: Apache-2.0
// A value that was set and read again: set is what is held afterwards.
#pragma once

#include <string>

#include "answer.h"
#include "status_text.h"

namespace pwrmgt::pwrmgtctl {

struct ReadBack {
    Call call;        // that read it
    uint32_t status;  // of reading
    Value set;
    Value held;  // nothing unless the status is 0
    const char* unit;
};

// The title and what was read back; a difference is a failure, told with the document.
Outcome tell_read_back(const CommonOptions& options, Answer answer, Json body,
                       const ReadBack& value);

}  // namespace pwrmgt::pwrmgtctl
