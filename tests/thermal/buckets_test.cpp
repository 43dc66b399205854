// SPDX-License-Identifier: Apache-2.0
// Which index each reading falls into, and what an index then holds.
#include <array>

#include "thermal_test.h"

using namespace pwrmgt::test;

namespace {

// Readings of the first inlet sensor as {time, value}; what the four indexes then hold as
// {index, time, maximum, average, minimum}.
struct Case {
    const char* name;
    std::vector<Row> readings;
    std::array<Row, 4> held;
};

const Row kFirstEmpty{1, 600, -1, -1, -1};
const Row kUnset{kNoIndex, kNoTime, -1, -1, -1};

// clang-format off
const std::vector<Case> kCases{
    {"no row", {}, {kFirstEmpty, kUnset, kUnset, kUnset}},
    {"a row before its time", {{590, 20}}, {Row{1, 600, 20, 20, 20}, kUnset, kUnset, kUnset}},
    {"a row on its time", {{600, 20}}, {Row{1, 600, 20, 20, 20}, kUnset, kUnset, kUnset}},
    {"a row one second later", {{601, 20}},
     {kFirstEmpty, Row{2, 660, 20, 20, 20}, kUnset, kUnset}},
    {"rows long before the grid", {{1, 7}, {2, 9}},
     {Row{1, 600, 9, 8, 7}, kUnset, kUnset, kUnset}},
    {"a row before the epoch", {{-5, 7}}, {Row{1, 600, 7, 7, 7}, kUnset, kUnset, kUnset}},
    {"a first row on the last time", {{780, 30}},
     {kFirstEmpty, Row{2, 660, -1, -1, -1}, Row{3, 720, -1, -1, -1}, Row{4, 780, 30, 30, 30}}},
    {"a first row within the last index", {{725, 30}},
     {kFirstEmpty, Row{2, 660, -1, -1, -1}, Row{3, 720, -1, -1, -1}, Row{4, 780, 30, 30, 30}}},
    {"a first row past the grid", {{781, 50}},
     {kFirstEmpty, Row{2, 660, -1, -1, -1}, Row{3, 720, -1, -1, -1}, Row{4, 780, -1, -1, -1}}},
    {"a reading in every index", {{600, 1}, {660, 2}, {720, 3}, {780, 4}},
     {Row{1, 600, 1, 1, 1}, Row{2, 660, 2, 2, 2}, Row{3, 720, 3, 3, 3}, Row{4, 780, 4, 4, 4}}},
    {"two readings in each of two", {{570, 10}, {600, 20}, {630, 30}, {660, 50}},
     {Row{1, 600, 20, 15, 10}, Row{2, 660, 50, 40, 30}, kUnset, kUnset}},
    {"several empty indexes between", {{600, 10}, {775, 20}},
     {Row{1, 600, 10, 10, 10}, Row{2, 660, -1, -1, -1}, Row{3, 720, -1, -1, -1},
      Row{4, 780, 20, 20, 20}}},
    {"the last bucket open", {{600, 10}, {630, 20}, {650, 40}},
     {Row{1, 600, 10, 10, 10}, Row{2, 660, 40, 30, 20}, kUnset, kUnset}},
    {"two rows with the closing time", {{600, 10}, {600, 30}},
     {Row{1, 600, 10, 10, 10}, Row{2, 660, 30, 30, 30}, kUnset, kUnset}},
    {"three rows with the closing time of an open bucket", {{590, 4}, {600, 10}, {600, 30}, {600, 50}},
     {Row{1, 600, 10, 7, 4}, Row{2, 660, 50, 40, 30}, kUnset, kUnset}},
    {"an open bucket, then the next index", {{590, 10}, {630, 20}},
     {Row{1, 600, 10, 10, 10}, Row{2, 660, 20, 20, 20}, kUnset, kUnset}},
    {"an open bucket, then the next time", {{590, 10}, {660, 20}},
     {Row{1, 600, 10, 10, 10}, Row{2, 660, 20, 20, 20}, kUnset, kUnset}},
    {"an open bucket, then an empty index", {{590, 10}, {661, 20}},
     {Row{1, 600, 10, 10, 10}, Row{2, 660, -1, -1, -1}, Row{3, 720, 20, 20, 20}, kUnset}},
    {"an open last bucket, then a row past the grid", {{775, 5}, {900, 6}},
     {kFirstEmpty, Row{2, 660, -1, -1, -1}, Row{3, 720, -1, -1, -1}, Row{4, 780, 5, 5, 5}}},
    {"temperatures below zero", {{580, -5}, {590, -20}, {600, -6}},
     {Row{1, 600, -5, -10, -20}, kUnset, kUnset, kUnset}},
    {"an average cut toward zero", {{590, -3}, {600, 2}},
     {Row{1, 600, 2, 0, -3}, kUnset, kUnset, kUnset}},
    {"a reading of -1", {{600, -1}}, {kFirstEmpty, kUnset, kUnset, kUnset}},
    {"the widest readings", {{590, -32768}, {600, 32767}},
     {Row{1, 600, 32767, 0, -32768}, kUnset, kUnset, kUnset}},
    {"the greatest sum that holds", {{590, 16383}, {600, 16384}},
     {Row{1, 600, 16384, 16383, 16383}, kUnset, kUnset, kUnset}},
    {"a sum one above that", {{590, 16384}, {600, 16384}},
     {Row{1, 600, 16384, -16384, 16384}, kUnset, kUnset, kUnset}},
    {"an order that falls", {{580, 30}, {590, 20}, {600, 10}},
     {Row{1, 600, 30, 20, 10}, kUnset, kUnset, kUnset}},
};
// clang-format on

std::vector<Row> rows_of(const std::vector<Row>& readings) {
    std::vector<Row> rows;
    for (const Row& reading : readings)
        rows.push_back({reading[0], 1, 1, reading[1]});
    return rows;
}

}  // namespace

