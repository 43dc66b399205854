// SPDX-License-Identifier: Apache-2.0
#include "tool.h"
#include "vekdb_client.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

class History : public ToolTest {
protected:
    // `count` slots without a gap, newest at kNewestSlot.
    void fill(uint32_t count, uint16_t dc_w) {
        for (uint32_t back = 0; back < count; ++back) {
            store_slot(back, slot_of(dc_w));
        }
    }

    static std::string database() { return "; database " + working_file() + "\n"; }
};

TEST_F(History, SystemPowerIsATableOfDcAndAcNewestFirst) {
    store_slot(0, slot_of(300));
    store_slot(1, slot_of(290));

    const Finished run = tool({"power", "history"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(
        run.out,
        "System power, last 1 h up to 2023-11-14T22:13:30Z: 2 entries of 30 s, newest first; "
        "newest reading 0 s old" +
            database() +
            "Time (UTC)            DC avg W  DC max W  DC min W  AC avg W  AC max W  AC min W\n"
            "2023-11-14T22:13:00Z       300       310       290       350       360       340\n"
            "2023-11-14T22:12:30Z       290       300       280       340       350       330\n");
}

TEST_F(History, SystemPowerAsJsonHoldsBothGroups) {
    store_slot(0, slot_of(300));

    const json document = json_of({"power", "history", "--json"});

    EXPECT_EQ(values_of(document), parsed(R"({
        "schema": "pwrmgtctl.power.history/1", "domain": "system", "period_s": 3600, "entry_width_s": 30, "age_s": 0, "stale": false,
        "order": "newest_first", "end_s": 1700000010, "end_utc": "2023-11-14T22:13:30Z",
        "entries": [{"index": 0, "timestamp_s": 1699999980, "time_utc": "2023-11-14T22:13:00Z",
                     "dc": {"avg_w": 300, "max_w": 310, "min_w": 290},
                     "ac": {"avg_w": 350, "max_w": 360, "min_w": 340}}]})"));
}

TEST_F(History, ProcessorPowerHasOneGroup) {
    store_slot(0, slot_of(300));

    const Finished run = tool({"power", "history", "--domain", "cpu"});

    EXPECT_EQ(run.out,
              "Processor power, last 1 h up to 2023-11-14T22:13:30Z: 1 entry of 30 s, newest "
              "first; newest reading 0 s old" +
                  database() +
                  "Time (UTC)            DC avg W  DC max W  DC min W\n"
                  "2023-11-14T22:13:00Z       100       110        90\n");
}

TEST_F(History, MemoryPowerAsJsonNamesItsDomain) {
    store_slot(0, slot_of(300));

    const json document = json_of({"power", "history", "--domain", "memory", "--json"});

    EXPECT_EQ(document["domain"], "memory");
    EXPECT_EQ(document["entries"][0]["dc"], parsed(R"({"avg_w": 40, "max_w": 45, "min_w": 35})"));
    EXPECT_FALSE(document["entries"][0].contains("ac"));
}

TEST_F(History, SupplyShowsInputAndOutput) {
    store_slot(0, slot_of(300));

    const Finished run = tool({"psu", "history", "3"});

    EXPECT_EQ(run.out,
              "Power of supply 3, last 1 h up to 2023-11-14T22:13:30Z: 1 entry of 30 s, newest "
              "first; newest reading 0 s old" +
                  database() +
                  "Time (UTC)            AC in avg W  DC out avg W\n"
                  "2023-11-14T22:13:00Z          300           290\n");
}

TEST_F(History, SupplyAsJsonNamesItsBay) {
    store_slot(0, slot_of(300));

    const json document = json_of({"psu", "history", "4", "--json"});

    EXPECT_EQ(document["schema"], "pwrmgtctl.psu.history/1");
    EXPECT_EQ(document["psu"], 4);
    EXPECT_EQ(document["entries"][0]["ac"]["avg_w"], 400);
    EXPECT_EQ(document["entries"][0]["dc"]["avg_w"], 390);
}

TEST_F(History, SupplyAboveFourComesFromTheExtraTable) {
    const uint32_t content = vek_db_get_content_values();
    vek_db_content_put_short_uint(content, "Ps12AvgAc", 812);
    vek_db_content_put_short_uint(content, "Ps12AvgDc", 780);
    vek_db_content_put_short_uint(content, "_id", 7);
    vek_db_content_put_uint(content, "Timestamp", kNewestSlot);
    ASSERT_EQ(vek_db_insert(connection(), "HistExtraPowers24HrMem", content, 0, 0), 0);
    vek_db_free_content_values(content);

    const json document = json_of({"psu", "history", "12", "--json"});

    EXPECT_EQ(document["entries"][0]["ac"]["avg_w"], 812);
    EXPECT_EQ(document["entries"][0]["dc"]["avg_w"], 780);
}

TEST_F(History, PerformanceShowsPercentages) {
    store_slot(0, slot_of(300));

    const Finished run = tool({"performance", "history"});

    EXPECT_EQ(run.out,
              "Utilisation, last 1 h up to 2023-11-14T22:13:30Z: 1 entry of 30 s, newest first; "
              "newest reading 0 s old" +
                  database() +
                  "Time (UTC)            System avg %  System max %  System min %  CPU avg %  "
                  "Memory avg %  I/O avg %\n"
                  "2023-11-14T22:13:00Z            30            35            25         20       "
                  "     10          5\n");
}

TEST_F(History, PerformanceAsJsonHasPercentKeys) {
    store_slot(0, slot_of(300));

    const json document = json_of({"performance", "history", "--json"});

    EXPECT_EQ(document["schema"], "pwrmgtctl.performance.history/1");
    EXPECT_EQ(document["entries"][0]["system"],
              parsed(R"({"avg_pct": 30, "max_pct": 35, "min_pct": 25})"));
    EXPECT_EQ(document["entries"][0]["cpu"]["avg_pct"], 20);
    EXPECT_EQ(document["entries"][0]["memory"]["avg_pct"], 10);
    EXPECT_EQ(document["entries"][0]["io"]["avg_pct"], 5);
}

TEST_F(History, EveryPeriodHasItsEntryWidth) {
    fill(60, 300);

    EXPECT_EQ(json_of({"power", "history", "--period", "1h", "--json"})["entry_width_s"], 30);
    EXPECT_EQ(json_of({"power", "history", "--period", "6h", "--json"})["entry_width_s"], 180);
    EXPECT_EQ(json_of({"power", "history", "--period", "12h", "--json"})["entry_width_s"], 360);
    EXPECT_EQ(json_of({"power", "history", "--period", "24h", "--json"})["entry_width_s"], 720);
}

TEST_F(History, EntriesFoldTheSlotsOfTheirWidth) {
    fill(6, 300);
    for (uint32_t back = 6; back < 12; ++back) {
        store_slot(back, slot_of(200));
    }

    const json entries = json_of({"power", "history", "--period", "6h", "--json"})["entries"];

    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0]["timestamp_s"], 1699999980);
    EXPECT_EQ(entries[0]["dc"]["avg_w"], 300);
    EXPECT_EQ(entries[1]["timestamp_s"], 1699999800);
    EXPECT_EQ(entries[1]["dc"]["avg_w"], 200);
}

