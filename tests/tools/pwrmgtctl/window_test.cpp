// SPDX-License-Identifier: Apache-2.0
// Histories of a window that the command line places.
#include "time_argument.h"
#include "tool.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;
using pwrmgtctl::parse_time;

TEST(TimeArgument, NowSecondsAndIsoTextAreTimes) {
    EXPECT_EQ(parse_time("now", 1700000010), 1700000010);
    EXPECT_EQ(parse_time("1699999980", 0), 1699999980);
    EXPECT_EQ(parse_time("2023-11-14T22:13:00Z", 0), 1699999980);
    EXPECT_EQ(parse_time("2024-02-29T00:00:00Z", 0), 1709164800);
}

TEST(TimeArgument, BothEndsOfTheRangeAreTimesAndNothingBeyond) {
    EXPECT_EQ(parse_time("0", 1), 0);
    EXPECT_EQ(parse_time("2147483647", 1), 2147483647);
    EXPECT_EQ(parse_time("2038-01-19T03:14:07Z", 1), 2147483647);
    EXPECT_EQ(parse_time("-1", 1), std::nullopt);
    EXPECT_EQ(parse_time("2147483648", 1), std::nullopt);
    EXPECT_EQ(parse_time("2038-01-19T03:14:08Z", 1), std::nullopt);
    EXPECT_EQ(parse_time("99999999999999999999", 1), std::nullopt);
    EXPECT_EQ(parse_time("now", 2147483648), std::nullopt);
    EXPECT_EQ(parse_time("now", -1), std::nullopt);
}

TEST(TimeArgument, OtherTextIsNoTime) {
    for (const char* text :
         {"", "yesterday", "NOW", "1e9", "12 ", "2023-11-14", "2023-11-14T22:13:00",
          "2023-11-14 22:13:00Z", "2023-11-14T22:13:00+01:00", "2023-02-29T00:00:00Z",
          "2023-11-14T24:00:00Z", "2023-11-14T22:13:60Z", "2023-11-14T22:13:00Zz"}) {
        EXPECT_EQ(parse_time(text, 1), std::nullopt) << text;
    }
}

class HistoryWindow : public ToolTest {
protected:
    // Five minutes whose newest slot has DC 300 and each older one 10 less.
    void fill() {
        for (uint16_t back = 0; back < 10; ++back) {
            store_slot(back, slot_of(static_cast<uint16_t>(300 - back * 10)));
        }
    }
};

TEST_F(HistoryWindow, EndsWhereTheCommandLineSays) {
    fill();

    const Finished run =
        tool({"power", "history", "--end", "2023-11-14T22:12:00Z", "--minutes", "1"});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(
        run.out,
        "System power, 1 min up to 2023-11-14T22:12:00Z: 2 entries of 30 s, newest first; "
        "newest reading 60 s old; database " +
            working_file() +
            "\n"
            "Time (UTC)            DC avg W  DC max W  DC min W  AC avg W  AC max W  AC min W\n"
            "2023-11-14T22:12:00Z       280       290       270       330       340       320\n"
            "2023-11-14T22:11:30Z       270       280       260       320       330       310\n");
}

TEST_F(HistoryWindow, SamplesOfAnEntryAreFolded) {
    fill();

    const json document = json_of({"power", "history", "--end", "1699999980", "--minutes", "2",
                                   "--samples-per-entry", "4", "--json"});

    EXPECT_EQ(values_of(document), parsed(R"({
        "schema": "pwrmgtctl.power.history/1", "domain": "system", "period_s": 120, "entry_width_s": 120, "age_s": 0, "stale": false,
        "order": "newest_first", "end_s": 1699999980, "end_utc": "2023-11-14T22:13:00Z",
        "entries": [{"index": 0, "timestamp_s": 1699999980, "time_utc": "2023-11-14T22:13:00Z",
                     "dc": {"avg_w": 285, "max_w": 310, "min_w": 260},
                     "ac": {"avg_w": 335, "max_w": 360, "min_w": 310}}]})"));
}

