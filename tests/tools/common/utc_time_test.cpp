// SPDX-License-Identifier: Apache-2.0
#include "common/utc_time.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace pwrmgt::common {
namespace {

std::string text_of(std::int64_t since_1970_s) {
    const auto parts = utc_parts(since_1970_s);
    if (!parts) return "none";
    char text[40];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &*parts)};
}

std::tm moment(int year, int month, int day, int hour, int minute, int second) {
    std::tm parts{};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    return parts;
}

TEST(UtcTime, PartsOfASecond) {
    EXPECT_EQ(text_of(0), "1970-01-01 00:00:00");
    EXPECT_EQ(text_of(-1), "1969-12-31 23:59:59");
    EXPECT_EQ(text_of(951825599), "2000-02-29 11:59:59");
}

TEST(UtcTime, WidthOfTheCLibrarysTimeDoesNotMatter) {
    EXPECT_EQ(text_of(2147483647), "2038-01-19 03:14:07");
    EXPECT_EQ(text_of(2147483648), "2038-01-19 03:14:08");
    EXPECT_EQ(text_of(4294967295), "2106-02-07 06:28:15");
    EXPECT_EQ(utc_seconds(moment(2038, 1, 19, 3, 14, 8)), 2147483648);
    EXPECT_EQ(utc_seconds(moment(2106, 2, 7, 6, 28, 16)), 4294967296);
}

TEST(UtcTime, YearsHaveAtMostFourDigits) {
    EXPECT_EQ(text_of(253402300799), "9999-12-31 23:59:59");
    EXPECT_EQ(text_of(253402300800), "none");
    EXPECT_EQ(text_of(-62167219201), "none");
    EXPECT_EQ(text_of(std::numeric_limits<std::int64_t>::max()), "none");
    EXPECT_EQ(text_of(std::numeric_limits<std::int64_t>::min()), "none");
}

TEST(UtcTime, FieldsThatNameNoMomentAreRefused) {
    EXPECT_EQ(utc_seconds(moment(2024, 2, 29, 0, 0, 0)), 1709164800);
    EXPECT_EQ(utc_seconds(moment(2025, 2, 29, 0, 0, 0)), std::nullopt);
    EXPECT_EQ(utc_seconds(moment(2025, 6, 31, 0, 0, 0)), std::nullopt);
    EXPECT_EQ(utc_seconds(moment(2025, 6, 30, 23, 59, 59)), 1751327999);
    EXPECT_EQ(utc_seconds(moment(2025, 6, 30, 24, 0, 0)), std::nullopt);
    EXPECT_EQ(utc_seconds(moment(2025, 6, 30, 0, 60, 0)), std::nullopt);
    EXPECT_EQ(utc_seconds(moment(2025, 6, 30, 0, 0, 60)), std::nullopt);
}

}  // namespace
}  // namespace pwrmgt::common
