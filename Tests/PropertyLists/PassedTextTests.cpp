// SPDX-License-Identifier: MIT
// A text that is given back while it is read gives the same values, and the same errors at the same
// places.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/PropertyLists/ReadingOnce.h"
#include "PropertyLists/PropertyListTesting.h"

using QRVPlatform::PropertyLists::PassedText;
using QRVPlatform::PropertyLists::propertyListReadOnce;

namespace {

struct ReadOnce {
    PropertyListReadResult result;
    std::size_t givenBack = 0;
};

/// Whatever is given back is overwritten, so that it cannot be read again.
ReadOnce readOnce(const std::string& file, std::size_t step = PassedText::usualStep) {
    std::string memory = file;
    ReadOnce read;
    read.result = propertyListReadOnce(
        memory,
        [&](const char* place) {
            const auto end = static_cast<std::size_t>(place - memory.data());
            ASSERT_GE(end, read.givenBack);
            ASSERT_LE(end, memory.size());
            std::fill(memory.begin(), memory.begin() + static_cast<std::ptrdiff_t>(end), '\xAA');
            read.givenBack = end;
        },
        step);
    return read;
}

/// Dictionaries and arrays in each other, with characters of several bytes, on many lines.
PropertyListValue tree(std::size_t levels, std::size_t& number) {
    const NSMutableDictionary result;
    const NSMutableArray array;
    for (int index = 0; index < 12; ++index) {
        const std::string text = "\u00e9 text \u20ac " + std::to_string(++number);
        result.setObjectForKey(text, "Key \u00fc " + std::to_string(number));
        array.addObject(NSDictionary{{"label", text}, {"number", number}});
        if (levels > 0 && index % 3 == 1)
            result.setObjectForKey(tree(levels - 1, number), "Nested " + std::to_string(number));
        if (levels > 0 && index % 6 == 5) array.addObject(tree(levels - 1, number));
    }
    result.setObjectForKey(array, "Array");
    return result;
}

std::string largeFile() {
    std::size_t number = 0;
    return written(tree(3, number));
}

std::string withLineEnds(const std::string& text, std::string_view lineEnd) {
    std::string result;
    for (const char character : text) {
        if (character == '\n')
            result += lineEnd;
        else
            result += character;
    }
    return result;
}

void expectSame(const std::string& file, std::size_t step = PassedText::usualStep) {
    const auto expected = NSPropertyListSerialization::propertyListWithData(file);
    const PropertyListReadResult read = readOnce(file, step).result;
    ASSERT_EQ(read.error.has_value(), expected.error.has_value());
    EXPECT_EQ(read.format, expected.format);
    if (expected.error) {
        EXPECT_EQ(read.error->description(), expected.error->description());
        EXPECT_EQ(read.error->offset, expected.error->offset);
    } else {
        EXPECT_TRUE(isSameTree(read.value, expected.value));
    }
}

}  // namespace

