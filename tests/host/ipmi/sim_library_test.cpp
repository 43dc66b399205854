// SPDX-License-Identifier: Apache-2.0
// The library's own functions against the simulated firmware: what a front end meets.
#include <array>
#include <filesystem>
#include <fstream>

#include "sim_test.h"
#include "support/captured_output.h"
#include "vekdb_pwrmgt.h"

namespace {

using pwrmgt::ipmi::sim::Fault;
using pwrmgt::ipmi::sim::set_kind;
using pwrmgt::test::CapturedOutput;

class SimLibrary : public SimTest {
protected:
    static void fault(std::uint8_t command, std::optional<std::uint8_t> operation,
                      const std::string& kind) {
        Fault added{command, operation, {}, {}, 1};
        EXPECT_TRUE(set_kind(added, kind)) << kind;
        set_up([&](auto& state) { state.faults.push_back(added); });
    }

    EnvironmentVariable database_{"VEKDB_STATE_DIR", place_.directory() + "/state"};
    EnvironmentVariable server_{"VEKDB_SERVER"};
    EnvironmentVariable platform_{"VEKDB_PLATFORM"};
    std::uint8_t enable_ = 9;
    std::uint8_t mode_ = 9;
    std::uint16_t value_ = 9;
};

TEST_F(SimLibrary, CapThatIsSetIsReadBackAndBendsTheReading) {
    EXPECT_EQ(pwrmgt_set_power_capping_policy_auditlog(1, 1, 1000, "ada"), 0u);

    pwrmgt_realtime_pwr_t reading{};
    EXPECT_EQ(pwrmgt_get_power_capping_policy(&enable_, &mode_, &value_), 0u);
    EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), 0u);
    EXPECT_EQ(enable_, 1);
    EXPECT_EQ(mode_, 1);
    EXPECT_EQ(value_, 1000);
    EXPECT_EQ(reading.sys_ac_w, 1000);
    EXPECT_EQ(reading.cpu_dc_w, 339);
    EXPECT_EQ(reading.lead1, 1'700'006'400u);
    ASSERT_EQ(state().audit.size(), 1u);
    EXPECT_EQ(state().audit[0].name, "ada");
}

TEST_F(SimLibrary, ValueOutsideTheMachinesRangeIs14) {
    EXPECT_EQ(pwrmgt_set_power_capping_policy(1, 1, 99), 14u);
    EXPECT_EQ(pwrmgt_set_power_capping_policy(1, 1, 100), 0u);
    EXPECT_EQ(pwrmgt_set_power_capping_policy(1, 1, 2000), 0u);
    EXPECT_EQ(pwrmgt_set_power_capping_policy(1, 1, 2001), 14u);
}

TEST_F(SimLibrary, UnknownModeIs31) {
    EXPECT_EQ(pwrmgt_set_power_capping_policy(1, 2, 300), 31u);
}

TEST_F(SimLibrary, NamesOfEveryLengthAreTaken) {
    EXPECT_EQ(pwrmgt_set_power_capping_policy_auditlog(1, 1, 300, std::string(64, 'n').c_str()),
              0u);
    EXPECT_EQ(pwrmgt_set_power_capping_policy_auditlog(1, 1, 300, std::string(65, 'n').c_str()),
              0u);
    EXPECT_EQ(pwrmgt_set_power_capping_policy_auditlog(1, 1, 300, nullptr), 0u);

    ASSERT_EQ(state().audit.size(), 3u);
    EXPECT_EQ(state().audit[0].requester, pwrmgt::ipmi::sim::Requester::named);
    EXPECT_EQ(state().audit[1].requester, pwrmgt::ipmi::sim::Requester::name_left_out);
    EXPECT_EQ(state().audit[2].requester, pwrmgt::ipmi::sim::Requester::not_told);
}

struct Met {
    const char* kind;
    std::uint32_t get_cap;
    std::uint32_t set_cap;
    std::uint32_t reading;
    std::uint32_t slots;
    std::uint32_t cpu_caps;  // its send status or completion code as it is
    std::uint32_t zero_output;
    std::uint32_t gpu;
};