TEST_F(HistoryWindow, EndsNowWhenNoEndIsSaid) {
    fill();

    const json document = json_of({"power", "history", "--minutes", "1440", "--json"});

    EXPECT_EQ(document["end_s"], 1700000010);
    EXPECT_EQ(document["period_s"], 86400);
    EXPECT_EQ(document["entry_width_s"], 30);
    EXPECT_EQ(document["entries"].size(), 10);
}

TEST_F(HistoryWindow, OfOneSupplyNamesItsBay) {
    fill();

    const json document = json_of({"psu", "history", "3", "--end", "now", "--minutes", "3",
                                   "--samples-per-entry", "3", "--json"});

    EXPECT_EQ(document["psu"], 3);
    EXPECT_EQ(document["entries"].size(), 2);
    EXPECT_EQ(document["entries"][0]["ac"]["avg_w"], 300);
    EXPECT_EQ(document["entries"][0]["dc"]["avg_w"], 290);
}

TEST_F(HistoryWindow, OfPerformanceHasPercentages) {
    fill();

    const json document =
        json_of({"performance", "history", "--end", "now", "--minutes", "2", "--json"});

    EXPECT_EQ(document["entries"][0]["system"],
              parsed(R"({"avg_pct": 30, "max_pct": 35, "min_pct": 25})"));
}

TEST_F(HistoryWindow, SlotWithoutAReadingIsADashAndNull) {
    store_slot(0, slot_of(300));
    store_slot(1, empty_slot());

    const Finished text = tool({"psu", "history", "1", "--minutes", "2"});
    const json document = json_of({"performance", "history", "--minutes", "2", "--json"});

    EXPECT_EQ(lines_of(text.out).at(3), "2023-11-14T22:12:30Z            -             -");
    EXPECT_TRUE(document["entries"][1]["io"]["avg_pct"].is_null());
}

TEST_F(HistoryWindow, WithoutAnyReadingIsExit4) {
    fill();

    const Finished power =
        tool({"power", "history", "--end", "2023-11-14T20:00:00Z", "--minutes", "30"});
    const Finished psu = tool({"psu", "history", "7", "--end", "now", "--minutes", "60"});
    const Finished performance = tool({"performance", "history", "--end", "0", "--minutes", "1"});

    EXPECT_EQ(power.exit, 4);
    EXPECT_EQ(power.out, "");
    EXPECT_EQ(power.err,
              "pwrmgtctl: no reading recorded in the 30 min up to 2023-11-14T20:00:00Z (status "
              "8)\n");
    EXPECT_EQ(psu.exit, 4);
    EXPECT_EQ(
        psu.err,
        "pwrmgtctl: no reading recorded of supply 7 in the 1 h up to 2023-11-14T22:13:30Z, or "
        "the machine has no such bay (status 8)\n");
    EXPECT_EQ(performance.exit, 4);
}

TEST_F(HistoryWindow, EntryLongerThanTheWindowIsExit2) {
    const Finished run = tool({"power", "history", "--minutes", "11", "--samples-per-entry", "24"});

    EXPECT_EQ(run.exit, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "pwrmgtctl: --samples-per-entry: an entry of 12 min does not fit into 11 min\n");
}

TEST_F(HistoryWindow, EntryAsLongAsTheWindowIsOneEntry) {
    fill();

    const json document =
        json_of({"power", "history", "--minutes", "12", "--samples-per-entry", "24", "--json"});

    EXPECT_EQ(document["entries"].size(), 1);
}

TEST_F(HistoryWindow, ClockThatTheLibraryCannotHoldIsExit2) {
    const Finished run =
        launch({{"power", "history", "--minutes", "5"}, {}, 2147483648, Sink::file});

    EXPECT_EQ(run.exit, 2);
    EXPECT_NE(run.err.find("the clock does not show a time from 1970 to 2038"), std::string::npos)
        << run.err;
}

}  // namespace
}  // namespace pwrmgt::tooltest
