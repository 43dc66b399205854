// SPDX-License-Identifier: Apache-2.0
// Starts the tool, collects what it wrote, and keeps the directory that all of it lives in.
#include "tool.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "vekdb_client.h"

void nlohmann::PrintTo(const json& document, std::ostream* out) {
    *out << document.dump(2);
}

namespace pwrmgt::tooltest {

const char* const kTrace = "VEKDB_SIM_TRACE=" TRACE_FILE;

namespace {

constexpr std::array kTables{"RealTimePowersMem",      "HistPowers24HrMem",   "HistPowers24Hr",
                             "HistExtraPowers24HrMem", "HistExtraPowers24Hr", "PowerPolicy",
                             "HistCpuPowersMem",       "PsuPropertyMem",      "HistThermal24HrMem",
                             "RealTimeThermalMem"};

// Made before the first test and removed after the last one, so that the client's kept connections
// stay valid.
class Workplace : public ::testing::Environment {
public:
    void SetUp() override {
        std::string path = std::filesystem::temp_directory_path() / "pwrmgtctl_test.XXXXXX";
        ASSERT_NE(mkdtemp(path.data()), nullptr);
        root = path;
        state = root + "/state";
        runtime = root + "/run";
        std::filesystem::create_directory(state);
        std::filesystem::create_directory(runtime);
        setenv("VEKDB_STATE_DIR", state.c_str(), 1);
        setenv("VEKDB_RUNTIME_DIR", runtime.c_str(), 1);
        for (const char* name :
             {"VEKDB_SERVER", "VEKDB_PLATFORM", "VEKDB_IPMI", "VEKDB_SIM_TRACE", "VEKDB_PROPS"}) {
            unsetenv(name);
        }
    }
    void TearDown() override {
        if (!root.empty()) std::filesystem::remove_all(root);
    }

    std::string root;
    std::string state;
    std::string runtime;
};

Workplace* const workplace =
    static_cast<Workplace*>(::testing::AddGlobalTestEnvironment(new Workplace));

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// The descriptor that becomes the tool's standard output, or -1 for none.
int open_sink(Sink sink, const std::string& file) {
    if (sink == Sink::full_device) return open("/dev/full", O_WRONLY);
    if (sink == Sink::file) return open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (sink == Sink::closed) return -1;
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return -1;
    close(ends[0]);
    return ends[1];
}

void set_variable(const std::string& assignment) {
    const size_t equals = assignment.find('=');
    setenv(assignment.substr(0, equals).c_str(), assignment.substr(equals + 1).c_str(), 1);
}

void freeze_clock(int64_t seconds) {
    // The library reads the text in the zone of the process.
    tzset();
    std::tm parts{};
    const auto clock_s = static_cast<std::time_t>(seconds);
    localtime_r(&clock_s, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
    setenv("LD_PRELOAD", FAKETIME_LIBRARY, 1);
    setenv("FAKETIME_DONT_FAKE_MONOTONIC", "1", 1);
    setenv("FAKETIME", text.data(), 1);
    // The sanitizer's runtime insists on coming first, and its allocator asks for the time when it
    // gives memory back, which libfaketime answers only after allocating some.
    const char* options = getenv("ASAN_OPTIONS");
    setenv("ASAN_OPTIONS",
           (std::string(options ? options : "") +
            ":verify_asan_link_order=0:allocator_release_to_os_interval_ms=-1")
               .c_str(),
           1);
}

[[noreturn]] void become_tool(const Launch& launch, int sink, const std::string& errors) {
    const int error_file = open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(error_file, STDERR_FILENO);
    if (sink >= 0) {
        dup2(sink, STDOUT_FILENO);
    } else {
        close(STDOUT_FILENO);
    }
    std::signal(SIGPIPE, SIG_DFL);
    setenv("TZ", "UTC", 1);
    for (const std::string& assignment : launch.environment) {
        set_variable(assignment);
    }
    if (launch.clock_s) freeze_clock(*launch.clock_s);
    const char* program = launch.program == nullptr ? PWRMGTCTL_PATH : launch.program;
    std::vector<char*> arguments{const_cast<char*>(program)};
    for (const std::string& argument : launch.arguments) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    execv(program, arguments.data());
    _exit(127);
}

pwrmgt_hist_pwr_sample_t power_of(uint16_t avg, uint16_t max, uint16_t min) {
    return {0, 0, avg, max, min, PWRMGT_NO_POWER, PWRMGT_NO_POWER, PWRMGT_NO_POWER};
}

}  // namespace

const std::string& state_directory() {
    return workplace->state;
}

const char* tool_path() {
    return PWRMGTCTL_PATH;
}

const std::string& runtime_directory() {
    return workplace->runtime;
}

std::string working_file() {
    return workplace->runtime + "/vek_pwr_db-mem.sqlite";
}

std::string persistent_file() {
    return workplace->state + "/vek_pwr_db.sqlite";
}

void ToolTest::SetUp() {
    connection_ = pwrmgt_get_db_handle();
    ASSERT_NE(connection_, 0U);
    for (const char* table : kTables) {
        ASSERT_EQ(vek_db_delete(connection_, table, nullptr), 0) << table;
    }
}

void ToolTest::TearDown() {
    vek_db_close(connection_);
}

Finished ToolTest::launch(const Launch& launch) {
    const std::string output = workplace->root + "/out";
    const std::string errors = workplace->root + "/err";
    std::filesystem::remove(output);
    const int sink = open_sink(launch.sink, output);
    const pid_t child = fork();
    if (child == 0) become_tool(launch, sink, errors);
    if (sink >= 0) close(sink);
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), read_file(output),
            read_file(errors)};
}

