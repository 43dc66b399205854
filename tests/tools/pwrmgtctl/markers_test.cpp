// SPDX-License-Identifier: Apache-2.0
// No-reading values of the tables and of the firmware never reach a document, and never enter a
// mean, whatever is missing where. Readings are drawn from narrow ranges far from the markers:
// what lies outside its range was never read.
#include <algorithm>
#include <random>
#include <regex>
#include <sstream>

#include "machine.h"
#include "vekdb_client.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

// Watts, percent and degrees that are stored; their means lie within.
constexpr uint16_t kLowW = 200;
constexpr uint16_t kHighW = 249;
constexpr uint8_t kLowPct = 40;
constexpr uint8_t kHighPct = 60;
constexpr int16_t kLowC = 20;
constexpr int16_t kHighC = 29;

class Markers : public MachineTest, public ::testing::WithParamInterface<unsigned> {
protected:
    bool chance(unsigned of) { return random_() % of == 0; }
    unsigned within(unsigned low, unsigned high) {
        return low + static_cast<unsigned>(random_() % (high - low + 1));
    }

    uint16_t power() {
        return chance(3) ? uint16_t{PWRMGT_NO_POWER} : static_cast<uint16_t>(within(kLowW, kHighW));
    }
    uint8_t percentage() {
        return chance(3) ? uint8_t{PWRMGT_NO_PERCENT}
                         : static_cast<uint8_t>(within(kLowPct, kHighPct));
    }
    int16_t degrees() { return static_cast<int16_t>(within(kLowC, kHighC)); }
    uint8_t supply_byte(uint8_t value) { return chance(3) ? uint8_t{PWRMGT_PSU_UNKNOWN} : value; }
    std::string firmware_power() {
        return chance(3) ? "none" : std::to_string(within(kLowW, kHighW));
    }

    pwrmgt_hist_pwr_sample_t powers() {
        return {0, 0, power(), power(), power(), power(), power(), power()};
    }

    // Every field of a slot is missing or there on its own, however odd the combination.
    pwrmgt_hist_sample_t any_slot() {
        pwrmgt_hist_sample_t sample{};
        sample.system = powers();
        sample.cpu = powers();
        sample.memory = powers();
        for (pwrmgt_hist_psu_sample_t& psu : sample.psu) {
            psu = {0, 0, power(), power()};
        }
        sample.perf = {
            0,           0, percentage(), percentage(), percentage(), percentage(), percentage(),
            percentage()};
        return sample;
    }

    // A fifth of the slots has no row, a fifth is empty, the rest is as it comes.
    void fill_histories() {
        for (uint32_t back = 0; back < 150; ++back) {
            if (chance(5)) continue;
            store_slot(back, chance(4) ? empty_slot() : any_slot());
            pwrmgt_hist_extra_sample_t extra{};
            for (pwrmgt_hist_psu_sample_t& psu : extra.psu) {
                psu = {0, 0, power(), power()};
            }
            store_extra_slot(back, extra);
            if (back < 20) store_cpu_row(back, {power(), power(), power(), power()});
            if (chance(2)) store_temperature(1, 1, degrees(), kNewestSlot - 30 * back);
            if (chance(2)) store_temperature(2, 3, degrees(), kNewestSlot - 30 * back);
        }
    }

    void fill_the_rest() {
        store_realtime({0, 0, power(), power(), power(), power(), percentage(), percentage(),
                        percentage(), percentage()},
                       kNow - 7);
        if (chance(2)) store_latest_temperature(1, 1, degrees(), kNow - 4);
        store_policy(0, chance(3) ? 15 : 1);
        for (const char* column : {"CapValue", "CapSoftAc", "CapMinAc", "CapMaxAc", "CapSoftDc",
                                   "CapMinDc", "CapMaxDc"}) {
            change_policy({{column, power()}});
        }
        if (chance(3)) change_policy({{"RedunMode", static_cast<uint16_t>(chance(2) ? 15 : 255)}});
        if (chance(3)) change_policy({{"MaximStatus", uint16_t{255}}});
        std::vector<pwrmgt_psu_property_t> bays;
        for (uint8_t bay = 1; bay <= 4; ++bay) {
            bays.push_back({supply_byte(bay), supply_byte(1), supply_byte(0), supply_byte(0),
                            supply_byte(1), power(), power()});
        }
        store_bays(bays);
        firmware({"gpus", "2", "--draw", firmware_power()});
        firmware({"slots", firmware_power(), firmware_power(), firmware_power()});
        firmware({"processors", "3", "--caps", firmware_power(), firmware_power()});
    }

