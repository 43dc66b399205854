// SPDX-License-Identifier: Apache-2.0
// Every exchange under every length and every completion code: the status, and no byte beyond what
// the caller gave. Most of its worth is in the build with the sanitizers.
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include "captured_output.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

// Everything that a door may write, on the heap, where a byte too many is seen.
struct Outputs {
    uint8_t enable;
    uint8_t mode;
    uint16_t value;
    pwrmgt_realtime_pwr_t reading;
    pwrmgt_slot_dev_pwr_t slots;
    pwrmgt_cpu_pcap_t caps;
    uint8_t block[256];
};

enum class OnFailure { mapped, passed_on, ignored };

// One way to the firmware. A length of 0 stands for no such rule.
struct Door {
    const char* name;
    uint32_t (*call)(Outputs& out);
    uint32_t only_length;
    uint32_t refused_length;
    OnFailure sent;
    OnFailure completion;
};

// clang-format off
const std::vector<Door> kDoors{
    {"set cap", [](Outputs&) { return pwrmgt_set_power_capping_policy(1, 2, 3); },
     2, 0, OnFailure::mapped, OnFailure::mapped},
    {"set cap with a name", [](Outputs&) { return pwrmgt_set_power_capping_policy_auditlog(1, 2, 3, "n"); },
     2, 0, OnFailure::mapped, OnFailure::mapped},
    {"get cap", [](Outputs& o) { return pwrmgt_get_power_capping_policy(&o.enable, &o.mode, &o.value); },
     6, 0, OnFailure::mapped, OnFailure::mapped},
    {"get cap, raw", [](Outputs& o) { return pwrmgt_ipmi_get_pwr_capping(&o.enable, &o.mode, &o.value); },
     6, 0, OnFailure::mapped, OnFailure::mapped},
    {"set GPU cap, word", [](Outputs&) { return pwrmgt_set_gpu_power_capping_policy(1, 16, 2); },
     0, 0, OnFailure::mapped, OnFailure::mapped},
    {"set GPU cap, byte", [](Outputs&) { return pwrmgt_set_gpu_power_capping_policy(1, 32, 2); },
     0, 0, OnFailure::mapped, OnFailure::mapped},
    {"get GPU cap, word", [](Outputs& o) { return pwrmgt_get_gpu_power_capping_policy(1, 16, &o.value); },
     0, 0, OnFailure::mapped, OnFailure::mapped},
    {"get GPU cap, byte", [](Outputs& o) { return pwrmgt_get_gpu_power_capping_policy(1, 32, &o.value); },
     0, 0, OnFailure::mapped, OnFailure::mapped},
    {"reading", [](Outputs& o) { return pwrmgt_get_realtime_powers(&o.reading); },
     17, 0, OnFailure::mapped, OnFailure::mapped},
    {"slot devices", [](Outputs& o) { return pwrmgt_get_realtime_slot_dev_powers(&o.slots); },
     15, 0, OnFailure::mapped, OnFailure::mapped},
    {"meter", [](Outputs& o) { return pwrmgt_get_power_fpga_meter(o.block); },
     0, 0, OnFailure::mapped, OnFailure::mapped},
    {"GPU power", [](Outputs& o) { return pwrmgt_get_gpu_power_consumption(1, &o.value); },
     0, 0, OnFailure::mapped, OnFailure::mapped},
    {"set zero output", [](Outputs&) { return pwrmgt_set_zero_output_mode(1); },
     0, 0, OnFailure::passed_on, OnFailure::ignored},
    {"get zero output", [](Outputs& o) { return pwrmgt_get_zero_output_mode(&o.mode); },
     0, 0, OnFailure::passed_on, OnFailure::ignored},
    {"processor caps", [](Outputs& o) { return pwrmgt_get_cpu_pcap(&o.caps); },
     0, 19, OnFailure::passed_on, OnFailure::passed_on},
};
// clang-format on

std::vector<uint32_t> told_lengths() {
    std::vector<uint32_t> lengths;
    for (uint32_t length = 0; length <= 257; ++length) {
        lengths.push_back(length);
    }
    for (const uint32_t beyond : {1000U, 65'535U, 65'536U, 2'147'483'647U, 2'147'483'648U,
                                  4'294'967'040U, 4'294'967'295U}) {
        lengths.push_back(beyond);
    }
    return lengths;
}

uint32_t status_of(OnFailure rule, uint32_t failure) {
    return rule == OnFailure::mapped ? 31 : rule == OnFailure::passed_on ? failure : 0;
}

}  // namespace

