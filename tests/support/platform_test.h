// SPDX-License-Identifier: Apache-2.0
// The fixture of the recorder tests, and the fault sweep.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "recorder.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::test {

using Calls = std::vector<std::string>;

// Every test starts with a fresh platform and an unread policy, and must hand every handle back.
class PlatformTest : public testing::Test {
protected:
    void SetUp() override {
        platform().reset();
        g_power_policy_flag = 255;
    }
    void TearDown() override {
        EXPECT_THAT(platform().handle_faults(), testing::IsEmpty());
        platform().reset();
    }

    // The gate asks the policy row first; with a known flag it does not.
    static void policy_is_read(uint8_t is_blade = 0) { g_power_policy_flag = is_blade; }
};

// One run of a fault sweep: which operation failed, at which call, how, and what came back.
struct Faulted {
    Operation operation;
    size_t at;
    Mode mode;
    uint32_t status;
    size_t calls_after;  // calls logged after the failing one
};

// Runs `act` once without a failure to learn its calls, then again with each call that can fail
// failing in each of its ways. `script` prepares the recorder before each run; `check` sees each
// outcome. Handles are accounted for in every run. Returns the number of injected failures.
size_t sweep_faults(const std::function<void(Recorder&)>& script,
                    const std::function<uint32_t()>& act,
                    const std::function<void(const Faulted&)>& check);

// The statuses of such a sweep, in the order of the calls. A select counts three times: failing
// without a handle, failing with one, succeeding without one.
std::vector<uint32_t> swept_statuses(const std::function<void(Recorder&)>& script,
                                     const std::function<uint32_t()>& act);

// The same calls with an exception thrown out of each: every handle must still go back. Returns the
// number of exceptions thrown; the clock, which cannot throw, is left out.
size_t sweep_exceptions(const std::function<void(Recorder&)>& script,
                        const std::function<uint32_t()>& act);

}  // namespace pwrmgt::test
