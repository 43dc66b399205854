// SPDX-License-Identifier: Apache-2.0
#include "machine.h"

#include <filesystem>
#include <fstream>

#include "vekdb_client.h"

namespace pwrmgt::tooltest {
namespace {

constexpr uint8_t kAmbient = 1;
constexpr uint8_t kCpu = 2;
constexpr uint8_t kMemory = 3;
constexpr uint8_t kExhaust = 4;

}  // namespace

const std::vector<Command>& every_command() {
    // clang-format off
    static const std::vector<Command> commands{
        {"power-history", {"power", "history"}, 0, true},
        {"power-history-cpu", {"power", "history", "--domain", "cpu", "--period", "6h", "--entries", "3"}, 0, true},
        {"power-history-window", {"power", "history", "--end", "1699999980", "--minutes", "4", "--samples-per-entry", "2"}, 0, true},
        {"power-summary", {"power", "summary", "--minutes", "5"}},
        {"power-summary-memory", {"power", "summary", "--minutes", "5", "--domain", "memory"}},
        {"power-realtime", {"power", "realtime"}},
        {"power-realtime-live", {"power", "realtime", "--live"}},
        {"power-available", {"power", "available"}},
        {"performance-history", {"performance", "history", "--oldest-first"}, 0, true},
        {"cpu-history", {"cpu", "history"}, 0, true},
        {"cpu-history-one", {"cpu", "history", "2"}, 0, true},
        {"cpu-latest", {"cpu", "latest"}},
        {"psu-list", {"psu", "list"}},
        {"psu-history", {"psu", "history", "2"}, 0, true},
        {"psu-history-extra", {"psu", "history", "7"}, 0, true},
        {"psu-summary", {"psu", "summary", "2", "--minutes", "5"}},
        {"psu-voltage", {"psu", "voltage", "1"}},
        {"thermal-history", {"thermal", "history", "--minutes", "4", "--minutes-per-entry", "2"}, 0, true},
        {"thermal-realtime", {"thermal", "realtime"}},
        {"capping-get", {"capping", "get"}},
        {"capping-set", {"capping", "set", "500", "--audit", "ada"}},
        {"capping-ranges", {"capping", "ranges"}},
        {"gpu-get", {"gpu", "get", "0"}},
        {"gpu-get-byte", {"gpu", "get", "0", "--kind", "32"}},
        {"gpu-set", {"gpu", "set", "1", "230"}},
        {"gpu-realtime", {"gpu", "realtime", "0"}},
        {"redundancy-get", {"redundancy", "get"}},
        {"redundancy-set", {"redundancy", "set", "2"}},
        {"redundancy-auto", {"redundancy", "auto", "2"}},
        {"policy-get", {"policy", "get"}},
        {"policy-get-widened", {"policy", "get", "--widened"}},
        {"policy-get-live", {"policy", "get", "--live"}},
        {"policy-set", {"policy", "set", "--dc-max", "none"}},
        {"settings-get", {"settings", "get"}},
        {"settings-get-one", {"settings", "get", "zero-output"}},
        {"settings-set", {"settings", "set", "unstress-disk", "31"}},
        {"meter-read", {"meter", "read"}},
        {"meter-slots", {"meter", "slots"}},
        {"store-read", {"store", "read", "inventory.txt", "--hex"}},
        {"check", {"check", "--supplies", "2", "--redundancy", "0"}, 1},
    };
    // clang-format on
    return commands;
}

// Three quarters of an hour with a hole and an empty slot; four bays of which one is empty; a
// firmware with caps, GPUs and a file.
void MachineTest::SetUp() {
    FirmwareTest::SetUp();
    properties_ = state_directory() + "/properties.conf";
    std::ofstream(properties_) << "/dc/tavn/dm/planar/0/psu/config_type = 3\n"
                                  "/dc/tavn/dm/planar/0/psu/maxcount = 12\n";
    for (uint32_t back = 0; back < 8; ++back) {
        const auto dc_w = static_cast<uint16_t>(300 - 10 * back);
        if (back != 3) store_slot(back, back == 5 ? empty_slot() : slot_of(dc_w));
        store_cpu_row(back, {static_cast<uint16_t>(60 + back), 58, PWRMGT_NO_POWER});
        pwrmgt_hist_extra_sample_t extra{};
        for (pwrmgt_hist_psu_sample_t& psu : extra.psu) {
            psu = {0, 0, static_cast<uint16_t>(700 - back), static_cast<uint16_t>(650 - back)};
        }
        store_extra_slot(back, extra);
        store_temperature(kAmbient, 1, static_cast<int16_t>(22 + back / 4),
                          kNewestSlot - 30 * back);
        store_temperature(kCpu, 2, 61, kNewestSlot - 30 * back);
    }
    store_temperature(kExhaust, 1, 38, kNewestSlot - 60);
    store_latest_temperature(kAmbient, 1, 23, kNow - 4);
    store_latest_temperature(kCpu, 1, 58, kNow - 4);
    store_latest_temperature(kMemory, 12, -3, kNow - 90);
    store_realtime({0, 0, 350, 300, 100, PWRMGT_NO_POWER, 30, 20, PWRMGT_NO_PERCENT, 5}, kNow - 7);
    store_policy(0, 1);
    change_policy({{"CapMinAc", 200},
                   {"CapMaxAc", 800},
                   {"CapMinDc", 150},
                   {"CapMaxDc", 700},
                   {"UnstressAdapterPwr", 50},
                   {"UnstressHddPwr", 30}});
    store_bays({{1, 1, 0, 0, 0, 800, 750},
                {2, 1, 0, 0, 1, 900, 850},
                {PWRMGT_PSU_UNKNOWN, 15, 15, 15, 15, PWRMGT_NO_POWER, PWRMGT_NO_POWER},
                {4, 1, 1, 0, 15, 800, PWRMGT_NO_POWER}});
    firmware({"gpus", "2", "--draw", "250"});
    firmware({"slots", "25", "0", "none"});
    firmware({"processors", "2", "--caps", "150", "none"});
    put_file("inventory.txt", "system board rev 4\n");
}

void MachineTest::TearDown() {
    std::filesystem::remove(properties_);
    FirmwareTest::TearDown();
}

Finished MachineTest::run(const Command& command, const std::vector<std::string>& more) {
    std::vector<std::string> arguments = command.arguments;
    arguments.insert(arguments.end(), more.begin(), more.end());
    return tool_with({kTrace, "VEKDB_PROPS=" + properties_}, arguments);
}

void MachineTest::store_cpu_row(uint32_t slots_back, const std::vector<uint16_t>& watts) {
    pwrmgt_cpu_pwr_sample_t row{};
    row.id = static_cast<uint16_t>(slots_back);
    row.timestamp = kNewestSlot - slots_back * PWRMGT_SLOT_SECONDS;
    for (size_t at = 0; at < std::size(row.cpu_w); ++at) {
        row.cpu_w[at] = at < watts.size() ? watts[at] : uint16_t{PWRMGT_NO_POWER};
    }
    ASSERT_EQ(pwrmgt_update_cpu_pwr_hist_table(connection(), row), 0U);
}

void MachineTest::store_extra_slot(uint32_t slots_back, const pwrmgt_hist_extra_sample_t& sample) {
    const uint32_t stamp = kNewestSlot - slots_back * PWRMGT_SLOT_SECONDS;
    const auto slot = static_cast<uint16_t>(stamp / PWRMGT_SLOT_SECONDS % PWRMGT_RING_SLOTS);
    ASSERT_EQ(
        pwrmgt_update_hist_extra_table(connection(), slot, static_cast<int32_t>(stamp), sample),
        0U);
}

void MachineTest::store_temperature(uint8_t type, uint8_t instance, int16_t celsius,
                                    uint32_t time_s) {
    const thermal_hist_update_t record{time_s, 1, {{type, instance, celsius}}};
    ASSERT_EQ(thermal_update_thermal_hist_table(connection(), &record), 0U);
}

void MachineTest::store_latest_temperature(uint8_t type, uint8_t instance, int16_t celsius,
                                           uint32_t time_s) {
    const uint32_t row = vek_db_get_content_values();
    vek_db_content_put_uint(row, "Timestamp", time_s);
    vek_db_content_put_uchar(row, "Type", type);
    vek_db_content_put_uchar(row, "InstNum", instance);
    vek_db_content_put_short_uint(row, "Value", static_cast<uint16_t>(celsius));
    ASSERT_EQ(vek_db_insert(connection(), "RealTimeThermalMem", row, 0, 0), 0);
    vek_db_free_content_values(row);
}

void MachineTest::store_bays(const std::vector<pwrmgt_psu_property_t>& bays) {
    ASSERT_EQ(pwrmgt_init_psu_property_table(connection(), static_cast<int32_t>(bays.size())), 0U);
    for (const pwrmgt_psu_property_t& bay : bays) {
        if (bay.psu_id == PWRMGT_PSU_UNKNOWN) continue;
        ASSERT_EQ(pwrmgt_update_psu_property_table(connection(), bay), 0U);
    }
}

}  // namespace pwrmgt::tooltest
