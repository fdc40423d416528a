// SPDX-License-Identifier: MIT
// Arrays and dictionaries as C++20 ranges.

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <ranges>
#include <string>
#include <type_traits>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

static_assert(std::ranges::forward_range<NSArray>);
static_assert(std::ranges::forward_range<const NSArray>);
static_assert(std::ranges::forward_range<NSMutableArray>);
static_assert(std::ranges::forward_range<const NSMutableArray>);
static_assert(std::ranges::forward_range<NSDictionary>);
static_assert(std::ranges::forward_range<const NSDictionary>);
static_assert(std::ranges::forward_range<NSMutableDictionary>);
static_assert(std::ranges::forward_range<const NSMutableDictionary>);

static_assert(std::ranges::viewable_range<NSArray>);
static_assert(std::ranges::viewable_range<NSDictionary&>);
static_assert(std::ranges::borrowed_range<NSArray>);
static_assert(std::ranges::borrowed_range<NSMutableArray>);
static_assert(std::ranges::borrowed_range<NSDictionary>);
static_assert(std::ranges::borrowed_range<NSMutableDictionary>);

static_assert(std::same_as<std::ranges::range_reference_t<NSArray>, const PropertyListValue&>);
static_assert(std::same_as<std::ranges::range_value_t<NSArray>, PropertyListValue>);
static_assert(std::same_as<std::ranges::range_reference_t<NSDictionary>, NSDictionary::Entry>);
static_assert(std::same_as<std::ranges::range_value_t<NSDictionary>, NSDictionary::Entry>);

// Algorithms from before C++20 use these.
static_assert(std::same_as<std::iterator_traits<NSArray::Iterator>::iterator_category,
                           std::forward_iterator_tag>);
static_assert(std::same_as<std::iterator_traits<NSDictionary::Iterator>::iterator_category,
                           std::input_iterator_tag>);

namespace {

bool isInteger(const PropertyListValue& value) {
    return value.isInteger();
}

}  // namespace

TEST(Ranges, AlgorithmsFindElements) {
    const NSArray array{1, "cpu", 2.5, "cpu"};
    const auto found = std::ranges::find(array, PropertyListValue("cpu"));
    ASSERT_NE(found, array.end());
    EXPECT_EQ(*found, "cpu");
    EXPECT_EQ(std::ranges::distance(array.begin(), found), 1);
    EXPECT_EQ(std::ranges::find(array, PropertyListValue("none")), array.end());
    EXPECT_EQ(std::ranges::count(array, PropertyListValue("cpu")), 2);
    EXPECT_EQ(std::ranges::adjacent_find(array), array.end());
    EXPECT_TRUE(std::ranges::equal(array, array.mutableCopy()));
}

TEST(Ranges, AlgorithmsFindEntries) {
    const NSDictionary dictionary{{"a", 1}, {"b", "text"}, {"c", 3}};
    const auto found = std::ranges::find(dictionary, "b", &NSDictionary::Entry::key);
    ASSERT_NE(found, dictionary.end());
    EXPECT_EQ((*found).value, "text");
    EXPECT_EQ(std::ranges::count_if(
                  dictionary, isInteger,
                  [](const auto& entry) -> const PropertyListValue& { return entry.value; }),
              2);
}

TEST(Ranges, ACopiedIteratorGoesTheSameWayAgain) {
    const NSDictionary dictionary{{"a", 1}, {"b", 2}, {"c", 3}};
    auto first = dictionary.begin();
    auto second = first;
    EXPECT_EQ(first, second);
    const auto before = first++;
    EXPECT_EQ(before, second);
    EXPECT_NE(first, second);
    ++second;
    EXPECT_EQ(first, second);
    EXPECT_EQ((*first).key, (*second).key);
    first = before;
    EXPECT_EQ((*first).key, (*dictionary.begin()).key);
}