class Buckets : public BucketTest {};

TEST_F(Buckets, EachReadingFallsIntoTheIndexOfItsTime) {
    for (const Case& one : kCases) {
        platform().reset();
        samples = grid_of(4, 0xFF);
        samples[0].tm = 600;
        count = 4;

        EXPECT_EQ(walk(rows_of(one.readings)), 1U) << one.name;

        EXPECT_EQ(count, 4U) << one.name;
        for (size_t at = 0; at < 4; ++at) {
            EXPECT_EQ(inlet(at), one.held[at]) << one.name << ", index " << at;
        }
    }
}

TEST_F(Buckets, SumWrapsIn16Bits) {
    walk({{580, 1, 1, 20000},
          {600, 1, 1, 20000},
          {620, 1, 1, -20000},
          {660, 1, 1, -20000},
          {661, 1, 1, 20000},
          {662, 1, 1, 20000},
          {663, 1, 1, 20000},
          {720, 1, 1, 20000}});

    EXPECT_EQ(inlet(0), (Row{1, 600, 20000, -12768, 20000}));
    EXPECT_EQ(inlet(1), (Row{2, 660, -20000, 12768, -20000}));
    EXPECT_EQ(inlet(2), (Row{3, 720, 20000, 3616, 20000}));
}

TEST_F(Buckets, NumberOfReadingsIsDividedBySignedIn16Bits) {
    platform().quiet = true;
    std::vector<Row> rows(32768, {590, 1, 1, 0});
    rows[0][3] = -32768;

    walk(rows);

    EXPECT_EQ(inlet(0), (Row{1, 600, 0, 1, -32768}));
}

TEST_F(Buckets, ReadingsThatCountAsMinusOneTurnTheSumAround) {
    platform().quiet = true;
    std::vector<Row> rows(65535, {590, 1, 1, 0});
    rows[0][3] = -32768;
    walk(rows);
    EXPECT_EQ(inlet(0), (Row{1, 600, 0, -32768, -32768}));

    rows[0][3] = 100;
    samples = grid_of(4, 0xFF);
    samples[0].tm = 600;
    walk(rows);
    EXPECT_EQ(inlet(0), (Row{1, 600, 100, -100, 0}));
}

TEST_F(Buckets, ReadingsThatWrapToNoneLeaveTheSumAsTheAverage) {
    platform().quiet = true;
    std::vector<Row> rows(65536, {590, 1, 1, 1});
    rows[0][3] = 5;

    walk(rows);

    EXPECT_EQ(inlet(0), (Row{1, 600, 5, 4, 1}));
}

TEST_F(Buckets, RowsAfterTheLastIndexAreNotStepped) {
    walk({{600, 1, 1, 1}, {660, 1, 1, 2}, {720, 1, 1, 3}, {780, 1, 1, 4}, {790, 1, 1, 5}});

    EXPECT_EQ(platform().count("step"), 4U);
    EXPECT_EQ(count, 4U);
}

TEST_F(Buckets, IndexPastTheCountIsUntouched) {
    count = 2;

    walk({{600, 1, 1, 1}, {660, 1, 1, 2}, {720, 1, 1, 3}});

    EXPECT_EQ(inlet(1), (Row{2, 660, 2, 2, 2}));
    EXPECT_TRUE(all_bytes(samples[2], 0xFF));
    EXPECT_EQ(count, 2U);
}

