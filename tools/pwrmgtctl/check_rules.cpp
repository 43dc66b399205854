// SPDX-License-Identifier: Apache-2.0
#include "check_rules.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr uint32_t kModeWithoutRedundancy = 2;
constexpr std::array kStateWords{"ok", "warning", "critical", "unknown"};

int rank(PluginState state) {
    switch (state) {
        case PluginState::critical:
            return 3;
        case PluginState::warning:
            return 2;
        case PluginState::unknown:
            return 1;
        default:
            return 0;
    }
}

std::string upper(std::string word) {
    for (char& letter : word) {
        if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
    }
    return word;
}

// A bar ends the words of a plugin's line, and a line feed the line.
std::string on_one_line(std::string words) {
    std::replace(words.begin(), words.end(), '|', '/');
    std::replace(words.begin(), words.end(), '\n', ' ');
    return words;
}

size_t count_of(const std::vector<Supply>& supplies, SupplyState state) {
    return static_cast<size_t>(
        std::count_if(supplies.begin(), supplies.end(),
                      [state](const Supply& supply) { return supply.state == state; }));
}

// "supply 2: input lost; ", for every supply with something wrong.
std::string troubles(const std::vector<Supply>& supplies) {
    std::string words;
    for (const Supply& supply : supplies) {
        const std::string name = "supply " + std::to_string(supply.bay);
        if (supply.state == SupplyState::input_lost) words += name + ": input lost; ";
        if (supply.state == SupplyState::fault) words += name + ": fault; ";
        if (supply.state == SupplyState::not_known) words += name + ": not known; ";
    }
    return words;
}

// Fewer healthy ones than expected, unless those that nobody has looked at could make up for it.
PluginState state_of(size_t healthy, size_t not_known, size_t bad, const Value& expected) {
    if (expected && healthy >= *expected) {
        return bad == 0 ? PluginState::ok : PluginState::warning;
    }
    if (expected && healthy + not_known < *expected) return PluginState::critical;
    if (!expected && (bad > 0 || healthy + not_known == 0)) return PluginState::critical;
    return not_known > 0 ? PluginState::unknown : PluginState::ok;
}

// A share of `watts`, exact: hundredths at most.
std::string share_text(uint32_t watts, uint32_t percent) {
    const uint64_t hundredths = uint64_t{watts} * percent;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%llu.%02llu",
                  static_cast<unsigned long long>(hundredths / 100),
                  static_cast<unsigned long long>(hundredths % 100));
    std::string trimmed = text.data();
    trimmed.erase(trimmed.find_last_not_of('0') + 1);
    if (trimmed.ends_with('.')) trimmed.pop_back();
    return trimmed;
}

std::string percent_text(uint32_t part, uint32_t whole) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f", 100.0 * part / whole);
    return text.data();
}

bool above(uint32_t drawn_w, uint32_t available_w, uint32_t percent) {
    return uint64_t{drawn_w} * 100 > uint64_t{available_w} * percent;
}

}  // namespace

std::string state_word(PluginState state) {
    return kStateWords.at(static_cast<size_t>(state));
}

PluginState worse(PluginState one, PluginState other) {
    return rank(one) >= rank(other) ? one : other;
}

Finding judge_supplies(const Told<std::vector<Supply>>& supplies, Value expected) {
    if (!supplies.value) {
        return {PluginState::unknown, "supplies", "supplies not known: " + supplies.why_not, {}};
    }
    const size_t healthy = count_of(*supplies.value, SupplyState::healthy);
    const size_t not_known = count_of(*supplies.value, SupplyState::not_known);
    const size_t bad = count_of(*supplies.value, SupplyState::input_lost) +
                       count_of(*supplies.value, SupplyState::fault);
    const std::string of = expected ? std::to_string(*expected) + " expected "
                                    : std::to_string(healthy + not_known + bad) + " present ";
    const bool one = (expected ? *expected : healthy + not_known + bad) == 1;
    Finding finding{state_of(healthy, not_known, bad, expected), "supplies", {}, {}};
    finding.words = troubles(*supplies.value) + std::to_string(healthy) + " of " + of +
                    (one ? "supply" : "supplies") + " healthy";
    finding.performance = "supplies_healthy=" + std::to_string(healthy) + ";;" +
                          (expected ? std::to_string(*expected) + ":" : std::string()) + ";0;" +
                          std::to_string(PWRMGT_MAX_PSU);
    return finding;
}

