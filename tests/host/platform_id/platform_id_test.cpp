// SPDX-License-Identifier: Apache-2.0
#include "platform_id.h"

#include <gtest/gtest.h>

#include "support/environment.h"

namespace {

TEST(PlatformId, WithoutAVariableItIsNotQuoril) {
    const EnvironmentVariable platform("VEKDB_PLATFORM");

    EXPECT_EQ(is_quoril_platform(), 0);
}

TEST(PlatformId, VariableMakesItQuoril) {
    const EnvironmentVariable platform("VEKDB_PLATFORM", "quoril");

    EXPECT_NE(is_quoril_platform(), 0);
}

TEST(PlatformId, OtherNamesAreNotQuoril) {
    for (const char* name : {"", "other", "Quoril", "quoril2", "quori"}) {
        const EnvironmentVariable platform("VEKDB_PLATFORM", name);

        EXPECT_EQ(is_quoril_platform(), 0) << name;
    }
}

TEST(PlatformId, ChangeIsSeenAtTheNextQuestion) {
    const EnvironmentVariable first("VEKDB_PLATFORM", "quoril");
    EXPECT_NE(is_quoril_platform(), 0);

    const EnvironmentVariable second("VEKDB_PLATFORM", "other");

    EXPECT_EQ(is_quoril_platform(), 0);
}

}  // namespace
