// SPDX-License-Identifier: Apache-2.0
// The weakest usable supply, by the number of bays.
#include "db/status.h"
#include "psu/bays.h"

using namespace pwrmgt;
using namespace pwrmgt::psu;

namespace {

// A supply that does not deliver counts as one of unknown label.
uint16_t label_if_delivering(const Psu& psu) {
    return delivers(psu) ? psu.output_label_power : db::kNoPower;
}

// Kept: with two bays a first supply of unknown label still stands for itself; with eight and
// twelve it is passed over. [FirstBayOfTwoStandsWithoutALabel]
const Psu& weakest_of_two(const Psu& first, const Psu& second) {
    if (!usable(second)) return first;
    if (!delivers(first)) return second;
    return first.output_label_power > second.output_label_power ? second : first;
}

const Psu& weaker_of_pair(const Psu& first, const Psu& second) {
    return label_if_delivering(first) > label_if_delivering(second) ? second : first;
}

const Psu& weakest_of_four(const Psu* bays) {
    const Psu& odd = weaker_of_pair(bays[0], bays[2]);
    const Psu& even = weaker_of_pair(bays[1], bays[3]);
    return odd.output_label_power > even.output_label_power ? even : odd;
}

Psu weakest_of_many(const Psus& psus) {
    Psu weakest{};
    weakest.output_label_power = db::kNoPower;
    for (int index = 0; index < psus.psu_count; ++index) {
        const Psu& psu = psus.psu[index];
        if (usable(psu) && psu.output_label_power < weakest.output_label_power) weakest = psu;
    }
    return weakest;
}

}  // namespace

extern "C" uint32_t pwrmgt_get_smallest_psuInfo(pwrmgt_psu_property_t* out) {
    Psus psus{};
    if (const uint32_t failed = pwrmgt_get_psus_property(&psus); failed != 0) return failed;
    Psu unwanted;
    Psu& weakest = out != nullptr ? *out : unwanted;
    switch (psus.psu_count) {
        case 2:
            weakest = weakest_of_two(psus.psu[0], psus.psu[1]);
            break;
        case 4:
            weakest = weakest_of_four(psus.psu);
            break;
        case 8:
        case 12:
            weakest = weakest_of_many(psus);
            break;
        default:
            break;
    }
    return code(db::Status::ok);
}
