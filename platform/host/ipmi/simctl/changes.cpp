// SPDX-License-Identifier: Apache-2.0
// Commands that change the firmware's state.
#include <algorithm>
#include <charconv>

#include "ipmi/firmware_sim.h"
#include "ipmi/sim_state_file.h"
#include "simctl.h"

namespace pwrmgt::ipmi::sim::ctl {
namespace {

constexpr std::uint8_t kCappingCommand = 0x32;
constexpr std::uint8_t kSetCap = 0x02;
constexpr std::uint8_t kGetCap = 0x03;

Outcome misuse(std::string reason) {
    return {Exit::usage, std::move(reason)};
}

// `change` may refuse with a reason; then nothing is kept.
Outcome changed(const std::function<std::string(State&)>& change) {
    Transaction transaction;
    if (transaction.access().usable != Usable::yes) {
        return {Exit::failure, transaction.access().reason};
    }
    if (std::string refused = change(transaction.state()); !refused.empty()) {
        return misuse(std::move(refused));
    }
    const Access kept = transaction.commit();
    if (kept.usable != Usable::yes) return {Exit::failure, kept.reason};
    return {};
}

// Whole watts, or no reading; nullopt when it is neither.
std::optional<std::uint16_t> watts(const std::string& text) {
    if (text == "none") return kNoWatts;
    std::uint16_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stop != end || value == kNoWatts) return {};
    return value;
}

std::string no_watts(const std::string& text) {
    return "'" + text + "' is neither 0 to 65534 watts nor none";
}

// The first text that is no number of watts, or the empty one.
template <std::size_t Size>
std::string fill(const std::vector<std::string>& texts, std::array<std::uint16_t, Size>& values) {
    values.fill(kNoWatts);
    for (std::size_t at = 0; at < texts.size(); ++at) {
        const std::optional<std::uint16_t> value = watts(texts[at]);
        if (!value) return no_watts(texts[at]);
        values.at(at) = *value;
    }
    return {};
}

}  // namespace

Outcome add_fault(const FaultRequest& request) {
    Fault fault;
    fault.command = static_cast<std::uint8_t>(request.command);
    if (request.operation) fault.operation = static_cast<std::uint8_t>(*request.operation);
    if (!offers(fault.command, fault.operation)) {
        return misuse("the firmware has no such command and operation");
    }
    if (!set_kind(fault, request.kind)) {
        return misuse("'" + request.kind + "' is no kind of fault; one of: " + kind_words());
    }
    const bool of_capping = fault.command == kCappingCommand &&
                            (fault.operation == kSetCap || fault.operation == kGetCap);
    if (fault.kind == FaultKind::status && !of_capping) {
        return misuse("only command 0x32, operations 0x02 and 0x03, answers with a status byte");
    }
    fault.times = request.always ? 0 : request.times;
    return changed([&](State& state) -> std::string {
        if (state.faults.size() >= kMaxFaults) return "too many faults are waiting already";
        state.faults.push_back(fault);
        return {};
    });
}

Outcome clear_faults() {
    return changed([](State& state) -> std::string {
        state.faults.clear();
        return {};
    });
}

Outcome set_gpus(std::size_t count, const std::optional<std::string>& draw) {
    const std::optional<std::uint16_t> draw_w = watts(draw.value_or("none"));
    if (!draw_w) return misuse(no_watts(*draw));
    return changed([&](State& state) -> std::string {
        state.gpus.resize(count);
        if (!draw) return {};
        for (Gpu& gpu : state.gpus)
            gpu.draw_w = *draw_w;
        return {};
    });
}

Outcome set_slots(const std::vector<std::string>& powers) {
    return changed([&](State& state) { return fill(powers, state.slot_w); });
}

Outcome set_processors(std::uint8_t count, const std::vector<std::string>& caps) {
    return changed([&](State& state) -> std::string {
        if (caps.size() > count) return "more caps than processors";
        state.cpus = count;
        return fill(caps, state.cpu_cap_w);
    });
}

Outcome set_cap_range(std::uint16_t min_w, std::uint16_t max_w) {
    if (min_w > max_w) return misuse("the lowest cap is above the highest");
    return changed([&](State& state) -> std::string {
        state.cap_range = {min_w, max_w};
        return {};
    });
}

Outcome reset() {
    return changed([](State& state) -> std::string {
        state = State{};
        return {};
    });
}

}  // namespace pwrmgt::ipmi::sim::ctl
