// SPDX-License-Identifier: Apache-2.0
#include "row.h"

#include <algorithm>
#include <limits>
#include <tuple>
#include <utility>

namespace pwrmgt::trace {
namespace {

// An input below this is no input.
constexpr std::uint16_t kLostInput_v = 30;

template <class Whole>
std::optional<Whole> narrowed(const std::optional<std::int32_t>& cell) {
    if (!cell) return std::nullopt;
    return static_cast<Whole>(*cell);
}

std::optional<bool> yes_or_no(const std::optional<std::int32_t>& cell) {
    if (!cell) return std::nullopt;
    return *cell != 0;
}

// The sum over the supplies of one kind that have a column, all of them known to hold a value.
std::int32_t sum(const Cells& cells, std::size_t first) {
    std::int32_t watts = 0;
    for (std::size_t i = 0; i < kSupplies; ++i) {
        watts += cells[first + i].value_or(0);
    }
    return watts;
}

Watts as_watts(std::int32_t watts) {
    if (watts > std::numeric_limits<std::uint16_t>::max() - 1) return std::nullopt;
    return static_cast<std::uint16_t>(watts);
}

// Whether the bay is known to be empty: what its sensors say is of no supply then.
bool is_absent(const Cells& cells, std::size_t supply) {
    return cells[kPresent + supply] == 0;
}

// The row without the power of supplies that are not there.
Cells without_absent(const Given& given, Cells cells) {
    for (std::size_t i = 0; i < kSupplies; ++i) {
        if (!is_absent(cells, i)) continue;
        for (const std::size_t first : {kSupplyAc, kSupplyDc, kProbeAc}) {
            if (given.present[first + i]) cells[first + i] = 0;
        }
    }
    return cells;
}

// AC and DC of the whole system. History rows hold both or neither, so one number that stands for
// the system counts as both, and a sum over supplies needs every one of them.
std::pair<Watts, Watts> system_power(const Given& given, const Cells& cells) {
    for (std::size_t place = kSupplyAc; place < kPlaces; ++place) {
        if (given.present[place] && !cells[place]) return {};
    }
    for (std::size_t i = 0; i < kSupplies; ++i) {
        const bool dc_unknown = given.present[kSupplyAc + i] && !given.present[kSupplyDc + i];
        if (given.any(kSupplyDc) && dc_unknown) return {};
    }
    const bool metered = given.any(kProbeAc) && !given.present[kSystemW];
    const Watts ac =
        metered ? as_watts(sum(cells, kProbeAc)) : narrowed<std::uint16_t>(cells[kSystemW]);
    const Watts dc = given.any(kSupplyDc) ? as_watts(sum(cells, kSupplyDc)) : ac;
    if (!ac || !dc) return {};
    return {ac, dc};
}

// A supply is there when it says anything. What no column tells of it is taken for sound; an empty
// cell tells nothing.
SupplyState supply_state(const Given& given, const Cells& cells, std::size_t supply) {
    const auto has = [&](std::size_t first) { return given.present[first + supply]; };
    const auto speaks = [&](std::size_t first) { return cells[first + supply].has_value(); };
    SupplyState state;
    state.present = yes_or_no(cells[kPresent + supply]);
    if (!has(kPresent) && (speaks(kSupplyAc) || speaks(kSupplyDc) || speaks(kProbeAc) ||
                           speaks(kAcLost) || speaks(kFault))) {
        state.present = true;
    }
    if (state.present == false) return state;
    state.ac_lost = yes_or_no(cells[kAcLost + supply]);
    state.fault = yes_or_no(cells[kFault + supply]);
    state.input_class = narrowed<std::uint8_t>(cells[kInputClass + supply]);
    state.input_v = narrowed<std::uint16_t>(cells[kInputV + supply]);
    state.label_in_w = narrowed<std::uint16_t>(cells[kLabelIn + supply]);
    state.label_out_w = narrowed<std::uint16_t>(cells[kLabelOut + supply]);
    if (!has(kAcLost) && state.input_v) state.ac_lost = *state.input_v < kLostInput_v;
    if (state.present != true) return state;
    if (!has(kAcLost) && !has(kInputV)) state.ac_lost = false;
    if (!has(kFault)) state.fault = false;
    return state;
}

}  // namespace

bool Given::any(std::size_t first) const {
    const auto from = present.begin() + static_cast<std::ptrdiff_t>(first);
    return std::any_of(from, from + kSupplies, [](bool has) { return has; });
}

Reading make_reading(const Given& given, const Cells& cells, std::int64_t epoch_s) {
    Reading reading;
    reading.epoch_s = epoch_s;
    if (cells[kAnswers] == 0) {
        reading.answered = false;
        return reading;
    }
    std::tie(reading.system_ac_w, reading.system_dc_w) =
        system_power(given, without_absent(given, cells));
    reading.cpu_w = narrowed<std::uint16_t>(cells[kCpuW]);
    reading.mem_w = narrowed<std::uint16_t>(cells[kMemoryW]);
    const std::size_t ac_place = given.any(kProbeAc) ? kProbeAc : kSupplyAc;
    for (std::size_t i = 0; i < kSupplies; ++i) {
        reading.supply_states[i] = supply_state(given, cells, i);
        if (is_absent(cells, i)) continue;
        reading.supplies[i].ac_in_w = narrowed<std::uint16_t>(cells[ac_place + i]);
        reading.supplies[i].dc_out_w = narrowed<std::uint16_t>(cells[kSupplyDc + i]);
    }
    reading.sys_pct = narrowed<std::uint8_t>(cells[kSystemPct]);
    reading.cpu_pct = narrowed<std::uint8_t>(cells[kCpuPct]);
    reading.mem_pct = narrowed<std::uint8_t>(cells[kMemoryPct]);
    reading.io_pct = narrowed<std::uint8_t>(cells[kIoPct]);
    reading.ambient_c = narrowed<std::int16_t>(cells[kAmbientC]);
    reading.exhaust_c = narrowed<std::int16_t>(cells[kExhaustC]);
    for (std::size_t i = 0; i < kCpus; ++i) {
        reading.cpu_c[i] = narrowed<std::int16_t>(cells[kCpuC + i]);
    }
    return reading;
}

}  // namespace pwrmgt::trace
