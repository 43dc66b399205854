// SPDX-License-Identifier: Apache-2.0
// Redundancy mode, available power and capping ranges.
#include <filesystem>
#include <fstream>

#include "tool.h"
#include "vekdb_client.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

class Redundancy : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        allow(3);
    }
    void TearDown() override {
        std::filesystem::remove(properties_);
        ToolTest::TearDown();
    }

    // Which modes the machine allows: bit 1 for 0, 1 and 4, bit 0 for 2 and 3.
    void allow(int bits) {
        std::ofstream(properties_) << "/dc/tavn/dm/planar/0/psu/config_type = " << bits << '\n';
    }
    Finished here(const std::vector<std::string>& arguments) {
        return tool_with({"VEKDB_PROPS=" + properties_}, arguments);
    }
    json json_here(const std::vector<std::string>& arguments) {
        const Finished run = here(arguments);
        EXPECT_EQ(run.exit, 0) << run.err;
        return parsed(run.out);
    }
    // Bays with good supplies of one label.
    void store_supplies(uint8_t bays, uint16_t label_w) {
        ASSERT_EQ(pwrmgt_init_psu_property_table(connection(), bays), 0U);
        for (uint8_t bay = 1; bay <= bays; ++bay) {
            ASSERT_EQ(
                pwrmgt_update_psu_property_table(connection(), {bay, 1, 0, 0, 0, label_w, label_w}),
                0U);
        }
    }

    const std::string properties_ = state_directory() + "/properties.conf";
};

TEST_F(Redundancy, GetTellsTheStoredMode) {
    store_policy(0, 2);

    const Finished text = here({"redundancy", "get"});
    const json document = json_here({"redundancy", "get", "--json"});

    EXPECT_EQ(text.exit, 0);
    EXPECT_EQ(text.out, "Redundancy mode 2, not redundant; database " + persistent_file() + "\n");
    EXPECT_EQ(
        values_of(document),
        parsed(
            R"({"schema": "pwrmgtctl.redundancy.get/1", "mode": 2, "meaning": "2, not redundant"})"));
}

TEST_F(Redundancy, SetStoresTheMode) {
    store_policy(0, 1);

    const Finished set = here({"redundancy", "set", "4"});

    EXPECT_EQ(set.exit, 0);
    EXPECT_EQ(set.err, "");
    EXPECT_EQ(set.out, "Stored redundancy mode 4, one supply in reserve; database " +
                           persistent_file() + "\n");
    EXPECT_EQ(json_here({"redundancy", "get", "--json"})["mode"], 4);
}

TEST_F(Redundancy, ModeThatTheMachineDoesNotAllowIsExit3AndNotStored) {
    store_policy(0, 1);
    allow(2);

    const Finished set = here({"redundancy", "set", "2"});

    EXPECT_EQ(set.exit, 3);
    EXPECT_EQ(set.out, "");
    EXPECT_EQ(set.err, "pwrmgtctl: redundancy mode 2 is not allowed on this machine (status 10)\n");
    EXPECT_EQ(json_here({"redundancy", "get", "--json"})["mode"], 1);
}

TEST_F(Redundancy, StoredModeThatTheMachineDoesNotAllowIsNamed) {
    store_policy(0, 3);
    allow(2);

    const Finished run = here({"redundancy", "get"});

    EXPECT_EQ(run.exit, 3);
    EXPECT_EQ(run.err, "pwrmgtctl: redundancy mode 3 is not allowed on this machine (status 10)\n");
}

TEST_F(Redundancy, ModeThatWasNeverSetIsNotShownAsANumber) {
    store_policy(0, 1);
    change_policy({{"RedunMode", 15}});

    const Finished told = here({"redundancy", "get"});
    const Finished refused = tool({"redundancy", "get"});

    EXPECT_EQ(told.exit, 4);
    EXPECT_EQ(told.out, "");
    EXPECT_EQ(told.err, "pwrmgtctl: no redundancy mode is stored\n");
    EXPECT_EQ(refused.exit, 4);
    EXPECT_EQ(refused.err, "pwrmgtctl: no redundancy mode is stored (status 10)\n");
}

