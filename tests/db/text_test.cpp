// SPDX-License-Identifier: Apache-2.0
// Fixed-size texts: formatted, cut, always terminated.
#include "db/text.h"

#include <gtest/gtest.h>

using pwrmgt::db::Text;

TEST(Text, FormatsLikePrintf) {
    const Text<32> text("%s=%d", "_id", -7);

    EXPECT_STREQ(text.c_str(), "_id=-7");
    EXPECT_EQ(text.length(), 6U);
}

TEST(Text, TextThatJustFitsIsWhole) {
    const Text<8> text("%s", "1234567");

    EXPECT_STREQ(text.c_str(), "1234567");
    EXPECT_EQ(text.length(), 7U);
}

TEST(Text, LongerTextIsCutAndTerminated) {
    const Text<8> text("%s", "12345678");

    EXPECT_STREQ(text.c_str(), "1234567");
    EXPECT_EQ(text.length(), 7U);
}

TEST(Text, EmptyTextHasNoLength) {
    const Text<8> text("%s", "");

    EXPECT_STREQ(text.c_str(), "");
    EXPECT_EQ(text.length(), 0U);
}

TEST(Text, SizesAreThoseOfTheClausesAndStatements) {
    EXPECT_EQ(sizeof(pwrmgt::db::Order), 32U);
    EXPECT_EQ(sizeof(pwrmgt::db::Filter), 256U);
    EXPECT_EQ(sizeof(pwrmgt::db::RowFilter), 32U);
    EXPECT_EQ(sizeof(pwrmgt::db::Statement), 256U);
}