TEST(Ranges, AnIteratorOutlivesItsContainer) {
    NSDictionary::Iterator entry;
    NSArray::Iterator element;
    {
        const NSMutableDictionary dictionary{{"key", "text"}};
        const NSMutableArray array{"element"};
        entry = dictionary.begin();
        element = array.begin();
        dictionary.removeAllObjects();
        array.removeAllObjects();
    }
    EXPECT_EQ((*entry).key, "key");
    EXPECT_EQ((*entry).value, "text");
    EXPECT_EQ(*element, "element");
    EXPECT_EQ(std::ranges::distance(element, std::default_sentinel), 1);
}

TEST(Ranges, AWalkKeepsToTheElementsItStartedWith) {
    const NSMutableArray array{1, 2, 3, 4};
    std::vector<std::int64_t> seen;
    for (const PropertyListValue& element : array) {
        seen.push_back(element.integerValue());
        array.removeObject(seen.back() + 1);
        array.addObject(10 + seen.back());
    }
    EXPECT_EQ(seen, (std::vector<std::int64_t>{1, 2, 3, 4}));
    EXPECT_EQ(array, NSArray({1, 11, 12, 13, 14}));
    auto start = array.begin();
    array.setArray({"other"});
    EXPECT_EQ(std::ranges::distance(start, array.end()), 5);
    EXPECT_EQ(*array.begin(), "other");
}

TEST(Ranges, ANullContainerIsAnEmptyRange) {
    EXPECT_TRUE(std::ranges::empty(NSArray(nullptr)));
    EXPECT_TRUE(std::ranges::empty(NSDictionary(nullptr)));
    EXPECT_EQ(NSArray::Iterator(), std::default_sentinel);
    EXPECT_EQ(NSArray::Iterator(), NSArray::Iterator());
}

// clang before version 16 cannot compile the views of libstdc++, whatever the range.
#if !defined(__clang__) || __clang_major__ >= 16

namespace {

std::int64_t integerOf(const PropertyListValue& value) {
    return value.integerValue();
}

}  // namespace

TEST(Ranges, ViewsFilterAndTransform) {
    const NSArray array{1, "a", 2, "b", 3};
    auto squares = array | std::views::filter(isInteger) | std::views::transform(integerOf) |
                   std::views::transform([](std::int64_t number) { return number * number; });
    std::vector<std::int64_t> seen;
    std::ranges::copy(squares, std::back_inserter(seen));
    EXPECT_EQ(seen, (std::vector<std::int64_t>{1, 4, 9}));
    const NSDictionary dictionary{{"a", 1}, {"b", "text"}, {"c", 3}};
    std::int64_t sum = 0;
    for (const auto& [key, value] :
         dictionary | std::views::filter([](const auto& entry) { return entry.value.isInteger(); }))
        sum += value.integerValue();
    EXPECT_EQ(sum, 4);
}

TEST(Ranges, AViewOfATemporaryKeepsItsContents) {
    const auto words = [] { return NSArray{"a", "b"}; };
    std::string text;
    for (const PropertyListValue& word : words() | std::views::drop(1)) text += word.stringValue();
    EXPECT_EQ(text, "b");
    EXPECT_EQ(*std::ranges::find(words(), PropertyListValue("b")), "b");
}

TEST(Ranges, EarlierAlgorithmsAndContainersTakeTheIterators) {
    const NSArray array{1, 2, 3};
    const auto common = array | std::views::common;
    const std::vector<PropertyListValue> values(common.begin(), common.end());
    EXPECT_EQ(NSArray(values), array);
    EXPECT_EQ(std::accumulate(common.begin(), common.end(), std::int64_t{0},
                              [](std::int64_t sum, const PropertyListValue& value) {
                                  return sum + value.integerValue();
                              }),
              6);
}

TEST(Ranges, AViewKeepsToTheElementsItStartedWith) {
    const NSMutableArray array{1, "a", 2};
    std::vector<std::int64_t> seen;
    for (const PropertyListValue& element : array | std::views::filter(isInteger)) {
        seen.push_back(element.integerValue());
        array.removeAllObjects();
    }
    EXPECT_EQ(seen, (std::vector<std::int64_t>{1, 2}));
    EXPECT_EQ(array.count(), 0U);
}

#endif
