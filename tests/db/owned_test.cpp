// SPDX-License-Identifier: Apache-2.0
// Owners hand their handle back exactly once, and none when there is none.
#include "db/owned.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

namespace owned_tests {
namespace {

std::vector<uint32_t> g_released;

void release(uint32_t handle) {
    g_released.push_back(handle);
}

using Handle = pwrmgt::db::Owned<release>;
using Handles = std::vector<uint32_t>;

}  // namespace

class Owned : public testing::Test {
protected:
    void SetUp() override { g_released.clear(); }
};

TEST_F(Owned, HandleGoesBackAtTheEndOfItsScope) {
    {
        const Handle owner{5};
        EXPECT_EQ(owner.get(), 5U);
        EXPECT_TRUE(static_cast<bool>(owner));
        EXPECT_EQ(g_released, Handles{});
    }

    EXPECT_EQ(g_released, Handles{5});
}

TEST_F(Owned, NoHandleIsNotHandedBack) {
    {
        const Handle empty;
        const Handle zero{0};
        EXPECT_FALSE(static_cast<bool>(empty));
        EXPECT_FALSE(static_cast<bool>(zero));
    }

    EXPECT_EQ(g_released, Handles{});
}

TEST_F(Owned, OwnersGoBackInReverseOrder) {
    {
        const Handle connection{1};
        const Handle rows{2};
    }

    EXPECT_EQ(g_released, (Handles{2, 1}));
}

TEST_F(Owned, MovedHandleGoesBackOnce) {
    {
        Handle from{5};
        const Handle to{std::move(from)};
        EXPECT_EQ(to.get(), 5U);
    }

    EXPECT_EQ(g_released, Handles{5});
}

TEST_F(Owned, OutParameterIsOwned) {
    {
        Handle owner;
        *owner.out() = 6;
    }

    EXPECT_EQ(g_released, Handles{6});
}

TEST_F(Owned, HandleTakenLaterIsOwned) {
    {
        Handle later;
        const Handle first{1};
        later.own(2);
    }

    EXPECT_EQ(g_released, (Handles{1, 2}));
}

TEST_F(Owned, ResetHandsBackAtOnceAndOnlyOnce) {
    {
        Handle owner{5};
        owner.reset();
        EXPECT_EQ(g_released, Handles{5});
        EXPECT_EQ(owner.get(), 0U);
        owner.reset();
    }

    EXPECT_EQ(g_released, Handles{5});
}

TEST_F(Owned, HandleGoesBackWhenAnExceptionPasses) {
    const auto throw_while_owning = [] {
        const Handle owner{5};
        throw 1;
    };

    EXPECT_THROW(throw_while_owning(), int);

    EXPECT_EQ(g_released, Handles{5});
}

TEST_F(Owned, OwnersCannotBeCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<Handle>);
    EXPECT_FALSE(std::is_copy_assignable_v<Handle>);
    EXPECT_FALSE(std::is_move_assignable_v<Handle>);
}

}  // namespace owned_tests
