// SPDX-License-Identifier: Apache-2.0
// The metrics as a process: what is told, what is left out, and what failing tables leave.
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tool.h"
#include "vekdb_client.h"

namespace pwrmgt::tooltest {
namespace {

class Metrics : public ToolTest {
protected:
    void TearDown() override {
        std::filesystem::remove(file_);
        ToolTest::TearDown();
    }

    // Every source has something to tell.
    void fill() {
        store_policy(0, 1);
        store_realtime({0, 0, 400, 320, 100, 40, 10, 20, 5, 100}, kNow - 10);
        store_slot(0, slot_of(300));
        ASSERT_EQ(pwrmgt_init_psu_property_table(connection(), 3), 0U);
        ASSERT_EQ(pwrmgt_update_psu_property_table(connection(), {1, 1, 0, 0, 0, 900, 800}), 0U);
        ASSERT_EQ(pwrmgt_update_psu_property_table(connection(), {2, 0, 0, 0, 0, 900, 800}), 0U);
        ASSERT_EQ(pwrmgt_update_psu_property_table(
                      connection(), {3, 1, PWRMGT_PSU_UNKNOWN, 1, 0, PWRMGT_NO_POWER, 800}),
                  0U);
        pwrmgt_cpu_pwr_sample_t processors{0, kNow - 30, {}};
        std::fill(std::begin(processors.cpu_w), std::end(processors.cpu_w), PWRMGT_NO_POWER);
        processors.cpu_w[0] = 61;
        processors.cpu_w[3] = 58;
        ASSERT_EQ(pwrmgt_update_cpu_pwr_hist_table(connection(), processors), 0U);
        store_temperature(1, 1, -3, kNow - 20);
        store_temperature(2, 2, 58, kNow - 10);
    }
    void store_temperature(int16_t kind, int16_t instance, int16_t degrees, uint32_t time_s) {
        const uint32_t content = vek_db_get_content_values();
        vek_db_content_put_int(content, "Timestamp", static_cast<int32_t>(time_s));
        vek_db_content_put_short_int(content, "Type", kind);
        vek_db_content_put_short_int(content, "InstNum", instance);
        vek_db_content_put_short_int(content, "Value", degrees);
        EXPECT_EQ(vek_db_insert(connection(), "RealTimeThermalMem", content, 0, 0), 0);
        vek_db_free_content_values(content);
    }

