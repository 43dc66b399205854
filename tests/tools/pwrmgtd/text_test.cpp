// SPDX-License-Identifier: Apache-2.0
// Times, statuses and lasting states as words.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "stand_ins.h"
#include "status_words.h"
#include "time_text.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

using testing::ElementsAre;

TEST(TimeText, IsWrittenInUtc) {
    EXPECT_EQ(time_text(1748995210), "2025-06-04 00:00:10Z");
}

TEST(TimeText, IsReadWithABlankOrATAndWithOrWithoutAZ) {
    EXPECT_EQ(parse_time("2025-06-04 00:00:10"), 1748995210);
    EXPECT_EQ(parse_time("2025-06-04 00:00:10Z"), 1748995210);
    EXPECT_EQ(parse_time("2025-06-04T00:00:10"), 1748995210);
    EXPECT_EQ(parse_time("2025-06-04T00:00:10Z"), 1748995210);
}

TEST(TimeText, IsReadAsSeconds) {
    EXPECT_EQ(parse_time("1748995210"), 1748995210);
    EXPECT_EQ(parse_time("0"), 0);
}

TEST(TimeText, OtherTextsAreRefused) {
    for (const char* text :
         {"", "yesterday", "-5", "12:30", "2025-06-04", "1748995210s", "2025-06-04 00:00:10+02",
          "2025-06-04 00:00:10 Z", "1e9", "99999999999999999999"}) {
        EXPECT_EQ(parse_time(text), std::nullopt) << text;
    }
}

TEST(TimeText, ADateThatTheCalendarDoesNotHaveIsRefused) {
    EXPECT_EQ(parse_time("2025-06-31 00:00:00"), std::nullopt);
    EXPECT_EQ(parse_time("2025-02-29 00:00:00"), std::nullopt);
    EXPECT_EQ(parse_time("2024-02-29 00:00:00"), 1709164800);
    EXPECT_EQ(parse_time("2025-06-04 24:00:00"), std::nullopt);
}

TEST(StatusWords, ANumberMeansWhatItMeansInItsFunction) {
    EXPECT_EQ(status_words("pwrmgt_init_hist_table", 4),
              "4, the saved history could not be copied to the working table");
    EXPECT_EQ(status_words("pwrmgt_update_realtime_table", 4),
              "4, the real-time row could not be inserted");
}

TEST(StatusWords, AClientsOwnNumberIsARefusal) {
    EXPECT_EQ(status_words("pwrmgt_update_hist_table", 77), "77, the database refused");
}

TEST(LastingState, IsSaidOnceUntilItChanges) {
    CollectingLog log;

    for (int second = 0; second < 3; ++second) {
        EXPECT_FALSE(note_status(log, "pwrmgt_cleanup_hist_mem_table", 6));
    }
    EXPECT_FALSE(note_status(log, "pwrmgt_cleanup_hist_mem_table", 1));
    for (int second = 0; second < 3; ++second) {
        EXPECT_TRUE(note_status(log, "pwrmgt_cleanup_hist_mem_table", 0));
    }

    EXPECT_THAT(
        log.lines,
        ElementsAre("pwrmgt_cleanup_hist_mem_table: status 6, old rows could not be trimmed",
                    "pwrmgt_cleanup_hist_mem_table: status 1, no database connection",
                    "pwrmgt_cleanup_hist_mem_table: works again"));
}

TEST(LastingState, OfOneSubjectSaysNothingOfAnother) {
    CollectingLog log;
    log.state("one", "bad");

    log.state("other", "");
    log.state("other", "bad");

    EXPECT_THAT(log.lines, ElementsAre("one: bad", "other: bad"));
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
