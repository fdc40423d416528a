// SPDX-License-Identifier: MIT
// Operations that must not allocate. A program of its own, because it counts every allocation.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "Platform/Values/PropertyListValue.h"

namespace {

std::atomic<std::size_t> allocations = 0;
std::atomic<std::size_t> allocatedBytes = 0;

std::size_t allocationsOf(const auto& work) {
    const std::size_t before = allocations;
    work();
    return allocations - before;
}

std::size_t bytesOf(const auto& work) {
    const std::size_t before = allocatedBytes;
    work();
    return allocatedBytes - before;
}

}  // namespace

void* operator new(std::size_t size) {
    ++allocations;
    allocatedBytes += size;
    void* memory = std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

TEST(Allocation, TheCountSeesAllocations) {
    EXPECT_GT(allocationsOf([] { const PropertyListValue text = "some text"; }), 0U);
}

TEST(Allocation, ScalarsAllocateNothing) {
    EXPECT_EQ(allocationsOf([] {
                  const PropertyListValue values[] = {nullptr, true, 1, 2.5, NSDate(3), NSNull{}};
                  const PropertyListValue copy = values[2];
                  EXPECT_EQ(copy, 1);
              }),
              0U);
}

TEST(Allocation, CopyingAHandleAllocatesNothing) {
    const PropertyListValue text = "some text";
    const NSDictionary dictionary{{"a", 1}};
    EXPECT_EQ(allocationsOf([&] {
                  const PropertyListValue textCopy = text;
                  const NSDictionary dictionaryCopy = dictionary;
                  EXPECT_TRUE(textCopy.isString());
                  EXPECT_FALSE(dictionaryCopy.isNull());
              }),
              0U);
}

TEST(Allocation, LookingUpAKeyAllocatesNothing) {
    const NSMutableDictionary dictionary;
    for (int number = 0; number < 100; ++number) {
        dictionary.setObjectForKey(
            number, "A long key that no string holds in itself " + std::to_string(number));
    }
    const std::string_view key = "A long key that no string holds in itself 42";
    EXPECT_EQ(allocationsOf([&] { EXPECT_EQ(dictionary.objectForKey(key), 42); }), 0U);
}

TEST(Allocation, CopyingADictionaryTakesTheSameHoweverLargeItIs) {
    const NSMutableDictionary small;
    const NSMutableDictionary large;
    small.setObjectForKey(1, "a");
    for (int number = 0; number < 10000; ++number)
        large.setObjectForKey(number, std::to_string(number));
    const auto copyOf = [](const NSDictionary& dictionary) {
        return allocationsOf([&] { const NSMutableDictionary copy = dictionary.mutableCopy(); });
    };
    EXPECT_EQ(copyOf(large), copyOf(small));
}

TEST(Allocation, WalkingAllocatesNothing) {
    const NSMutableDictionary dictionary{{"a", 1}, {"b", 2}};
    const NSMutableArray array{1, 2, 3};
    EXPECT_EQ(allocationsOf([&] {
                  std::int64_t sum = 0;
                  for (const auto& [key, value] : dictionary) sum += value.integerValue();
                  for (const PropertyListValue& element : array) sum += element.integerValue();
                  EXPECT_EQ(sum, 9);
              }),
              0U);
}

TEST(Allocation, RemovingAnObjectTakesTheSameHoweverLargeTheArrayIs) {
    const auto removalFrom = [](int count) {
        const NSMutableArray array;
        for (int number = 0; number < count; ++number) array.addObject(number);
        return bytesOf([&] { array.removeObject(1); });
    };
    EXPECT_EQ(removalFrom(10000), removalFrom(4));
}

TEST(Allocation, RemovingAnObjectThatIsNotThereAllocatesNothing) {
    const NSMutableArray array{1, 2, 3};
    EXPECT_EQ(allocationsOf([&] { array.removeObject(4); }), 0U);
}
