// SPDX-License-Identifier: Apache-2.0
// The program that controls the simulated firmware, run as a process.
#include <fcntl.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "sim_test.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

struct Finished {
    int exit;
    std::string out;
    std::string err;
};

class Simctl : public SimTest {
protected:
    Finished run_into(const std::string& out, std::vector<std::string> arguments) const {
        const std::string err = place_.directory() + "/err";
        arguments.insert(arguments.begin(), "vekdb-simctl");
        std::vector<char*> argv;
        for (std::string& argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        const int exit = in_child([&] {
            dup2(open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
            dup2(open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
            execv(SIMCTL_PATH, argv.data());
            return 127;
        });
        return {exit, fs::is_regular_file(out) ? text_of(out) : "", text_of(err)};
    }
    Finished run(std::vector<std::string> arguments) const {
        return run_into(place_.directory() + "/out", std::move(arguments));
    }
    // Runs a command that has nothing to say.
    void done(std::vector<std::string> arguments) const {
        const Finished finished = run(std::move(arguments));
        EXPECT_EQ(finished.exit, 0) << finished.err;
        EXPECT_EQ(finished.out + finished.err, "");
    }
};

TEST_F(Simctl, StatusOfAFreshFirmware) {
    const Finished finished = run({"status"});

    EXPECT_EQ(finished.exit, 0);
    EXPECT_EQ(finished.out, "State         " + state_file() +
                                "\n"
                                "Cap           off, mode 1, -\n"
                                "Cap range     100 to 2000 W\n"
                                "Zero output   mode 0\n"
                                "Processors    4, caps -, -, -, -\n"
                                "Slot devices  -, -, -, -, -\n"
                                "GPUs          4\n"
                                "  0: cap -, byte cap 0, draws -\n"
                                "  1: cap -, byte cap 0, draws -\n"
                                "  2: cap -, byte cap 0, draws -\n"
                                "  3: cap -, byte cap 0, draws -\n"
                                "Open files    0\n"
                                "Audit log     0 requests\n"
                                "Faults        0\n");
    EXPECT_FALSE(fs::exists(directory()));
}

TEST_F(Simctl, StatusAsJsonShowsWhatWasSet) {
    done({"gpus", "1", "--draw", "250"});
    done({"slots", "25", "none"});
    done({"processors", "2", "--caps", "100"});
    done({"cap-range", "200", "800"});
    done({"fault", "add", "--command", "0x32", "--operation", "1", "--kind", "late", "--times",
          "3"});
    done({"fault", "add", "--command", "0xDB", "--kind", "completion:195", "--always"});
    capping({0x02, 1, 0x2C, 0x01, 1});

    const Json status = Json::parse(run({"status", "--json"}).out);

    EXPECT_EQ(status, Json::parse(R"({
        "schema": "vekdb-simctl.status/1", "state": ")" +
                                  state_file() + R"(",
        "cap": {"on": true, "mode": 1, "value_w": 300}, "cap_range": {"min_w": 200, "max_w": 800},
        "zero_output_mode": 0, "processors": {"count": 2, "cap_w": [100, null]},
        "slot_w": [25, null, null, null, null],
        "gpus": [{"cap_w": null, "byte_cap": 0, "draw_w": 250}], "open_files": [],
        "audit_requests": 1, "faults": [
            {"command": 50, "operation": 1, "kind": "late", "times": 3},
            {"command": 219, "operation": null, "kind": "completion:0xC3", "times": null}]})"));
}

TEST_F(Simctl, FaultBefallsTheNextExchange) {
    done({"fault", "add", "--command", "0x32", "--operation", "0x01", "--kind", "busy"});

    EXPECT_EQ(answer(kRealtimeRequest), (Bytes{0xC0}));
    EXPECT_EQ(answer(kRealtimeRequest).size(), 17u);
}

TEST_F(Simctl, FaultsCanBeCleared) {
    done({"fault", "add", "--command", "0x32", "--kind", "busy", "--always"});

    done({"fault", "clear"});

    EXPECT_EQ(answer(kRealtimeRequest).size(), 17u);
}

TEST_F(Simctl, MachineCanBeChangedUnderTheFirmware) {
    done({"gpus", "1"});
    done({"cap-range", "300", "300"});

    EXPECT_EQ(answer({0x20, 0x3A, 0, 0x06, 0xC1, 1}), (Bytes{0xC9}));
    EXPECT_EQ(capping({0x02, 1, 0x2D, 0x01, 1}), (Bytes{0x00, 1}));
}

TEST_F(Simctl, FewerGpusKeepTheSettingsOfThoseThatStay) {
    answer({0x20, 0x3A, 0, 0x06, 0xC1, 0, 80});

    done({"gpus", "2"});

    EXPECT_EQ(answer({0x20, 0x3A, 0, 0x06, 0xC1, 0}), (Bytes{0x00, 80}));
}

TEST_F(Simctl, ResetForgetsEverything) {
    capping({0x02, 1, 0x2C, 0x01, 1});
    done({"fault", "add", "--command", "0x32", "--kind", "busy"});

    done({"reset"});

    EXPECT_EQ(state(), pwrmgt::ipmi::sim::State{});
}

TEST_F(Simctl, AuditLogIsToldInWords) {
    EXPECT_EQ(run({"audit"}).out, "Nobody has asked for a cap.\n");
    capping({0x02, 1, 0x2C, 0x01, 1, 1, 'a', 0x1B, 'b'});
    capping({0x02, 1, 10, 0, 1});
    capping({0x02, 0, 0, 0, 1, 0});

    EXPECT_EQ(run({"audit"}).out,
              "2023-11-15T00:00:00Z  on, mode 1, 300 W, by \"a\\u001bb\": accepted\n"
              "2023-11-15T00:00:00Z  on, mode 1, 10 W, by not told: refused, status 1\n"
              "2023-11-15T00:00:00Z  off, mode 1, 0 W, by name too long: accepted\n");
}

TEST_F(Simctl, AuditLogIsToldAsJson) {
    capping({0x02, 1, 0x2C, 0x01, 1, 1, 'a'});

    EXPECT_EQ(Json::parse(run({"audit", "--json"}).out), Json::parse(R"({
        "schema": "vekdb-simctl.audit/1", "requests": [{
            "time": "2023-11-15T00:00:00Z", "asked": {"on": true, "mode": 1, "value_w": 300},
            "name": "a", "name_left_out": false, "status": 0}]})"));
}

TEST_F(Simctl, SixtyFifthFaultIsRefused) {
    set_up([](auto& state) { state.faults.resize(63); });
    done({"fault", "add", "--command", "0x32", "--kind", "busy"});

    const Finished finished = run({"fault", "add", "--command", "0x32", "--kind", "busy"});

    EXPECT_EQ(finished.exit, 2);
    EXPECT_EQ(state().faults.size(), 64u);
}

TEST_F(Simctl, WrongUsageIsTwoAndChangesNothing) {
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {},
             {"unknown"},
             {"fault"},
             {"fault", "add", "--command", "0x32"},
             {"fault", "add", "--command", "0x33", "--kind", "busy"},
             {"fault", "add", "--command", "0x32", "--operation", "0x05", "--kind", "busy"},
             {"fault", "add", "--command", "256", "--kind", "busy"},
             {"fault", "add", "--command", "0x32", "--kind", "lazy"},
             {"fault", "add", "--command", "0x32", "--operation", "1", "--kind", "status:1"},
             {"fault", "add", "--command", "0x32", "--kind", "busy", "--times", "0"},
             {"fault", "add", "--command", "0x32", "--kind", "busy", "--times", "2", "--always"},
             {"gpus", "17"},
             {"gpus", "-1"},
             {"gpus", "1", "--draw", "65535"},
             {"slots"},
             {"slots", "1", "2", "3", "4", "5", "6"},
             {"slots", "65535"},
             {"slots", "1", "some"},
             {"processors", "0"},
             {"processors", "9"},
             {"processors", "1", "--caps", "1", "2"},
             {"cap-range", "300", "299"},
             {"cap-range", "0", "300"}}) {
        const Finished finished = run(arguments);

        EXPECT_EQ(finished.exit, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(finished.out, "");
        EXPECT_NE(finished.err, "");
    }
    EXPECT_EQ(state(), pwrmgt::ipmi::sim::State{});
}

TEST_F(Simctl, HelpHasExamplesForFaults) {
    const Finished finished = run({"fault", "add", "--help"});

    EXPECT_EQ(finished.exit, 0);
    EXPECT_NE(finished.out.find("vekdb-simctl fault add --command 0x32 --operation 0x02"),
              std::string::npos);
}

TEST_F(Simctl, StateThatCannotBeUsedIsAFailure) {
    const EnvironmentVariable below_a_file("VEKDB_RUNTIME_DIR", trace_file_.path() + "/run");

    EXPECT_EQ(run({"status"}).exit, 1);
    EXPECT_EQ(run({"reset"}).exit, 1);
}

TEST_F(Simctl, FullStandardOutputIsAFailure) {
    EXPECT_EQ(run_into("/dev/full", {"status"}).exit, 1);
}

}  // namespace
