// SPDX-License-Identifier: Apache-2.0
// The fixture of the supply tests: a process that has read nothing yet, and rows of supplies.
#pragma once

#include <cstdint>
#include <vector>

#include "builders.h"
#include "platform_test.h"

namespace pwrmgt::test {

// Columns of a supply row, in the table's order.
enum Cell : size_t { kId, kPresent, kAcLost, kFault, kVoltage, kInputLabel, kOutputLabel };

inline Row good_supply(int64_t bay, int64_t label_w = 1800) {
    return {bay, 1, 0, 0, 0, 2000, label_w};
}

// A good supply but for one cell.
inline Row supply_with(int64_t bay, Cell cell, int64_t value) {
    Row row = good_supply(bay);
    row[cell] = value;
    return row;
}

inline Row empty_bay() {
    return {15, 15, 15, 15, 15, 65535, 65535};
}

// `rows` bays, those good whose bit is set (bit 0 is bay 1); the others are present but faulted.
inline std::vector<Row> bays_of_pattern(size_t rows, uint32_t good, int64_t label_w = 1800) {
    std::vector<Row> bays;
    for (size_t index = 0; index < rows; ++index) {
        bays.push_back(good_supply(static_cast<int64_t>(index) + 1, label_w));
        if ((good >> index & 1) == 0) bays.back()[kFault] = 1;
    }
    return bays;
}

// The policy row, all fifteen columns; `CapMaxDc` is 306.
inline Row policy_with(int64_t is_blade, int64_t redun_mode) {
    return {is_blade, redun_mode, 9, 1, 2, 300, 301, 302, 303, 304, 305, 306, 901, 902, 903};
}

// What every select of the two tables answers.
inline void script_policy(const Row& row) {
    platform().answer_table("PowerPolicy", {row});
}
inline void script_supplies(const std::vector<Row>& rows) {
    platform().answer_table("PsuPropertyMem", rows);
}

// The calls of one read of the policy row.
inline Calls policy_read() {
    return chain(
        {{"open localhost root '' vek_pwr_db 0",
          "query PowerPolicy [IsBlade,RedunMode,MaximStatus,CapEnable,CapMode,CapValue,CapSoftAc,"
          "CapMinAc,CapMaxAc,CapSoftDc,CapMinDc,CapMaxDc,UnstressAdapterPwr,UnstressFanPwr,"
          "UnstressHddPwr] where null order null",
          "row_count", "step"},
         policy_cells(14),
         {"free_result", "close"}});
}

// What each failing call of such a read ends in: open, select, row count, step, fifteen columns.
inline Outcomes policy_outcomes() {
    return in_turn({{{2}, {3}, {8, 8, 8, 0}}, each_of(16, 0)});
}

// The same for a caller that ends in `unusable` without a policy.
inline Outcomes policy_outcomes(uint32_t unusable) {
    return in_turn({each_of(2, unusable), {{unusable, unusable, unusable, 0}}, each_of(16, 0)});
}

// Power in a mode with two good supplies: the two types of supply and their factor, the policy row,
// the configuration, twice; the supplies, of which there have to be two, and the weakest of them,
// which needs one row.
inline Outcomes power_outcomes() {
    return in_turn({each_of(2, 0),
                    policy_outcomes(),
                    each_of(2, 0),  // the mode
                    policy_outcomes(17),
                    each_of(3, 17),
                    each_of(16, 0),  // supplies
                    policy_outcomes(17),
                    each_of(3, 17),
                    {{0, 0, 17, 0}},
                    each_of(15, 0)});
}

// The calls of one read of the supply table, gate and policy included.
inline Calls supplies_read(size_t rows) {
    Calls calls{"quoril"};
    const auto then = [&calls](const Calls& more) {
        calls.insert(calls.end(), more.begin(), more.end());
    };
    then(policy_read());
    then({"open localhost root '' vek_pwr_db 0",
          "query PsuPropertyMem [PsuId,Present,InputAcLost,PsuFault,InputVoltage,InputLablePower,"
          "OutputLablePower] where null order null",
          "row_count"});
    for (size_t row = 0; row < rows; ++row) {
        then({"step", "uchar 0", "uchar 1", "uchar 2", "uchar 3", "uchar 4", "short_uint 5",
              "short_uint 6"});
    }
    then({"free_result", "close"});
    return calls;
}

// Caches as in a process that has read nothing, but for the gate's flag.
inline void fresh_process() {
    g_psu_installed = 15;
    g_psu_config_info = 255;
    g_power_policy_flag = 0;
}

inline constexpr const char* kTypeKey = "/ac/tavn/power/psu_installed";
inline constexpr const char* kConfigKey = "/ac/tavn/power/psu_config_info";
inline constexpr const char* kOversubscriptionKey = "/dc/tavn/power/oversubscription_support";
inline constexpr const char* kAllowedModesKey = "/dc/tavn/dm/planar/0/psu/config_type";

class PsuTest : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        fresh_process();
        script_policy(policy_with(0, 1));
    }
    void TearDown() override {
        PlatformTest::TearDown();
        fresh_process();
    }
};

}  // namespace pwrmgt::test
