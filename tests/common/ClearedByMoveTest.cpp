#include "core/common/ClearedByMove.h"

#include <string>

#include <gtest/gtest.h>

using kr::ClearedByMove;

TEST(ClearedByMove, StartsAsTheTypesZero)
{
    EXPECT_EQ(ClearedByMove<int>(), 0);
    EXPECT_EQ(ClearedByMove<bool>(), false);
}

TEST(ClearedByMove, CopyingLeavesTheSource)
{
    const ClearedByMove<int> source = 7;
    const ClearedByMove<int> copy = source;
    ClearedByMove<int> assigned = 1;
    assigned = source;
    EXPECT_EQ(copy, 7);
    EXPECT_EQ(assigned, 7);
    EXPECT_EQ(source, 7);
}

TEST(ClearedByMove, MovingClearsTheSource)
{
    ClearedByMove<int> source = 7;
    ClearedByMove<int> moved = std::move(source);
    EXPECT_EQ(moved, 7);
    EXPECT_EQ(source, 0);

    ClearedByMove<int> assigned = 1;
    assigned = std::move(moved);
    EXPECT_EQ(assigned, 7);
    EXPECT_EQ(moved, 0);
}

TEST(ClearedByMove, MovingClearsATypeWhoseOwnMoveMightSwap)
{
    ClearedByMove<std::string> source = std::string("new");
    ClearedByMove<std::string> assigned = std::string("old");
    assigned = std::move(source);
    EXPECT_EQ(static_cast<const std::string&>(assigned), "new");
    EXPECT_EQ(static_cast<const std::string&>(source), "");
}

TEST(ClearedByMove, TakesAPlainValueByAssignment)
{
    ClearedByMove<int> value = 1;
    value = 5;
    EXPECT_EQ(value, 5);
}