// The meter, the GPUs and the processor caps do not look at an answer's length; only 19 bytes of
// processor caps are refused. The zero-output mode is the send status alone.
// clang-format off
const std::array<Met, 8> kMet{{
    {"busy",            31, 31, 31, 31, 0xC0, 0, 31},
    {"no-answer",       31, 31, 31, 31,    5, 5, 31},
    {"late:1",          31, 31, 31, 31,    7, 7, 31},
    {"short",           31, 31, 31, 31,    0, 0,  0},
    {"long",            31, 31, 31, 31,   31, 0,  0},
    {"long:256",        31, 31, 31, 31,    0, 0,  0},
    {"garbage",         14, 14,  0,  0,    0, 0,  0},
    {"completion:0xC3", 31, 31, 31, 31, 0xC3, 0, 31},
}};
// clang-format on

TEST_F(SimLibrary, EveryKindOfFaultIsMetWithTheDocumentedStatus) {
    for (const Met& met : kMet) {
        SCOPED_TRACE(met.kind);
        pwrmgt_realtime_pwr_t reading{};
        pwrmgt_slot_dev_pwr_t slots{};
        pwrmgt_cpu_pcap_t caps{};
        for (const std::uint8_t operation : Bytes{0x03, 0x02, 0x01, 0x04, 0x09, 0x06})
            fault(0x32, operation, met.kind);
        fault(0x06, 0xC0, met.kind);

        EXPECT_EQ(pwrmgt_ipmi_get_pwr_capping(&enable_, &mode_, &value_), met.get_cap);
        EXPECT_EQ(pwrmgt_set_power_capping_policy(1, 1, 300), met.set_cap);
        EXPECT_EQ(pwrmgt_get_realtime_powers(&reading), met.reading);
        EXPECT_EQ(pwrmgt_get_realtime_slot_dev_powers(&slots), met.slots);
        EXPECT_EQ(pwrmgt_get_cpu_pcap(&caps), met.cpu_caps);
        EXPECT_EQ(pwrmgt_get_zero_output_mode(&mode_), met.zero_output);
        EXPECT_EQ(pwrmgt_get_gpu_power_capping_policy(0, 16, &value_), met.gpu);
        EXPECT_TRUE(state().faults.empty());
    }
}

TEST_F(SimLibrary, StatusByteIs14AndLeavesTheOutputs) {
    fault(0x32, 0x03, "status:1");
    fault(0x32, 0x02, "status:0xFF");

    EXPECT_EQ(pwrmgt_get_power_capping_policy(&enable_, &mode_, &value_), 14u);
    EXPECT_EQ(pwrmgt_set_power_capping_policy(1, 1, 300), 14u);
    EXPECT_EQ(enable_, 9);
    EXPECT_EQ(mode_, 9);
    EXPECT_EQ(value_, 9);
}

TEST_F(SimLibrary, ZeroOutputModeIsReadBack) {
    EXPECT_EQ(pwrmgt_set_zero_output_mode(1), 0u);

    EXPECT_EQ(pwrmgt_get_zero_output_mode(&mode_), 0u);
    EXPECT_EQ(mode_, 1);
}

TEST_F(SimLibrary, ProcessorCapsArrive) {
    set_up([](auto& state) { state.cpu_cap_w = {100, 200, 300, 400, 5, 6, 7, 8}; });
    pwrmgt_cpu_pcap_t caps{};

    EXPECT_EQ(pwrmgt_get_cpu_pcap(&caps), 0u);
    EXPECT_EQ(caps.count, 4);
    EXPECT_EQ(caps.cap_w[0], 100);
    EXPECT_EQ(caps.cap_w[7], 8);
}