TEST_F(History, EntriesOptionKeepsTheNewestOnes) {
    fill(10, 300);

    const json entries = json_of({"power", "history", "--entries", "3", "--json"})["entries"];

    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0]["timestamp_s"], 1699999980);
    EXPECT_EQ(entries[2]["timestamp_s"], 1699999920);
}

TEST_F(History, EntriesLeftOutAreCountedOnTop) {
    fill(10, 300);

    const std::vector<std::string> lines =
        lines_of(tool({"power", "history", "--entries", "3"}).out);

    ASSERT_EQ(lines.size(), 5U);
    EXPECT_NE(lines[0].find(": 3 of 10 entries of 30 s, newest first;"), std::string::npos)
        << lines[0];
}

TEST_F(History, OneEntryIsFoundEvenWhenTheNewestSlotLiesBackInThePeriod) {
    store_slot(60, slot_of(300));

    const json entries = json_of({"power", "history", "--entries", "1", "--json"})["entries"];

    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0]["timestamp_s"], 1699998180);
}

TEST_F(History, OldestFirstTurnsTheOrderAndKeepsTheIndexes) {
    store_slot(0, slot_of(300));
    store_slot(1, slot_of(290));

    const json document = json_of({"power", "history", "--oldest-first", "--json"});

    EXPECT_EQ(document["order"], "oldest_first");
    EXPECT_EQ(document["entries"][0]["index"], 1);
    EXPECT_EQ(document["entries"][0]["timestamp_s"], 1699999950);
    EXPECT_EQ(document["entries"][1]["index"], 0);
}

