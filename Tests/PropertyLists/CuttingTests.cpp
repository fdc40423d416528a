// SPDX-License-Identifier: MIT
// Files that were cut off at any byte.

#include <gtest/gtest.h>

#include <string>

#include "PropertyLists/PropertyListTesting.h"

namespace {

PropertyListValue sample() {
    return NSDictionary{{"Boolean", true},
                        {"Integer", -12345},
                        {"Large", ~std::uint64_t{0}},
                        {"Real", 1234.5},
                        {"Text \u00e9", "a \u20ac & <b> \U0001F600 text"},
                        {"Data", NSData("some bytes of data")},
                        {"Date", NSDate(1e8)},
                        {"Array", NSArray{"one", 2, NSArray{}, NSDictionary{{"k", "v"}}}}};
}

/// Requires that the file, cut off at any byte, is refused or gives the whole tree. Returns how
/// many of these files were refused.
std::size_t refusedCuts(const std::string& file) {
    const auto whole = NSPropertyListSerialization::propertyListWithData(file);
    EXPECT_FALSE(whole.error) << whole.error->description();
    std::size_t refused = 0;
    for (std::size_t length = 0; length < file.size(); ++length) {
        const auto cut = NSPropertyListSerialization::propertyListWithData(
            std::string_view(file).substr(0, length));
        EXPECT_NE(cut.value.isNull(), !cut.error.has_value()) << length;
        if (cut.error) {
            ++refused;
        } else {
            EXPECT_TRUE(sameTree(cut.value, whole.value)) << "cut at " << length;
        }
    }
    return refused;
}

}  // namespace

TEST(Cutting, XML) {
    const std::string file = written(sample());
    EXPECT_EQ(refusedCuts(file), file.size() - 1) << "only the last line end may be missing";
}

TEST(Cutting, XMLWithCDATAAndComments) {
    const std::string file =
        "<?xml version=\"1.0\"?><!-- a --><plist><array><string>x<![CDATA[y]]>z</string>"
        "<!-- b --><real>12.5</real></array></plist>";
    EXPECT_EQ(refusedCuts(file + "\n<!-- the end -->\n"), file.size() + 15)
        << "white space and comments may be missing, but not half a comment";
}

TEST(Cutting, XMLWithoutPlist) {
    EXPECT_EQ(refusedCuts("<integer>1234</integer>"), 23U);
}

TEST(Cutting, WideXML) {
    for (const std::size_t unitSize : {2U, 4U}) {
        for (const bool isBigEndian : {false, true}) {
            const std::string file =
                widened("<plist><array><string>abc</string><integer>12</integer></array></plist>",
                        unitSize, isBigEndian);
            EXPECT_EQ(refusedCuts(file), file.size());
        }
    }
}

TEST(Cutting, OldStyleText) {
    const std::string file =
        "/* c */ { a = \"b \\U00e9\\341\"; \"c d\" = ( e, 'f', <0fbd 77>, { } ); h = { i = j } }";
    EXPECT_EQ(refusedCuts(file), file.size());
    EXPECT_EQ(refusedCuts("(a, \"b\", <00ff>)"), 16U);
    EXPECT_EQ(refusedCuts("\"quoted\""), 8U);
    EXPECT_EQ(refusedCuts("<00ff>"), 6U);
}

TEST(Cutting, OldStyleTextWithTrailingComments) {
    const std::string file = "{ a = b; }";
    EXPECT_EQ(refusedCuts(file + " // end"), file.size() + 1) << "a lone slash is no comment";
    EXPECT_EQ(refusedCuts(file + " /* end */ "), file.size() + 8) << "neither is half a comment";
}

TEST(Cutting, Binary) {
    const BinaryFile file{.objects = {binaryContainer(0xD0, 3, {1, 2, 3, 4, 5, 6}), "\x51k",
                                      "\x51l", "\x51m", "\x5F\x10\x10sixteen letters!",
                                      binaryContainer(0xA0, 3, {7, 8, 9}),
                                      "\x33" + std::string(8, '\1'), "\x13" + bigEndian(77, 8),
                                      "\x43"
                                      "abc",
                                      "\x62" + std::string("\0a\0b", 4)}};
    EXPECT_EQ(refusedCuts(file.bytes()), file.bytes().size());
}
