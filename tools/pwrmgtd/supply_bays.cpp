// SPDX-License-Identifier: Apache-2.0
#include "supply_bays.h"

#include <algorithm>
#include <string>

#include "status_words.h"
#include "vekdb_prop.h"

namespace pwrmgt::pwrmgtd {
namespace {

using Bay = pwrmgt_psu_property_t;

constexpr std::uint8_t kUnknown = PWRMGT_PSU_UNKNOWN;
constexpr const char* kBayCountKey = "/dc/tavn/dm/planar/0/psu/maxcount";
// What the library takes for the number of bays where the platform does not say.
constexpr int kUsualBays = 4;

Bay unknown_bay(std::size_t index) {
    Bay bay{};
    bay.psu_id = static_cast<std::uint8_t>(index + 1);
    bay.present = bay.input_ac_lost = bay.psu_fault = bay.input_voltage = kUnknown;
    bay.input_label_power = bay.output_label_power = PWRMGT_NO_POWER;
    return bay;
}

bool equal(const Bay& a, const Bay& b) {
    return a.psu_id == b.psu_id && a.present == b.present && a.input_ac_lost == b.input_ac_lost &&
           a.psu_fault == b.psu_fault && a.input_voltage == b.input_voltage &&
           a.input_label_power == b.input_label_power &&
           a.output_label_power == b.output_label_power;
}

bool delivers(const Bay& bay) {
    return bay.present == 1 && bay.input_ac_lost == 0 && bay.psu_fault == 0;
}

std::string one_of(std::uint8_t value, const char* if_0, const char* if_1, const char* if_unknown) {
    if (value == kUnknown) return if_unknown;
    return value == 0 ? if_0 : if_1;
}

std::string words(const Bay& bay) {
    if (bay.present != 1) return one_of(bay.present, "not there", "", "not known");
    const std::string label = bay.output_label_power == PWRMGT_NO_POWER
                                  ? "label not known"
                                  : "label " + std::to_string(bay.output_label_power) + " W";
    return "present, " + one_of(bay.input_ac_lost, "AC good", "AC lost", "AC not known") + ", " +
           one_of(bay.psu_fault, "no fault", "fault", "fault not known") + ", " + label;
}

void put(std::uint8_t& field, const std::optional<bool>& told) {
    if (told) field = *told ? 1 : 0;
}

}  // namespace

std::optional<std::uint8_t> voltage_class_of(std::uint16_t input_v) {
    if (input_v >= 180 && input_v <= 264) return kHighLine;
    if (input_v >= 90 && input_v <= 140) return kLowLine;
    return std::nullopt;
}

int bay_count(std::optional<int> asked_for, std::size_t told_of) {
    if (asked_for) return *asked_for;
    std::uint8_t property = 0;
    const bool is_told = propdb_get_byte(kBayCountKey, &property) == 0;
    const int platform = is_told && property <= kSupplies ? property : 0;
    const int bays = std::max(platform, static_cast<int>(std::min(told_of, kSupplies)));
    return bays > 0 ? bays : kUsualBays;
}

Bays::Bays(Log& log) : log_(log) {}

bool Bays::start(std::uint32_t connection, const BaySetup& setup) {
    connection_ = connection;
    setup_ = setup;
    for (std::size_t i = 0; i < kSupplies; ++i) {
        known_[i] = stored_[i] = unknown_bay(i);
    }
    return note_status(log_, "pwrmgt_init_psu_property_table",
                       pwrmgt_init_psu_property_table(connection_, setup_.count));
}

// What was told of a supply goes with it; the next one brings its own, or the labels set up.
Bay Bays::after(const Bay& known, const SupplyState& told) const {
    Bay bay = known;
    const bool inserted = told.present == true && known.present != 1;
    if (inserted || told.present == false) bay = unknown_bay(known.psu_id - 1U);
    put(bay.present, told.present);
    if (bay.present != 1) return bay;
    if (inserted) {
        bay.input_label_power = stored(setup_.input_label_w);
        bay.output_label_power = stored(setup_.output_label_w);
    }
    put(bay.input_ac_lost, told.ac_lost);
    put(bay.psu_fault, told.fault);
    bay.input_voltage = told.voltage_class.value_or(bay.input_voltage);
    bay.input_label_power = told.input_label_w.value_or(bay.input_label_power);
    bay.output_label_power = told.output_label_w.value_or(bay.output_label_power);
    return bay;
}

void Bays::take(const Reading& reading) {
    std::size_t highest = 0;
    for (std::size_t i = 0; i < kSupplies; ++i) {
        known_[i] = after(known_[i], reading.supply_states[i]);
        if (known_[i].present == 1) highest = i + 1;
    }
    const auto count = static_cast<std::size_t>(setup_.count);
    for (std::size_t i = 0; i < count; ++i) {
        if (!equal(known_[i], stored_[i]) && write(stored_[i], known_[i])) stored_[i] = known_[i];
    }
    log_.state("supplies", count > 0 && highest > count
                               ? "supply " + std::to_string(highest) + " has no bay, there are " +
                                     std::to_string(count) + "; --bays tells otherwise"
                               : "");
}

bool Bays::write(const Bay& stored, const Bay& wanted) {
    if (!note_status(log_, "pwrmgt_update_psu_property_table",
                     pwrmgt_update_psu_property_table(connection_, wanted))) {
        return false;
    }
    const std::string line = "supply " + std::to_string(wanted.psu_id) + ": " + words(wanted);
    delivers(stored) && !delivers(wanted) ? log_.warning(line) : log_.notice(line);
    return true;
}

}  // namespace pwrmgt::pwrmgtd
