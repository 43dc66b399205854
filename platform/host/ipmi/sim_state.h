// SPDX-License-Identifier: Apache-2.0
// What the simulated firmware remembers between exchanges, and its text form.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sim_faults.h"

namespace pwrmgt::ipmi::sim {

// No reading in a power field, not set in a cap.
inline constexpr std::uint16_t kNoWatts = 0xFFFF;

inline constexpr std::size_t kSlotDevices = 5;
inline constexpr std::size_t kMaxCpus = 8;
inline constexpr std::size_t kMaxGpus = 16;
inline constexpr std::size_t kMaxOpenFiles = 16;
inline constexpr std::size_t kMaxAuditEntries = 32;
inline constexpr std::size_t kMaxAuditName = 64;

struct Cap {
    std::uint8_t enable = 0;
    std::uint8_t mode = 1;
    std::uint16_t value_w = kNoWatts;

    bool operator==(const Cap&) const = default;
};

// Values that are accepted while capping is on, both ends included.
struct CapRange {
    std::uint16_t min_w = 100;
    std::uint16_t max_w = 2000;

    bool operator==(const CapRange&) const = default;
};

// What a request to set the cap told of its requester.
enum class Requester : std::uint8_t { not_told, name_left_out, named };

struct AuditEntry {
    std::int64_t time_s = 0;
    Requester requester = Requester::not_told;
    std::string name;
    Cap asked;
    std::uint8_t status = 0;  // 0: accepted

    bool operator==(const AuditEntry&) const = default;
};

struct Gpu {
    std::uint16_t cap_w = 0;  // 0: not set
    std::uint8_t byte_cap = 0;
    std::uint16_t draw_w = kNoWatts;

    bool operator==(const Gpu&) const = default;
};

struct OpenFile {
    std::uint32_t handle = 0;
    std::string name;

    bool operator==(const OpenFile&) const = default;
};

constexpr std::array<std::uint16_t, kSlotDevices> no_slot_readings() {
    return {kNoWatts, kNoWatts, kNoWatts, kNoWatts, kNoWatts};
}

struct State {
    Cap cap;
    CapRange cap_range;
    std::vector<AuditEntry> audit;  // oldest first
    std::vector<Gpu> gpus = std::vector<Gpu>(4);
    std::array<std::uint16_t, kSlotDevices> slot_w = no_slot_readings();
    std::uint8_t zero_output = 0;
    std::uint8_t cpus = 4;
    std::array<std::uint16_t, kMaxCpus> cpu_cap_w{kNoWatts, kNoWatts, kNoWatts, kNoWatts,
                                                  kNoWatts, kNoWatts, kNoWatts, kNoWatts};
    std::uint32_t next_handle = 1;
    std::vector<OpenFile> open_files;  // oldest first
    std::vector<Fault> faults;

    bool operator==(const State&) const = default;
};

// JSON, human-readable. Bytes of a name that are no UTF-8 become the replacement character.
std::string encoded(const State& state);

enum class Text { whole, damaged, newer };
// `state` is left alone unless the text is whole.
Text decode(std::string_view text, State& state);

}  // namespace pwrmgt::ipmi::sim
