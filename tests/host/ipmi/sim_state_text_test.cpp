// SPDX-License-Identifier: Apache-2.0
// The state's text form.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "ipmi/sim_state.h"

namespace {

using pwrmgt::ipmi::sim::decode;
using pwrmgt::ipmi::sim::encoded;
using pwrmgt::ipmi::sim::Fault;
using pwrmgt::ipmi::sim::FaultKind;
using pwrmgt::ipmi::sim::Requester;
using pwrmgt::ipmi::sim::State;
using pwrmgt::ipmi::sim::Text;

State full_state() {
    State state;
    state.cap = {1, 0, 300};
    state.cap_range = {200, 800};
    state.audit = {{1, Requester::named, "ada \"\n", {1, 1, 2}, 1},
                   {-2, Requester::name_left_out, "", {0, 0, 0}, 0}};
    state.gpus = {{1, 2, 3}};
    state.slot_w = {1, 2, 3, 4, 5};
    state.zero_output = 1;
    state.cpus = 8;
    state.cpu_cap_w = {1, 2, 3, 4, 5, 6, 7, 8};
    state.next_handle = 0xFFFFFFFF;
    state.open_files = {{0xFFFFFFFE, "boot.log"}};
    Fault fault{0x32, 0x01, {}, {}, 3};
    set_kind(fault, "late:200");
    state.faults = {fault, {0xDB, {}, FaultKind::busy, {}, 0}};
    return state;
}

TEST(SimStateText, HoldsEveryField) {
    State read;

    EXPECT_EQ(decode(encoded(full_state()), read), Text::whole);
    EXPECT_EQ(read, full_state());
}

TEST(SimStateText, CutAnywhereIsDamagedAndReadsNothing) {
    const std::string whole = encoded(full_state());
    for (std::size_t length = 0; length < whole.size() - 2; ++length) {
        State read;

        EXPECT_EQ(decode(whole.substr(0, length), read), Text::damaged) << length;
        EXPECT_EQ(read, State{});
    }
}

TEST(SimStateText, NumberThatDoesNotFitIsDamage) {
    const std::string whole = encoded(full_state());
    for (const auto& [from, to] : std::vector<std::pair<std::string, std::string>>{
             {"\"zero_output\": 1", "\"zero_output\": 256"},
             {"\"zero_output\": 1", "\"zero_output\": -1"},
             {"\"zero_output\": 1", "\"zero_output\": 0.5"},
             {"\"zero_output\": 1", "\"zero_output\": \"1\""},
             {"\"count\": 8", "\"count\": 9"},
             {"4294967295", "4294967296"},
             {"late:200", "late:5001"},
             {"\"name\": null", "\"name\": 3"}}) {
        std::string changed = whole;
        ASSERT_NE(changed.find(from), std::string::npos) << from;
        changed.replace(changed.find(from), from.size(), to);
        State read;

        EXPECT_EQ(decode(changed, read), Text::damaged) << to;
    }
}

}  // namespace