TEST(PassedText, ALargeTextIsGivenBackWhileItIsRead) {
    const std::string file = largeFile();
    ASSERT_GT(file.size(), 300'000U);
    const ReadOnce read = readOnce(file);
    ASSERT_FALSE(read.result.error) << read.result.error->description();
    EXPECT_TRUE(
        sameTree(read.result.value, NSPropertyListSerialization::propertyListWithData(file).value));
    EXPECT_GT(read.givenBack, file.size() - 100'000);
}

TEST(PassedText, EveryLineEndGivesTheSameTree) {
    const std::string file = largeFile();
    for (const std::string_view lineEnd : {"\n", "\r\n", "\r", "  \n\t"})
        expectSame(withLineEnds(file, lineEnd));
}

TEST(PassedText, ATextThatIsCutOffHasTheSameErrorWhereverItsElementsBegan) {
    const std::string file = largeFile();
    for (const std::string_view lineEnd : {"\n", "\r\n", "\r"}) {
        const std::string text = withLineEnds(file, lineEnd);
        for (std::size_t part = 1; part <= 16; ++part)
            expectSame(text.substr(0, text.size() / 16 * part - part));
    }
}

TEST(PassedText, AMistakeAnywhereHasTheSameError) {
    const std::string file = largeFile();
    const std::vector<std::string> mistakes{"<",
                                            "&",
                                            "</dict>",
                                            "</array>",
                                            "</plist>",
                                            "<key>",
                                            "<integer>x</integer>",
                                            "text",
                                            "<true>no</true>",
                                            "<unknown a='b'>",
                                            "<!-- ",
                                            "<![CDATA[",
                                            "\x01",
                                            "</",
                                            "<dict >",
                                            "\r",
                                            "\xC3"};
    for (std::size_t place = 0; place < mistakes.size() * 4; ++place) {
        std::string text = place % 3 == 0 ? withLineEnds(file, "\r\n") : file;
        const std::size_t line = text.find('\n', text.size() / 70 * place);
        text.insert(line + 1 + place % 5, mistakes[place % mistakes.size()]);
        expectSame(text);
    }
}

TEST(PassedText, SmallStepsGiveTheSameWhereverATextIsCutOff) {
    const std::string file =
        "<?xml version='1.0'?>\r\n<!-- \u00e9 -->\r<plist><dict>\n<key>a\u20ac</key>\r\n<array>\n\n"
        "<string>x<![CDATA[\r\n]]>y</string><dict a='\n'><key>k</key><true/></dict >\r\r"
        "<!-- c\n --><dict/><integer> 1 </integer><array><real>1</real></array></array>\n"
        "<key>b</key><dict><key>&lt;\n</key><data>AAEC</data></dict></dict></plist>\n<?end?>";
    for (std::size_t length = 0; length <= file.size(); ++length) {
        for (const std::size_t step : {std::size_t{1}, std::size_t{7}, std::size_t{40}})
            expectSame(file.substr(0, length), step);
    }
}

TEST(PassedText, AnElementThatIsNotClosedIsNamedWithThePlaceWhereItBegan) {
    const std::string filler = repeated("<string>a\u20ac</string>\n", 10'000);
    const std::string file = "<plist>\n\u00e9<array>\n" + filler;
    EXPECT_EQ(readOnce("<plist>\n  <array>\n" + filler).result.error->description(),
              "malformed XML: <array> is not closed, line 2, column 3");
    EXPECT_EQ(readOnce("<plist>\n<dict><key>\u20ac</key><array>\n" + filler + "</array>\n")
                  .result.error->description(),
              "malformed XML: <dict> is not closed, line 2, column 1");
    EXPECT_EQ(readOnce("\n <plist><array>\n" + filler + "</array>\n").result.error->description(),
              "malformed XML: <plist> is not closed, line 2, column 2");
    expectSame(file);
}

TEST(PassedText, OtherFormatsAndEncodingsAreReadWhole) {
    std::string ascii =
        "<plist><array>" + repeated("<string>text</string>\n", 5000) + "</array></plist>";
    const ReadOnce wide = readOnce("\xFF\xFE" + widened(ascii, 2, false));
    EXPECT_EQ(wide.givenBack, 0U);
    EXPECT_EQ(wide.result.value.array().count(), 5000U);
    const ReadOnce oldStyle = readOnce("(" + repeated("text, ", 20'000) + ")");
    EXPECT_EQ(oldStyle.givenBack, 0U);
    EXPECT_EQ(oldStyle.result.value.array().count(), 20'000U);
    const ReadOnce binary = readOnce(
        BinaryFile{.objects = {binaryContainer(0xA0, 1, {1}), "\x51k" + std::string(100'000, '\0')}}
            .bytes());
    EXPECT_EQ(binary.givenBack, 0U);
    EXPECT_EQ(binary.result.value.array().count(), 1U);
}
