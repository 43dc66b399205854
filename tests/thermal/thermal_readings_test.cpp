// SPDX-License-Identifier: Apache-2.0
// The thermal history written: a row per reading.
#include "thermal_test.h"

using namespace pwrmgt::test;

namespace thermal_readings_tests {
namespace {

// A record of three entries, as callers lay it out.
struct ThreeReadings {
    uint32_t timestamp = 1'700'000'000;
    uint16_t count = 3;
    thermal_hist_entry_t entries[3] = {{1, 1, 23}, {2, 8, -40}, {255, 255, -32768}};
};

uint32_t update(const ThreeReadings& record) {
    return thermal_update_thermal_hist_table(
        kDb, reinterpret_cast<const thermal_hist_update_t*>(&record));
}

uint32_t update_three() {
    return update(ThreeReadings{});
}

void nothing_stored(Recorder&) {}

}  // namespace

class ThermalReadings : public ThermalTest {};

TEST_F(ThermalReadings, RecordOfThreeEntriesIsThreeRowsOfOneTime) {
    EXPECT_EQ(update_three(), 0U);

    EXPECT_EQ(platform().calls, (Calls{"content",
                                       "clear",
                                       "put_int Timestamp 1700000000",
                                       "put_short_int Type 1",
                                       "put_short_int InstNum 1",
                                       "put_short_int Value 23",
                                       "insert HistThermal24HrMem",
                                       "clear",
                                       "put_int Timestamp 1700000000",
                                       "put_short_int Type 2",
                                       "put_short_int InstNum 8",
                                       "put_short_int Value -40",
                                       "insert HistThermal24HrMem",
                                       "clear",
                                       "put_int Timestamp 1700000000",
                                       "put_short_int Type 255",
                                       "put_short_int InstNum 255",
                                       "put_short_int Value -32768",
                                       "insert HistThermal24HrMem",
                                       "free_content"}));
}

TEST_F(ThermalReadings, RecordOfOneEntryIsOneRow) {
    ThreeReadings record;
    record.count = 1;

    EXPECT_EQ(update(record), 0U);

    EXPECT_EQ(platform().count("insert"), 1U);
}

TEST_F(ThermalReadings, RecordOfTheGreatestCountIsWrittenWhole) {
    struct {
        uint32_t timestamp = 1;
        uint16_t count = 65535;
        thermal_hist_entry_t entries[65535] = {};
    } record;
    record.entries[65534] = {3, 128, 77};

    EXPECT_EQ(thermal_update_thermal_hist_table(
                  kDb, reinterpret_cast<const thermal_hist_update_t*>(&record)),
              0U);

    EXPECT_EQ(platform().count("insert"), 65535U);
    EXPECT_EQ(platform().named("put_short_int").back(), "put_short_int Value 77");
}

TEST_F(ThermalReadings, TimeAbove31BitsIsPutSigned) {
    ThreeReadings record;
    record.timestamp = 4'294'967'295;
    record.count = 1;

    EXPECT_EQ(update(record), 0U);

    EXPECT_EQ(platform().named("put_int"), Calls{"put_int Timestamp -1"});
}

TEST_F(ThermalReadings, FailedInsertStopsNothing) {
    platform().fail(Operation::insert, -1, 1);
    platform().fail(Operation::insert, 5, 3);

    EXPECT_EQ(update_three(), 0U);

    EXPECT_EQ(platform().count("insert"), 3U);
    EXPECT_EQ(platform().calls.back(), "free_content");
}

TEST_F(ThermalReadings, RecordWithoutCountTimeOrAddressIs31AndCallsNothing) {
    ThreeReadings without_count;
    without_count.count = 0;
    ThreeReadings without_time;
    without_time.timestamp = 0;

    EXPECT_EQ(update(without_count), 31U);
    EXPECT_EQ(update(without_time), 31U);
    EXPECT_EQ(thermal_update_thermal_hist_table(kDb, nullptr), 31U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(ThermalReadings, NoContentIs7AndInsertsNothing) {
    platform().fail(Operation::content);

    EXPECT_EQ(update_three(), 7U);

    EXPECT_EQ(platform().calls, Calls{"content"});
}

// The content, then per row four puts and an insert.
TEST_F(ThermalReadings, EachFailingCallOfTheUpdateHasItsStatus) {
    EXPECT_EQ(swept_statuses(nothing_stored, update_three),
              in_turn({each_of(1, 7), each_of(15, 0)}));
}

TEST_F(ThermalReadings, ConnectionIsNotTested) {
    const thermal_hist_update_t record{1, 1, {{1, 1, 20}}};

    EXPECT_EQ(thermal_update_thermal_hist_table(0, &record), 0U);

    EXPECT_EQ(platform().count("insert"), 1U);
}

TEST_F(ThermalReadings, NothingIsPrinted) {
    traced(update_three);

    EXPECT_EQ(trace, "");
}

TEST_F(ThermalReadings, ExceptionOfAnyCallPassesThroughWithTheContentBack) {
    EXPECT_EQ(sweep_exceptions(nothing_stored, update_three), 16U);
}

}  // namespace thermal_readings_tests