class HostileAnswers : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        policy_is_read();
    }

    // One call on one answer, with fresh outputs and without its trace.
    uint32_t call(const Door& door, Answer answer) {
        std::memset(out.get(), 0x77, sizeof(Outputs));
        platform().calls.clear();
        platform().answer_ipmi(std::move(answer));
        const CapturedOutput silence;
        return door.call(*out);
    }

    bool untouched() const {
        const std::vector<uint8_t> fresh(sizeof(Outputs), 0x77);
        return std::memcmp(out.get(), fresh.data(), fresh.size()) == 0;
    }

    std::unique_ptr<Outputs> out = std::make_unique<Outputs>();
};

TEST_F(HostileAnswers, EveryLengthHasTheStatusOfItsRule) {
    for (const Door& door : kDoors) {
        for (const uint32_t told : told_lengths()) {
            std::vector<uint8_t> bytes(std::min<size_t>(std::max(told, 1U), 256), 0);
            const bool refused = (door.only_length != 0 && told != door.only_length) ||
                                 (door.refused_length != 0 && told == door.refused_length);

            EXPECT_EQ(call(door, {.bytes = bytes, .told = told}), refused ? 31U : 0U)
                << door.name << ", " << told << " bytes";

            if (refused) {
                EXPECT_TRUE(untouched()) << door.name << ", " << told << " bytes";
            }
        }
    }
}

// One byte was written: the others are the library's own zeros, never something left over.
TEST_F(HostileAnswers, LengthToldBeyondWhatWasWrittenReadsZeros) {
    for (const Door& door : kDoors) {
        call(door, {.bytes = std::vector<uint8_t>(256, 0), .told = door.only_length});
        std::vector<uint8_t> zeros(sizeof(Outputs));
        std::memcpy(zeros.data(), out.get(), zeros.size());

        const uint32_t status = call(door, {.bytes = {0}, .told = door.only_length});

        EXPECT_EQ(status, 0U) << door.name;
        EXPECT_EQ(std::memcmp(zeros.data(), out.get(), zeros.size()), 0) << door.name;
    }
}

TEST_F(HostileAnswers, EveryCompletionCodeHasTheStatusOfItsRule) {
    for (const Door& door : kDoors) {
        for (uint32_t completion = 1; completion <= 255; ++completion) {
            std::vector<uint8_t> bytes(256, 0xFF);
            bytes[0] = static_cast<uint8_t>(completion);
            const uint32_t told = door.only_length != 0 ? door.only_length : 256;

            EXPECT_EQ(call(door, {.bytes = bytes, .told = told}),
                      status_of(door.completion, completion))
                << door.name << ", completion code " << completion;

            EXPECT_TRUE(untouched()) << door.name << ", completion code " << completion;
        }
    }
}

TEST_F(HostileAnswers, EveryFailedSendHasTheStatusOfItsRule) {
    for (const Door& door : kDoors) {
        for (const int sent : {1, 2, 31, 255, 256, -1, 2'147'483'647, -2'147'483'647 - 1}) {
            const uint32_t told = door.only_length != 0 ? door.only_length : 256;

            EXPECT_EQ(call(door, {std::vector<uint8_t>(256, 0), sent, told}),
                      status_of(door.sent, static_cast<uint32_t>(sent)))
                << door.name << ", result " << sent;

            EXPECT_TRUE(untouched()) << door.name << ", result " << sent;
        }
    }
}

TEST_F(HostileAnswers, EachDoorSendsOnceWithTheLengthSetTo0) {
    for (const Door& door : kDoors) {
        call(door, {.bytes = {0xC1}});

        ASSERT_EQ(platform().count("ipmi"), 1U) << door.name;
        EXPECT_THAT(platform().named("ipmi")[0], testing::EndsWith(" told 0")) << door.name;
    }
}

// Both answers of a data-store read in every length, on a buffer of exactly 256 bytes.
TEST_F(HostileAnswers, DataStoreReadStaysInItsBuffer) {
    const auto buffer = std::make_unique<std::array<uint8_t, 256>>();
    for (const uint32_t told : told_lengths()) {
        for (const uint8_t filler : {uint8_t{0x00}, uint8_t{0x7F}, uint8_t{0xFF}}) {
            std::vector<uint8_t> bytes(std::min<size_t>(std::max(told, 6U), 256), filler);
            bytes[0] = 0;
            platform().calls.clear();
            platform().answer_ipmi({.bytes = bytes, .told = told});
            platform().answer_ipmi({.bytes = bytes, .told = told});

            uint32_t status = 0;
            {
                const CapturedOutput silence;
                status = pwrmgt_ds_file_read("a", buffer->data(), 256);
            }

            EXPECT_EQ(status, filler == 0 ? 0U : 31U) << told;
            EXPECT_EQ(platform().count("ipmi"), 2U);
        }
    }
}