TEST_F(History, GapIsADashWithItsTime) {
    store_slot(0, slot_of(300));
    store_slot(2, slot_of(290));

    const std::vector<std::string> lines =
        lines_of(tool({"power", "history", "--domain", "cpu"}).out);

    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[3], "2023-11-14T22:12:30Z         -         -         -");
}

TEST_F(History, SlotWithoutAReadingIsNullInJson) {
    store_slot(0, empty_slot());
    store_slot(1, slot_of(290));

    const json entry = json_of({"power", "history", "--json"})["entries"][0];

    EXPECT_EQ(entry["timestamp_s"], 1699999980);
    EXPECT_TRUE(entry["dc"]["avg_w"].is_null());
    EXPECT_TRUE(entry["dc"]["max_w"].is_null());
    EXPECT_TRUE(entry["dc"]["min_w"].is_null());
    EXPECT_TRUE(entry["ac"]["avg_w"].is_null());
}

TEST_F(History, AcMeanWithASlotWithoutAcIsMissingInsteadOfTooHigh) {
    fill(6, 300);
    pwrmgt_hist_sample_t without_ac = slot_of(300);
    without_ac.system.avg2 = without_ac.system.max2 = without_ac.system.min2 = PWRMGT_NO_POWER;
    store_slot(6, without_ac);
    for (uint32_t back = 7; back < 12; ++back) {
        store_slot(back, slot_of(300));
    }

    const json entries = json_of({"power", "history", "--period", "6h", "--json"})["entries"];

    EXPECT_EQ(entries[0]["ac"]["avg_w"], 350);
    EXPECT_EQ(entries[1]["dc"]["avg_w"], 300);
    EXPECT_TRUE(entries[1]["ac"]["avg_w"].is_null());
    EXPECT_TRUE(entries[1]["ac"]["max_w"].is_null());
    EXPECT_EQ(entries[1]["ac"]["min_w"], 340);
}

TEST_F(History, EntriesAfterTheEndOfTheDataAreLeftOutAndNeverSay1970) {
    fill(5, 300);

    const Finished run = tool({"power", "history", "--period", "24h"});

    EXPECT_EQ(lines_of(run.out).size(), 3U);
    EXPECT_EQ(run.out.find("1970"), std::string::npos);
}

