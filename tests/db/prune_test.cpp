// SPDX-License-Identifier: Apache-2.0
// The trims of the power tables: bounds, comparisons, order.
#include "db/prune.h"

#include "platform_test.h"

using namespace pwrmgt::test;

namespace prune_tests {

class Prune : public PlatformTest {};

TEST_F(Prune, RowStampedNowIsTrimmed) {
    EXPECT_EQ(pwrmgt_cleanup_hist_mem_table(kDb, 1'700'000'000), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"raw DELETE FROM HistPowers24HrMem where Timestamp < 1699913600 or Timestamp "
                     ">= 1700000000",
                     "raw DELETE FROM HistPowers24Hr where Timestamp < 1699913600 or Timestamp >= "
                     "1700000000"}));
}

TEST_F(Prune, FirstTimeThatTrimsIsOneSecondAfterTheFirstDay) {
    EXPECT_EQ(pwrmgt_cleanup_hist_mem_table(kDb, 86401), 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"raw DELETE FROM HistPowers24HrMem where Timestamp < 1 or Timestamp >= 86401",
                     "raw DELETE FROM HistPowers24Hr where Timestamp < 1 or Timestamp >= 86401"}));
}

TEST_F(Prune, LatestTimeOf32BitsTrims) {
    EXPECT_EQ(pwrmgt_cleanup_hist_mem_table(kDb, INT32_MAX), 0U);

    EXPECT_EQ(platform().calls.front(),
              "raw DELETE FROM HistPowers24HrMem where Timestamp < 2147397247 or Timestamp >= "
              "2147483647");
}

TEST_F(Prune, DayHasPassedOnlyAfterItsLastSecond) {
    EXPECT_FALSE(pwrmgt::db::day_has_passed(INT32_MIN));
    EXPECT_FALSE(pwrmgt::db::day_has_passed(0));
    EXPECT_FALSE(pwrmgt::db::day_has_passed(86400));
    EXPECT_TRUE(pwrmgt::db::day_has_passed(86401));
}

}  // namespace prune_tests
