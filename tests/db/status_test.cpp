// SPDX-License-Identifier: Apache-2.0
// The number of each status meaning: callers see only the number.
#include "db/status.h"

#include <gtest/gtest.h>

using pwrmgt::db::code;
using pwrmgt::db::Status;

TEST(Status, EachMeaningHasItsNumber) {
    EXPECT_EQ(code(Status::ok), 0U);
    EXPECT_EQ(code(Status::null_argument), 1U);
    EXPECT_EQ(code(Status::bad_time), 1U);
    EXPECT_EQ(code(Status::no_connection), 2U);
    EXPECT_EQ(code(Status::query_failed), 3U);
    EXPECT_EQ(code(Status::bad_slots), 3U);
    EXPECT_EQ(code(Status::insert_failed), 4U);
    EXPECT_EQ(code(Status::copy_failed), 4U);
    EXPECT_EQ(code(Status::update_failed), 5U);
    EXPECT_EQ(code(Status::statement_failed), 6U);
    EXPECT_EQ(code(Status::no_content), 7U);
    EXPECT_EQ(code(Status::no_rows), 8U);
    EXPECT_EQ(code(Status::no_valid_sample), 8U);
    EXPECT_EQ(code(Status::unsupported), 10U);
    EXPECT_EQ(code(Status::out_of_range), 10U);
    EXPECT_EQ(code(Status::many_rows), 31U);
    EXPECT_EQ(code(Status::clock_failed), 31U);
    EXPECT_EQ(code(Status::no_window), 31U);
    EXPECT_EQ(code(Status::empty_window), 31U);
    EXPECT_EQ(code(Status::exchange_failed), 31U);
}

TEST(Status, MarkersAreAllOnesOfTheirWidth) {
    EXPECT_EQ(pwrmgt::db::kNoPower, 65535);
    EXPECT_EQ(pwrmgt::db::kNoPercent, 255);
}