    const std::string file_ = state_directory() + "/pwrmgt.prom";
};

// The samples, without the lines that describe them.
std::vector<std::string> samples_of(const std::string& text) {
    std::vector<std::string> samples;
    for (const std::string& line : lines_of(text)) {
        if (!line.starts_with('#')) samples.push_back(line);
    }
    return samples;
}

std::string contents_of(const std::string& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

TEST_F(Metrics, EveryReadingIsAGaugeAndWhatIsMissingIsNoSeries) {
    fill();

    const Finished run = tool({"metrics"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    // clang-format off
    EXPECT_EQ(samples_of(run.out), (std::vector<std::string>{
        "pwrmgt_up{source=\"realtime\"} 1",
        "pwrmgt_up{source=\"processors\"} 1",
        "pwrmgt_up{source=\"supply_power\"} 1",
        "pwrmgt_up{source=\"supplies\"} 1",
        "pwrmgt_up{source=\"policy\"} 1",
        "pwrmgt_up{source=\"available_power\"} 0",
        "pwrmgt_up{source=\"temperatures\"} 1",
        "pwrmgt_realtime_timestamp_seconds 1700000000",
        "pwrmgt_system_power_watts{side=\"ac\"} 400",
        "pwrmgt_system_power_watts{side=\"dc\"} 320",
        "pwrmgt_processors_power_watts 100",
        "pwrmgt_memory_power_watts 40",
        "pwrmgt_utilization_ratio{part=\"system\"} 0.10",
        "pwrmgt_utilization_ratio{part=\"processors\"} 0.20",
        "pwrmgt_utilization_ratio{part=\"memory\"} 0.05",
        "pwrmgt_utilization_ratio{part=\"io\"} 1.00",
        "pwrmgt_processor_power_timestamp_seconds 1699999980",
        "pwrmgt_processor_power_watts{processor=\"1\"} 61",
        "pwrmgt_processor_power_watts{processor=\"4\"} 58",
        "pwrmgt_supply_power_timestamp_seconds{supply=\"1\"} 1699999980",
        "pwrmgt_supply_power_timestamp_seconds{supply=\"2\"} 1699999980",
        "pwrmgt_supply_power_timestamp_seconds{supply=\"3\"} 1699999980",
        "pwrmgt_supply_power_timestamp_seconds{supply=\"4\"} 1699999980",
        "pwrmgt_supply_power_watts{supply=\"1\",side=\"input\"} 100",
        "pwrmgt_supply_power_watts{supply=\"1\",side=\"output\"} 90",
        "pwrmgt_supply_power_watts{supply=\"2\",side=\"input\"} 200",
        "pwrmgt_supply_power_watts{supply=\"2\",side=\"output\"} 190",
        "pwrmgt_supply_power_watts{supply=\"3\",side=\"input\"} 300",
        "pwrmgt_supply_power_watts{supply=\"3\",side=\"output\"} 290",
        "pwrmgt_supply_power_watts{supply=\"4\",side=\"input\"} 400",
        "pwrmgt_supply_power_watts{supply=\"4\",side=\"output\"} 390",
        "pwrmgt_supply_present{supply=\"1\"} 1",
        "pwrmgt_supply_present{supply=\"2\"} 0",
        "pwrmgt_supply_present{supply=\"3\"} 1",
        "pwrmgt_supply_input_lost{supply=\"1\"} 0",
        "pwrmgt_supply_fault{supply=\"1\"} 0",
        "pwrmgt_supply_fault{supply=\"3\"} 1",
        "pwrmgt_supply_rated_power_watts{supply=\"1\",side=\"input\"} 900",
        "pwrmgt_supply_rated_power_watts{supply=\"1\",side=\"output\"} 800",
        "pwrmgt_supply_rated_power_watts{supply=\"3\",side=\"output\"} 800",
        "pwrmgt_redundancy_mode 1",
        "pwrmgt_power_capping_enabled 0",
        "pwrmgt_temperature_timestamp_seconds 1700000000",
        "pwrmgt_temperature_celsius{sensor=\"inlet1\"} -3",
        "pwrmgt_temperature_celsius{sensor=\"cpu2\"} 58",
    }));
    // clang-format on
}

TEST_F(Metrics, GaugeHasHelpTypeAndUnitAndTheTextItsEnd) {
    fill();

    const Finished run = tool({"metrics"});

    EXPECT_NE(run.out.find("# HELP pwrmgt_system_power_watts Power of the whole system, AC and DC "
                           "side.\n"
                           "# TYPE pwrmgt_system_power_watts gauge\n"
                           "# UNIT pwrmgt_system_power_watts watts\n"
                           "pwrmgt_system_power_watts{side=\"ac\"} 400\n"),
              std::string::npos)
        << run.out;
    EXPECT_TRUE(run.out.ends_with("\n# EOF\n"));
}

TEST_F(Metrics, AvailablePowerAndRedundancyLevelAreToldWhereTheSuppliesAllowIt) {
    store_policy(0, 1);
    ASSERT_EQ(pwrmgt_init_psu_property_table(connection(), 2), 0U);
    ASSERT_EQ(pwrmgt_update_psu_property_table(connection(), {1, 1, 0, 0, 0, 900, 800}), 0U);
    ASSERT_EQ(pwrmgt_update_psu_property_table(connection(), {2, 1, 0, 0, 0, 900, 800}), 0U);

    const std::vector<std::string> samples = samples_of(tool({"metrics"}).out);

    const auto told = [&](const char* line) {
        return std::count(samples.begin(), samples.end(), line) == 1;
    };
    EXPECT_TRUE(told("pwrmgt_up{source=\"available_power\"} 1"));
    EXPECT_TRUE(told("pwrmgt_redundancy_level 1"));
    EXPECT_TRUE(told("pwrmgt_available_power_watts 960"));
}

TEST_F(Metrics, EmptyTablesAreDownAndNoFailure) {
    const Finished run = tool({"metrics"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(samples_of(run.out),
              (std::vector<std::string>{
                  "pwrmgt_up{source=\"realtime\"} 0", "pwrmgt_up{source=\"processors\"} 0",
                  "pwrmgt_up{source=\"supply_power\"} 0", "pwrmgt_up{source=\"supplies\"} 0",
                  "pwrmgt_up{source=\"policy\"} 0", "pwrmgt_up{source=\"available_power\"} 0",
                  "pwrmgt_up{source=\"temperatures\"} 0"}));
}

TEST_F(Metrics, MarkersAreNeverValues) {
    store_policy(0, 255);
    store_realtime({0, 0, PWRMGT_NO_POWER, PWRMGT_NO_POWER, PWRMGT_NO_POWER, PWRMGT_NO_POWER,
                    PWRMGT_NO_PERCENT, PWRMGT_NO_PERCENT, PWRMGT_NO_PERCENT, PWRMGT_NO_PERCENT},
                   kNow);
    store_slot(0, empty_slot());
    ASSERT_EQ(pwrmgt_init_psu_property_table(connection(), 12), 0U);

    const Finished run = tool({"metrics"});

    EXPECT_EQ(run.exit, 0);
    for (const std::string& line : samples_of(run.out)) {
        EXPECT_FALSE(line.ends_with(" 65535") || line.ends_with(" 255") || line.ends_with(" 15") ||
                     line.ends_with(" 2.55") || line.ends_with(" -1"))
            << line;
    }
}

TEST_F(Metrics, NewestSlotWithoutAReadingIsNotReplacedByAnOlderOne) {
    store_slot(0, empty_slot());
    store_slot(1, slot_of(300));

    const Finished run = tool({"metrics"});

    EXPECT_EQ(run.out.find("pwrmgt_supply_power_watts"), std::string::npos) << run.out;
}

TEST_F(Metrics, DatabaseThatDoesNotOpenIsExit1WithEverySourceDown) {
    const std::string file = state_directory() + "/plain_file";
    std::ofstream(file) << "no directory\n";

    const Finished run = tool_with(
        {"VEKDB_STATE_DIR=" + file + "/s", "VEKDB_RUNTIME_DIR=" + file + "/r"}, {"metrics"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_NE(run.err.find("pwrmgtctl: realtime: the database did not open (status 2); "),
              std::string::npos)
        << run.err;
    EXPECT_EQ(samples_of(run.out).size(), 7);
    EXPECT_EQ(run.out.find("} 1\n"), std::string::npos) << run.out;
}

TEST_F(Metrics, OneFailingTableIsExit1AndTheOthersAreTold) {
    fill();
    const std::string spare = state_directory() + "/spare";
    std::filesystem::remove_all(spare);
    std::filesystem::create_directories(spare);
    const std::vector<std::string> there{"VEKDB_STATE_DIR=" + spare, "VEKDB_RUNTIME_DIR=" + spare};
    ASSERT_EQ(tool_with(there, {"metrics"}).exit, 0);
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open((spare + "/vek_pwr_db-mem.sqlite").c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database,
                           "DROP TABLE RealTimePowersMem;"
                           "CREATE TABLE RealTimePowersMem(other INTEGER)",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(database);

    const Finished run = tool_with(there, {"metrics"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "pwrmgtctl: realtime: the database query failed (status 3)\n");
    EXPECT_NE(run.out.find("pwrmgt_up{source=\"realtime\"} 0\n"), std::string::npos) << run.out;
    EXPECT_TRUE(run.out.ends_with("\n# EOF\n"));
}

TEST_F(Metrics, FileIsWrittenWholeAndStandardOutputStaysEmpty) {
    fill();
    std::ofstream(file_) << "what was there before\n";

    const Finished run = tool({"metrics", "--output", file_});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(contents_of(file_), tool({"metrics"}).out);
}

TEST_F(Metrics, FullDeviceIsExit1AndSaysSo) {
    const Finished run = launch({{"metrics"}, {}, kNow, Sink::full_device, nullptr});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "pwrmgtctl: standard output: No space left on device\n");
}

TEST_F(Metrics, DeviceIsNotReplacedByAFile) {
    const Finished run = tool({"metrics", "--output", "/dev/full"});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "pwrmgtctl: /dev/full: is there and no regular file; left alone\n");
}

}  // namespace
}  // namespace pwrmgt::tooltest
