// SPDX-License-Identifier: Apache-2.0
// One slot's row of the power history: columns, widths, order, and what comes back.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace hist_row_tests {
namespace {

constexpr pwrmgt_hist_sample_t kSample{
    {900, 900, 101, 102, 103, 104, 105, 106},
    {900, 900, 201, 202, 203, 900, 900, 900},
    {900, 900, 301, 302, 303, 900, 900, 900},
    {{900, 900, 411, 412}, {900, 900, 421, 422}, {900, 900, 431, 432}, {900, 900, 441, 442}},
    {900, 900, 51, 52, 53, 54, 55, 56}};

const Calls kPuts{
    "put_uint Timestamp 0",         "put_short_uint SysAvgDc 101",  "put_short_uint SysMaxDc 102",
    "put_short_uint SysMinDc 103",  "put_short_uint SysAvgAc 104",  "put_short_uint SysMaxAc 105",
    "put_short_uint SysMinAc 106",  "put_short_uint CpuAvgPwr 201", "put_short_uint CpuMaxPwr 202",
    "put_short_uint CpuMinPwr 203", "put_short_uint MemAvgPwr 301", "put_short_uint MemMaxPwr 302",
    "put_short_uint MemMinPwr 303", "put_short_uint Ps1AvgAc 411",  "put_short_uint Ps1AvgDc 412",
    "put_short_uint Ps2AvgAc 421",  "put_short_uint Ps2AvgDc 422",  "put_short_uint Ps3AvgAc 431",
    "put_short_uint Ps3AvgDc 432",  "put_short_uint Ps4AvgAc 441",  "put_short_uint Ps4AvgDc 442",
    "put_uchar SysAvgPtg 51",       "put_uchar SysMaxPtg 52",       "put_uchar SysMinPtg 53",
    "put_uchar CpuAvgPtg 54",       "put_uchar MemAvgPtg 55",       "put_uchar IOAvgPtg 56"};

uint32_t update() {
    return pwrmgt_update_hist_table(kDb, 2879, 1'699'999'980, kSample);
}

void nothing_scripted(Recorder&) {}

}  // namespace

class HistRow : public PlatformTest {
protected:
    // A content for the two functions that fill the caller's.
    void SetUp() override {
        PlatformTest::SetUp();
        content = vek_db_get_content_values();
        platform().calls.clear();
    }
    void TearDown() override {
        if (platform().alive('v', content)) vek_db_free_content_values(content);
        PlatformTest::TearDown();
    }