TEST_F(SimLibrary, GpuCapsAndConsumptionArrive) {
    set_up([](auto& state) { state.gpus[1].draw_w = 400; });

    EXPECT_EQ(pwrmgt_get_gpu_power_capping_policy(1, 16, &value_), 0u);
    EXPECT_EQ(value_, 65535);
    EXPECT_EQ(pwrmgt_set_gpu_power_capping_policy(1, 16, 300), 0u);
    EXPECT_EQ(pwrmgt_get_gpu_power_capping_policy(1, 16, &value_), 0u);
    EXPECT_EQ(value_, 300);
    EXPECT_EQ(pwrmgt_set_gpu_power_capping_policy(1, 32, 80), 0u);
    EXPECT_EQ(pwrmgt_get_gpu_power_capping_policy(1, 32, &value_), 0u);
    EXPECT_EQ(value_, 0x0150);
    EXPECT_EQ(pwrmgt_get_gpu_power_consumption(1, &value_), 0u);
    EXPECT_EQ(value_, 300);
    EXPECT_EQ(pwrmgt_get_gpu_power_consumption(4, &value_), 31u);
}

TEST_F(SimLibrary, SlotDevicePowersArrive) {
    set_up([](auto& state) { state.slot_w = {1, 2, 3, 4, 500}; });
    pwrmgt_slot_dev_pwr_t slots{};

    EXPECT_EQ(pwrmgt_get_realtime_slot_dev_powers(&slots), 0u);
    EXPECT_EQ(slots.word, 1'700'006'400u);
    EXPECT_EQ(slots.value[0], 1);
    EXPECT_EQ(slots.value[4], 500);
}

TEST_F(SimLibrary, MeterBlockArrives) {
    std::array<std::uint8_t, 256> block{};
    CapturedOutput output;

    EXPECT_EQ(pwrmgt_get_power_fpga_meter(block.data()), 0u);

    EXPECT_EQ(output.text(), "pwrmgt_get_power_fpga_meter() rc=0, resp[0]=0x0, resp_sz=18\n");
    EXPECT_EQ(block[5] | block[6] << 8, 1270);
}

TEST_F(SimLibrary, MeterBlockOf256BytesArrives) {
    std::array<std::uint8_t, 256> block{};
    fault(0x32, 0x04, "long:256");
    CapturedOutput output;

    EXPECT_EQ(pwrmgt_get_power_fpga_meter(block.data()), 0u);

    EXPECT_EQ(output.text(), "pwrmgt_get_power_fpga_meter() rc=0, resp[0]=0x0, resp_sz=256\n");
    EXPECT_EQ(block[255], 0xA5);
}

class SimLibraryStore : public SimLibrary {
protected:
    SimLibraryStore() {
        std::filesystem::create_directories(directory() + "/store");
        std::ofstream(directory() + "/store/boot.log") << "started";
    }

    std::uint32_t read(const char* name) {
        CapturedOutput traces;
        return pwrmgt_ds_file_read(name, buffer_.data(), 256);
    }

    std::array<std::uint8_t, 256> buffer_{};
};

TEST_F(SimLibraryStore, FileArrives) {
    EXPECT_EQ(read("boot.log"), 0u);

    EXPECT_EQ(buffer_[4], 7);
    EXPECT_EQ(std::string(buffer_.begin() + 6, buffer_.begin() + 13), "started");
}

TEST_F(SimLibraryStore, UnknownFileIs31) {
    EXPECT_EQ(read("other.log"), 31u);
    EXPECT_EQ(buffer_[0], 0xCB);
}

TEST_F(SimLibraryStore, FaultsOfBothExchangesAre31) {
    for (const std::uint8_t operation : Bytes{0x01, 0x02}) {
        for (const char* kind : {"busy", "no-answer", "late:1", "completion:0xFF"}) {
            fault(0x90, operation, kind);

            EXPECT_EQ(read("boot.log"), 31u) << kind;
            EXPECT_TRUE(state().faults.empty());
        }
    }
}

TEST_F(SimLibraryStore, SizeThatIsGarbageIsAnOverflow) {
    fault(0x90, 0x02, "garbage");

    EXPECT_EQ(read("boot.log"), 31u);
}

TEST_F(SimLibraryStore, HandleThatIsGarbageIsNotPresent) {
    fault(0x90, 0x01, "garbage");

    EXPECT_EQ(read("boot.log"), 31u);
    EXPECT_EQ(buffer_[0], 0xCB);
}

}  // namespace
