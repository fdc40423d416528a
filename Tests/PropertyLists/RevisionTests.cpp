// SPDX-License-Identifier: MIT
// Reading and writing by what differs from a known text, compared with reading and writing the
// whole.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/XMLRevision.h"
#include "PropertyLists/GeneratedValues.h"
#include "PropertyLists/PropertyListTesting.h"
#include "QRVSettings/NSDictionary+QRV.h"

using namespace QRVPlatform::PropertyLists;

namespace {

// Few, so that keys meet; some sort in another order with their escapes, or look like tags.
rc::Gen<std::string> anyKey() {
    return rc::gen::element<std::string>("a", "b", "c", "a.b", "", "&", "%", "'", "<key>", "a&b",
                                         "a<", "a'", "\u00e9", "A", "two\n\t<lines>", "\t", "z\r",
                                         "</dict>", "\uFFFF", "long key with spaces");
}

rc::Gen<PropertyListValue> anyLeaf() {
    return rc::gen::element<PropertyListValue>(
        true, false, 0, 1, 1.0, -7, 2.5, "", "text", "a\n\t<key>b</key>\n", "line\n\t", "\n",
        "\t\n", "</string>", "]]>", "\u00e9\U0001F600", "\r\n", NSDate(77), NSData(""),
        NSData("abc"), NSData(std::string(200, 'x')), NSDictionary(), NSArray());
}

rc::Gen<PropertyListValue> anyNested(int levels);

rc::Gen<NSDictionary> anyDictionary(int levels) {
    return rc::gen::map(rc::gen::container<std::vector<std::pair<std::string, PropertyListValue>>>(
                            rc::gen::pair(anyKey(), anyNested(levels - 1))),
                        [](const std::vector<std::pair<std::string, PropertyListValue>>& entries) {
                            const NSMutableDictionary result;
                            for (const auto& [key, value] : entries)
                                result.setObjectForKey(value, key);
                            return result.copy();
                        });
}

PropertyListValue deepInside(PropertyListValue value, int levels) {
    for (int level = 0; level < levels; ++level)
        value = level % 5 == 4 ? PropertyListValue(NSArray::arrayWithObject(value))
                               : NSDictionary{{"deep", value}, {"beside", level}};
    return value;
}

rc::Gen<PropertyListValue> anyNested(int levels) {
    if (levels == 0) return anyLeaf();
    const auto nested = rc::gen::lazy([levels] { return anyNested(levels - 1); });
    return rc::gen::weightedOneOf<PropertyListValue>(
        {{3, anyLeaf()},
         {4, rc::gen::map(anyDictionary(levels),
                          [](const NSDictionary& value) { return PropertyListValue(value); })},
         {1, rc::gen::map(rc::gen::container<std::vector<PropertyListValue>>(nested),
                          [](const std::vector<PropertyListValue>& elements) {
                              return PropertyListValue(NSArray(elements));
                          })},
         {1, rc::gen::apply(deepInside, nested, rc::gen::inRange(1, 24))}});
}

// Other entries far from those that change, so that little differs.
NSDictionary amongMany(const NSDictionary& tree) {
    NSMutableDictionary result = tree.mutableCopy();
    for (int index = 0; index < 60; ++index) {
        result.setObjectForKey(NSDictionary{{"first", index}, {"last", "text & more"}},
                               (index % 2 == 0 ? "0 before " : "~ after ") + std::to_string(index));
    }
    return result.copy();
}

NSDictionary withEdit(const NSDictionary& dictionary);

NSArray withEdit(const NSArray& array) {
    std::vector<PropertyListValue> elements;
    for (const PropertyListValue& element : array) elements.push_back(element);
    const std::size_t place = *rc::gen::inRange<std::size_t>(0, elements.size() + 1);
    if (place == elements.size())
        elements.push_back(*anyNested(1));
    else if (elements[place].isDictionary())
        elements[place] = withEdit(elements[place].dictionary());
    else
        elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(place));
    return NSArray(elements);
}

// A value is written or removed somewhere; all else is the same objects.
NSDictionary withEdit(const NSDictionary& dictionary) {
    const NSMutableDictionary result = dictionary.mutableCopy();
    std::vector<std::string> keys;
    for (const auto& [key, value] : dictionary) keys.emplace_back(key);
    const std::string key =
        keys.empty() || *rc::gen::inRange(0, 4) == 0 ? *anyKey() : *rc::gen::elementOf(keys);
    const PropertyListValue old = dictionary.objectForKey(key);
    const bool goesInside = *rc::gen::inRange(0, 4) != 0;
    if (goesInside && old.isDictionary())
        result.setObjectForKey(withEdit(old.dictionary()), key);
    else if (goesInside && old.isArray())
        result.setObjectForKey(withEdit(old.array()), key);
    else if (*rc::gen::inRange(0, 3) == 0)
        result.removeObjectForKey(key);
    else
        result.setObjectForKey(*anyNested(*rc::gen::inRange(0, 3)), key);
    return result.copy();
}

