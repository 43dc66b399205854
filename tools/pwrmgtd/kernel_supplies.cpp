// SPDX-License-Identifier: Apache-2.0
#include "kernel_supplies.h"

#include <algorithm>

#include "kernel_files.h"
#include "supply_bays.h"
#include "watt_sum.h"

namespace pwrmgt::pwrmgtd {
namespace {

// A voltage regulator behind the supplies has the same labels and a lower input.
constexpr std::uint16_t kLowestInput_v = 60;
// An input below this is no input.
constexpr std::uint16_t kLostInput_v = 30;
// A supply that was pulled leaves its driver behind, which gets no answer; so may one that is
// there.
constexpr int kSilentReadings = 3;

bool is_supply(const Chip& chip) {
    const Channel* const input = Chip::labelled(chip.voltages, "vin");
    if (input == nullptr || Chip::labelled(chip.powers, "pin") == nullptr) return false;
    return input->volts().value_or(0) >= kLowestInput_v;
}

Watts input_power(const Chip& chip) {
    const Channel* const input = Chip::labelled(chip.powers, "pin");
    return input == nullptr ? std::nullopt : input->watts();
}

// The sum of pout1, pout2, ...
Watts output_power(const Chip& chip) {
    WattSum sum;
    for (const Channel& power : chip.powers) {
        if (power.label.starts_with("pout")) sum.add(power.watts());
    }
    return sum.watts();
}

Watts rated(const Chip& chip, const char* label) {
    const Channel* const power = Chip::labelled(chip.powers, label);
    const auto rated_uw = power == nullptr ? std::nullopt : power->attribute("rated_max");
    if (!rated_uw || *rated_uw <= 0 || *rated_uw / 1'000'000 >= PWRMGT_NO_POWER) return {};
    return static_cast<std::uint16_t>(*rated_uw / 1'000'000);
}

void read_input(const Chip& chip, SupplyState& state) {
    const Channel* const input = Chip::labelled(chip.voltages, "vin");
    if (input == nullptr) return;
    const auto volts = input->volts();
    if (volts) {
        state.ac_lost = *volts < kLostInput_v;
        state.voltage_class = voltage_class_of(*volts);
    }
    if (input->attribute("lcrit_alarm") == 1) state.ac_lost = true;
}

bool is_faulted(const Chip& chip) {
    return std::any_of(chip.alarms.begin(), chip.alarms.end(),
                       [](const std::string& alarm) { return read_number(alarm) == 1; });
}

}  // namespace

void KernelSupplies::find(const std::vector<Chip>& chips) {
    if (!finds_) return;
    for (const Chip& chip : chips) {
        const bool known =
            std::find(devices_.begin(), devices_.end(), chip.device) != devices_.end();
        if (known || devices_.size() == kSupplies || !is_supply(chip)) continue;
        devices_.push_back(chip.device);
        log_.notice("supply " + std::to_string(devices_.size()) + " is " + chip.device + ", " +
                    chip.name);
    }
}

void KernelSupplies::read(const std::vector<Chip>& chips, Reading& reading) {
    for (std::size_t i = 0; i < devices_.size(); ++i) {
        const auto chip = std::find_if(chips.begin(), chips.end(), [&](const Chip& candidate) {
            return candidate.device == devices_[i];
        });
        SupplyState& state = reading.supply_states[i];
        if (chip == chips.end()) {
            state.present = false;
            continue;
        }
        SupplyReading& power = reading.supplies[i];
        power = {input_power(*chip), output_power(*chip)};
        read_input(*chip, state);
        const bool answers = power.ac_w || power.dc_w || state.ac_lost;
        silent_[i] = answers ? 0 : silent_[i] + 1;
        if (!answers) {
            if (silent_[i] >= kSilentReadings) state.present = false;
            continue;
        }
        state.present = true;
        if (!state.ac_lost) state.ac_lost = false;
        state.fault = is_faulted(*chip);
        state.input_label_w = rated(*chip, "pin");
        state.output_label_w = rated(*chip, "pout1");
    }
}

}  // namespace pwrmgt::pwrmgtd
