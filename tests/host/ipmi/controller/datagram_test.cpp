// SPDX-License-Identifier: Apache-2.0
#include "ipmi/openipmi/datagram.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using pwrmgt::ipmi::openipmi::awaited;

// RMCP+ with a payload that is as long as told.
std::vector<std::uint8_t> datagram(std::uint8_t payload, unsigned length) {
    std::vector<std::uint8_t> made{0x06, 0, 0xFF, 0x07, 0x06, payload, 1, 2, 3, 4, 5, 6, 7, 8};
    made.push_back(static_cast<std::uint8_t>(length & 0xFF));
    made.push_back(static_cast<std::uint8_t>(length >> 8));
    made.resize(made.size() + length, 0xA5);
    return made;
}

// Of the older kind, in the session of that number.
std::vector<std::uint8_t> older(std::uint8_t authentication, std::uint8_t session,
                                std::size_t length) {
    std::vector<std::uint8_t> made{0x06,    0, 0xFF, 0x07, authentication, 0, 0, 0, 0,
                                   session, 0, 0,    0};
    made.push_back(static_cast<std::uint8_t>(length));
    made.resize(made.size() + length, 0xA5);
    return made;
}

TEST(Datagram, AnswersOf256BytesAreAwaitedAndLongerOnesNot) {
    EXPECT_FALSE(awaited(datagram(0x00, 6)));
    EXPECT_TRUE(awaited(datagram(0x00, 7)));
    EXPECT_TRUE(awaited(datagram(0x00, 263)));
    EXPECT_TRUE(awaited(datagram(0x40, 263)));
    EXPECT_FALSE(awaited(datagram(0x40, 264)));
}

TEST(Datagram, EncryptedAnswersAreAwaitedInTheirBlocks) {
    EXPECT_TRUE(awaited(datagram(0xC0, 288)));
    EXPECT_FALSE(awaited(datagram(0xC0, 289)));
    EXPECT_FALSE(awaited(datagram(0xC0, 304)));
}

TEST(Datagram, StepsOfALogInAreAwaited) {
    EXPECT_TRUE(awaited(datagram(0x11, 8)));
    EXPECT_TRUE(awaited(datagram(0x11, 36)));
    EXPECT_FALSE(awaited(datagram(0x11, 37)));
    EXPECT_TRUE(awaited(datagram(0x13, 60)));
    EXPECT_FALSE(awaited(datagram(0x13, 61)));
    EXPECT_TRUE(awaited(datagram(0x15, 28)));
    EXPECT_FALSE(awaited(datagram(0x15, 7)));
}

TEST(Datagram, EveryOtherPayloadIsNot) {
    for (unsigned type = 0; type < 64; ++type) {
        const bool known = type == 0x00 || type == 0x11 || type == 0x13 || type == 0x15;

        EXPECT_EQ(awaited(datagram(static_cast<std::uint8_t>(type), 20)), known) << type;
    }
}

TEST(Datagram, ShorterThanTold) {
    auto cut = datagram(0x00, 100);
    EXPECT_TRUE(awaited(cut));
    while (!cut.empty()) {
        cut.pop_back();
        EXPECT_FALSE(awaited(cut)) << cut.size();
    }
}

TEST(Datagram, LongerThanOpenIpmiTakes) {
    auto padded = datagram(0xC0, 288);
    padded.resize(384);
    EXPECT_TRUE(awaited(padded));

    padded.push_back(0);

    EXPECT_FALSE(awaited(padded));
}

TEST(Datagram, OfTheOlderKindOnlyThoseOutsideASessionAreAwaited) {
    EXPECT_TRUE(awaited(older(0x00, 0, 16)));
    EXPECT_FALSE(awaited(older(0x00, 1, 16)));
    EXPECT_FALSE(awaited(older(0x02, 0, 16)));
    EXPECT_FALSE(awaited(older(0x00, 0, 6)));
}

TEST(Datagram, WhatIsNotRmcpIsNot) {
    for (const std::size_t at : {0u, 1u, 2u, 3u}) {
        auto altered = datagram(0x00, 20);
        altered[at] ^= 0x01;

        EXPECT_FALSE(awaited(altered));
    }
}

}  // namespace
