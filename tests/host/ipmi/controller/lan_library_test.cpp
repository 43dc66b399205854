// SPDX-License-Identifier: Apache-2.0
// The library's own functions over a LAN session with another project's controller: real answers to
// the commands that it was taught, the documented statuses for those that it does not know.
#include <array>

#include "controller_test.h"
#include "support/captured_output.h"
#include "vekdb_pwrmgt.h"

namespace {

using pwrmgt::test::CapturedOutput;

class LanLibrary : public ControllerTest {
protected:
    EnvironmentVariable platform_{"VEKDB_PLATFORM"};
    TempFile place_;
    EnvironmentVariable state_{"VEKDB_STATE_DIR", place_.directory() + "/state"};
    EnvironmentVariable runtime_{"VEKDB_RUNTIME_DIR", place_.directory() + "/run"};
    std::uint8_t enable_ = 9;
    std::uint8_t mode_ = 9;
    std::uint16_t watts_ = 9;
};

TEST_F(LanLibrary, CapThatIsSetIsReadBack) {
    EXPECT_EQ(pwrmgt_set_power_capping_policy(1, 1, 750), 0u);

    EXPECT_EQ(pwrmgt_get_power_capping_policy(&enable_, &mode_, &watts_), 0u);
    EXPECT_EQ(enable_, 1);
    EXPECT_EQ(mode_, 1);
    EXPECT_EQ(watts_, 750);
}

TEST_F(LanLibrary, CapOutlivesTheSessionItWasSetIn) {
    EXPECT_EQ(pwrmgt_set_power_capping_policy(0, 1, 513), 0u);
    const EnvironmentVariable straight("VEKDB_IPMI", lan_setting(peer_.port()));

    EXPECT_EQ(pwrmgt_ipmi_get_pwr_capping(&enable_, &mode_, &watts_), 0u);
    EXPECT_EQ(enable_, 0);
    EXPECT_EQ(mode_, 1);
    EXPECT_EQ(watts_, 513);
    EXPECT_EQ(relay_.logins(), 1);
}

TEST_F(LanLibrary, CapThatTheControllerRejectsIs14AndLeavesTheOneBefore) {
    EXPECT_EQ(pwrmgt_set_power_capping_policy(1, 1, 2000), 0u);
    EXPECT_EQ(pwrmgt_set_power_capping_policy(1, 1, 2001), 14u);

    EXPECT_EQ(pwrmgt_get_power_capping_policy(&enable_, &mode_, &watts_), 0u);
    EXPECT_EQ(watts_, 2000);
}

TEST_F(LanLibrary, NamesOfEveryLengthArrive) {
    for (const std::size_t length : {0u, 1u, 64u, 65u}) {
        const std::string name(length, 'n');
        EXPECT_EQ(pwrmgt_set_power_capping_policy_auditlog(1, 1, 300, name.c_str()), 0u);
    }
    EXPECT_EQ(pwrmgt_set_power_capping_policy_auditlog(1, 1, 301, nullptr), 0u);
    EXPECT_EQ(pwrmgt_get_power_capping_policy(&enable_, &mode_, &watts_), 0u);
    EXPECT_EQ(watts_, 301);
}

TEST_F(LanLibrary, RealtimePowersArrive) {
    pwrmgt_realtime_pwr_t reading{};

    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 0u);
    EXPECT_EQ(reading.sys_ac_w, 300);
    EXPECT_EQ(reading.sys_dc_w, 270);
    EXPECT_EQ(reading.cpu_dc_w, 120);
    EXPECT_EQ(reading.mem_dc_w, 40);
    EXPECT_EQ(reading.sys_pct, 50);
    EXPECT_EQ(reading.io_pct, 20);
    EXPECT_EQ(reading.lead1, 0x01020304u);
}

TEST_F(LanLibrary, FileWithTheLongestNameArrives) {
    std::array<std::uint8_t, 256> buffer{};
    const std::string name = "/first" + std::string(100, 'x') + "/last1";
    ASSERT_EQ(name.size(), 112u);

    {
        const CapturedOutput traces;
        EXPECT_EQ(pwrmgt_ds_file_read(name.c_str(), buffer.data(), 256), 0u);
    }
    EXPECT_EQ(buffer[4], 200);
    EXPECT_EQ(buffer[5], 0);
    EXPECT_EQ(std::string(buffer.begin() + 6, buffer.begin() + 6 + 112), name);
    EXPECT_EQ(std::string(buffer.begin() + 6 + 112, buffer.begin() + 6 + 200), name.substr(0, 88));
}

TEST_F(LanLibrary, CommandsTheControllerDoesNotKnowHaveTheDocumentedStatus) {
    pwrmgt_slot_dev_pwr_t slots{};
    pwrmgt_cpu_pcap_t caps{};
    std::array<std::uint8_t, 256> meter{};

    EXPECT_EQ(pwrmgt_get_realtime_slot_dev_powers(&slots), 31u);
    EXPECT_EQ(pwrmgt_get_gpu_power_consumption(0, &watts_), 31u);
    EXPECT_EQ(pwrmgt_set_gpu_power_capping_policy(0, 16, 200), 31u);
    EXPECT_EQ(pwrmgt_get_gpu_power_capping_policy(0, 32, &watts_), 31u);
    EXPECT_EQ(pwrmgt_get_cpu_pcap(&caps), 0xC1u);
    EXPECT_EQ(pwrmgt_set_zero_output_mode(1), 0u);
    EXPECT_EQ(pwrmgt_get_zero_output_mode(&mode_), 0u);
    CapturedOutput trace;
    EXPECT_EQ(pwrmgt_get_power_fpga_meter(meter.data()), 31u);

    EXPECT_EQ(trace.text(), "pwrmgt_get_power_fpga_meter() rc=0, resp[0]=0xc1, resp_sz=1\n");
    EXPECT_EQ(mode_, 9);
    EXPECT_EQ(watts_, 9);
    EXPECT_EQ(meter[0], 0);
}

TEST_F(LanLibrary, RefusedLogInHasTheDocumentedStatus) {
    const EnvironmentVariable wrong("VEKDB_IPMI", lan_setting(relay_.port(), "operator", "no"));
    pwrmgt_realtime_pwr_t reading{};
    pwrmgt_cpu_pcap_t caps{};

    EXPECT_EQ(pwrmgt_get_power_capping_policy(&enable_, &mode_, &watts_), 31u);
    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 31u);
    EXPECT_EQ(pwrmgt_get_cpu_pcap(&caps), 8u);
    EXPECT_EQ(pwrmgt_set_zero_output_mode(1), 8u);
    EXPECT_EQ(watts_, 9);
}

}  // namespace
