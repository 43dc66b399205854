// SPDX-License-Identifier: Apache-2.0
// No-reading values of the tables never reach a document, whatever is missing where.
#include <random>

#include "tool.h"

namespace pwrmgt::tooltest {
namespace {

class Markers : public ToolTest, public ::testing::WithParamInterface<unsigned> {
protected:
    bool chance(unsigned of) { return random_() % of == 0; }

    uint16_t power() {
        return chance(3) ? uint16_t{PWRMGT_NO_POWER} : static_cast<uint16_t>(200 + random_() % 50);
    }
    uint8_t percentage() {
        return chance(3) ? uint8_t{PWRMGT_NO_PERCENT} : static_cast<uint8_t>(random_() % 101);
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

    // Slots of six hours; a fifth has no row, a fifth is empty, the rest is as it comes.
    void fill() {
        store_slot(0, slot_of(220));
        for (uint32_t back = 1; back < 400; ++back) {
            if (chance(5)) continue;
            store_slot(back, chance(4) ? empty_slot() : any_slot());
        }
    }

    std::mt19937 random_{GetParam()};
};

// Every number in a JSON document below the keys of values.
void expect_true_readings(const nlohmann::json& node, const std::string& key) {
    if (node.is_structured()) {
        for (const auto& [name, child] : node.items()) {
            expect_true_readings(child, node.is_object() ? name : key);
        }
        return;
    }
    if (!node.is_number()) return;
    if (key.ends_with("_w")) {
        EXPECT_GE(node.get<uint32_t>(), 35U) << key;
        EXPECT_LE(node.get<uint32_t>(), 400U) << key;
    }
    if (key.ends_with("_pct")) {
        EXPECT_LE(node.get<uint32_t>(), 100U) << key;
    }
}

TEST_P(Markers, NeverAppearInHistoriesWithRandomGaps) {
    fill();
    const std::vector<std::vector<std::string>> commands{{"power", "history"},
                                                         {"power", "history", "--domain", "cpu"},
                                                         {"power", "history", "--domain", "memory"},
                                                         {"psu", "history", "3"},
                                                         {"performance", "history"}};

    for (std::vector<std::string> command : commands) {
        for (const char* period : {"1h", "6h"}) {
            std::vector<std::string> with_period = command;
            with_period.insert(with_period.end(), {"--period", period});
            const Finished text = tool(with_period);
            with_period.emplace_back("--json");
            const nlohmann::json document = json_of(with_period);

            EXPECT_EQ(text.exit, 0);
            EXPECT_EQ(text.out.find("65535"), std::string::npos) << text.out;
            if (command[1] == "performance") {  // 255 W is a reading
                EXPECT_EQ(text.out.find(" 255"), std::string::npos) << text.out;
            }
            expect_true_readings(document["entries"], "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Markers, ::testing::Range(1U, 9U));

}  // namespace
}  // namespace pwrmgt::tooltest
