// SPDX-License-Identifier: MIT
// The limits on size, levels and values.

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "PropertyLists/PropertyListTesting.h"

namespace {

constexpr std::size_t levels = NSPropertyListSerialization::maximumLevels;
constexpr std::size_t values = NSPropertyListSerialization::maximumValues;
constexpr std::size_t size = NSPropertyListSerialization::maximumSize;
constexpr std::size_t contents = NSPropertyListSerialization::maximumContents;

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

// The bytes after `beginning` are zeros, of which each page takes memory only when it is read.
TEST(Limits, SizeOfAFile) {
    const std::size_t room = size + 1;
    void* const memory = mmap(nullptr, room, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    auto* const bytes = static_cast<char*>(memory);
    const auto file = [bytes](std::string_view beginning, std::size_t length) {
        beginning.copy(bytes, beginning.size());
        return std::string_view(bytes, length);
    };
    EXPECT_TRUE(NSPropertyListSerialization::propertyListWithData(file("<true/>", size)).value ==
                PropertyListValue(true));
    const std::string message = "the file is larger than 512 MiB, byte 536870912";
    EXPECT_EQ(refusal(file("<true/>", size + 1)), message);
    EXPECT_EQ(refusal(file("{ a = b; }", size + 1)), message);
    EXPECT_EQ(refusal(file("bplist00", size + 1)), message);
    munmap(memory, room);
}

TEST(Limits, ContentsOfXML) {
    const auto file = [](std::size_t length) {
        return "<dict><key>abc</key><array><data>AAAA</data><string>" +
               std::string(length - 6, 'x') + "</string></array></dict>";
    };
    EXPECT_TRUE(isReadable(file(contents)));
    EXPECT_EQ(refusal(file(contents + 1)),
              "there are more than 64 MiB of text and data, line 1, column 45");
    const std::string half(contents / 2, 'x');
    EXPECT_NE(refusal("<dict><key>" + half + "</key><string>" + half + "x</string></dict>"), "");
}

TEST(Limits, ContentsOfWideTextCountInUTF8) {
    const auto file = [](std::size_t characters) {
        return "\xFE\xFF" + widened("<string>", 2, true) + repeated("\x20\xAC", characters) +
               widened("</string>", 2, true);
    };
    EXPECT_TRUE(isReadable(file(contents / 3)));
    EXPECT_NE(refusal(file(contents / 3 + 1)), "");
}

TEST(Limits, ContentsOfOldStyleText) {
    const auto file = [](std::size_t length) {
        return "{ abc = (<000000>, " + std::string(length - 7, 'x') + "); d; }";
    };
    EXPECT_TRUE(isReadable(file(contents - 1)));
    EXPECT_TRUE(refusal(file(contents)).starts_with("there are more than 64 MiB of text and data"));
    const std::string most(contents / 2 + 1, 'x');
    EXPECT_NE(refusal("{" + most + ";}"), "") << "a key that is its own value counts twice";
}

TEST(Limits, ContentsOfTheBinaryFormatCountAtEachReference) {
    constexpr std::size_t block = 65536;
    const std::string text = "\x5F\x12" + bigEndian(block, 4) + std::string(block, 'x');
    const std::string data = "\x4F\x12" + bigEndian(block, 4) + std::string(block, 'x');
    const auto array = [&text](std::size_t count, const std::string& last) {
        std::vector<std::uint64_t> references(count - 1, 1);
        references.push_back(2);
        return BinaryFile{.objects = {binaryContainer(0xA0, count, references), text, last},
                          .offsetSize = 4}
            .bytes();
    };
    EXPECT_TRUE(isReadable(array(contents / block, data)));
    EXPECT_TRUE(isReadable(array(contents / block + 1, "\x09")));
    EXPECT_TRUE(refusal(array(contents / block + 1, "\x51x"))
                    .starts_with("there are more than 64 MiB of text and data, byte "));
    EXPECT_NE(refusal(array(contents / block + 1, "\x41x")), "");
}

// A key counts in each dictionary, and a shared dictionary at each reference to it.
TEST(Limits, ContentsOfBinaryKeysCountAtEachReference) {
    constexpr std::size_t length = 100'000;
    const auto file = [](std::size_t count) {
        return BinaryFile{
            .objects = {binaryContainer(0xA0, count, std::vector<std::uint64_t>(count, 1)),
                        binaryContainer(0xD0, 1, {2, 3}),
                        "\x5F\x12" + bigEndian(length, 4) + std::string(length, 'k'), "\x09"},
            .offsetSize = 4}
            .bytes();
    };
    EXPECT_TRUE(isReadable(file(contents / length)));
    EXPECT_NE(refusal(file(contents / length + 1)), "");
    ASSERT_LT(file(9000).size(), 140'000U);
    EXPECT_NE(refusal(file(9000)), "");
}

TEST(Limits, ContentsOfASingleBinaryObject) {
    const auto file = [](std::size_t length, char marker) {
        return BinaryFile{
            .objects = {marker + ("\x12" + bigEndian(length, 4)) + std::string(length, 'x')},
            .offsetSize = 4}
            .bytes();
    };
    for (const char marker : {'\x4F', '\x5F'}) {
        EXPECT_TRUE(isReadable(file(contents, marker)));
        EXPECT_EQ(refusal(file(contents + 1, marker)),
                  "there are more than 64 MiB of text and data, byte 8");
    }
}

TEST(Limits, ContentsOfWriting) {
    const std::string most(contents, 'x');
    EXPECT_TRUE(isReadable(written(most)));
    EXPECT_EQ(writeRefusal(most + "x"), "there are more than 64 MiB of text and data, at the root");
    EXPECT_EQ(writeRefusal(NSDictionary{{"a", NSArray{1, NSData(most)}}}),
              "there are more than 64 MiB of text and data, key path a[1]");
    EXPECT_EQ(writeRefusal(NSDictionary{{"a", true}, {most, true}}).substr(0, 43),
              "there are more than 64 MiB of text and data");
}

// What grows most when it is read and written: text that is escaped, and values that are indented.
TEST(Limits, WhateverIsReadCanBeWrittenAndReadAgain) {
    const auto sizeWhenWritten = [](const std::string& file) {
        const auto read = NSPropertyListSerialization::propertyListWithData(file);
        EXPECT_FALSE(read.error) << read.error->description();
        const std::string bytes = written(read.value);
        EXPECT_TRUE(NSPropertyListSerialization::propertyListWithData(bytes).value == read.value);
        return bytes.size();
    };
    constexpr std::size_t length = contents / 16;
    EXPECT_GT(sizeWhenWritten("<string>" + std::string(length, '\x7F') + "</string>"), 6 * length);
    std::string entries;
    for (std::size_t index = 0; index < values / 10 * 7; ++index)
        entries += "<key>" + std::to_string(index) + "</key><data>AA==</data>";
    const std::string deep = repeated("<dict><key/>", levels - 1) + "<dict>" + entries + "</dict>" +
                             repeated("</dict>", levels - 1);
    EXPECT_GT(sizeWhenWritten(deep), contents) << "a file may be larger than what it holds";
}

TEST(Limits, TagsWithoutEndAreRefusedAtTheFirstThatIsWrong) {
    EXPECT_EQ(refusal(repeated("<z>", contents / 3)), "unknown element <z>, line 1, column 1");
    EXPECT_EQ(refusal("<string>" + repeated("<string>", contents / 8)),
              "unexpected element <string> inside <string>, line 1, column 9");
}

TEST(Limits, MarkupThatIsNoValueDoesNotCount) {
    EXPECT_TRUE(isReadable("<array>" + repeated("<!---->", 6 * values) + "</array>"));
    EXPECT_TRUE(sameTree(
        readableXML("<string>" + repeated("<![CDATA[]]>", 5 * values) + "x</string>"), "x"));
}
