// SPDX-License-Identifier: Apache-2.0
#include "tool.h"
#include "vekdb_client.h"

namespace pwrmgt::tooltest {
namespace {

using nlohmann::json;

constexpr uint8_t kUnknown = PWRMGT_PSU_UNKNOWN;
constexpr uint16_t kNoPower = PWRMGT_NO_POWER;

class Psu : public ToolTest {
protected:
    void make_bays(int32_t count) {
        ASSERT_EQ(pwrmgt_init_psu_property_table(connection(), count), 0U);
    }
    void store(const pwrmgt_psu_property_t& psu) {
        ASSERT_EQ(pwrmgt_update_psu_property_table(connection(), psu), 0U);
    }
    // Four bays: good, input lost, empty, and one of which only the presence is known.
    void four_bays() {
        store_policy(0, 1);
        make_bays(4);
        store({1, 1, 0, 0, 0, 800, 750});
        store({2, 1, 1, 1, 1, 900, 850});
        store({3, 0, 0, 0, 0, 800, 750});
        store({4, 1, kUnknown, kUnknown, kUnknown, kNoPower, kNoPower});
    }
};

TEST_F(Psu, ListShowsAllTwelveBays) {
    four_bays();

    const Finished run = tool({"psu", "list"});

    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "Supplies: 4 bays, 3 present, 1 healthy; age not known; database " + working_file() +
                  "\n"
                  "Bay   Supply  Input  Health  Voltage class  Input label W  Output label W\n"
                  "1    present   good    good              0            800             750\n"
                  "2    present   lost   fault              1            900             850\n"
                  "3      empty      -       -              -              -               -\n"
                  "4    present      -       -              -              -               -\n"
                  "5     no bay      -       -              -              -               -\n"
                  "6     no bay      -       -              -              -               -\n"
                  "7     no bay      -       -              -              -               -\n"
                  "8     no bay      -       -              -              -               -\n"
                  "9     no bay      -       -              -              -               -\n"
                  "10    no bay      -       -              -              -               -\n"
                  "11    no bay      -       -              -              -               -\n"
                  "12    no bay      -       -              -              -               -\n");
}

TEST_F(Psu, ListAsJsonHasNullForWhatIsMissing) {
    four_bays();

    const json document = json_of({"psu", "list", "--json"});

    EXPECT_EQ(document["schema"], "pwrmgtctl.psu.list/1");
    EXPECT_EQ(document["bays"], 4);
    EXPECT_EQ(document["present"], 3);
    EXPECT_EQ(document["healthy"], 1);
    ASSERT_EQ(document["psus"].size(), 12);
    EXPECT_EQ(document["psus"][1], parsed(R"({"psu": 2, "state": "present", "input": "lost",
        "health": "fault", "voltage_class": 1, "input_label_w": 900, "output_label_w": 850})"));
    EXPECT_EQ(document["psus"][2], parsed(R"({"psu": 3, "state": "empty", "input": null,
        "health": null, "voltage_class": null, "input_label_w": null, "output_label_w": null})"));
    EXPECT_EQ(document["psus"][3], parsed(R"({"psu": 4, "state": "present", "input": null,
        "health": null, "voltage_class": null, "input_label_w": null, "output_label_w": null})"));
    EXPECT_EQ(document["psus"][11]["state"], "no bay");
}

TEST_F(Psu, BayNobodyHasLookedAtIsNeitherPresentNorEmpty) {
    store_policy(0, 1);
    make_bays(2);

    const Finished text = tool({"psu", "list"});
    const json document = json_of({"psu", "list", "--json"});

    EXPECT_EQ(text.exit, 0) << text.err;
    EXPECT_NE(text.out.find("\nNo supply is present, or none is healthy (status 17).\n"),
              std::string::npos)
        << text.out;
    EXPECT_TRUE(document["psus"][0]["state"].is_null());
    EXPECT_EQ(document["present"], 0);
}

TEST_F(Psu, ListWithoutBaysIsExit4) {
    store_policy(0, 1);

    const Finished run = tool({"psu", "list"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "pwrmgtctl: no supply bay or no power policy is stored (status 8)\n");
}

TEST_F(Psu, ListOnABladeIsExit3) {
    store_policy(1, 1);
    make_bays(2);

    const Finished run = tool({"psu", "list"});

    EXPECT_EQ(run.exit, 3);
    EXPECT_EQ(run.err, "pwrmgtctl: not offered on this platform, or on a blade (status 10)\n");
}

TEST_F(Psu, VoltageShowsTheRange) {
    four_bays();

    const Finished text = tool({"psu", "voltage", "1"});
    const json document = json_of({"psu", "voltage", "2", "--json"});

    EXPECT_EQ(text.exit, 0);
    EXPECT_EQ(text.out, "Input voltage of supply 1; age not known; database " + working_file() +
                            "\n"
                            "Input voltage  Value\n"
                            "Kind              AC\n"
                            "Lowest, V        200\n"
                            "Highest, V       240\n");
    EXPECT_EQ(
        values_of(document),
        parsed(
            R"({"schema": "pwrmgtctl.psu.voltage/1", "psu": 2, "age_s": null, "stale": null, "kind": "ac", "low_v": 100, "high_v": 127})"));
}

TEST_F(Psu, VoltageOfClass16NamesItsKind) {
    store_policy(0, 1);
    make_bays(1);
    store({1, 1, 0, 0, 16, 800, 750});

    const json document = json_of({"psu", "voltage", "1", "--json"});

    EXPECT_EQ(document["kind"], "class_16");
    EXPECT_EQ(document["low_v"], 240);
    EXPECT_EQ(document["high_v"], 240);
}

TEST_F(Psu, VoltageTellsEachRefusal) {
    four_bays();

    const Finished empty = tool({"psu", "voltage", "3"});
    const Finished unknown = tool({"psu", "voltage", "4"});
    const Finished beyond = tool({"psu", "voltage", "5"});

    EXPECT_EQ(empty.exit, 4);
    EXPECT_EQ(empty.err, "pwrmgtctl: bay 3 is empty (status 3)\n");
    EXPECT_EQ(unknown.exit, 4);
    EXPECT_EQ(unknown.err, "pwrmgtctl: the voltage class of supply 4 is not known (status 31)\n");
    EXPECT_EQ(beyond.exit, 2);
    EXPECT_EQ(beyond.err, "pwrmgtctl: the machine has no bay for supply 5 (status 19)\n");
    EXPECT_EQ(empty.out + unknown.out + beyond.out, "");
}

TEST_F(Psu, VoltageWithoutAHealthySupplyIsExit4) {
    store_policy(0, 1);
    make_bays(2);

    const Finished run = tool({"psu", "voltage", "1"});

    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.err, "pwrmgtctl: no supply is present, or none is healthy (status 17)\n");
}

}  // namespace
}  // namespace pwrmgt::tooltest
