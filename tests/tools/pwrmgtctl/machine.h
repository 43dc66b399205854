// SPDX-License-Identifier: Apache-2.0
// A machine at work: every table and the firmware hold something, with gaps; and every command
// that there is, for the tests that go through all of them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "firmware_tool.h"

namespace pwrmgt::tooltest {

// A command that works on the machine, named as the file that its output is kept in.
struct Command {
    std::string name;  // "power-history"
    std::vector<std::string> arguments;
    int exit = 0;
    bool csv = false;
};

// At least one for every command of the tool, and each form of those whose form depends on options.
const std::vector<Command>& every_command();

class MachineTest : public FirmwareTest {
protected:
    void SetUp() override;
    void TearDown() override;
    // Runs a command of the machine, with more arguments behind it.
    Finished run(const Command& command, const std::vector<std::string>& more);

    void store_cpu_row(uint32_t slots_back, const std::vector<uint16_t>& watts);
    void store_extra_slot(uint32_t slots_back, const pwrmgt_hist_extra_sample_t& sample);
    void store_temperature(uint8_t type, uint8_t instance, int16_t celsius, uint32_t time_s);
    void store_latest_temperature(uint8_t type, uint8_t instance, int16_t celsius, uint32_t time_s);
    void store_bays(const std::vector<pwrmgt_psu_property_t>& bays);

private:
    std::string properties_;
};

}  // namespace pwrmgt::tooltest
