// SPDX-License-Identifier: Apache-2.0
// Runs an exported function with each of its platform calls failing in turn.
#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "platform_test.h"

namespace pwrmgt::test {

namespace {

std::vector<Fault> with_modes(size_t at, std::initializer_list<Mode> modes) {
    std::vector<Fault> faults;
    for (const Mode mode : modes) {
        faults.push_back({at, mode});
    }
    return faults;
}

// Both failures, every length below the true one, and one above it.
std::vector<Fault> faults_of_an_answer(size_t at, size_t length) {
    std::vector<Fault> faults = with_modes(at, {Mode::error, Mode::minus_one});
    for (size_t other = 0; other <= length + 1; ++other) {
        if (other != length) faults.push_back({at, Mode::other_length, other});
    }
    return faults;
}

std::vector<Fault> faults_of(Operation operation, size_t at, const Recorder& clean) {
    switch (operation) {
        case Operation::query:
        case Operation::raw_rows:
            return with_modes(
                at, {Mode::error, Mode::minus_one, Mode::error_with_handle, Mode::no_handle});
        case Operation::step:
            return with_modes(at, {Mode::error, Mode::minus_one, Mode::early_end, Mode::no_row});
        case Operation::row_count:
            return with_modes(at,
                              {Mode::error, Mode::no_rows, Mode::one_row_less, Mode::one_row_more});
        case Operation::raw:
        case Operation::insert:
        case Operation::update:
        case Operation::remove:
        case Operation::column:
        case Operation::put:
        case Operation::property:
            return with_modes(at, {Mode::error, Mode::minus_one});
        case Operation::ipmi:
            return faults_of_an_answer(at, clean.answer_lengths.at(at));
        case Operation::open:
        case Operation::content:
        case Operation::clock:
            return with_modes(at, {Mode::error});
    }
    return {};
}

void start(const std::function<void(Recorder&)>& script, std::optional<Fault> fault) {
    platform().reset();
    g_power_policy_flag = 255;
    script(platform());
    platform().fault = fault;
}

// What a run without failures left on record.
Recorder clean_run(const std::function<void(Recorder&)>& script,
                   const std::function<uint32_t()>& act) {
    start(script, std::nullopt);
    act();
    EXPECT_THAT(platform().handle_faults(), testing::IsEmpty()) << "without a failure";
    return platform();
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
    const Recorder clean = clean_run(script, act);
    size_t injected = 0;
    for (size_t at = 1; at <= clean.operations.size(); ++at) {
        const Operation operation = clean.operations[at - 1];
        for (const Fault& fault : faults_of(operation, at, clean)) {
            start(script, fault);
            const uint32_t status = act();
            SCOPED_TRACE("call " + std::to_string(at) + " failing in mode " +
                         std::to_string(static_cast<int>(fault.mode)) + ", length " +
                         std::to_string(fault.length));
            EXPECT_THAT(platform().handle_faults(), testing::IsEmpty());
            check({operation, at, fault.mode, fault.length, status,
                   platform().operations.size() - at});
            ++injected;
        }
    }
    start([](Recorder&) {}, std::nullopt);
    report(injected);
    return injected;
}

size_t sweep_exceptions(const std::function<void(Recorder&)>& script,
                        const std::function<uint32_t()>& act) {
    const std::vector<Operation> operations = clean_run(script, act).operations;
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

Outcomes swept_statuses(const std::function<void(Recorder&)>& script,
                        const std::function<uint32_t()>& act) {
    Outcomes outcomes;
    sweep_faults(script, act, [&](const Faulted& faulted) {
        outcomes.resize(faulted.at);
        outcomes.back().push_back(faulted.status);
    });
    for (std::vector<uint32_t>& of_call : outcomes) {
        if (std::equal(of_call.begin() + 1, of_call.end(), of_call.begin())) of_call.resize(1);
    }
    return outcomes;
}

}  // namespace pwrmgt::test
