// SPDX-License-Identifier: MIT
// Text that readers of XML refuse which hold to XML 1.0.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PropertyLists/PropertyListTesting.h"

namespace {

std::vector<std::string> refusals(const PropertyListValue& value, std::size_t most = 100) {
    std::vector<std::string> descriptions;
    for (const auto& refusal : NSPropertyListSerialization::refusalsOfStrictReaders(value, most))
        descriptions.push_back(refusal.description());
    return descriptions;
}

using Descriptions = std::vector<std::string>;

}  // namespace

TEST(StrictReaders, RefuseControlCharactersAndTwoOthers) {
    for (unsigned byte = 0; byte < ' '; ++byte) {
        const std::string text = {'a', static_cast<char>(static_cast<unsigned char>(byte)), 'b'};
        const bool isAllowed = byte == '\t' || byte == '\n' || byte == '\r';
        EXPECT_EQ(refusals(text).empty(), isAllowed) << byte;
    }
    EXPECT_EQ(refusals("\x1F"),
              Descriptions{"a string holds U+001F, which strict XML readers refuse, at the root"});
    EXPECT_EQ(refusals("x\uFFFE"),
              Descriptions{"a string holds U+FFFE, which strict XML readers refuse, at the root"});
    EXPECT_EQ(refusals("\uFFFD\uFFFF\x01"),
              Descriptions{"a string holds U+FFFF, which strict XML readers refuse, at the root"});
}

TEST(StrictReaders, AcceptAllOtherCharacters) {
    for (const char* text :
         {"", "\t\n\r ~\x7F", "\u0080\u0085\u009F", "\uFFFD\uFFFC", "\uD7FF\uE000", "\uFDD0",
          "\U0001FFFE\U0001FFFF\U0010FFFF", "\uFFBE\u0FBE", "<&>"}) {
        EXPECT_EQ(refusals(text), Descriptions{}) << text;
    }
    EXPECT_EQ(refusals(NSDictionary{{"a", NSData("\x01\xFF")}, {"b", 1}, {"c", NSDate(0)}}),
              Descriptions{});
    EXPECT_EQ(refusals(nullptr), Descriptions{});
}

TEST(StrictReaders, AreToldByKeyPathInTheOrderOfTheFile) {
    const PropertyListValue tree =
        NSDictionary{{"b", NSArray{"x", NSDictionary{{"c", "\x02"}}, "\x03"}},
                     {"a", NSDictionary{{"k\x01", "\uFFFE"}}},
                     {"\uFFFF", true}};
    const Descriptions all{
        R"(a key holds U+0001, which strict XML readers refuse, key path a.k\x01)",
        R"(a string holds U+FFFE, which strict XML readers refuse, key path a.k\x01)",
        "a string holds U+0002, which strict XML readers refuse, key path b[1].c",
        "a string holds U+0003, which strict XML readers refuse, key path b[2]",
        "a key holds U+FFFF, which strict XML readers refuse, key path \uFFFF"};
    EXPECT_EQ(refusals(tree), all);
    for (std::size_t most = 0; most < all.size(); ++most) {
        EXPECT_EQ(refusals(tree, most),
                  Descriptions(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(most)));
    }
    EXPECT_TRUE(sameTree(readableXML(written(tree)), tree)) << "here they are stored all the same";
}

TEST(StrictReaders, WhatCannotBeWrittenIsNotAmongThem) {
    EXPECT_EQ(refusals(NSArray{"\xFF\x01", NSNull{}, NSColor{}}), Descriptions{});
    const NSMutableArray cycle;
    cycle.addObject(cycle);
    cycle.addObject(cycle);
    cycle.addObject("\x01");
    EXPECT_EQ(refusals(cycle, 3).size(), 3U);
    EXPECT_EQ(refusals(NSArray{cycle, cycle}, 1).size(), 1U) << "and the search ends";
    cycle.removeAllObjects();
}
