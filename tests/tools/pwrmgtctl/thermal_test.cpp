// SPDX-License-Identifier: Apache-2.0
#include "tool.h"
#include "vekdb_client.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

enum : uint8_t { kAmbient = 1, kCpu = 2, kMemory = 3, kExhaust = 4 };

// 22:13:00Z: the end of the last entry at the frozen clock.
constexpr uint32_t kLastEntry = kNewestSlot;

class Thermal : public ToolTest {
protected:
    void store(uint32_t timestamp, uint8_t type, uint8_t instance, int16_t celsius) {
        const thermal_hist_update_t record{timestamp, 1, {{type, instance, celsius}}};
        ASSERT_EQ(thermal_update_thermal_hist_table(connection(), &record), 0U);
    }
    void store_latest(uint8_t type, uint8_t instance, int16_t celsius, uint32_t taken_s) {
        const uint32_t row = vek_db_get_content_values();
        vek_db_content_put_uint(row, "Timestamp", taken_s);
        vek_db_content_put_uchar(row, "Type", type);
        vek_db_content_put_uchar(row, "InstNum", instance);
        vek_db_content_put_short_uint(row, "Value", static_cast<uint16_t>(celsius));
        ASSERT_EQ(vek_db_insert(connection(), "RealTimeThermalMem", row, 0, 0), 0);
        vek_db_free_content_values(row);
    }
};

TEST_F(Thermal, HistoryShowsOnlySensorsWithReadingsOldestFirst) {
    store(kLastEntry - 60, kAmbient, 1, 22);
    store(kLastEntry - 30, kAmbient, 1, 24);
    store(kLastEntry - 30, kCpu, 2, 61);

    const Finished run = tool({"thermal", "history", "--minutes", "2", "--end", "now"});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "Temperatures in C (min/avg/max), 2 min up to 2023-11-14T22:13:30Z: 2 entries of 1 "
              "min, oldest first; newest reading 30 s old; database " +
                  working_file() +
                  "\n"
                  "Time (UTC)             Inlet 1     CPU 2\n"
                  "2023-11-14T22:12:00Z  22/22/22         -\n"
                  "2023-11-14T22:13:00Z  24/24/24  61/61/61\n");
}

TEST_F(Thermal, HistoryAsJsonHasNullForWhatIsMissing) {
    store(kLastEntry - 30, kExhaust, 2, 40);
    store(kLastEntry, kExhaust, 2, 43);

    const json document = json_of({"thermal", "history", "--minutes", "1", "--json"});

    EXPECT_EQ(document["schema"], "pwrmgtctl.thermal.history/1");
    EXPECT_EQ(document["period_s"], 60);
    EXPECT_EQ(document["entry_width_s"], 60);
    EXPECT_EQ(document["order"], "oldest_first");
    EXPECT_EQ(document["end_s"], 1700000010);
    ASSERT_EQ(document["entries"].size(), 1);
    const json entry = document["entries"][0];
    EXPECT_EQ(entry["timestamp_s"], 1699999980);
    EXPECT_EQ(entry["exhaust"][1], parsed(R"({"min_c": 40, "avg_c": 41, "max_c": 43})"));
    EXPECT_EQ(entry["exhaust"][0], parsed(R"({"min_c": null, "avg_c": null, "max_c": null})"));
    EXPECT_EQ(entry["cpu"].size(), 8);
    EXPECT_EQ(entry["memory"].size(), 8);
    EXPECT_EQ(entry["inlet"].size(), 2);
}

TEST_F(Thermal, PeriodIsDividedIntoTheEntriesAskedFor) {
    store(kLastEntry - 600, kMemory, 1, 50);

    const json hour = json_of({"thermal", "history", "--json"});
    const json day =
        json_of({"thermal", "history", "--period", "24h", "--entries", "24", "--json"});

    EXPECT_EQ(hour["entries"].size(), 60);
    EXPECT_EQ(hour["entry_width_s"], 60);
    EXPECT_EQ(hour["entries"][59]["timestamp_s"], 1699999980);
    EXPECT_EQ(hour["entries"][49]["memory"][0]["avg_c"], 50);
    EXPECT_TRUE(hour["entries"][48]["memory"][0]["avg_c"].is_null());
    EXPECT_EQ(day["entries"].size(), 24);
    EXPECT_EQ(day["entry_width_s"], 3600);
}

