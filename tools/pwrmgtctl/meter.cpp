// SPDX-License-Identifier: Apache-2.0
// The commands `meter read` and `meter slots`: the raw block of the power meter, and the powers of
// slot devices.
#include <array>
#include <ctime>

#include "answer.h"
#include "bytes_text.h"
#include "missing.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr Age kNow{0, false};

using Block = std::array<uint8_t, PWRMGT_REPLY_SIZE>;

// The library hands out no length. What a block has not overwritten it leaves: of two blocks over
// opposite bytes, none can end in a byte that looks left over in both.
struct Metered {
    uint32_t status;
    Block block;
    size_t length;
};

Metered read_meter() {
    Metered metered{};
    Block before{};
    before.fill(0xFF);
    metered.status = pwrmgt_get_power_fpga_meter(before.data());
    if (metered.status != 0) return metered;
    metered.status = pwrmgt_get_power_fpga_meter(metered.block.data());
    metered.length = metered.block.size();
    while (metered.length > 0 && before[metered.length - 1] == 0xFF &&
           metered.block[metered.length - 1] == 0x00) {
        --metered.length;
    }
    return metered;
}

Outcome show_block(const CommonOptions& options) {
    const int64_t asked_at_s = std::time(nullptr);
    Metered metered{};
    const Timed done = timed([&] {
        metered = read_meter();
        return metered.status;
    });
    if (done.status != 0) return explain(Call::firmware, done.status, "the power meter");
    const Bytes block(metered.block.data(), metered.length);
    Json body;
    add_age(body, kNow);
    body["size_bytes"] = block.size();
    body["block_hex"] = hex_digits(block);
    return succeed(answer_document(
        {"meter.read/1", Origin::firmware,
         "Power meter: " + std::to_string(block.size()) + " bytes, " + age_words(kNow), asked_at_s,
         done.query_ms},
        options, hex_dump(block), body));
}

Outcome show_slots(const CommonOptions& options) {
    const int64_t asked_at_s = std::time(nullptr);
    pwrmgt_slot_dev_pwr_t slots{};
    const Timed done = timed([&] { return pwrmgt_get_realtime_slot_dev_powers(&slots); });
    if (done.status != 0) {
        return explain(Call::firmware, done.status, "the powers of the slot devices");
    }
    Json body;
    add_age(body, kNow);
    body["firmware_word"] = slots.word;
    body["slot_w"] = Json::array();
    Table table({"Slot device", "W"});
    for (size_t at = 0; at < std::size(slots.value); ++at) {
        table.add({std::to_string(at + 1), cell(watts(slots.value[at]))});
        body["slot_w"].push_back(json_value(watts(slots.value[at])));
    }
    return succeed(
        answer_document({"meter.slots/1", Origin::firmware,
                         "Powers of slot devices, " + age_words(kNow), asked_at_s, done.query_ms},
                        options, table.text(), body));
}

}  // namespace

void add_meter(cli::Command meter, Action& chosen) {
    add_command(meter, chosen,
                {"read", "The raw block of the power meter, the firmware's layout",
                 "Examples:\n"
                 "  pwrmgtctl meter read\n"
                 "  pwrmgtctl meter read --json | jq -r .block_hex"},
                std::make_shared<CommonOptions>(), show_block);
    const auto options = std::make_shared<CommonOptions>();
    cli::Command slots = add_command(
        meter, chosen,
        {"slots", "What the slot devices draw now", "Example:\n  pwrmgtctl meter slots --watch 5"},
        options, show_slots);
    let_watch(slots, chosen, options, show_slots);
}

}  // namespace pwrmgt::pwrmgtctl
