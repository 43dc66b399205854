// SPDX-License-Identifier: Apache-2.0
// From slots through the persistent twin and back to the command line, as over a reboot of the
// controller.
#include "tool.h"
#include "vekdb_client.h"

namespace pwrmgt::tooltest {
namespace {

class CtlReload : public ToolTest {};

constexpr uint32_t kSlots = 100;

// The ring slot of the oldest of kSlots slots.
constexpr int32_t kFirstSlot =
    static_cast<int32_t>((kNewestSlot / PWRMGT_SLOT_SECONDS - (kSlots - 1)) % PWRMGT_RING_SLOTS);

TEST_F(CtlReload, SavedHistoryIsShownTheSameAfterTheWorkingTableWasLost) {
    for (uint32_t back = 0; back < kSlots; ++back) {
        store_slot(back, back % 7 == 3 ? empty_slot() : slot_of(static_cast<uint16_t>(200 + back)));
    }
    ASSERT_EQ(pwrmgt_update_hist_persist_db(connection(), kFirstSlot, kSlots), 0U);
    const std::vector<std::string> query{"power", "history", "--period", "6h", "--json"};
    const Finished before = tool(query);

    ASSERT_EQ(vek_db_delete(connection(), "HistPowers24HrMem", nullptr), 0);
    const Finished lost = tool(query);
    int32_t last_id = 0;
    int32_t last_timestamp = 0;
    ASSERT_EQ(pwrmgt_init_hist_table(connection(), kNow, &last_id, &last_timestamp), 0U);
    const Finished after = tool(query);

    EXPECT_EQ(before.exit, 0) << before.err;
    EXPECT_EQ(lost.exit, 4);
    EXPECT_EQ(after.exit, 0) << after.err;
    EXPECT_EQ(after.out, before.out);
    EXPECT_EQ(nlohmann::json::parse(after.out)["entries"].size(), 17U);
}

}  // namespace
}  // namespace pwrmgt::tooltest
