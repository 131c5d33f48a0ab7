#include "core/common/OnDemand.h"

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using kr::OnDemand;
using Values = std::vector<int>;

namespace {

// Asks `value` from `threadCount` threads that start together; gives what each of them saw.
std::vector<const Values*> AskFromThreads(const OnDemand<Values>& value, std::size_t threadCount,
                                          std::atomic<int>& buildCount)
{
    std::vector<const Values*> seen(threadCount);
    std::atomic<bool> mayStart{false};
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < threadCount; ++i)
        threads.emplace_back([&, i] {
            while (!mayStart.load())
                std::this_thread::yield();
            seen[i] = &value.Get([&] {
                ++buildCount;
                return Values{1, 2, 3};
            });
        });
    mayStart = true;
    for (std::thread& thread : threads)
        thread.join();
    return seen;
}

const Values& MustNotBuild(const OnDemand<Values>& value)
{
    return value.Get([]() -> Values { throw std::logic_error("built again"); });
}

OnDemand<Values> Built(Values values)
{
    OnDemand<Values> value;
    value.Get([&] { return values; });
    return value;
}

} // namespace

TEST(OnDemand, BuildsAtTheFirstRequestOnly)
{
    OnDemand<Values> value;
    int buildCount = 0;
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(value.Get([&] { return Values{++buildCount}; }), Values{1});
    EXPECT_EQ(buildCount, 1);
}

TEST(OnDemand, BuildsOnceForAllThreads)
{
    for (int round = 0; round < 200; ++round) {
        OnDemand<Values> value;
        std::atomic<int> buildCount{0};
        const std::vector<const Values*> seen = AskFromThreads(value, 4, buildCount);
        EXPECT_EQ(buildCount, 1);
        for (const Values* values : seen) {
            EXPECT_EQ(values, seen.front());
            EXPECT_EQ(*values, (Values{1, 2, 3}));
        }
    }
}

TEST(OnDemand, TriesAgainAfterABuildThatThrew)
{
    OnDemand<Values> value;
    EXPECT_THROW(value.Get([]() -> Values { throw std::runtime_error("no"); }), std::runtime_error);
    EXPECT_EQ(value.Get([] { return Values{4}; }), Values{4});
}

TEST(OnDemand, GivesWhatWasSetWithoutBuilding)
{
    OnDemand<Values> value;
    value.Set({8, 9});
    EXPECT_EQ(MustNotBuild(value), (Values{8, 9}));
}

TEST(OnDemand, BuildsAnewAfterReset)
{
    OnDemand<Values> value = Built({1});
    value.Reset();
    EXPECT_EQ(value.Get([] { return Values{2}; }), Values{2});
}

TEST(OnDemand, CopyTakesTheBuiltValueAlong)
{
    const OnDemand<Values> source = Built({1, 2});
    const OnDemand<Values> copy = source;
    OnDemand<Values> assigned = Built({7});
    assigned = source;
    EXPECT_EQ(MustNotBuild(copy), (Values{1, 2}));
    EXPECT_EQ(MustNotBuild(assigned), (Values{1, 2}));
    EXPECT_EQ(MustNotBuild(source), (Values{1, 2}));
}

TEST(OnDemand, CopyOfAnUnbuiltValueBuildsItsOwn)
{
    const OnDemand<Values> source;
    OnDemand<Values> assigned = Built({7});
    assigned = source;
    EXPECT_EQ(assigned.Get([] { return Values{5}; }), Values{5});
    EXPECT_EQ(source.Get([] { return Values{6}; }), Values{6});
}

TEST(OnDemand, MoveLeavesTheSourceToBuildAnew)
{
    OnDemand<Values> source = Built({1, 2});
    OnDemand<Values> moved = std::move(source);
    EXPECT_EQ(MustNotBuild(moved), (Values{1, 2}));
    EXPECT_EQ(source.Get([] { return Values{3}; }), Values{3});

    OnDemand<Values> assigned;
    assigned = std::move(moved);
    EXPECT_EQ(MustNotBuild(assigned), (Values{1, 2}));
    EXPECT_EQ(moved.Get([] { return Values{4}; }), Values{4});
}

TEST(OnDemand, SelfAssignmentKeepsTheValue)
{
    OnDemand<Values> value = Built({1});
    const OnDemand<Values>& same = value;
    value = same;
    EXPECT_EQ(MustNotBuild(value), Values{1});
}

TEST(OnDemand, CanBeCopiedWhileAnotherThreadBuilds)
{
    for (int round = 0; round < 100; ++round) {
        const OnDemand<Values> value;
        std::thread builder([&] { value.Get([] { return Values{1, 2, 3}; }); });
        const OnDemand<Values> copy = value;
        EXPECT_EQ(copy.Get([] { return Values{1, 2, 3}; }), (Values{1, 2, 3}));
        builder.join();
    }
}
