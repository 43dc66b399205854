// SPDX-License-Identifier: Apache-2.0
// Runs an exported function with each of its platform calls failing in turn.
#include <cstdlib>
#include <fstream>

#include "platform_test.h"

namespace pwrmgt::test {

namespace {

std::vector<Mode> modes_of(Operation operation) {
    switch (operation) {
        case Operation::query:
        case Operation::raw_rows:
            return {Mode::error, Mode::error_with_handle, Mode::no_handle};
        default:
            return {Mode::error};
    }
}

void start(const std::function<void(Recorder&)>& script, std::optional<Fault> fault) {
    platform().reset();
    g_power_policy_flag = 255;
    script(platform());
    platform().fault = fault;
}

// The operations of a run without failures, in their order.
std::vector<Operation> clean_run(const std::function<void(Recorder&)>& script,
                                 const std::function<uint32_t()>& act) {
    start(script, std::nullopt);
    act();
    EXPECT_THAT(platform().handle_faults(), testing::IsEmpty()) << "without a failure";
    return platform().operations;
}

// For those who want to know how many faults a whole run injects.
void report(size_t injected) {
    const char* const file = std::getenv("FAULT_SWEEP_TOTAL");
    if (file != nullptr) std::ofstream(file, std::ios::app) << injected << '\n';
}

}  // namespace

size_t sweep_faults(const std::function<void(Recorder&)>& script,
                    const std::function<uint32_t()>& act,
                    const std::function<void(const Faulted&)>& check) {
    const std::vector<Operation> operations = clean_run(script, act);
    size_t injected = 0;
    for (size_t at = 1; at <= operations.size(); ++at) {
        for (const Mode mode : modes_of(operations[at - 1])) {
            start(script, Fault{at, mode});
            const uint32_t status = act();
            SCOPED_TRACE("call " + std::to_string(at) + " failing in mode " +
                         std::to_string(static_cast<int>(mode)));
            EXPECT_THAT(platform().handle_faults(), testing::IsEmpty());
            check({operations[at - 1], at, mode, status, platform().operations.size() - at});
            ++injected;
        }
    }
    start([](Recorder&) {}, std::nullopt);
    report(injected);
    return injected;
}

size_t sweep_exceptions(const std::function<void(Recorder&)>& script,
                        const std::function<uint32_t()>& act) {
    const std::vector<Operation> operations = clean_run(script, act);
    size_t thrown = 0;
    for (size_t at = 1; at <= operations.size(); ++at) {
        if (operations[at - 1] == Operation::clock) continue;  // time() is declared not to throw
        start(script, Fault{at, Mode::thrown});
        SCOPED_TRACE("call " + std::to_string(at) + " throwing");
        EXPECT_THROW(act(), PlatformFault);
        EXPECT_THAT(platform().handle_faults(), testing::IsEmpty());
        ++thrown;
    }
    start([](Recorder&) {}, std::nullopt);
    report(thrown);
    return thrown;
}

std::vector<uint32_t> swept_statuses(const std::function<void(Recorder&)>& script,
                                     const std::function<uint32_t()>& act) {
    std::vector<uint32_t> statuses;
    sweep_faults(script, act, [&](const Faulted& faulted) { statuses.push_back(faulted.status); });
    return statuses;
}

}  // namespace pwrmgt::test
