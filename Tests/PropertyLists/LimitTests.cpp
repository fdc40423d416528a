// SPDX-License-Identifier: MIT
// The limits on size, levels and values.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PropertyLists/PropertyListTesting.h"

namespace {

constexpr std::size_t levels = NSPropertyListSerialization::maximumLevels;
constexpr std::size_t values = NSPropertyListSerialization::maximumValues;
constexpr std::size_t size = NSPropertyListSerialization::maximumSize;

std::string xmlArrays(std::size_t count) {
    return repeated("<array>", count) + repeated("</array>", count);
}

std::string xmlDictionaries(std::size_t count) {
    return repeated("<dict><key>k</key>", count) + "<true/>" + repeated("</dict>", count);
}

std::string oldStyleArrays(std::size_t count) {
    return repeated("(", count) + repeated(")", count);
}

std::string oldStyleDictionaries(std::size_t count) {
    return repeated("{a=", count) + "b" + repeated(";}", count);
}

// Each object but the last holds the next one.
std::string binaryArrays(std::size_t count) {
    BinaryFile file{.objects = {}, .referenceSize = 2};
    for (std::size_t index = 1; index < count; ++index) {
        file.objects.push_back(binaryContainer(0xA0, 1, {index}, 2));
    }
    file.objects.push_back(binaryContainer(0xA0, 0, {}, 2));
    return file.bytes();
}

std::string binaryDictionaries(std::size_t count) {
    BinaryFile file{.objects = {"\x51k"}, .topObject = 1, .referenceSize = 2};
    for (std::size_t index = 1; index < count; ++index) {
        file.objects.push_back(binaryContainer(0xD0, 1, {0, index + 1}, 2));
    }
    file.objects.push_back(binaryContainer(0xD0, 0, {}, 2));
    return file.bytes();
}

bool isReadable(const std::string& bytes) {
    return !NSPropertyListSerialization::propertyListWithData(bytes).value.isNull();
}

}  // namespace

TEST(Limits, LevelsOfXML) {
    EXPECT_TRUE(isReadable(plist(xmlArrays(levels))));
    EXPECT_TRUE(isReadable(plist(xmlDictionaries(levels))));
    EXPECT_EQ(refusal(xmlArrays(levels + 1)),
              "there are more than 512 levels, line 1, column " + std::to_string(levels * 7 + 1));
    EXPECT_NE(refusal(xmlDictionaries(levels + 1)), "");
    EXPECT_NE(refusal(xmlArrays(1'000'000)), "");
}

TEST(Limits, LevelsOfOldStyleText) {
    EXPECT_TRUE(isReadable(oldStyleArrays(levels)));
    EXPECT_TRUE(isReadable(oldStyleDictionaries(levels)));
    EXPECT_TRUE(isReadable("a=" + oldStyleArrays(levels - 1) + ";"));
    EXPECT_EQ(refusal(oldStyleArrays(levels + 1)),
              "there are more than 512 levels, line 1, column " + std::to_string(levels + 1));
    EXPECT_NE(refusal(oldStyleDictionaries(levels + 1)), "");
    EXPECT_NE(refusal("a=" + oldStyleArrays(levels) + ";"), "");
    EXPECT_NE(refusal(repeated("(", 10'000'000)), "");
    EXPECT_NE(refusal(repeated("{a=", 10'000'000)), "");
}

