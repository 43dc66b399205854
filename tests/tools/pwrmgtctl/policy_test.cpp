// SPDX-License-Identifier: Apache-2.0
#include "tool.h"
#include "vekdb_client.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

class Policy : public ToolTest {
protected:
    void change(const char* column, uint16_t value) {
        const uint32_t content = vek_db_get_content_values();
        vek_db_content_put_short_uint(content, column, value);
        EXPECT_EQ(vek_db_update(connection(), "PowerPolicy", content, nullptr, 0, 0), 0);
        vek_db_free_content_values(content);
    }
};

TEST_F(Policy, DefaultsShowLimitsThatAreNotSetAsDashes) {
    store_policy(0, 2);

    const Finished run = tool({"policy"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "Stored power policy; database " + persistent_file() +
                           "\n"
                           "Setting                   Value\n"
                           "Power management offered    yes\n"
                           "Blade                        no\n"
                           "Redundancy mode               2\n"
                           "Maximizer status              0\n"
                           "Capping on                   no\n"
                           "Capping mode                  1\n"
                           "Cap, W                        -\n"
                           "AC soft limit, W              -\n"
                           "AC lowest cap, W              -\n"
                           "AC highest cap, W             -\n"
                           "DC soft limit, W              -\n"
                           "DC lowest cap, W              -\n"
                           "DC highest cap, W             -\n");
}

TEST_F(Policy, SettingsAppearInJsonUnderTheirNames) {
    store_policy(1, 1);
    change("CapEnable", 1);
    change("CapValue", 700);
    change("CapSoftAc", 810);
    change("CapMinAc", 820);
    change("CapMaxAc", 830);
    change("CapSoftDc", 910);
    change("CapMinDc", 920);
    change("CapMaxDc", 930);

    const json document = json_of({"policy", "--json"});

    EXPECT_EQ(document, json::parse(R"({
        "schema": "pwrmgtctl.policy/1", "database": ")" +
                                    persistent_file() + R"(",
        "power_management_offered": true, "blade": true, "redundancy_mode": 1, "maximizer_status": 0,
        "capping": {"on": true, "mode": 1, "cap_w": 700, "ac": {"soft_w": 810, "min_w": 820, "max_w": 830},
                    "dc": {"soft_w": 910, "min_w": 920, "max_w": 930}}})"));
}

TEST_F(Policy, LimitsThatAreNotSetAreNullInJson) {
    store_policy(0, 1);

    const json capping = json_of({"policy", "--json"})["capping"];

    EXPECT_FALSE(capping["on"].get<bool>());
    EXPECT_TRUE(capping["cap_w"].is_null());
    EXPECT_TRUE(capping["ac"]["max_w"].is_null());
    EXPECT_TRUE(capping["dc"]["soft_w"].is_null());
}

TEST_F(Policy, RefusedPowerManagementIsStillShown) {
    store_policy(2, 1);

    const json document = json_of({"policy", "--json"});

    EXPECT_FALSE(document["power_management_offered"].get<bool>());
    EXPECT_TRUE(document["blade"].is_null());
}

TEST_F(Policy, NoStoredRowIsExit4) {
    const Finished run = tool({"policy"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "pwrmgtctl: no power policy is stored (status 8)\n");
}

TEST_F(Policy, TimingIsAskedFor) {
    store_policy(0, 1);

    EXPECT_NE(tool({"policy", "--timing"}).out.find("\nThe query took "), std::string::npos);
    EXPECT_TRUE(json_of({"policy", "--json", "--timing"})["query_ms"].is_number());
}

}  // namespace
}  // namespace pwrmgt::tooltest
