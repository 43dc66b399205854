// SPDX-License-Identifier: Apache-2.0
// How much power the supplies can deliver in a redundancy mode, and what redundancy that leaves.
#include "db/status.h"
#include "psu/bays.h"
#include "psu/power_tables.h"
#include "vekdb_prop.h"

using namespace pwrmgt;
using namespace pwrmgt::psu;

namespace {

constexpr float kOversubscription = 1.2F;
constexpr uint32_t kReserveMode = 4;
constexpr const char* kOversubscriptionKey = "/dc/tavn/power/oversubscription_support";

enum class SupplyType { crps, other };

// The property is asked only when no CRPS supply is installed.
float oversubscription_factor(SupplyType type) {
    if (type == SupplyType::crps) return 1.0F;
    return pwrmgt_get_oversubscription_prop() == 0 ? 1.0F : kOversubscription;
}

Grant grant_in_mode(uint32_t mode, SupplyType type, int32_t status) {
    switch (mode) {
        case 0:
            return grant_of(kMode0, status);
        case 1:
            return grant_of(type == SupplyType::crps ? kMode1Crps : kMode1, status);
        case 2:
            return grant_of(kMode2, status);
        default:
            return grant_of(kReserveOne, status);
    }
}

uint32_t granted_w(const Grant& grant, uint32_t unit_w, float factor) {
    if (grant.factor == Factor::unknown) return db::kNoPower;
    const uint32_t watts = grant.units * unit_w;
    return grant.factor == Factor::oversubscribed ? oversubscribe(factor, watts) : watts;
}

template <class T>
void hand_out(T* out, T value) {
    if (out != nullptr) *out = value;
}

struct Question {
    uint32_t mode;
    SupplyType type;
    float factor;
};

db::Status power_of_layout(const Question& asked, uint32_t* power, uint8_t* state) {
    const auto mode = static_cast<int32_t>(asked.mode);
    int32_t status = 0;
    switch (pwrmgt_get_psu_config_info()) {
        case 8:
            status = pwrmgt_8_psu_2_domain_power_info(mode, power, state, asked.factor);
            return status < 0 ? db::Status::supplies_unusable : db::Status::ok;
        case 12:
            status = pwrmgt_12_psu_2_domain_power_info(mode, power, state, asked.factor);
            return status < 0 ? db::Status::supplies_unusable : db::Status::ok;
        default:
            break;
    }
    status =
        asked.mode == kReserveMode ? pwrmgt_check_psuStatus_for_N_1() : pwrmgt_check_psuStatus();
    if (status < 0) return db::Status::supplies_unusable;
    const std::optional<uint32_t> unit_w = weakest_label_w();
    if (!unit_w) return db::Status::supplies_unusable;

    const Grant grant = grant_in_mode(asked.mode, asked.type, status);
    hand_out(power, granted_w(grant, *unit_w, asked.factor));
    hand_out(state, grant.state);
    return db::Status::ok;
}

}  // namespace

extern "C" uint32_t pwrmgt_get_oversubscription_prop() {
    uint8_t supported = 1;
    return propdb_get_byte(kOversubscriptionKey, &supported) == 0 ? supported : 1;
}

extern "C" uint32_t pwrmgt_get_powerInfo_perRedunMode(uint32_t mode, uint32_t* max_dc,
                                                      uint32_t* power, uint8_t* state) {
    const auto type = pwrmgt_psu_crps_installed() != 0 ? SupplyType::crps : SupplyType::other;
    const Question asked{mode, type, oversubscription_factor(type)};
    if (max_dc == nullptr && power == nullptr && state == nullptr) {
        return code(db::Status::null_argument);
    }
    // Kept: the row is read before the gate is asked. [PolicyRowIsReadBeforeTheGate]
    pwrmgt_power_policy_t policy{};
    if (const uint32_t failed = pwrmgt_get_pwrpolicy_tbl(&policy); failed != 0) return failed;
    if (pwrmgt_unsupport_check("") != 0 || policy.is_blade != 0) {
        return code(db::Status::unsupported);
    }
    if (mode > 2 && mode != kReserveMode) return code(db::Status::unsupported);

    // Kept: written before the later failures. [CapMaxDcIsWrittenBeforeLaterFailures]
    hand_out(max_dc, uint32_t{policy.cap_max_dc});
    return code(power_of_layout(asked, power, state));
}