NSDictionary withEdits(NSDictionary tree) {
    for (int count = *rc::gen::inRange(1, 5); count > 0; --count) tree = withEdit(tree);
    return tree;
}

NSDictionary anyTreeAmongMany() {
    return amongMany(*rc::gen::scale(0.2, anyDictionary(3)));
}

std::vector<std::string> changesBetween(const NSDictionary& before, const NSDictionary& after) {
    std::vector<std::string> keyPaths;
    for (const PropertyListValue& keyPath : NSDictionaryQRV::changedKeys(before, after))
        keyPaths.push_back(keyPath.stringValue());
    std::ranges::sort(keyPaths);
    return keyPaths;
}

// With the values of dictionaries after their keys, in the order in which a walk meets them.
void collectKeys(const NSDictionary& tree, std::vector<std::string>& keys) {
    for (const auto& [key, value] : tree) {
        keys.emplace_back(key);
        collectKeys(value.dictionary(), keys);
    }
}

std::vector<std::string> keysInOrder(const NSDictionary& tree) {
    std::vector<std::string> keys;
    collectKeys(tree, keys);
    return keys;
}

// What is read from `text` is what the whole gives, in the same order, and can be written.
void requireTreeOfWhole(const NSDictionary& tree, const NSDictionary& read,
                        const std::string& text) {
    const NSDictionary whole = readableXML(text).dictionary();
    RC_ASSERT(isSameTree(read, whole));
    RC_ASSERT(keysInOrder(read) == keysInOrder(whole));
    RC_ASSERT(changesBetween(tree, read) == changesBetween(tree, whole));
    RC_ASSERT(written(read) == text);
}

struct Counts {
    std::size_t all = 0;
    std::size_t revised = 0;
};

std::string mutated(std::string text, const std::string& other) {
    const std::size_t begin = *rc::gen::inRange<std::size_t>(0, text.size());
    const std::size_t length = *rc::gen::inRange<std::size_t>(0, 30);
    const std::string lines = *rc::gen::element<std::string>(
        "\t<key>a</key>\n\t<true/>\n", "\t</dict>\n", "<!-- x -->\n", "<dict>\n", "\t<dict/>\n",
        "\n", "\t", "<", "x", "&amp;", "<![CDATA[x]]>", "\t<key>zz</key>\n", "\xFF",
        "\t\t<array>\n");
    switch (*rc::gen::inRange(0, 5)) {
        case 0:
            return text.erase(begin, length);
        case 1:
            return text.insert(begin, lines);
        case 2:
            return text.insert(text.find('\n', begin) + 1, lines);
        case 3:
            return text.insert(begin, text.substr(begin, length));
        default:
            return text.substr(0, begin) + other.substr(std::min(begin, other.size()));
    }
}

}  // namespace

TEST(Revision, TheTreeOfARevisedTextIsThatOfTheWholeText) {
    Counts counts;
    const auto check = [&counts] {
        const std::string known = written(anyTreeAmongMany());
        const NSDictionary tree = readableXML(known).dictionary();
        const std::string text = written(withEdits(tree));
        const auto read = treeOfRevision(known, tree, text);
        ++counts.all;
        if (!read) return;
        ++counts.revised;
        requireTreeOfWhole(tree, *read, text);
    };
    for (int round = 0; round < 4; ++round) EXPECT_TRUE(rc::check("a revised text", check));
    EXPECT_GT(counts.revised * 2, counts.all);
}

TEST(Revision, TheTextOfARevisedTreeIsThatOfTheWholeTree) {
    Counts counts;
    const auto check = [&counts] {
        const NSDictionary tree = anyTreeAmongMany();
        const NSDictionary revised = withEdits(tree);
        std::string text = written(tree);
        const std::size_t size = text.size();
        text.resize(size + *rc::gen::element<std::size_t>(0, 100, 100'000));
        const auto newSize = reviseText(text, size, tree, revised);
        ++counts.all;
        counts.revised += newSize ? 1 : 0;
        text.resize(newSize.value_or(size));
        RC_ASSERT(text == written(newSize ? revised : tree));
    };
    for (int round = 0; round < 4; ++round) EXPECT_TRUE(rc::check("a revised tree", check));
    EXPECT_GT(counts.revised * 2, counts.all);
}

TEST(Revision, ATextThatTheWriterWouldNotWriteIsReadAsAWholeOrGivesItsTree) {
    const auto check = [] {
        const std::string known = written(anyTreeAmongMany());
        const NSDictionary tree = readableXML(known).dictionary();
        std::string text = written(withEdits(tree));
        for (int count = *rc::gen::inRange(1, 3); count > 0; --count)
            text = mutated(std::move(text), known);
        const auto read = treeOfRevision(known, tree, text);
        if (read) requireTreeOfWhole(tree, *read, text);
    };
    for (int round = 0; round < 4; ++round) EXPECT_TRUE(rc::check("a changed text", check));
}
