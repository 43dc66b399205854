// SPDX-License-Identifier: Apache-2.0
// The monitoring check as a process: exit codes, the one line, and that nothing unread passes as
// OK.
#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tool.h"
#include "vekdb_client.h"

namespace pwrmgt::tooltest {
namespace {

class Check : public ToolTest {
protected:
    // Two bays with supplies of 800 W, mode 1, and a reading of 320 W that is ten seconds old.
    void SetUp() override {
        ToolTest::SetUp();
        store_policy(0, 1);
        ASSERT_EQ(pwrmgt_init_psu_property_table(connection(), 2), 0U);
        store_supply(1, 0, 0);
        store_supply(2, 0, 0);
        store_draw(320, 10);
    }
    void store_supply(uint8_t bay, uint8_t input_lost, uint8_t fault) {
        ASSERT_EQ(pwrmgt_update_psu_property_table(connection(),
                                                   {bay, 1, input_lost, fault, 0, 900, 800}),
                  0U);
    }
    void store_draw(uint16_t dc_w, uint32_t age_s) {
        store_realtime({0, 0, 400, dc_w, 100, 40, 10, 20, 30, 5}, kNow - age_s);
    }
};

TEST_F(Check, EverythingWellIsOneLineAndExit0) {
    const Finished run = tool({"check", "--supplies", "2"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "POWER OK - 2 of 2 expected supplies healthy; redundancy level 1 in mode 1; "
              "drawing 320 W of 960 W available, 33.3 %; reading 10 s old | "
              "supplies_healthy=2;;2:;0;12 redundancy=1;;1:;0 draw=320W;768;864;0;960 "
              "draw_share=33.3%;80;90;0;100 age=10s;;60\n");
}

TEST_F(Check, DrawAboveTheWarningIsExit1) {
    store_draw(769, 10);

    const Finished run = tool({"check"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out.substr(0, 67),
              "POWER WARNING - drawing 769 W of 960 W available, 80.1 %, above 80 ");
}

TEST_F(Check, ThresholdsOfTheCommandLineHold) {
    const Finished run = tool({"check", "--warning", "20", "--critical", "30"});

    EXPECT_EQ(run.exit, 2);
    EXPECT_NE(run.out.find("draw=320W;192;288;0;960"), std::string::npos) << run.out;
}

TEST_F(Check, SupplyWithoutInputIsExit2AndNamed) {
    store_supply(2, 1, 0);

    const Finished run = tool({"check", "--supplies", "2"});

    EXPECT_EQ(run.exit, 2);
    EXPECT_EQ(run.out.substr(0, 17), "POWER CRITICAL - ");
    EXPECT_NE(run.out.find("supply 2: input lost; 1 of 2 expected supplies healthy"),
              std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("no redundancy in mode 1, level 1 expected"), std::string::npos)
        << run.out;
}

TEST_F(Check, OldReadingIsExit2AndItsDrawIsNotJudged) {
    store_draw(320, 61);

    const Finished run = tool({"check"});

    EXPECT_EQ(run.exit, 2);
    EXPECT_NE(run.out.find("reading 61 s old, more than 60 s; draw not known"), std::string::npos)
        << run.out;
}

TEST_F(Check, ReadingStampedInTheFutureIsExit3) {
    store_realtime({0, 0, 400, 320, 100, 40, 10, 20, 30, 5}, kNow + 100);

    const Finished run = tool({"check"});

    EXPECT_EQ(run.exit, 3);
    EXPECT_NE(run.out.find("reading 100 s in the future"), std::string::npos) << run.out;
}

TEST_F(Check, MissingPowerIsExit3AndNoMarkerIsPrinted) {
    store_draw(PWRMGT_NO_POWER, 10);
    ASSERT_EQ(pwrmgt_init_psu_property_table(connection(), 2), 0U);

    const Finished run = tool({"check"});

    EXPECT_EQ(run.exit, 3);
    EXPECT_EQ(run.out.find("65535"), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("=15"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("no reading of the system's DC power"), std::string::npos) << run.out;
}

class CheckUnread : public Check, public ::testing::WithParamInterface<const char*> {};

TEST_P(CheckUnread, EmptyTableIsExit3) {
    ASSERT_EQ(vek_db_delete(connection(), GetParam(), nullptr), 0);

    const Finished run = tool({"check"});

    EXPECT_EQ(run.exit, 3);
    EXPECT_EQ(run.out.substr(0, 16), "POWER UNKNOWN - ");
}

INSTANTIATE_TEST_SUITE_P(Tables, CheckUnread,
                         ::testing::Values("RealTimePowersMem", "PowerPolicy", "PsuPropertyMem"));

TEST_F(Check, DatabaseThatDoesNotOpenIsExit3WithTheReason) {
    const std::string file = state_directory() + "/plain_file";
    std::ofstream(file) << "no directory\n";

    const Finished run = tool_with(
        {"VEKDB_STATE_DIR=" + file + "/s", "VEKDB_RUNTIME_DIR=" + file + "/r"}, {"check"});

    EXPECT_EQ(run.exit, 3);
    EXPECT_NE(run.out.find("the database did not open (status 2)"), std::string::npos) << run.out;
}

TEST_F(Check, PlatformThatDoesNotOfferItIsExit3) {
    EXPECT_EQ(tool_with({"VEKDB_PLATFORM=quoril"}, {"check"}).exit, 3);
}

TEST_F(Check, PartsAreLeftOutWhenAskedTo) {
    ASSERT_EQ(vek_db_delete(connection(), "PsuPropertyMem", nullptr), 0);

    const Finished run =
        tool({"check", "--skip", "supplies", "--skip", "redundancy", "--skip", "draw"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "POWER OK - reading 10 s old | age=10s;;60\n");
}

TEST_F(Check, NothingLeftToCheckIsExit3) {
    const Finished run = tool(
        {"check", "--skip", "supplies", "--skip", "redundancy", "--skip", "draw", "--skip", "age"});

    EXPECT_EQ(run.exit, 3);
    EXPECT_EQ(run.out, "POWER UNKNOWN - --skip leaves nothing to check\n");
}

TEST_F(Check, MistakesOfTheCommandLineAreExit3OnStandardOutput) {
    // clang-format off
    const std::vector<std::vector<std::string>> mistakes{
        {"check", "--rubbish"}, {"check", "--supplies", "0"}, {"check", "--supplies", "13"},
        {"check", "--redundancy", "3"}, {"check", "--warning", "0"}, {"check", "--critical", "1001"},
        {"check", "--max-age", "0"}, {"check", "--max-age", "86401"}, {"check", "--skip", "disks"},
        {"check", "--warning", "91"},
    };
    // clang-format on
    for (const std::vector<std::string>& mistake : mistakes) {
        const Finished run = tool(mistake);

        EXPECT_EQ(run.exit, 3) << mistake[1];
        EXPECT_EQ(run.out.substr(0, 16), "POWER UNKNOWN - ");
        EXPECT_EQ(run.out.find('\n'), run.out.size() - 1) << run.out;
        EXPECT_EQ(run.err, "");
    }
}

TEST_F(Check, LineThatCannotBeWrittenIsExit3) {
    EXPECT_EQ(launch({{"check"}, {}, kNow, Sink::full_device, nullptr}).exit, 3);
    EXPECT_EQ(launch({{"check"}, {}, kNow, Sink::left_reader}).exit, 3);
}

TEST_F(Check, JsonTellsEveryPartAndEndsWithTheSameCode) {
    store_draw(320, 61);

    const Finished run = tool({"check", "--json"});
    const nlohmann::json document = parsed(run.out);

    EXPECT_EQ(run.exit, 2);
    EXPECT_EQ(document["schema"], "pwrmgtctl.check/1");
    EXPECT_EQ(document["state"], "critical");
    EXPECT_EQ(document["exit_code"], 2);
    ASSERT_EQ(document["findings"].size(), 4);
    EXPECT_EQ(document["findings"][3], parsed(R"({"part": "age", "state": "critical",
                  "words": "reading 61 s old, more than 60 s", "performance": "age=61s;;60"})"));
}

TEST_F(Check, HelpIsExit0AndTellsTheCodes) {
    const Finished run = tool({"check", "--help"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_NE(run.out.find("  3  UNKNOWN: something could not be read, or wrong usage\n"),
              std::string::npos);
}

}  // namespace
}  // namespace pwrmgt::tooltest
