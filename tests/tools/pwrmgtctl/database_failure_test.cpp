// SPDX-License-Identifier: Apache-2.0
// A database that cannot be opened, and one whose tables do not have the columns.
#include <sqlite3.h>

#include <filesystem>
#include <fstream>

#include "tool.h"

namespace pwrmgt::tooltest {
namespace {

class DatabaseFailure : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        std::filesystem::remove_all(spare_);
        std::filesystem::create_directories(spare_);
    }

    // The tool against the spare directory.
    Finished spare_tool(const std::vector<std::string>& arguments) {
        return tool_with({"VEKDB_STATE_DIR=" + spare_, "VEKDB_RUNTIME_DIR=" + spare_}, arguments);
    }

    // Puts a table of the same name and other columns in a table's place.
    void replace_table(const std::string& file, const std::string& table) {
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open((spare_ + "/" + file).c_str(), &database), SQLITE_OK);
        const std::string sql =
            "DROP TABLE " + table + "; CREATE TABLE " + table + "(other INTEGER)";
        EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(database);
        sqlite3_close(database);
    }

    const std::string spare_ = state_directory() + "/spare";
};

TEST_F(DatabaseFailure, DatabaseThatDoesNotOpenIsExit1) {
    const std::string file = state_directory() + "/plain_file";
    std::ofstream(file) << "no directory\n";
    const std::vector<std::string> inside_a_file{"VEKDB_STATE_DIR=" + file + "/state",
                                                 "VEKDB_RUNTIME_DIR=" + file + "/run"};

    const Finished history = tool_with(inside_a_file, {"power", "history"});
    const Finished realtime = tool_with(inside_a_file, {"power", "realtime", "--json"});
    const Finished policy = tool_with(inside_a_file, {"policy", "get"});

    EXPECT_EQ(history.exit, 1);
    EXPECT_EQ(history.out, "");
    EXPECT_NE(history.err.find("pwrmgtctl: the database did not open (status 2)\n"),
              std::string::npos)
        << history.err;
    EXPECT_EQ(realtime.exit, 1);
    EXPECT_NE(realtime.err.find("(status 2)\n"), std::string::npos) << realtime.err;
    EXPECT_EQ(policy.exit, 1);
    EXPECT_NE(policy.err.find("(status 2)\n"), std::string::npos) << policy.err;
}

TEST_F(DatabaseFailure, QueryThatFailsIsExit1) {
    ASSERT_EQ(spare_tool({"power", "history"}).exit, 4);
    replace_table("vek_pwr_db-mem.sqlite", "HistPowers24HrMem");
    replace_table("vek_pwr_db-mem.sqlite", "RealTimePowersMem");
    replace_table("vek_pwr_db.sqlite", "PowerPolicy");

    const Finished history = spare_tool({"power", "history"});

    EXPECT_EQ(history.exit, 1);
    EXPECT_EQ(history.out, "");
    EXPECT_NE(history.err.find("pwrmgtctl: the database query failed (status 3)\n"),
              std::string::npos)
        << history.err;
    EXPECT_EQ(spare_tool({"psu", "history", "1"}).exit, 1);
    EXPECT_EQ(spare_tool({"performance", "history"}).exit, 1);
    EXPECT_EQ(spare_tool({"power", "realtime"}).exit, 1);
    EXPECT_EQ(spare_tool({"policy", "get"}).exit, 1);
}

TEST_F(DatabaseFailure, DatabaseReadIsTheOneOfTheEnvironment) {
    const Finished run = spare_tool({"policy", "get"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_TRUE(std::filesystem::exists(spare_ + "/vek_pwr_db.sqlite"));
}

}  // namespace
}  // namespace pwrmgt::tooltest
