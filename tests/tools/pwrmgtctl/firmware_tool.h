// SPDX-License-Identifier: Apache-2.0
// The tool against the simulated firmware, whose exchanges can be made to fail.
#pragma once

#include <string>
#include <vector>

#include "tool.h"

namespace pwrmgt::tooltest {

class FirmwareTest : public ToolTest {
protected:
    // A firmware that nobody has told anything yet.
    void SetUp() override;
    // Runs vekdb-simctl on it and demands success.
    void firmware(const std::vector<std::string>& arguments);
    // Lets a fault befall every exchange of a command, or of one operation of it.
    void fail_always(const std::string& command, const std::string& operation,
                     const std::string& kind);
    // As the simulator's control shows it.
    nlohmann::json firmware_state();
    nlohmann::json audit_log();
    // Puts a file into the data store.
    void put_file(const std::string& name, const std::string& bytes);
    // Demands that the tool shows nothing and says exactly this.
    void expect_refusal(const std::vector<std::string>& arguments, int exit,
                        const std::string& words);
};

}  // namespace pwrmgt::tooltest