TEST_F(History, LocalTimeShowsTheOffset) {
    store_slot(0, slot_of(300));

    const Finished run = tool_with({"TZ=CET-1"}, {"psu", "history", "1", "--local"});

    EXPECT_NE(run.out.find("up to 2023-11-14T23:13:30+01:00"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\nTime (local)               AC in avg W"), std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("\n2023-11-14T23:13:00+01:00"), std::string::npos) << run.out;
}

TEST_F(History, TimingIsTheLastLineAndOnlyOnRequest) {
    store_slot(0, slot_of(300));

    const std::vector<std::string> lines = lines_of(tool({"power", "history", "--timing"}).out);

    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[3].substr(0, 15), "The query took ");
    EXPECT_EQ(lines[3].substr(lines[3].size() - 4), " ms.");
}

TEST_F(History, TimingInJsonIsAKeyOfItsOwn) {
    store_slot(0, slot_of(300));

    EXPECT_GT(json_of({"power", "history", "--json", "--timing"})["query_ms"].get<double>(), 0.0);
    EXPECT_FALSE(json_of({"power", "history", "--json"}).contains("query_ms"));
}

TEST_F(History, NothingRecordedIsExit4WithItsStatus) {
    const Finished power = tool({"power", "history"});
    const Finished psu = tool({"psu", "history", "2", "--period", "6h"});

    EXPECT_EQ(power.exit, 4);
    EXPECT_EQ(power.out, "");
    EXPECT_EQ(power.err, "pwrmgtctl: no reading recorded in the last hour (status 8)\n");
    EXPECT_EQ(psu.exit, 4);
    EXPECT_EQ(psu.err,
              "pwrmgtctl: no reading recorded of supply 2 in the last 6 hours (status 8)\n");
}

TEST_F(History, NothingRecordedOfPerformanceIsExit4WithStatus31) {
    const Finished run = tool({"performance", "history", "--period", "24h"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.err, "pwrmgtctl: no reading recorded in the last 24 hours (status 31)\n");
}

TEST_F(History, SlotsWithoutAnyReadingAreNoData) {
    store_slot(0, empty_slot());

    EXPECT_EQ(tool({"power", "history", "--json"}).exit, 4);
    EXPECT_EQ(tool({"psu", "history", "1"}).exit, 4);
    EXPECT_EQ(tool({"performance", "history"}).exit, 4);
}

TEST_F(History, PolicyThatRefusesPowerManagementIsExit3) {
    store_slot(0, slot_of(300));
    store_policy(2, 1);

    const Finished run = tool({"power", "history"});

    EXPECT_EQ(run.exit, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "pwrmgtctl: power management is not offered on this platform (status 10)\n");
}

TEST_F(History, QuorilPlatformOffersPowerButNoSupplies) {
    store_slot(0, slot_of(300));

    EXPECT_EQ(tool_with({"VEKDB_PLATFORM=quoril"}, {"power", "history"}).exit, 0);
    EXPECT_EQ(tool_with({"VEKDB_PLATFORM=quoril"}, {"psu", "history", "1"}).exit, 3);
    EXPECT_EQ(tool_with({"VEKDB_PLATFORM=quoril"}, {"performance", "history"}).exit, 3);
}

TEST_F(History, ClockBefore1970IsAFailureAndNotAnEmptyWindow) {
    const Launch before_1970{{"performance", "history"}, {}, -100, Sink::file};

    const Finished run = launch(before_1970);

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "pwrmgtctl: the clock shows no time from 1970 to 2038-01-19 (status 31)\n");
}

TEST_F(History, NewestReadingOfTwoSlotsAgoIsNotStale) {
    store_slot(2, slot_of(300));

    EXPECT_EQ(json_of({"power", "history", "--json"})["age_s"], 60);
    EXPECT_EQ(json_of({"power", "history", "--json"})["stale"], false);
}

TEST_F(History, OlderNewestReadingIsMarkedStale) {
    store_slot(3, slot_of(300));

    const Finished run = tool({"power", "history"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_NE(run.out.find("; newest reading 90 s old, STALE; database "), std::string::npos)
        << run.out;
    EXPECT_EQ(json_of({"power", "history", "--json"})["stale"], true);
}

TEST_F(History, SlotWithoutAReadingDoesNotMakeAnswersFresh) {
    store_slot(0, empty_slot());
    store_slot(5, slot_of(300));

    EXPECT_EQ(json_of({"power", "history", "--json"})["age_s"], 150);
}

TEST_F(History, CsvHasUnitsInItsHeadersAndAnEmptyCellForWhatIsMissing) {
    store_slot(0, slot_of(300));
    store_slot(1, empty_slot());

    const Finished run = tool({"power", "history", "--csv"});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(run.out,
              "time_utc,timestamp_s,dc_avg_w,dc_max_w,dc_min_w,ac_avg_w,ac_max_w,ac_min_w\r\n"
              "2023-11-14T22:13:00Z,1699999980,300,310,290,350,360,340\r\n"
              "2023-11-14T22:12:30Z,1699999950,,,,,,\r\n");
}

TEST_F(History, CsvCanStandOldestFirst) {
    store_slot(0, slot_of(300));
    store_slot(1, slot_of(290));

    const Finished run = tool({"psu", "history", "1", "--csv", "--oldest-first"});

    EXPECT_EQ(run.out,
              "time_utc,timestamp_s,ac_avg_w,dc_avg_w\r\n"
              "2023-11-14T22:12:30Z,1699999950,100,90\r\n"
              "2023-11-14T22:13:00Z,1699999980,100,90\r\n");
}

}  // namespace
}  // namespace pwrmgt::tooltest
