// SPDX-License-Identifier: Apache-2.0
#include "check_rules.h"

#include <gtest/gtest.h>

namespace pwrmgt::pwrmgtctl {
namespace {

using enum PluginState;
using enum SupplyState;

TEST(PluginState, WorstWinsAndAKnownProblemOutranksAnUnknownOne) {
    EXPECT_EQ(worse(ok, unknown), unknown);
    EXPECT_EQ(worse(unknown, warning), warning);
    EXPECT_EQ(worse(warning, critical), critical);
    EXPECT_EQ(worse(critical, unknown), critical);
    EXPECT_EQ(worse(ok, ok), ok);
}

struct SuppliesCase {
    const char* name;
    std::vector<Supply> supplies;
    Value expected;
    PluginState state;
    const char* words;
};

class JudgeSupplies : public ::testing::TestWithParam<SuppliesCase> {};

TEST_P(JudgeSupplies, TellsStateAndReason) {
    const SuppliesCase& asked = GetParam();

    const Finding finding = judge_supplies({asked.supplies, ""}, asked.expected);

    EXPECT_EQ(finding.state, asked.state);
    EXPECT_EQ(finding.words, asked.words);
}

// clang-format off
const SuppliesCase kSupplies[] = {
    {"AsManyAsExpected", {{1, healthy}, {2, healthy}}, 2, ok, "2 of 2 expected supplies healthy"},
    {"MoreThanExpected", {{1, healthy}, {2, healthy}}, 1, ok, "2 of 1 expected supply healthy"},
    {"OneMissing", {{1, healthy}, {2, empty}}, 2, critical, "1 of 2 expected supplies healthy"},
    {"OneWithoutInput", {{1, healthy}, {2, input_lost}}, 2, critical, "supply 2: input lost; 1 of 2 expected supplies healthy"},
    {"OneFaulty", {{3, fault}, {4, healthy}}, 2, critical, "supply 3: fault; 1 of 2 expected supplies healthy"},
    {"OneNotKnown", {{1, healthy}, {2, not_known}}, 2, unknown, "supply 2: not known; 1 of 2 expected supplies healthy"},
    {"TooFewEvenWithTheUnknown", {{1, healthy}, {2, not_known}}, 3, critical, "supply 2: not known; 1 of 3 expected supplies healthy"},
    {"FaultBesideTheExpected", {{1, healthy}, {2, healthy}, {3, fault}}, 2, warning, "supply 3: fault; 2 of 2 expected supplies healthy"},
    {"UnknownBesideTheExpected", {{1, healthy}, {2, not_known}}, 1, ok, "supply 2: not known; 1 of 1 expected supply healthy"},
    {"AllPresentHealthy", {{1, healthy}, {2, empty}}, {}, ok, "1 of 1 present supply healthy"},
    {"OnePresentFaulty", {{1, healthy}, {2, fault}}, {}, critical, "supply 2: fault; 1 of 2 present supplies healthy"},
    {"OnePresentNotKnown", {{1, healthy}, {2, not_known}}, {}, unknown, "supply 2: not known; 1 of 2 present supplies healthy"},
    {"NonePresent", {{1, empty}, {2, empty}}, {}, critical, "0 of 0 present supplies healthy"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Every, JudgeSupplies, ::testing::ValuesIn(kSupplies),
                         [](const auto& chosen) { return chosen.param.name; });

TEST(CheckRules, SuppliesThatCannotBeReadAreUnknown) {
    const Finding finding = judge_supplies({std::nullopt, "the query failed"}, 2);

    EXPECT_EQ(finding.state, unknown);
    EXPECT_EQ(finding.words, "supplies not known: the query failed");
    EXPECT_EQ(finding.performance, "");
}

TEST(CheckRules, HealthySuppliesAreCountedAgainstTheExpectedNumber) {
    EXPECT_EQ(judge_supplies({{{{1, healthy}}}, ""}, 2).performance, "supplies_healthy=1;;2:;0;12");
    EXPECT_EQ(judge_supplies({{{{1, healthy}}}, ""}, {}).performance, "supplies_healthy=1;;;0;12");
}

struct RedundancyCase {
    const char* name;
    uint32_t mode;
    Value level;
    uint32_t expected;
    PluginState state;
    const char* words;
    const char* performance;
};

class JudgeRedundancy : public ::testing::TestWithParam<RedundancyCase> {};

TEST_P(JudgeRedundancy, TellsStateReasonAndThresholds) {
    const RedundancyCase& asked = GetParam();

    const Finding finding =
        judge_redundancy({Redundancy{asked.mode, asked.level}, ""}, asked.expected);

    EXPECT_EQ(finding.state, asked.state);
    EXPECT_EQ(finding.words, asked.words);
    EXPECT_EQ(finding.performance, asked.performance);
}

// clang-format off
const RedundancyCase kRedundancies[] = {
    {"AsExpected", 1, 1, 1, ok, "redundancy level 1 in mode 1", "redundancy=1;;1:;0"},
    {"MoreThanExpected", 1, 2, 1, ok, "redundancy level 2 in mode 1", "redundancy=2;;1:;0"},
    {"Lost", 1, 0, 1, critical, "no redundancy in mode 1, level 1 expected", "redundancy=0;;1:;0"},
    {"Degraded", 1, 1, 2, warning, "redundancy level 1 in mode 1, level 2 expected", "redundancy=1;2:;1:;0"},
    {"LostOfTwo", 4, 0, 2, critical, "no redundancy in mode 4, level 2 expected", "redundancy=0;2:;1:;0"},
    {"NoneExpected", 1, 0, 0, ok, "no redundancy in mode 1", "redundancy=0;;;0"},
    {"ModeThatKeepsNone", 2, 0, 1, ok, "no redundancy in mode 2", "redundancy=0;;;0"},
    {"NotKnown", 1, {}, 1, unknown, "redundancy not known in mode 1", ""},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Every, JudgeRedundancy, ::testing::ValuesIn(kRedundancies),
                         [](const auto& chosen) { return chosen.param.name; });

TEST(CheckRules, RedundancyThatCannotBeReadIsUnknown) {
    const Finding finding = judge_redundancy({std::nullopt, "no policy"}, 1);

    EXPECT_EQ(finding.state, unknown);
    EXPECT_EQ(finding.words, "redundancy not known: no policy");
}

Draw draw_of(Value drawn_w, Value available_w) {
    return {{drawn_w, ""}, {available_w, ""}, false};
}

constexpr DrawLimits kLimits{80, 90};

TEST(CheckRules, DrawAtAThresholdIsStillBelowIt) {
    EXPECT_EQ(judge_draw(draw_of(800, 1000), kLimits).state, ok);
    EXPECT_EQ(judge_draw(draw_of(801, 1000), kLimits).state, warning);
    EXPECT_EQ(judge_draw(draw_of(900, 1000), kLimits).state, warning);
    EXPECT_EQ(judge_draw(draw_of(901, 1000), kLimits).state, critical);
}

TEST(CheckRules, DrawIsToldWithItsShareAndTheThresholdItPassed) {
    const Finding finding = judge_draw(draw_of(850, 1000), kLimits);

    EXPECT_EQ(finding.words, "drawing 850 W of 1000 W available, 85.0 %, above 80 %");
    EXPECT_EQ(finding.performance, "draw=850W;800;900;0;1000 draw_share=85.0%;80;90;0;100");
}

TEST(CheckRules, ThresholdsInWattsKeepTheirHundredths) {
    const Finding finding = judge_draw(draw_of(100, 755), {33, 50});

    EXPECT_EQ(finding.performance, "draw=100W;249.15;377.5;0;755 draw_share=13.2%;33;50;0;100");
}

TEST(CheckRules, LargestPowersDoNotWrap) {
    EXPECT_EQ(judge_draw(draw_of(65534, 4294967295), kLimits).state, ok);
    EXPECT_EQ(judge_draw(draw_of(65534, 1), {80, 1000}).state, critical);
}

TEST(CheckRules, DrawWithoutAReadingIsUnknown) {
    const Finding finding = judge_draw(draw_of({}, 1000), kLimits);

    EXPECT_EQ(finding.state, unknown);
    EXPECT_EQ(finding.words, "draw not known: no reading of the system's DC power");
    EXPECT_EQ(finding.performance, "");
}

TEST(CheckRules, DrawOfAnOldReadingIsUnknown) {
    Draw draw = draw_of(100, 1000);
    draw.stale = true;

    const Finding finding = judge_draw(draw, kLimits);

    EXPECT_EQ(finding.state, unknown);
    EXPECT_EQ(finding.words, "draw not known: the reading is too old to judge");
}

TEST(CheckRules, DrawIsUnknownWhileTheAvailablePowerIs) {
    const Finding no_number = judge_draw(draw_of(100, {}), kLimits);
    const Finding failed = judge_draw({{Value{100}, ""}, {std::nullopt, "why"}, false}, kLimits);

    EXPECT_EQ(no_number.state, unknown);
    EXPECT_EQ(no_number.words, "drawing 100 W, available power not known");
    EXPECT_EQ(failed.state, unknown);
    EXPECT_EQ(failed.words, "drawing 100 W, available power not known: why");
    EXPECT_EQ(failed.performance, "draw=100W;;;0");
}

TEST(CheckRules, ReadingIsFreshUpToItsGreatestAgeEitherWay) {
    EXPECT_EQ(judge_age({60, ""}, 60).state, ok);
    EXPECT_EQ(judge_age({61, ""}, 60).state, critical);
    EXPECT_EQ(judge_age({-60, ""}, 60).state, ok);
    EXPECT_EQ(judge_age({-61, ""}, 60).state, unknown);
}

TEST(CheckRules, AgeIsToldInWordsAndAsANumber) {
    const Finding old = judge_age({61, ""}, 60);
    const Finding ahead = judge_age({-61, ""}, 60);

    EXPECT_EQ(old.words, "reading 61 s old, more than 60 s");
    EXPECT_EQ(old.performance, "age=61s;;60");
    EXPECT_EQ(ahead.words, "reading 61 s in the future, its age cannot be told");
    EXPECT_EQ(ahead.performance, "age=-61s;;60");
}

TEST(CheckRules, LineHasTheWorstReasonFirstAndThePerformanceDataInOrder) {
    const std::string line = plugin_line({{ok, "a", "one", "a=1"},
                                          {unknown, "b", "two", ""},
                                          {critical, "c", "three", "c=3"},
                                          {warning, "d", "four", "d=4"}});

    EXPECT_EQ(line, "POWER CRITICAL - three; four; two; one | a=1 c=3 d=4\n");
}

TEST(CheckRules, LineWithoutPerformanceDataHasNoBar) {
    EXPECT_EQ(plugin_line({{unknown, "a", "a bar | and\na line", ""}}),
              "POWER UNKNOWN - a bar / and a line\n");
}

}  // namespace
}  // namespace pwrmgt::pwrmgtctl