Finding judge_redundancy(const Told<Redundancy>& redundancy, uint32_t expected) {
    Finding finding{PluginState::unknown, "redundancy", "redundancy not known", {}};
    if (!redundancy.value) {
        finding.words += ": " + redundancy.why_not;
        return finding;
    }
    const auto& [mode, level] = *redundancy.value;
    const std::string in_mode = " in mode " + std::to_string(mode);
    if (!level) {
        finding.words += in_mode;
        return finding;
    }
    const uint32_t wanted = mode == kModeWithoutRedundancy ? 0 : expected;
    finding.state = PluginState::ok;
    finding.words = *level == 0 ? "no redundancy" : "redundancy level " + std::to_string(*level);
    finding.words += in_mode;
    if (*level < wanted) {
        finding.state = *level == 0 ? PluginState::critical : PluginState::warning;
        finding.words += ", level " + std::to_string(wanted) + " expected";
    }
    finding.performance = "redundancy=" + std::to_string(*level) + ';' +
                          (wanted > 1 ? std::to_string(wanted) + ":" : std::string()) + ';' +
                          (wanted > 0 ? "1:" : "") + ";0";
    return finding;
}

Finding judge_draw(const Draw& draw, const DrawLimits& limits) {
    Finding finding{PluginState::unknown, "draw", "draw not known: ", {}};
    if (!draw.drawn_w.value || !*draw.drawn_w.value) {
        finding.words +=
            draw.drawn_w.value ? "no reading of the system's DC power" : draw.drawn_w.why_not;
        return finding;
    }
    const uint32_t drawn_w = **draw.drawn_w.value;
    const std::string drawing = "drawing " + std::to_string(drawn_w) + " W";
    finding.performance = "draw=" + std::to_string(drawn_w) + "W;;;0";
    if (draw.stale) {
        finding.words += "the reading is too old to judge";
        return finding;
    }
    if (!draw.available_w.value || !*draw.available_w.value) {
        finding.words = drawing + ", available power not known" +
                        (draw.available_w.value ? std::string() : ": " + draw.available_w.why_not);
        return finding;
    }
    const uint32_t available_w = **draw.available_w.value;
    const std::string share = percent_text(drawn_w, available_w);
    finding.state = above(drawn_w, available_w, limits.critical_pct)  ? PluginState::critical
                    : above(drawn_w, available_w, limits.warning_pct) ? PluginState::warning
                                                                      : PluginState::ok;
    finding.words =
        drawing + " of " + std::to_string(available_w) + " W available, " + share + " %";
    if (finding.state != PluginState::ok) {
        const bool is_critical = finding.state == PluginState::critical;
        finding.words += ", above " +
                         std::to_string(is_critical ? limits.critical_pct : limits.warning_pct) +
                         " %";
    }
    finding.performance =
        "draw=" + std::to_string(drawn_w) + "W;" + share_text(available_w, limits.warning_pct) +
        ';' + share_text(available_w, limits.critical_pct) + ";0;" + std::to_string(available_w) +
        " draw_share=" + share + "%;" + std::to_string(limits.warning_pct) + ';' +
        std::to_string(limits.critical_pct) + ";0;100";
    return finding;
}

Finding judge_age(const Told<int64_t>& age_s, int64_t max_age_s) {
    if (!age_s.value) {
        return {PluginState::unknown, "age", "age of the data not known: " + age_s.why_not, {}};
    }
    const int64_t age = *age_s.value;
    Finding finding{PluginState::ok, "age", {}, {}};
    finding.words =
        "reading " + std::to_string(std::abs(age)) + " s " + (age < 0 ? "in the future" : "old");
    finding.performance = "age=" + std::to_string(age) + "s;;" + std::to_string(max_age_s);
    if (age < -max_age_s) {
        finding.state = PluginState::unknown;
        finding.words += ", its age cannot be told";
    } else if (age > max_age_s) {
        finding.state = PluginState::critical;
        finding.words += ", more than " + std::to_string(max_age_s) + " s";
    }
    return finding;
}

std::string plugin_line(const std::vector<Finding>& findings) {
    std::vector<Finding> sorted = findings;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Finding& one, const Finding& other) {
        return rank(one.state) > rank(other.state);
    });
    const PluginState state = sorted.empty() ? PluginState::unknown : sorted.front().state;
    std::string line = "POWER " + upper(state_word(state)) + " - ";
    for (const Finding& finding : sorted) {
        line += on_one_line(finding.words) + (&finding == &sorted.back() ? "" : "; ");
    }
    std::string performance;
    for (const Finding& finding : findings) {
        if (!finding.performance.empty()) performance += ' ' + finding.performance;
    }
    return line + (performance.empty() ? "" : " |" + performance) + '\n';
}

}  // namespace pwrmgt::pwrmgtctl
