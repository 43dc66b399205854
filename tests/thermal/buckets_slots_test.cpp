// SPDX-License-Identifier: Apache-2.0
// The calls of a walk, and the slot of a sample that a bucket goes to.
#include "thermal_test.h"

using namespace pwrmgt::test;

class BucketsSlots : public BucketTest {
protected:
    // The slots that hold something, of 20 in their order: processors, memory, inlet, exhaust.
    std::vector<size_t> filled(size_t index) const {
        const pwrmgt_therm_sample_t& sample = samples[index];
        std::vector<size_t> slots;
        const auto* const first = sample.cpu;
        for (size_t slot = 0; slot < 20; ++slot) {
            pwrmgt_therm_triple_t triple;
            std::memcpy(&triple, reinterpret_cast<const char*>(first) + slot * sizeof triple,
                        sizeof triple);
            if (fields(triple) != kNothing) slots.push_back(slot);
        }
        return slots;
    }
};

TEST_F(BucketsSlots, WalkMakesTheseCallsAndNoOthers) {
    walk({{600, 1, 1, 20}, {660, 1, 1, 21}});

    EXPECT_EQ(platform().calls,
              (Calls{"byte /dc/tavn/dm/planar/dimm_per_socket", "step", "int 0", "short_int 1",
                     "short_int 2", "short_int 3", "step", "int 0", "short_int 1", "short_int 2",
                     "short_int 3", "step", "free_result"}));
}

TEST_F(BucketsSlots, WalkEndsWithAnyStepButNine) {
    for (const int code : {-1, 0, 1, 3, 8, 10, 11}) {
        samples = grid_of(4, 0xFF);
        samples[0].tm = 600;
        const OpenResult result(Rows{{{600, 1, 1, 20}}, code, {}});

        traced([&] { return thermal_get_samples(result, 60, 1, &count, samples.data()); });

        EXPECT_EQ(platform().count("step"), 2U) << code;
        EXPECT_EQ(inlet(0), (Row{1, 600, 20, 20, 20})) << code;
        EXPECT_EQ(count, 4U) << code;
    }
}

TEST_F(BucketsSlots, EverySensorHasItsOwnSlot) {
    platform().set_property(kModulesPerSocket, 16);
    // clang-format off
    const std::vector<std::pair<Row, size_t>> sensors{
        {{2, 1}, 0}, {{2, 2}, 1}, {{2, 8}, 7},
        {{3, 1}, 8}, {{3, 16}, 8}, {{3, 17}, 9}, {{3, 112}, 14}, {{3, 113}, 15}, {{3, 128}, 15},
        {{1, 1}, 16}, {{1, 2}, 17}, {{4, 1}, 18}, {{4, 2}, 19},
    };
    // clang-format on
    for (const auto& [sensor, slot] : sensors) {
        samples = grid_of(4, 0xFF);
        samples[0].tm = 600;

        walk({{600, sensor[0], sensor[1], 20}});

        EXPECT_EQ(filled(0), std::vector<size_t>{slot}) << sensor[0] << " " << sensor[1];
    }
}

TEST_F(BucketsSlots, SensorOutsideTheArraysIsSkipped) {
    platform().set_property(kModulesPerSocket, 16);
    const std::vector<Row> outside{{0, 1},   {5, 1},     {-1, 1},     {258, 1}, {1, 0},
                                   {1, 3},   {1, -1},    {1, -32768}, {2, 0},   {2, 9},
                                   {2, -1},  {2, 32767}, {3, 0},      {3, 129}, {3, -1},
                                   {3, -17}, {4, 0},     {4, 3},      {4, -2}};
    for (const Row& sensor : outside) {
        samples = grid_of(4, 0xFF);
        samples[0].tm = 600;

        walk({{700, sensor[0], sensor[1], 20}});

        EXPECT_THAT(filled(0), testing::IsEmpty()) << sensor[0] << " " << sensor[1];
        EXPECT_TRUE(all_bytes(samples[1], 0xFF)) << sensor[0] << " " << sensor[1];
        EXPECT_EQ(count, 4U);
    }
}

TEST_F(BucketsSlots, SkippedRowNeitherJoinsNorClosesABucket) {
    walk({{590, 1, 1, 10}, {600, 1, 3, 90}, {700, 9, 1, 90}, {600, 1, 1, 20}});

    EXPECT_EQ(inlet(0), (Row{1, 600, 20, 15, 10}));
    EXPECT_TRUE(all_bytes(samples[1], 0xFF));
}

TEST_F(BucketsSlots, BucketGoesToTheSlotOfItsLastRow) {
    walk({{580, 1, 1, 10}, {590, 2, 8, 40}, {600, 4, 2, 40}});

    EXPECT_EQ(filled(0), std::vector<size_t>{19});
    EXPECT_EQ(fields(samples[0].exhaust[1]), (Row{40, 30, 10}));
}

TEST_F(BucketsSlots, BucketClosedByALaterRowGoesToItsOwnLastRow) {
    walk({{580, 1, 2, 10}, {590, 1, 1, 20}, {660, 2, 1, 50}});

    EXPECT_EQ(filled(0), std::vector<size_t>{16});
    EXPECT_EQ(fields(samples[0].ambient[0]), (Row{20, 15, 10}));
    EXPECT_EQ(filled(1), std::vector<size_t>{0});
}

TEST_F(BucketsSlots, BucketOpenAtTheEndGoesToItsLastRow) {
    walk({{580, 3, 1, 10}, {590, 1, 2, 20}});

    EXPECT_EQ(filled(0), std::vector<size_t>{17});
}

TEST_F(BucketsSlots, TypeAskedForDecidesNothing) {
    for (const int32_t type : {0, 1, 2, 99, -1}) {
        samples = grid_of(4, 0xFF);
        samples[0].tm = 600;
        const OpenResult result({{600, 2, 3, 55}});

        EXPECT_EQ(
            traced([&] { return thermal_get_samples(result, 60, type, &count, samples.data()); }),
            1U);

        EXPECT_EQ(fields(samples[0].cpu[2]), (Row{55, 55, 55})) << type;
    }
}

TEST_F(BucketsSlots, ModulesOfASocketFoldIntoOneBucket) {
    platform().set_property(kModulesPerSocket, 2);

    walk({{600, 3, 3, 40}, {640, 3, 3, 30}, {650, 3, 4, 50}, {660, 3, 4, 40}});

    EXPECT_EQ(fields(samples[0].memory[1]), (Row{40, 40, 40}));
    EXPECT_EQ(fields(samples[1].memory[1]), (Row{50, 40, 30}));
    EXPECT_EQ(filled(1), std::vector<size_t>{9});
}

// Each column read fails in turn: its field reads as 0, and a row without type or instance has no
// slot.
TEST_F(BucketsSlots, UnreadableColumnReadsAsZero) {
    const std::vector<Row> held{
        {1, 600, 20, 20, 20}, {1, 600, -1, -1, -1}, {1, 600, -1, -1, -1}, {1, 600, 0, 0, 0}};
    for (size_t column = 0; column < 4; ++column) {
        platform().reset();
        samples = grid_of(4, 0xFF);
        samples[0].tm = 600;
        platform().fail(Operation::column, 1, column + 1);

        EXPECT_EQ(walk({{600, 1, 1, 20}}), 1U);

        EXPECT_EQ(inlet(0), held[column]) << column;
    }
}