TEST(Limits, LevelsOfTheBinaryFormat) {
    EXPECT_TRUE(isReadable(binaryArrays(levels)));
    EXPECT_TRUE(isReadable(binaryDictionaries(levels)));
    EXPECT_TRUE(refusal(binaryArrays(levels + 1)).starts_with("there are more than 512 levels"));
    EXPECT_TRUE(
        refusal(binaryDictionaries(levels + 1)).starts_with("there are more than 512 levels"));
    EXPECT_NE(refusal(binaryArrays(60'000)), "");
}

// The shared chain is first met near the root, where it still fits.
TEST(Limits, LevelsOfASharedBinaryObjectCountAtItsDeepestPlace) {
    const auto file = [](std::size_t chain) {
        BinaryFile result{
            .objects = {binaryContainer(0xA0, 2, {2, 1}, 2), binaryContainer(0xA0, 1, {2}, 2)},
            .referenceSize = 2};
        for (std::size_t index = 1; index < chain; ++index) {
            result.objects.push_back(binaryContainer(0xA0, 1, {index + 2}, 2));
        }
        result.objects.push_back(binaryContainer(0xA0, 0, {}, 2));
        return result.bytes();
    };
    EXPECT_TRUE(isReadable(file(levels - 2)));
    EXPECT_TRUE(refusal(file(levels - 1)).starts_with("there are more than 512 levels"));
}

TEST(Limits, LevelsOfWriting) {
    EXPECT_TRUE(isReadable(written(nestedArrays(levels))));
    std::string path;
    for (std::size_t level = 0; level < levels; ++level) path += "[0]";
    EXPECT_EQ(writeRefusal(nestedArrays(levels + 1)),
              "there are more than 512 levels, key path " + path);
    const NSMutableDictionary cycle;
    cycle.setObjectForKey(cycle, "me");
    EXPECT_TRUE(writeRefusal(cycle).starts_with("there are more than 512 levels, key path me.me."));
    cycle.removeAllObjects();
}

TEST(Limits, ValuesOfXML) {
    const auto file = [](std::size_t count) {
        return "<array>" + repeated("<true/>", count - 1) + "</array>";
    };
    EXPECT_TRUE(isReadable(file(values)));
    EXPECT_TRUE(
        refusal(file(values + 1)).starts_with("there are more than 1000000 values, line 1"));
}

TEST(Limits, KeysDoNotCountAsValues) {
    const auto file = [](std::size_t count) {
        return "<dict>" + repeated("<key>k</key><true></true>", count - 1) + "</dict>";
    };
    EXPECT_TRUE(isReadable(file(values)));
    EXPECT_NE(refusal(file(values + 1)), "");
}

TEST(Limits, ValuesOfOldStyleText) {
    const auto file = [](std::size_t count) { return "(" + repeated("a,", count - 1) + ")"; };
    EXPECT_TRUE(isReadable(file(values)));
    EXPECT_TRUE(
        refusal(file(values + 1)).starts_with("there are more than 1000000 values, line 1"));
}

TEST(Limits, ValuesOfTheBinaryFormatCountAtEachReference) {
    // 1 + 1000 * 999 from the inner array, the rest from single values.
    const auto file = [](std::size_t singles) {
        std::vector<std::uint64_t> references(1000, 1);
        references.resize(1000 + singles, 2);
        const BinaryFile result{
            .objects = {binaryContainer(0xA0, references.size(), references),
                        binaryContainer(0xA0, 998, std::vector<std::uint64_t>(998, 2)), "\x09"}};
        return result.bytes();
    };
    EXPECT_TRUE(isReadable(file(999)));
    EXPECT_TRUE(refusal(file(1000)).starts_with("there are more than 1000000 values, byte "));
}

TEST(Limits, ASmallBinaryFileCannotExpandWithoutEnd) {
    BinaryFile file{.objects = {}};
    for (std::uint64_t index = 1; index <= 40; ++index) {
        file.objects.push_back(binaryContainer(0xA0, 2, {index, index}));
    }
    file.objects.push_back("\x09");
    ASSERT_LT(file.bytes().size(), 1024U);
    EXPECT_TRUE(refusal(file.bytes()).starts_with("there are more than 1000000 values, byte "));
}

TEST(Limits, ABinaryFileOfMoreObjectsThanValuesMayHaveIsRefused) {
    BinaryFile file{.objects = std::vector<std::string>(2 * values + 1, "\x09"), .offsetSize = 4};
    EXPECT_TRUE(refusal(file.bytes()).starts_with("there are more than 1000000 values, byte "));
    file.objects.resize(2 * values);
    EXPECT_TRUE(isReadable(file.bytes()));
}

TEST(Limits, ValuesOfWriting) {
    const auto array = [](std::size_t count) {
        const std::vector<PropertyListValue> elements(count - 1, PropertyListValue(true));
        return NSArray(elements);
    };
    EXPECT_TRUE(isReadable(written(array(values))));
    EXPECT_EQ(writeRefusal(array(values + 1)),
              "there are more than 1000000 values, key path [" + std::to_string(values - 1) + "]");
}

TEST(Limits, SizeOfAFile) {
    const auto padded = [](std::string file, std::size_t length) {
        file.append(length - file.size(), ' ');
        return file;
    };
    EXPECT_TRUE(isReadable(padded("<true/>", size)));
    EXPECT_TRUE(isReadable(padded("{ a = b; }", size)));
    EXPECT_EQ(refusal(padded("<true/>", size + 1)),
              "the file is larger than 64 MiB, byte 67108864");
    EXPECT_NE(refusal(padded("{ a = b; }", size + 1)), "");
    EXPECT_NE(refusal(padded("bplist00", size + 1)), "");
}

TEST(Limits, SizeOfWriting) {
    const std::size_t around = written("").size();
    const std::string longest(size - around, 'x');
    EXPECT_EQ(written(NSArray{}).empty(), false);
    const std::string bytes = written(longest);
    EXPECT_EQ(bytes.size(), size);
    EXPECT_TRUE(readableXML(bytes) == PropertyListValue(longest));
    EXPECT_EQ(writeRefusal(longest + "x"), "the file would be larger than 64 MiB, at the root");
    EXPECT_EQ(writeRefusal(NSDictionary{{"a", NSArray{1, NSData(longest)}}}),
              "the file would be larger than 64 MiB, key path a[1]");
    EXPECT_NE(writeRefusal(std::string(size / 2, '&')), "");
}

TEST(Limits, TagsWithoutEndAreRefusedAtTheFirstThatIsWrong) {
    EXPECT_EQ(refusal(repeated("<z>", size / 3)), "unknown element <z>, line 1, column 1");
    EXPECT_EQ(refusal("<string>" + repeated("<string>", size / 8 - 1)),
              "unexpected element <string> inside <string>, line 1, column 9");
}

TEST(Limits, MarkupThatIsNoValueDoesNotCount) {
    EXPECT_TRUE(isReadable("<array>" + repeated("<!---->", 6 * values) + "</array>"));
    EXPECT_TRUE(sameTree(
        readableXML("<string>" + repeated("<![CDATA[]]>", 5 * values) + "x</string>"), "x"));
}
