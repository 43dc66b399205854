// SPDX-License-Identifier: Apache-2.0
// The fixture of the recorder tests, and the fault sweep.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "recorder.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::test {

// How the recorder tells the connection that the library opens for itself.
inline const std::string kOpen = "open localhost root '' vek_pwr_db 0";

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
    size_t length;  // of the answer, when that is what was wrong
    uint32_t status;
    size_t calls_after;  // calls logged after the failing one
};

// Whether a select of one row yields none: the database, the select, or a count below the true one.
inline bool hides_the_rows(const Faulted& faulted) {
    return faulted.operation == Operation::open || faulted.operation == Operation::query ||
           (faulted.operation == Operation::row_count && faulted.mode != Mode::one_row_more);
}

// Runs `act` once without a failure to learn its calls, then again with each call that can fail
// failing in each of its ways. `script` prepares the recorder before each run; `check` sees each
// outcome. Handles are accounted for in every run. Returns the number of injected failures.
size_t sweep_faults(const std::function<void(Recorder&)>& script,
                    const std::function<uint32_t()>& act,
                    const std::function<void(const Faulted&)>& check);

// The statuses of a sweep, call by call, each in the order of its ways to fail; one status when
// they are all the same.
//   a select:             an error, -1, an error with a handle, success without one
//   a step:               an error, -1, no more rows, a row told where none is
//   a row count:          -1, 0, one row less, one row more
//   open, a content, the clock: the one way that each has
//   the firmware:         an error, -1, each shorter answer from no byte on, a byte more
//   any other:            an error, -1
using Outcomes = std::vector<std::vector<uint32_t>>;
Outcomes swept_statuses(const std::function<void(Recorder&)>& script,
                        const std::function<uint32_t()>& act);

// `count` calls that all end in one status, however they fail.
inline Outcomes each_of(size_t count, uint32_t status) {
    return Outcomes(count, std::vector<uint32_t>{status});
}

// One part of a sweep after another.
inline Outcomes in_turn(std::initializer_list<Outcomes> parts) {
    Outcomes all;
    for (const Outcomes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

// -1 of a call whose result is handed back as it is.
inline constexpr uint32_t kMinusOne = 4'294'967'295;

// The same calls with an exception thrown out of each: every handle must still go back. Returns the
// number of exceptions thrown; the clock, which cannot throw, is left out.
size_t sweep_exceptions(const std::function<void(Recorder&)>& script,
                        const std::function<uint32_t()>& act);

}  // namespace pwrmgt::test
