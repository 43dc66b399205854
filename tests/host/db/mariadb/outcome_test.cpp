// SPDX-License-Identifier: Apache-2.0
#include "db/mariadb/outcome.h"

#include <gtest/gtest.h>

namespace {

using pwrmgt::vekdb::Outcome;
using pwrmgt::vekdb::mariadb::ends_session;
using pwrmgt::vekdb::mariadb::outcome_of;

TEST(ServerErrors, HaveTheClientsMeanings) {
    const struct {
        unsigned error;
        Outcome outcome;
    } cases[] = {
        {0, Outcome::ok},           {1205, Outcome::busy},      {1213, Outcome::busy},
        {1969, Outcome::busy},      {1021, Outcome::no_space},  {1114, Outcome::no_space},
        {1290, Outcome::read_only}, {1142, Outcome::read_only}, {1792, Outcome::read_only},
        {1036, Outcome::read_only}, {1194, Outcome::damaged},   {1034, Outcome::damaged},
        {1037, Outcome::no_memory}, {2008, Outcome::no_memory}, {1053, Outcome::failed},
        {1927, Outcome::failed},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(outcome_of(one.error), one.outcome) << one.error;
    }
}

TEST(ServerErrors, OfTheStatementAreRefusals) {
    for (const unsigned error : {1064u, 1054u, 1062u, 1146u, 1264u, 1364u, 1999u, 3000u, 4192u}) {
        EXPECT_EQ(outcome_of(error), Outcome::refused) << error;
    }
}

TEST(ServerErrors, OfTheConnectionAreFailures) {
    for (const unsigned error : {2000u, 2006u, 2013u, 2026u, 2999u, 5000u, 5012u}) {
        EXPECT_EQ(outcome_of(error), Outcome::failed) << error;
    }
}

TEST(ServerErrors, OfTheConnectionEndTheSessionAndOfTheStatementDoNot) {
    for (const unsigned error : {1053u, 1927u, 2006u, 2013u, 2014u, 2055u, 5014u}) {
        EXPECT_TRUE(ends_session(error)) << error;
    }
    for (const unsigned error : {0u, 1064u, 1205u, 1213u, 1317u, 2008u}) {
        EXPECT_FALSE(ends_session(error)) << error;
    }
}

}  // namespace