TEST_F(Redundancy, BladeIsExit3) {
    store_policy(1, 1);

    const Finished get = here({"redundancy", "get"});
    const Finished set = here({"redundancy", "set", "1"});

    EXPECT_EQ(get.exit, 3);
    EXPECT_EQ(get.err, "pwrmgtctl: not offered on this platform, or on a blade (status 10)\n");
    EXPECT_EQ(set.exit, 3);
    EXPECT_EQ(set.err, "pwrmgtctl: not offered on this platform, or on a blade (status 10)\n");
}

TEST_F(Redundancy, WithoutAPolicyIsExit4) {
    const Finished get = here({"redundancy", "get"});
    const Finished set = here({"redundancy", "set", "1"});

    EXPECT_EQ(get.exit, 4);
    EXPECT_EQ(get.err, "pwrmgtctl: no power policy is stored (status 8)\n");
    EXPECT_EQ(set.exit, 4);
}

TEST_F(Redundancy, AutoStoresTheModeOfTheHardware) {
    store_policy(0, 0);
    store_supplies(4, 2400);

    const Finished run = here({"redundancy", "auto", "2"});

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(
        run.out,
        "Hardware configuration 2: stored redundancy mode 4, one supply in reserve; database " +
            persistent_file() + "\n");
    EXPECT_EQ(json_here({"redundancy", "get", "--json"})["mode"], 4);
}

TEST_F(Redundancy, AutoWithoutUsableSuppliesIsExit4) {
    store_policy(0, 0);

    const Finished run = here({"redundancy", "auto", "1"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.err,
              "pwrmgtctl: the supplies cannot be told: not readable, none healthy, or the weakest "
              "one's label not known (status 17)\n");
}

TEST_F(Redundancy, AvailablePowerIsTheSupplies) {
    store_policy(0, 0);
    store_supplies(2, 750);

    const Finished text = here({"power", "available"});
    const json document = json_here({"power", "available", "--json"});

    EXPECT_EQ(text.exit, 0) << text.err;
    EXPECT_EQ(text.out, "Power that the system may draw; age not known; database " +
                            persistent_file() +
                            "\n"
                            "Power         Value\n"
                            "Available, W    750\n");
    EXPECT_EQ(
        values_of(document),
        parsed(
            R"({"schema": "pwrmgtctl.power.available/1", "age_s": null, "stale": null, "available_w": 750})"));
}

TEST_F(Redundancy, AvailablePowerOfSuppliesThatCannotBeToldIsExit4) {
    store_policy(0, 1);

    const Finished run = here({"power", "available"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "pwrmgtctl: the supplies cannot be told: not readable, none healthy, or the weakest "
              "one's label not known (status 17)\n");
}

TEST_F(Redundancy, CappingRangeIsTheStoredOneOfItsDomain) {
    store_policy(0, 1);
    change_policy({{"CapMinAc", 300}});
    change_policy({{"CapMaxAc", 900}});
    change_policy({{"CapMinDc", 250}});

    const Finished ac = here({"capping", "ranges"});
    const json dc = json_here({"capping", "ranges", "--dc", "--json"});

    EXPECT_EQ(ac.exit, 0) << ac.err;
    EXPECT_EQ(ac.out, "Range of a power cap, AC; database " + persistent_file() +
                          "\n"
                          "Power           Value\n"
                          "Lowest cap, W     300\n"
                          "Highest cap, W    900\n");
    EXPECT_EQ(
        values_of(dc),
        parsed(
            R"({"schema": "pwrmgtctl.capping.ranges/1", "side": "dc", "min_w": 250, "max_w": null})"));
}

TEST_F(Redundancy, HighestCapIsTheAvailablePowerWhenThatIsKnown) {
    store_policy(0, 0);
    change_policy({{"CapMaxAc", 900}});
    store_supplies(2, 750);

    const json document = json_here({"capping", "ranges", "--json"});

    EXPECT_EQ(document["max_w"], 750);
    EXPECT_TRUE(document["min_w"].is_null());
}

TEST_F(Redundancy, CappingRangeWithoutAPolicyIsExit4) {
    const Finished run = here({"capping", "ranges"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.err, "pwrmgtctl: no power policy is stored (status 8)\n");
}

}  // namespace
}  // namespace pwrmgt::tooltest
