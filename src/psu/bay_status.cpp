// SPDX-License-Identifier: Apache-2.0
// Status codes of the supplies per layout: which of them deliver, and in which group.
#include <array>

#include "psu/bays.h"

using namespace pwrmgt::psu;

namespace {

constexpr int32_t kCannotTell = -1;
constexpr int32_t kNoneUsable = 15;

// Configuration codes with a rule of their own.
constexpr uint32_t kOrvaneConfig = 3;
constexpr uint32_t kEightConfig = 8;
constexpr uint32_t kGoxConfig = 12;

// By the number of good supplies.
constexpr std::array<int32_t, 3> kTwoBays{kNoneUsable, 0, 1};
constexpr std::array<int32_t, 5> kFourBays{kNoneUsable, 2, 3, 5, 6};
constexpr int32_t kOneInEachGroup = 4;

int32_t status_of_two(const Psus& psus) {
    return kTwoBays[count_usable(psus, 1, 2)];
}

int32_t status_of_four(const Psus& psus) {
    const bool first = usable(psus.psu[0]);
    const bool third = usable(psus.psu[2]);
    const uint32_t good = count_usable(psus, 1, 4);
    const bool one_in_odd_group = first != third;
    return good == 2 && one_in_odd_group ? kOneInEachGroup : kFourBays[good];
}

}  // namespace

extern "C" int32_t pwrmgt_gox_check_psu_feed_count() {
    const std::optional<Psus> psus = read_bays();
    if (!psus || psus->psu_count != 12) return kCannotTell;
    const uint32_t a = count_usable(*psus, 1, 6);
    const uint32_t b = count_usable(*psus, 7, 12);
    // Kept: 7 also when only one feed has more than one supply, and when none has any.
    // [GoxIsEightOnlyWithMoreThanOneOnBothFeeds]
    return a > 1 && b > 1 ? 8 : 7;
}

extern "C" int32_t pwrmgt_orvane_check_psu_feed_count() {
    const std::optional<Psus> psus = read_bays();
    if (!psus || psus->psu_count != 3) return kCannotTell;
    return count_usable(*psus, 1, 3) > 0 ? 9 : kNoneUsable;
}

extern "C" int32_t pwrmgt_check_eight_psu_feed_count() {
    const std::optional<Psus> psus = read_bays();
    if (!psus || psus->psu_count != 8) return kCannotTell;
    return count_usable(*psus, 1, 8) > 4 ? 1 : 0;
}

extern "C" int32_t pwrmgt_check_psuStatus() {
    switch (pwrmgt_get_psu_config_info()) {
        case kGoxConfig:
            return pwrmgt_gox_check_psu_feed_count();
        case kOrvaneConfig:
            return pwrmgt_orvane_check_psu_feed_count();
        case kEightConfig:
            return pwrmgt_check_eight_psu_feed_count();
        default:
            break;
    }
    const std::optional<Psus> psus = read_bays();
    if (!psus) return kCannotTell;
    if (psus->psu_count == 2) return status_of_two(*psus);
    if (psus->psu_count == 4) return status_of_four(*psus);
    return kCannotTell;
}

extern "C" int32_t pwrmgt_check_psuStatus_for_N_1() {
    const std::optional<Psus> psus = read_bays();
    if (!psus || psus->psu_count < 12) return kCannotTell;
    const uint32_t good = count_usable(*psus, 1, 12);
    const bool all_present_are_good = psus->present_count == good;
    if (good == 4) return all_present_are_good ? 7 : kNoneUsable;
    if (good < 1 || good > 4) return kNoneUsable;
    return static_cast<int32_t>(all_present_are_good ? good + 3 : good);
}
