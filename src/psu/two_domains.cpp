// SPDX-License-Identifier: Apache-2.0
// Power of the layouts with two domains: eight bays, and twelve bays in two sixes.
#include <algorithm>

#include "psu/bays.h"
#include "psu/power_tables.h"

using namespace pwrmgt::psu;

namespace {

constexpr int32_t kCannotTell = -1;

// Power and redundancy state of a mode; what is empty is not written.
struct Answer {
    std::optional<uint32_t> power_w;
    std::optional<uint8_t> state;
};

int32_t hand_out(const Answer& answer, uint32_t* power, uint8_t* state) {
    if (power != nullptr && answer.power_w) *power = *answer.power_w;
    if (state != nullptr && answer.state) *state = *answer.state;
    return 0;
}

// The supplies of a layout: how many are there, how many are good, and the weakest one's label.
struct Supplies {
    uint32_t unit_w;
    Psus psus;
};

std::optional<Supplies> supplies_in(uint8_t bays) {
    const std::optional<uint32_t> unit_w = weakest_label_w();
    if (!unit_w) return std::nullopt;
    const std::optional<Psus> psus = read_bays();
    if (!psus || psus->psu_count != bays) return std::nullopt;
    return Supplies{*unit_w, *psus};
}

uint32_t count_present(const Psus& psus) {
    return static_cast<uint32_t>(std::count_if(psus.psu, psus.psu + 8, [](const Psu& psu) {
        return psu.psu_id != pwrmgt::db::kUnknownByte && psu.present != 0;
    }));
}

Answer half_held_back(uint32_t present, uint32_t good, uint32_t unit_w, float factor) {
    const uint32_t half = present / 2;
    if (good <= half) return {good * unit_w, uint8_t{0}};
    return {oversubscribe(factor, half * unit_w), static_cast<uint8_t>(good - half)};
}

Answer one_held_back(uint32_t present, uint32_t good, uint32_t unit_w, float factor) {
    if (good != present) return {good * unit_w, uint8_t{0}};
    if (good <= 1) return {unit_w, uint8_t{1}};
    const uint32_t rest_w = (good - 1) * unit_w;
    // Kept: from seven supplies on nothing is oversubscribed. [SevenAndEightAreNotOversubscribed]
    return {good <= 6 ? oversubscribe(factor, rest_w) : rest_w, uint8_t{1}};
}

}  // namespace

extern "C" int32_t pwrmgt_8_psu_2_domain_power_info(int32_t mode, uint32_t* power, uint8_t* state,
                                                    float factor) {
    const std::optional<Supplies> supplies = supplies_in(8);
    if (!supplies) return kCannotTell;
    const uint32_t unit_w = supplies->unit_w;
    const uint32_t present = count_present(supplies->psus);
    const uint32_t good = count_usable(supplies->psus, 1, 8);
    switch (mode) {
        case 1:
            return hand_out(half_held_back(present, good, unit_w, factor), power, state);
        case 2:
            return hand_out({good * unit_w, uint8_t{0}}, power, state);
        case 4:
            return hand_out(one_held_back(present, good, unit_w, factor), power, state);
        default:
            return 0;
    }
}

extern "C" int32_t pwrmgt_12_psu_2_domain_power_info(int32_t mode, uint32_t* power, uint8_t* state,
                                                     float factor) {
    const std::optional<Supplies> supplies = supplies_in(12);
    if (!supplies) return kCannotTell;
    const uint32_t unit_w = supplies->unit_w;
    const uint32_t a = count_usable(supplies->psus, 1, 6);
    const uint32_t b = count_usable(supplies->psus, 7, 12);
    if (mode == 2) return hand_out({(a + b) * unit_w, uint8_t{0}}, power, state);
    if (mode != 1) return 0;
    // Kept: the state is left alone when a domain is empty. [StateIsUntouchedWhenADomainIsEmpty]
    const uint32_t both = std::min(a, b);
    Answer answer{oversubscribe(factor, both * unit_w), std::nullopt};
    if (both != 0) answer.state = static_cast<uint8_t>(both - 1);
    return hand_out(answer, power, state);
}
