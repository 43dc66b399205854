// SPDX-License-Identifier: Apache-2.0
// A platform whose every answer comes from the fuzzer's input, and that accounts for its handles.
#pragma once

#include "script.h"

namespace pwrmgt::fuzz {

// As long as one lives, the platform answers from that script. At its end every handle must have
// come back exactly once, or the run is aborted.
class ScriptedPlatform {
public:
    explicit ScriptedPlatform(Script& script);
    ~ScriptedPlatform();
    ScriptedPlatform(const ScriptedPlatform&) = delete;
    ScriptedPlatform& operator=(const ScriptedPlatform&) = delete;
};

// A handle of a result, as a query would hand it out; to be given back with vek_db_free_result().
std::uint32_t open_result();

// The library traces on standard output, and complains on standard error.
void quiet();

}  // namespace pwrmgt::fuzz
