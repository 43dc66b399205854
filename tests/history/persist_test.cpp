// SPDX-License-Identifier: Apache-2.0
// Saving ring slots one by one: which slots, in which statements, and whose failures show.
#include "builders.h"
#include "platform_test.h"

#include <set>
#include <string>

using namespace pwrmgt::test;

namespace {

std::string removed(int slot) {
    return "raw delete from HistPowers24Hr where _id=" + std::to_string(slot);
}

std::string copied(int slot) {
    return "raw insert into HistPowers24Hr select * from HistPowers24HrMem where _id=" +
           std::to_string(slot);
}

}  // namespace

class Persist : public PlatformTest {};

TEST_F(Persist, EachSlotIsDeletedAndCopied) {
    EXPECT_EQ(pwrmgt_update_hist_persist_db(kDb, 41, 2), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"raw delete from HistPowers24Hr where _id=41",
                     "raw insert into HistPowers24Hr select * from HistPowers24HrMem where _id=41",
                     "raw delete from HistPowers24Hr where _id=42",
                     "raw insert into HistPowers24Hr select * from HistPowers24HrMem where "
                     "_id=42"}));
}

TEST_F(Persist, Slot0FollowsSlot2879) {
    EXPECT_EQ(pwrmgt_update_hist_persist_db(kDb, 2879, 2), 0U);

    EXPECT_EQ(platform().calls, (Calls{removed(2879), copied(2879), removed(0), copied(0)}));
}

TEST_F(Persist, FirstSlotBeyondTheRingIsSlot0) {
    for (const int32_t first : {2880, 5000, INT32_MAX}) {
        platform().calls.clear();

        EXPECT_EQ(pwrmgt_update_hist_persist_db(kDb, first, 1), 0U);

        EXPECT_EQ(platform().calls, (Calls{removed(0), copied(0)})) << first;
    }
}

TEST_F(Persist, SlotZeroIsAFirstSlot) {
    EXPECT_EQ(pwrmgt_update_hist_persist_db(kDb, 0, 1), 0U);

    EXPECT_EQ(platform().calls, (Calls{removed(0), copied(0)}));
}

TEST_F(Persist, WholeRingIsSavedOnce) {
    EXPECT_EQ(pwrmgt_update_hist_persist_db(kDb, 100, 2880), 0U);

    ASSERT_EQ(platform().calls.size(), 5760U);
    EXPECT_EQ(platform().calls.front(), removed(100));
    EXPECT_EQ(platform().calls.back(), copied(99));
    EXPECT_EQ(std::set<std::string>(platform().calls.begin(), platform().calls.end()).size(),
              5760U);
}

TEST_F(Persist, BadArgumentsAre3AndNothingRuns) {
    EXPECT_EQ(pwrmgt_update_hist_persist_db(0, 0, 1), 3U);
    EXPECT_EQ(pwrmgt_update_hist_persist_db(kDb, -1, 1), 3U);
    EXPECT_EQ(pwrmgt_update_hist_persist_db(kDb, INT32_MIN, 1), 3U);
    EXPECT_EQ(pwrmgt_update_hist_persist_db(kDb, 0, 0), 3U);
    EXPECT_EQ(pwrmgt_update_hist_persist_db(kDb, 0, 2881), 3U);
    EXPECT_EQ(pwrmgt_update_hist_persist_db(kDb, 0, UINT32_MAX), 3U);

    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(Persist, OnlyTheLastRoundIsReported) {
    platform().fail(Operation::raw, 4, 1);
    platform().fail(Operation::raw, 3, 2);

    EXPECT_EQ(pwrmgt_update_hist_persist_db(kDb, 5, 2), 0U);

    EXPECT_EQ(platform().count("raw"), 4U);
}

TEST_F(Persist, ResultsOfTheLastRoundAreOred) {
    platform().fail(Operation::raw, 4, 3);
    platform().fail(Operation::raw, 3, 4);

    EXPECT_EQ(pwrmgt_update_hist_persist_db(kDb, 5, 2), 7U);
}

TEST_F(Persist, FailedDeleteOfTheLastRoundStillCopies) {
    platform().fail(Operation::raw, -1, 1);

    EXPECT_EQ(pwrmgt_update_hist_persist_db(kDb, 5, 1), 4'294'967'295U);

    EXPECT_EQ(platform().calls, (Calls{removed(5), copied(5)}));
}

TEST_F(Persist, EachFailingCallShowsOnlyInTheLastRound) {
    EXPECT_EQ(swept_statuses([](Recorder&) {},
                             [] { return pwrmgt_update_hist_persist_db(kDb, 2878, 3); }),
              in_turn({each_of(4, 0), {{1, kMinusOne}, {1, kMinusOne}}}));
}

TEST_F(Persist, ExceptionOfAnyCallPassesThrough) {
    EXPECT_EQ(sweep_exceptions([](Recorder&) {},
                               [] { return pwrmgt_update_hist_persist_db(kDb, 2878, 3); }),
              6U);
}