TEST_F(Buckets, TimeOfAnIndexThatIsSetIsNotReplacedWhenItIsClosed) {
    samples[1].tm = 5;

    walk({{660, 1, 1, 20}});

    EXPECT_EQ(inlet(1), (Row{2, 5, 20, 20, 20}));
}

TEST_F(Buckets, TimeOfAnIndexThatIsPassedIsReplaced) {
    samples[1].tm = 5;

    walk({{720, 1, 1, 20}});

    EXPECT_EQ(inlet(1), (Row{2, 660, -1, -1, -1}));
}

TEST_F(Buckets, SecondWalkOverAGridKeepsWhatTheFirstHasFilled) {
    walk({{600, 1, 1, 20}, {720, 1, 1, 22}});

    walk({{600, 1, 2, 30}, {660, 1, 2, 31}});

    EXPECT_EQ(inlet(0), (Row{1, 600, 20, 20, 20}));
    EXPECT_EQ(inlet(1), (Row{2, 660, -1, -1, -1}));
    EXPECT_EQ(inlet(2), (Row{3, 720, 22, 22, 22}));
    EXPECT_EQ(fields(samples[0].ambient[1]), (Row{30, 30, 30}));
    EXPECT_EQ(fields(samples[1].ambient[1]), (Row{31, 31, 31}));
}

TEST_F(Buckets, ExpectedTimeWrapsIn32Bits) {
    samples[0].tm = 2'147'483'640;

    walk({{2'147'483'641, 1, 1, 20}});

    EXPECT_EQ(inlet(0), (Row{1, 2'147'483'640, -1, -1, -1}));
    EXPECT_EQ(inlet(1), (Row{2, 2'147'483'700, -1, -1, -1}));
    EXPECT_EQ(count, 4U);
}

TEST_F(Buckets, NegativeStepPassesEveryIndexWithARowLaterThanTheFirst) {
    const OpenResult result({{601, 1, 1, 20}});

    EXPECT_EQ(traced([&] { return thermal_get_samples(result, -60, 1, &count, samples.data()); }),
              1U);

    EXPECT_EQ(inlet(0), kFirstEmpty);
    EXPECT_EQ(inlet(3), (Row{4, 420, -1, -1, -1}));
}

TEST_F(Buckets, WalkWithoutAResultOrAStepIs0AndCallsNothing) {
    const OpenResult result({{600, 1, 1, 20}});

    EXPECT_EQ(traced([&] { return thermal_get_samples(0, 60, 1, &count, samples.data()); }), 0U);
    EXPECT_EQ(trace, "");
    EXPECT_EQ(traced([&] { return thermal_get_samples(result, 0, 1, &count, samples.data()); }),
              0U);

    EXPECT_EQ(trace, "");
    EXPECT_THAT(platform().calls, testing::IsEmpty());
    EXPECT_EQ(count, 4U);
    EXPECT_EQ(samples[0].index, kNoIndex);
}

TEST_F(Buckets, NullCountOrSamplesIsReadAsNoIndex) {
    const OpenResult result({{600, 1, 1, 20}});

    EXPECT_EQ(traced([&] { return thermal_get_samples(result, 60, 1, nullptr, samples.data()); }),
              1U);
    EXPECT_EQ(trace, "required sample count 0, secs per index 60\n");
    EXPECT_EQ(traced([&] { return thermal_get_samples(result, 60, 1, &count, nullptr); }), 1U);

    EXPECT_EQ(count, 0U);
    EXPECT_EQ(samples[0].index, kNoIndex);
    EXPECT_EQ(platform().calls, (Calls{std::string("byte ") + kModulesPerSocket,
                                       std::string("byte ") + kModulesPerSocket}));
}

TEST_F(Buckets, OnlyIndexIsMarkedWithoutARow) {
    count = 1;

    EXPECT_EQ(walk({}), 1U);

    EXPECT_EQ(count, 1U);
    EXPECT_EQ(samples[0].index, 1U);
    EXPECT_EQ(samples[1].index, kNoIndex);
}

TEST_F(Buckets, CountOfNoIndexReadsNoRowAndMarksNothing) {
    count = 0;

    EXPECT_EQ(walk({{600, 1, 1, 20}}), 1U);

    EXPECT_EQ(count, 0U);
    EXPECT_EQ(platform().count("step"), 0U);
    EXPECT_EQ(samples[0].index, kNoIndex);
}
