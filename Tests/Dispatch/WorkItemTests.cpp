// SPDX-License-Identifier: MIT
// What the items of a queue hold, and for how long.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <utility>

#include "Platform/Dispatch/WorkItem.h"

using QRVPlatform::WorkItem;

namespace {

/// Tells how many of its kind there are.
class Counted {
  public:
    explicit Counted(int& count) : count_(&count) { ++*count_; }
    Counted(Counted&& other) noexcept : count_(other.count_) { ++*count_; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --*count_; }

  private:
    int* count_;
};

TEST(WorkItem, RunsWorkThatCanOnlyBeMoved) {
    int sum = 0;
    WorkItem item([&sum, number = std::make_unique<int>(3)] { sum += *number; });
    item();
    WorkItem moved(std::move(item));
    moved();
    EXPECT_EQ(sum, 6);
}

TEST(WorkItem, RunsWorkOfAnySize) {
    std::array<int, 100> numbers{};
    numbers.back() = 7;
    int last = 0;
    WorkItem item([&last, numbers] { last = numbers.back(); });
    const WorkItem empty = std::exchange(item, WorkItem());
    item = WorkItem([&last, numbers] { last += numbers.back(); });
    item();
    EXPECT_EQ(last, 7);
}

TEST(WorkItem, HoldsItsWorkUntilItIsReplacedOrDestroyed) {
    int small = 0;
    int large = 0;
    {
        WorkItem item([counted = Counted(small)] {});
        EXPECT_EQ(small, 1);
        WorkItem other(std::move(item));
        EXPECT_EQ(small, 1);
        item = WorkItem([counted = Counted(large), room = std::array<char, 1000>()] {
            static_cast<void>(room.size());
        });
        EXPECT_EQ(large, 1);
        other = std::move(item);
        EXPECT_EQ(small, 0);
        EXPECT_EQ(large, 1);
    }
    EXPECT_EQ(large, 0);
}

TEST(WorkItem, RunsAnEmptyFunctionAsTheFunctionDoes) {
    WorkItem item{std::function<void()>()};
    EXPECT_THROW(item(), std::bad_function_call);
}

}  // namespace
