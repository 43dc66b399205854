// SPDX-License-Identifier: Apache-2.0
// The commands of vekdb-simctl: what each does to the state, or shows of it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ipmi/sim_state.h"

namespace pwrmgt::ipmi::sim::ctl {

enum class Exit : int { ok = 0, failure = 1, usage = 2 };

struct Outcome {
    Exit exit = Exit::ok;
    std::string text;  // a document when ok, the reason otherwise
};

// The parsed command line leaves its work here.
using Action = std::function<Outcome()>;

enum class Form { words, json };

Outcome show_status(Form form);
Outcome show_audit(Form form);

struct FaultRequest {
    unsigned command = 0;
    std::optional<unsigned> operation;
    std::string kind;
    std::uint32_t times = 1;
    bool always = false;
};

Outcome add_fault(const FaultRequest& request);
Outcome clear_faults();
// Watts are numbers or "none".
Outcome set_gpus(std::size_t count, const std::optional<std::string>& draw);
Outcome set_slots(const std::vector<std::string>& powers);
Outcome set_processors(std::uint8_t count, const std::vector<std::string>& caps);
Outcome set_cap_range(std::uint16_t min_w, std::uint16_t max_w);
Outcome reset();

}  // namespace pwrmgt::ipmi::sim::ctl
