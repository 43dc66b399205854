// SPDX-License-Identifier: Apache-2.0
// The input-voltage range of one supply.
#include <array>

#include "db/status.h"
#include "psu/bays.h"

using namespace pwrmgt;
using namespace pwrmgt::psu;

namespace {

struct VoltageClass {
    uint8_t input_voltage;
    uint32_t type;
    uint16_t low;
    uint16_t high;
};

constexpr std::array<VoltageClass, 3> kClasses{{
    {0, 0, 200, 240},
    {1, 0, 100, 127},
    {16, 1, 240, 240},
}};
constexpr VoltageClass kUnknownClass{255, 15, 0, 0};

}  // namespace

extern "C" uint32_t pwrmgt_get_psu_voltage_range(int32_t psu_id, uint32_t* type, uint16_t* low,
                                                 uint16_t* high) {
    if (type == nullptr || low == nullptr || high == nullptr) {
        return code(db::Status::null_argument);
    }
    Psus psus{};
    if (const uint32_t failed = pwrmgt_get_psus_property(&psus); failed != 0) return failed;
    if (psu_id < 1 || psu_id > psus.psu_count || psu_id > PWRMGT_MAX_PSU) {
        return code(db::Status::bay_out_of_range);
    }
    const Psu& psu = psus.psu[psu_id - 1];
    if (psu.psu_id == db::kUnknownByte || psu.present == 0) return code(db::Status::bay_empty);

    VoltageClass found = kUnknownClass;
    for (const VoltageClass& known : kClasses) {
        if (known.input_voltage == psu.input_voltage) found = known;
    }
    *type = found.type;
    *low = found.low;
    *high = found.high;
    const bool known = found.type != kUnknownClass.type;
    return code(known ? db::Status::ok : db::Status::unknown_voltage);
}
