// SPDX-License-Identifier: Apache-2.0
// The tool run as a process against a database of its own, filled through the library's writers.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "vekdb_pwrmgt.h"

// What GoogleTest shows of a document.
namespace nlohmann {
void PrintTo(const json& document, std::ostream* out);
}

namespace pwrmgt::tooltest {

// A frozen clock: 2023-11-14T22:13:30Z, a multiple of 30, and the newest slot closed by then.
inline constexpr uint32_t kNow = 1700000010;
inline constexpr uint32_t kNewestSlot = 1699999980;

// The processors' measured day as the firmware's readings, for a tool's environment.
extern const char* const kTrace;

// A stored reading, one of each.
inline constexpr pwrmgt_realtime_pwr_t kReading{0, 0, 350, 300, 100, 40, 30, 20, 10, 5};

struct Finished {
    int exit;  // exit code, or minus the signal that ended the process
    std::string out;
    std::string err;
};

// Where the tool's standard output goes.
enum class Sink { file, full_device, left_reader, closed };

struct Launch {
    std::vector<std::string> arguments;
    std::vector<std::string> environment;  // "NAME=value", on top of the fixture's
    std::optional<int64_t> clock_s;        // frozen at; none = the real clock
    Sink sink;
    const char* program = nullptr;  // none: the tool
};

class ToolTest : public ::testing::Test {
protected:
    void SetUp() override;

    // Runs the tool under the frozen clock.
    Finished tool(const std::vector<std::string>& arguments);
    // Runs it with additions to its environment.
    Finished tool_with(const std::vector<std::string>& environment,
                       const std::vector<std::string>& arguments);
    Finished launch(const Launch& launch);
    // Runs it, demands success, and parses its standard output.
    nlohmann::json json_of(const std::vector<std::string>& arguments);

    // Stores one slot of the history `slots_back` before the newest one.
    void store_slot(uint32_t slots_back, const pwrmgt_hist_sample_t& sample);
    void store_realtime(const pwrmgt_realtime_pwr_t& reading, uint32_t timestamp);
    void store_policy(uint32_t is_blade, uint32_t redun_mode);
    // Columns of the policy row and their new values.
    void change_policy(const std::vector<std::pair<const char*, uint16_t>>& columns);

    uint32_t connection() const { return connection_; }
    void TearDown() override;

private:
    uint32_t connection_ = 0;
};

// The tool under test.
const char* tool_path();

// The fixture's database, the same one for every test of the process: the directory of the
// persistent file, and the two files.
const std::string& state_directory();
const std::string& runtime_directory();
std::string working_file();
std::string persistent_file();

// A slot whose power readings follow from one: system DC `dc_w` (maximum 10 above, minimum 10
// below) and AC 50 more, processors 100, memory 40, supply N with N x 100 in and 10 less out;
// utilisation 30 (35, 25), 20, 10, 5.
pwrmgt_hist_sample_t slot_of(uint16_t dc_w);

// A slot without any reading.
pwrmgt_hist_sample_t empty_slot();

std::vector<std::string> lines_of(const std::string& text);

// The document that a text is.
nlohmann::json parsed(const std::string& text);

// A JSON answer without what every answer has beside its schema: source, database, when it was
// asked.
nlohmann::json values_of(nlohmann::json document);

}  // namespace pwrmgt::tooltest