Finished ToolTest::tool(const std::vector<std::string>& arguments) {
    return launch({arguments, {}, kNow, Sink::file, nullptr});
}

Finished ToolTest::tool_with(const std::vector<std::string>& environment,
                             const std::vector<std::string>& arguments) {
    return launch({arguments, environment, kNow, Sink::file, nullptr});
}

nlohmann::json ToolTest::json_of(const std::vector<std::string>& arguments) {
    const Finished run = tool(arguments);
    EXPECT_EQ(run.exit, 0) << run.err;
    return parsed(run.out);
}

void ToolTest::store_slot(uint32_t slots_back, const pwrmgt_hist_sample_t& sample) {
    const uint32_t stamp = kNewestSlot - slots_back * PWRMGT_SLOT_SECONDS;
    const auto slot = static_cast<uint16_t>(stamp / PWRMGT_SLOT_SECONDS % PWRMGT_RING_SLOTS);
    ASSERT_EQ(pwrmgt_update_hist_table(connection_, slot, static_cast<int32_t>(stamp), sample), 0U);
}

void ToolTest::store_realtime(const pwrmgt_realtime_pwr_t& reading, uint32_t timestamp) {
    ASSERT_EQ(pwrmgt_update_realtime_table(connection_, reading, timestamp), 0U);
}

void ToolTest::store_policy(uint32_t is_blade, uint32_t redun_mode) {
    pwrmgt_power_policy_t stored{};
    ASSERT_EQ(pwrmgt_init_power_policy_table(connection_, &stored, is_blade, redun_mode), 0U);
}

void ToolTest::change_policy(const std::vector<std::pair<const char*, uint16_t>>& columns) {
    const uint32_t content = vek_db_get_content_values();
    for (const auto& [column, value] : columns) {
        vek_db_content_put_short_uint(content, column, value);
    }
    EXPECT_EQ(vek_db_update(connection_, "PowerPolicy", content, nullptr, 0, 0), 0);
    vek_db_free_content_values(content);
}

pwrmgt_hist_sample_t slot_of(uint16_t dc_w) {
    const auto plus = [dc_w](int more) { return static_cast<uint16_t>(dc_w + more); };
    pwrmgt_hist_sample_t sample{};
    sample.system = {0, 0, dc_w, plus(10), plus(-10), plus(50), plus(60), plus(40)};
    sample.cpu = power_of(100, 110, 90);
    sample.memory = power_of(40, 45, 35);
    for (uint16_t at = 0; at < 4; ++at) {
        const auto input = static_cast<uint16_t>((at + 1) * 100);
        sample.psu[at] = {0, 0, input, static_cast<uint16_t>(input - 10)};
    }
    sample.perf = {0, 0, 30, 35, 25, 20, 10, 5};
    return sample;
}

pwrmgt_hist_sample_t empty_slot() {
    constexpr uint16_t kNoPower = PWRMGT_NO_POWER;
    constexpr uint8_t kNoPercent = PWRMGT_NO_PERCENT;
    pwrmgt_hist_sample_t sample{};
    sample.system = sample.cpu = sample.memory = power_of(kNoPower, kNoPower, kNoPower);
    for (pwrmgt_hist_psu_sample_t& psu : sample.psu) {
        psu = {0, 0, kNoPower, kNoPower};
    }
    sample.perf = {0, 0, kNoPercent, kNoPercent, kNoPercent, kNoPercent, kNoPercent, kNoPercent};
    return sample;
}

nlohmann::json parsed(const std::string& text) {
    return nlohmann::json::parse(text);
}

nlohmann::json values_of(nlohmann::json document) {
    for (const char* key : {"source", "database", "asked_at_s", "asked_at_utc"}) {
        document.erase(key);
    }
    return document;
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace pwrmgt::tooltest
