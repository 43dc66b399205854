// SPDX-License-Identifier: Apache-2.0
#include "tool.h"
#include "vekdb_client.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

class Policy : public ToolTest {
protected:
};

TEST_F(Policy, DefaultsShowLimitsThatAreNotSetAsDashes) {
    store_policy(0, 2);

    const Finished run = tool({"policy", "get"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "Stored power policy; database " + persistent_file() +
                           "\n"
                           "Setting                              Value\n"
                           "Power management offered               yes\n"
                           "Blade                                   no\n"
                           "Redundancy mode           2, not redundant\n"
                           "Maximizer status                         0\n"
                           "Capping on                              no\n"
                           "Capping mode                             1\n"
                           "Cap, W                                   -\n"
                           "AC soft limit, W                         -\n"
                           "AC lowest cap, W                         -\n"
                           "AC highest cap, W                        -\n"
                           "DC soft limit, W                         -\n"
                           "DC lowest cap, W                         -\n"
                           "DC highest cap, W                        -\n");
}

TEST_F(Policy, SettingsAppearInJsonUnderTheirNames) {
    store_policy(1, 1);
    change_policy({{"CapEnable", 1}});
    change_policy({{"CapValue", 700}});
    change_policy({{"CapSoftAc", 810}});
    change_policy({{"CapMinAc", 820}});
    change_policy({{"CapMaxAc", 830}});
    change_policy({{"CapSoftDc", 910}});
    change_policy({{"CapMinDc", 920}});
    change_policy({{"CapMaxDc", 930}});

    const json document = json_of({"policy", "get", "--json"});

    EXPECT_EQ(values_of(document), parsed(R"({
        "schema": "pwrmgtctl.policy.get/1", "view": "stored", "redundancy": "1, redundant, may be oversubscribed",
        "power_management_offered": true, "blade": true, "redundancy_mode": 1, "maximizer_status": 0,
        "capping": {"on": true, "mode": 1, "cap_w": 700, "ac": {"soft_w": 810, "min_w": 820, "max_w": 830},
                    "dc": {"soft_w": 910, "min_w": 920, "max_w": 930}}})"));
}

TEST_F(Policy, LimitsThatAreNotSetAreNullInJson) {
    store_policy(0, 1);

    const json capping = json_of({"policy", "get", "--json"})["capping"];

    EXPECT_FALSE(capping["on"].get<bool>());
    EXPECT_TRUE(capping["cap_w"].is_null());
    EXPECT_TRUE(capping["ac"]["max_w"].is_null());
    EXPECT_TRUE(capping["dc"]["soft_w"].is_null());
}

TEST_F(Policy, RefusedPowerManagementIsStillShown) {
    store_policy(2, 1);

    const json document = json_of({"policy", "get", "--json"});

    EXPECT_FALSE(document["power_management_offered"].get<bool>());
    EXPECT_TRUE(document["blade"].is_null());
}

TEST_F(Policy, NoStoredRowIsExit4) {
    const Finished run = tool({"policy", "get"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "pwrmgtctl: no power policy is stored (status 8)\n");
}

TEST_F(Policy, TimingIsAskedFor) {
    store_policy(0, 1);

    EXPECT_NE(tool({"policy", "get", "--timing"}).out.find("\nThe query took "), std::string::npos);
    EXPECT_TRUE(json_of({"policy", "get", "--json", "--timing"})["query_ms"].is_number());
}

TEST_F(Policy, ModeOfABladeIsNotSet) {
    store_policy(1, 99);

    EXPECT_EQ(lines_of(tool({"policy", "get"}).out)[4], "Redundancy mode           not set");
    EXPECT_TRUE(json_of({"policy", "get", "--json"})["redundancy_mode"].is_null());
    EXPECT_EQ(json_of({"policy", "get", "--json"})["redundancy"], "not set");
}

TEST_F(Policy, WidenedLimitsHaveTheUnstressPowersIn) {
    store_policy(0, 1);
    change_policy({{"CapMinAc", 200}, {"UnstressAdapterPwr", 50}, {"UnstressHddPwr", 30}});

    EXPECT_EQ(json_of({"policy", "get", "--json"})["capping"]["ac"]["min_w"], 200);
    EXPECT_EQ(json_of({"policy", "get", "--widened", "--json"})["capping"]["ac"]["min_w"], 280);
}

TEST_F(Policy, LiveShowsTheCapOfTheFirmware) {
    store_policy(0, 1);
    ASSERT_EQ(tool({"capping", "set", "450"}).exit, 0);

    const json capping = json_of({"policy", "get", "--live", "--json"})["capping"];
    tool({"capping", "set", "off"});

    EXPECT_EQ(capping["on"], true);
    EXPECT_EQ(capping["cap_w"], 450);
}

TEST_F(Policy, SetChangesWhatIsNamedAndKeepsTheRest) {
    store_policy(0, 1);
    change_policy({{"CapMinAc", 200}, {"CapMaxAc", 800}, {"UnstressFanPwr", 9}});

    const json capping =
        json_of({"policy", "set", "--ac-max", "900", "--dc-soft", "0", "--json"})["capping"];

    EXPECT_EQ(capping["ac"], parsed(R"({"soft_w": null, "min_w": 200, "max_w": 900})"));
    EXPECT_EQ(capping["dc"], parsed(R"({"soft_w": 0, "min_w": null, "max_w": null})"));
}

TEST_F(Policy, SetTakesALimitAway) {
    store_policy(0, 1);
    change_policy({{"CapMinAc", 200}});

    tool({"policy", "set", "--ac-min", "none"});

    EXPECT_TRUE(json_of({"policy", "get", "--json"})["capping"]["ac"]["min_w"].is_null());
}

TEST_F(Policy, SetRefusesALowestCapAboveTheHighestWithExit6) {
    store_policy(0, 1);
    change_policy({{"CapMaxDc", 800}});

    const Finished run = tool({"policy", "set", "--dc-min", "801"});

    EXPECT_EQ(run.exit, 6);
    EXPECT_EQ(run.err, "pwrmgtctl: the lowest cap would lie above the highest\n");
}

TEST_F(Policy, SetCanTakePowerManagementAway) {
    store_policy(0, 1);

    tool({"policy", "set", "--blade", "unmanaged"});

    EXPECT_EQ(tool({"power", "history"}).exit, 3);
    EXPECT_EQ(json_of({"policy", "get", "--json"})["power_management_offered"], false);
}

TEST_F(Policy, SetOfNothingIsAMistake) {
    const Finished run = tool({"policy", "set"});

    EXPECT_EQ(run.exit, 2);
    EXPECT_EQ(run.err, "pwrmgtctl: nothing to set; see --help\n");
}

TEST_F(Policy, SetWithoutAStoredPolicyIsExit4) {
    const Finished run = tool({"policy", "set", "--ac-min", "200"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.err, "pwrmgtctl: no power policy is stored (status 8)\n");
}

}  // namespace
}  // namespace pwrmgt::tooltest
