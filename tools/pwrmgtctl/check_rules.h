// SPDX-License-Identifier: Apache-2.0
// What a monitoring check makes of what it read: a state, a reason in words and performance data
// for each part. Nothing here reads anything.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "missing.h"

namespace pwrmgt::pwrmgtctl {

// The numbers are the exit codes that monitoring systems know.
enum class PluginState : int { ok = 0, warning = 1, critical = 2, unknown = 3 };

std::string state_word(PluginState state);  // "ok", "warning", "critical", "unknown"

// A known problem outranks what could not be told: critical, warning, unknown, ok.
PluginState worse(PluginState one, PluginState other);

struct Finding {
    PluginState state;
    std::string part;  // "supplies", "redundancy", "draw", "age"
    std::string words;
    std::string
        performance;  // label=value and so on, parted by spaces; empty when nothing is known
};

// What was read, or why not, in words.
template <class T>
struct Told {
    std::optional<T> value;
    std::string why_not;
};

enum class SupplyState { healthy, input_lost, fault, not_known, empty };

struct Supply {
    uint32_t bay;
    SupplyState state;
};

struct Redundancy {
    uint32_t mode;
    Value level;  // 0 = none left
};

struct Draw {
    Told<Value> drawn_w;  // a reading that is there may still hold no power
    Told<Value> available_w;
    bool stale;
};

struct DrawLimits {
    uint32_t warning_pct;
    uint32_t critical_pct;
};

// `expected` healthy supplies; none: every supply that is present.
Finding judge_supplies(const Told<std::vector<Supply>>& supplies, Value expected);

// Mode 2 keeps no redundancy: there nothing is expected.
Finding judge_redundancy(const Told<Redundancy>& redundancy, uint32_t expected);

Finding judge_draw(const Draw& draw, const DrawLimits& limits);

// Up to `max_age_s` either way is fresh: clocks may disagree by a little.
Finding judge_age(const Told<int64_t>& age_s, int64_t max_age_s);

// One line: the state, the reasons with the worst first, and the performance data.
std::string plugin_line(const std::vector<Finding>& findings);

}  // namespace pwrmgt::pwrmgtctl