    uint32_t content = 0;
};

TEST_F(HistRow, RowIsClearedFilledStampedAndInserted) {
    Calls expected{"content", "clear"};
    expected.insert(expected.end(), kPuts.begin(), kPuts.end());
    expected.insert(expected.end(), {"put_short_uint _id 2879", "put_uint Timestamp 1699999980",
                                     "insert HistPowers24HrMem", "free_content"});

    EXPECT_EQ(update(), 0U);

    EXPECT_EQ(platform().calls, expected);
}

TEST_F(HistRow, TimestampIsPutTwiceFirstZeroThenReal) {
    update();

    EXPECT_EQ(platform().named("put_uint"),
              (Calls{"put_uint Timestamp 0", "put_uint Timestamp 1699999980"}));
}

TEST_F(HistRow, InsertResultIsReturnedUnmapped) {
    for (const int result : {1, 4, 1062}) {
        platform().reset();
        platform().fail(Operation::insert, result);

        EXPECT_EQ(update(), static_cast<uint32_t>(result));

        EXPECT_EQ(platform().calls.back(), "free_content");
    }
    platform().reset();
    platform().fail(Operation::insert, -5);
    EXPECT_EQ(update(), 4'294'967'291U);
}

TEST_F(HistRow, NullConnectionIs1AndNothingIsCalled) {
    EXPECT_EQ(pwrmgt_update_hist_table(0, 1, 1'699'999'980, kSample), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(HistRow, StampThatIsNotPositiveIs1AndNothingIsCalled) {
    EXPECT_EQ(pwrmgt_update_hist_table(kDb, 1, 0, kSample), 1U);
    EXPECT_EQ(pwrmgt_update_hist_table(kDb, 1, -1, kSample), 1U);
    EXPECT_EQ(pwrmgt_update_hist_table(kDb, 1, INT32_MIN, kSample), 1U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(HistRow, EarliestAndLatestStampAreStored) {
    EXPECT_EQ(pwrmgt_update_hist_table(kDb, 1, 1, kSample), 0U);
    EXPECT_EQ(pwrmgt_update_hist_table(kDb, 1, INT32_MAX, kSample), 0U);

    EXPECT_THAT(platform().calls, testing::Contains("put_uint Timestamp 1"));
    EXPECT_THAT(platform().calls, testing::Contains("put_uint Timestamp 2147483647"));
}

TEST_F(HistRow, SlotIsStoredAsItIs) {
    EXPECT_EQ(pwrmgt_update_hist_table(kDb, 0, 30, kSample), 0U);
    EXPECT_EQ(pwrmgt_update_hist_table(kDb, 2880, 30, kSample), 0U);
    EXPECT_EQ(pwrmgt_update_hist_table(kDb, 65535, 30, kSample), 0U);

    EXPECT_THAT(platform().calls,
                testing::IsSupersetOf(Calls{"put_short_uint _id 0", "put_short_uint _id 2880",
                                            "put_short_uint _id 65535"}));
}

TEST_F(HistRow, NoContentIs7AndNothingIsWritten) {
    platform().fail(Operation::content, 1, 2);

    EXPECT_EQ(update(), 7U);

    EXPECT_EQ(platform().calls, Calls{"content"});
}

TEST_F(HistRow, FailedPutDoesNotStopTheInsert) {
    platform().fail(Operation::put, 1, 27);

    EXPECT_EQ(update(), 0U);

    EXPECT_EQ(platform().count("insert"), 1U);
}

TEST_F(HistRow, SampleIsPutInColumnOrderWithItsWidths) {
    EXPECT_EQ(pwrmgt_prep_valid_hist_sample(content, kSample), 0U);

    EXPECT_EQ(platform().calls, kPuts);
}

TEST_F(HistRow, EmptySampleHoldsTheMarkers) {
    EXPECT_EQ(pwrmgt_prep_empty_hist_sample(content), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"put_uint Timestamp 0",           "put_short_uint SysAvgDc 65535",
                     "put_short_uint SysMaxDc 65535",  "put_short_uint SysMinDc 65535",
                     "put_short_uint SysAvgAc 65535",  "put_short_uint SysMaxAc 65535",
                     "put_short_uint SysMinAc 65535",  "put_short_uint CpuAvgPwr 65535",
                     "put_short_uint CpuMaxPwr 65535", "put_short_uint CpuMinPwr 65535",
                     "put_short_uint MemAvgPwr 65535", "put_short_uint MemMaxPwr 65535",
                     "put_short_uint MemMinPwr 65535", "put_short_uint Ps1AvgAc 65535",
                     "put_short_uint Ps1AvgDc 65535",  "put_short_uint Ps2AvgAc 65535",
                     "put_short_uint Ps2AvgDc 65535",  "put_short_uint Ps3AvgAc 65535",
                     "put_short_uint Ps3AvgDc 65535",  "put_short_uint Ps4AvgAc 65535",
                     "put_short_uint Ps4AvgDc 65535",  "put_uchar SysAvgPtg 255",
                     "put_uchar SysMaxPtg 255",        "put_uchar SysMinPtg 255",
                     "put_uchar CpuAvgPtg 255",        "put_uchar MemAvgPtg 255",
                     "put_uchar IOAvgPtg 255"}));
}

TEST_F(HistRow, ResultOfTheLastPutIsTheResult) {
    platform().fail(Operation::put, 9, 27);
    EXPECT_EQ(pwrmgt_prep_valid_hist_sample(content, kSample), 9U);

    platform().fail(Operation::put, 8, 54);
    EXPECT_EQ(pwrmgt_prep_empty_hist_sample(content), 8U);
}

TEST_F(HistRow, ResultsOfEarlierPutsAreNotReported) {
    platform().fail(Operation::put, 9, 1);
    platform().fail(Operation::put, 9, 26);
    EXPECT_EQ(pwrmgt_prep_valid_hist_sample(content, kSample), 0U);

    platform().fail(Operation::put, 9, 28);
    platform().fail(Operation::put, 9, 53);
    EXPECT_EQ(pwrmgt_prep_empty_hist_sample(content), 0U);
}

TEST_F(HistRow, FieldsThatAreNotStoredHaveNoEffect) {
    pwrmgt_hist_sample_t other = kSample;
    other.system.index = other.cpu.index = other.memory.index = other.perf.index = 1;
    other.system.timestamp = other.cpu.timestamp = other.memory.timestamp = 2;
    other.perf.timestamp = 2;
    other.cpu.avg2 = other.cpu.max2 = other.cpu.min2 = 3;
    other.memory.avg2 = other.memory.max2 = other.memory.min2 = 4;
    for (pwrmgt_hist_psu_sample_t& psu : other.psu) {
        psu.index = 5;
        psu.timestamp = 6;
    }

    pwrmgt_prep_valid_hist_sample(content, other);

    EXPECT_EQ(platform().calls, kPuts);
}

TEST_F(HistRow, ContentOfZeroIsPassedOnAndRefusedByTheClient) {
    EXPECT_EQ(pwrmgt_prep_empty_hist_sample(0), 1U);
    EXPECT_EQ(pwrmgt_prep_valid_hist_sample(0, kSample), 1U);

    EXPECT_EQ(platform().count("put_short_uint"), 40U);
}

// Content, twenty-seven puts, of which the last one tells.
TEST_F(HistRow, FailingCallOfAPreparedContentShowsOnlyInTheLastPut) {
    vek_db_free_content_values(content);
    const auto prepared = [](auto prepare) {
        return [prepare] {
            const uint32_t made = vek_db_get_content_values();
            const uint32_t result = prepare(made);
            if (made != 0) vek_db_free_content_values(made);
            return result;
        };
    };
    const Outcomes expected = in_turn({each_of(1, 1), each_of(26, 0), {{1, kMinusOne}}});

    EXPECT_EQ(swept_statuses(nothing_scripted, prepared(pwrmgt_prep_empty_hist_sample)), expected);
    EXPECT_EQ(swept_statuses(nothing_scripted, prepared([](uint32_t made) {
                                 return pwrmgt_prep_valid_hist_sample(made, kSample);
                             })),
              expected);
}

// Content, twenty-nine puts, insert.
TEST_F(HistRow, EachFailingCallHasItsStatus) {
    vek_db_free_content_values(content);

    EXPECT_EQ(swept_statuses(nothing_scripted, update),
              in_turn({each_of(1, 7), each_of(29, 0), {{1, kMinusOne}}}));
}

TEST_F(HistRow, ExceptionOfAnyCallPassesThroughWithEveryHandleBack) {
    vek_db_free_content_values(content);

    EXPECT_EQ(sweep_exceptions(nothing_scripted, update), 31U);
}

}  // namespace hist_row_tests