TEST_F(Thermal, ReadingBelowZeroIsShown) {
    store(kLastEntry - 30, kAmbient, 1, -5);

    const json document = json_of({"thermal", "history", "--minutes", "1", "--json"});

    EXPECT_EQ(document["entries"][0]["inlet"][0]["min_c"], -5);
}

TEST_F(Thermal, HistoryWithoutReadingsIsExit4) {
    const Finished by_period = tool({"thermal", "history"});
    const Finished by_span = tool({"thermal", "history", "--minutes", "60"});

    EXPECT_EQ(by_period.exit, 4);
    EXPECT_EQ(by_period.out, "");
    EXPECT_EQ(by_period.err, "pwrmgtctl: no temperature recorded in the span\n");
    EXPECT_EQ(by_span.exit, 4);
    EXPECT_EQ(by_span.err, "pwrmgtctl: no temperature recorded in the span (status 8)\n");
}

TEST_F(Thermal, SpanWithoutRoomForAnEntryIsExit2) {
    const Finished span =
        tool({"thermal", "history", "--minutes", "11", "--minutes-per-entry", "12"});
    const Finished hour = tool({"thermal", "history", "--entries", "61"});

    EXPECT_EQ(span.exit, 2);
    EXPECT_EQ(span.err, "pwrmgtctl: --minutes-per-entry: no entry fits into the span\n");
    EXPECT_EQ(hour.exit, 2);
    EXPECT_EQ(hour.err, "pwrmgtctl: --entries: an hour has 60 entries at most\n");
}

TEST_F(Thermal, RealtimeShowsOnlySensorsWithARow) {
    store_latest(kAmbient, 1, 23, kNow);
    store_latest(kCpu, 8, 0, kNow);
    store_latest(kMemory, 128, -1, kNow);

    const Finished run = tool({"thermal", "realtime"});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(run.out,
              "Latest temperatures, the newest of 2023-11-14T22:13:30Z, 0 s old; database " +
                  working_file() +
                  "\n"
                  "Sensor              C      Age\n"
                  "Inlet 1            23  0 s old\n"
                  "CPU 8               0  0 s old\n"
                  "Memory module 128  -1  0 s old\n");
}

TEST_F(Thermal, RealtimeAsJsonHasSensorsWithTheirAges) {
    store_latest(kCpu, 1, 55, kNow - 10);

    const json document = json_of({"thermal", "realtime", "--json"});

    EXPECT_EQ(values_of(document), parsed(R"({
        "schema": "pwrmgtctl.thermal.realtime/1", "timestamp_s": 1700000000,
        "time_utc": "2023-11-14T22:13:20Z", "age_s": 10, "stale": false,
        "readings": [{"sensor": "cpu1", "temperature_c": 55, "timestamp_s": 1700000000,
                      "time_utc": "2023-11-14T22:13:20Z", "age_s": 10, "stale": false}]})"));
}

TEST_F(Thermal, SensorThatFellSilentIsMarkedStaleBesideTheOthers) {
    store_latest(kCpu, 1, 55, kNow);
    store_latest(kCpu, 2, 51, kNow - 61);

    const Finished run = tool({"thermal", "realtime"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(lines_of(run.out)[3], "CPU 2   51  61 s old, STALE");
}

TEST_F(Thermal, LatestOlderThan60SecondsAreShownWithExit5) {
    store_latest(kCpu, 1, 55, kNow - 61);

    const Finished run = tool({"thermal", "realtime"});

    EXPECT_EQ(run.exit, 5);
    EXPECT_EQ(lines_of(run.out)[2], "CPU 1   55  61 s old, STALE");
    EXPECT_EQ(run.err, "pwrmgtctl: the newest reading is 61 s old\n");
}

TEST_F(Thermal, RealtimeWithoutARowIsExit4) {
    const Finished run = tool({"thermal", "realtime", "--json"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "pwrmgtctl: no temperature is stored\n");
}

}  // namespace
}  // namespace pwrmgt::tooltest
