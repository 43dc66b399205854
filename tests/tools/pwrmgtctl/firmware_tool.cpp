// SPDX-License-Identifier: Apache-2.0
#include "firmware_tool.h"

#include <filesystem>
#include <fstream>

namespace pwrmgt::tooltest {
namespace {

std::string store_directory() {
    return runtime_directory() + "/store";
}

}  // namespace

void FirmwareTest::SetUp() {
    ToolTest::SetUp();
    std::filesystem::remove(runtime_directory() + "/ipmi-sim.json");
    std::filesystem::remove_all(store_directory());
}

void FirmwareTest::firmware(const std::vector<std::string>& arguments) {
    const Finished run = launch({arguments, {}, kNow, Sink::file, SIMCTL_PATH});
    EXPECT_EQ(run.exit, 0) << run.err;
}

void FirmwareTest::fail_always(const std::string& command, const std::string& operation,
                               const std::string& kind) {
    std::vector<std::string> arguments{"fault", "add", "--command", command};
    if (!operation.empty()) arguments.insert(arguments.end(), {"--operation", operation});
    arguments.insert(arguments.end(), {"--kind", kind, "--always"});
    firmware(arguments);
}

nlohmann::json FirmwareTest::firmware_state() {
    const Finished run = launch({{"status", "--json"}, {}, kNow, Sink::file, SIMCTL_PATH});
    return parsed(run.out);
}

nlohmann::json FirmwareTest::audit_log() {
    const Finished run = launch({{"audit", "--json"}, {}, kNow, Sink::file, SIMCTL_PATH});
    return parsed(run.out)["requests"];
}

void FirmwareTest::put_file(const std::string& name, const std::string& bytes) {
    std::filesystem::create_directories(store_directory());
    std::ofstream(store_directory() + '/' + name, std::ios::binary) << bytes;
}

void FirmwareTest::expect_refusal(const std::vector<std::string>& arguments, int exit,
                                  const std::string& words) {
    const Finished run = tool(arguments);

    EXPECT_EQ(run.exit, exit);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "pwrmgtctl: " + words + '\n');
}

}  // namespace pwrmgt::tooltest