    void fill() {
        ToolTest::SetUp();  // empty tables again
        fill_histories();
        fill_the_rest();
    }

    std::mt19937 random_{GetParam()};
};

void expect_within(const std::string& what, double value, double low, double high) {
    EXPECT_GE(value, low) << what;
    EXPECT_LE(value, high) << what;
}

// Every number below the keys of readings.
void expect_readings(const std::string& command, const json& node, const std::string& key) {
    if (node.is_structured()) {
        for (const auto& [name, child] : node.items()) {
            expect_readings(command, child, node.is_object() ? name : key);
        }
        return;
    }
    if (!node.is_number()) return;
    const std::string what = command + ' ' + key + ' ' + node.dump();
    if (key.ends_with("_w")) expect_within(what, node.get<double>(), kLowW, kHighW);
    if (key.ends_with("_pct")) expect_within(what, node.get<double>(), kLowPct, kHighPct);
    if (key.ends_with("_c")) expect_within(what, node.get<double>(), kLowC, kHighC);
    if (key.ends_with("mode") || key.ends_with("_status") || key == "voltage_class") {
        EXPECT_NE(node.get<int>(), 15) << what;
        EXPECT_NE(node.get<int>(), 255) << what;
    }
}

// A text without what may hold any number: times, names of files, how many entries there are.
std::string without_names(const std::string& text) {
    static const std::regex kTime("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}Z");
    static const std::regex kFile("/[^ \n]*");
    static const std::regex kCount("[0-9]+ (rows?|entry|entries)");
    const std::string timeless = std::regex_replace(text, kTime, "");
    return std::regex_replace(std::regex_replace(timeless, kFile, ""), kCount, "");
}

void expect_no_marker(const std::string& command, const std::string& text) {
    static const std::regex kNumber("[0-9]+");
    const std::string searched = without_names(text);
    for (std::sregex_iterator number(searched.begin(), searched.end(), kNumber), end; number != end;
         ++number) {
        for (const char* marker : {"65535", "255", "15"}) {
            EXPECT_NE(number->str(), marker) << command << '\n' << text;
        }
    }
}

void expect_cells(const std::string& command, const std::string& csv) {
    std::istringstream lines(csv);
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        line.erase(line.find('\r'));
        std::istringstream cells(line);
        std::string cell;
        for (int at = 0; std::getline(cells, cell, ','); ++at) {
            if (at < 2 || cell.empty()) continue;  // the two times
            expect_within(command + ": " + line, std::stod(cell), kLowC, kHighW);
            EXPECT_NE(cell, "255") << command;
        }
    }
}

// Not commands whose numbers are made of readings (available power, widened limits), or come from
// the trace or the command line: their markers are looked for, their ranges are not known.
bool shows_what_was_stored(const std::string& name) {
    static const std::vector<std::string> kOthers{"power-realtime-live",
                                                  "power-available",
                                                  "capping-set",
                                                  "capping-ranges",
                                                  "gpu-set",
                                                  "policy-get-widened",
                                                  "policy-get-live",
                                                  "settings-set",
                                                  "settings-get",
                                                  "psu-voltage",
                                                  "meter-read",
                                                  "store-read",
                                                  "check",
                                                  "psu-summary",
                                                  "settings-get-one"};
    return std::find(kOthers.begin(), kOthers.end(), name) == kOthers.end();
}

TEST_P(Markers, NeverReachADocumentOrAMean) {
    fill();

    for (const Command& command : every_command()) {
        if (command.name == "meter-read" || command.name == "store-read") continue;
        const std::string text = run(command, {}).out;
        const std::string document = run(command, {"--json"}).out;

        expect_no_marker(command.name, text);
        if (document.empty()) continue;
        if (shows_what_was_stored(command.name)) {
            expect_readings(command.name, parsed(document), "");
        }
        if (command.csv) expect_cells(command.name, run(command, {"--csv"}).out);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Markers, ::testing::Range(1U, 9U));

}  // namespace
}  // namespace pwrmgt::tooltest
