// SPDX-License-Identifier: MIT
// One tree in all the ways that XML can express it.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/Unicode.h"
#include "PropertyLists/GeneratedValues.h"
#include "PropertyLists/PropertyListTesting.h"

using namespace QRVPlatform;

namespace {

/// Writes trees in any of the ways that XML allows; a list of choices selects one.
class Notation {
  public:
    explicit Notation(std::vector<unsigned> choices) : choices_(std::move(choices)) {}

    std::string file(const PropertyListValue& root) {
        std::string result =
            oneOf<3>({"", "<?xml version='1.0'?>", "<?xml version=\"1.0\" ?>\r\n"});
        result += oneOf<3>({"", "<!DOCTYPE plist>", "<!DOCTYPE plist SYSTEM '>' \"'<\" >"});
        result += filler();
        return result + (choice(2) == 0 ? value(root) : element("plist", filled(value(root)))) +
               filler();
    }

  private:
    unsigned choice(unsigned count) {
        return choices_.empty() ? 0 : choices_[next_++ % choices_.size()] % count;
    }
    template <std::size_t Count>
    std::string oneOf(const std::array<std::string_view, Count>& notations) {
        return std::string(notations.at(choice(Count)));
    }
    std::string comment() {
        return oneOf<5>({"", "<!---->", "<!-- <key> & -- -->", "<?a?>", "<?b <true/> ]]> ?>"});
    }
    std::string filler() { return oneOf<4>({"", " \n\t", "\r\n", "<![CDATA[ \r]]>"}) + comment(); }
    std::string filled(const std::string& text) {
        std::string result = filler();
        result += text;
        return result + filler();
    }
    std::string element(const std::string& name, const std::string& contents) {
        const std::string attributes =
            oneOf<4>({"", " ", "\n a='<>&\"'", " \u00e9 = \"/>'\"\tb.c-d=''"});
        const std::string open = "<" + name + attributes;
        if (contents.empty() && choice(2) == 0) return open + "/>";
        return open + ">" + contents + "</" + name + oneOf<3>({"", " ", "\r\n"}) + ">";
    }

    std::string reference(char32_t character) {
        std::array<char, 16> hexadecimal{};
        const int length = std::snprintf(hexadecimal.data(), hexadecimal.size(), "&#x%X;",
                                         static_cast<unsigned>(character));
        if (choice(2) == 0) return "&#0" + std::to_string(static_cast<unsigned>(character)) + ";";
        return {hexadecimal.data(), static_cast<std::size_t>(length)};
    }
    // A carriage return and U+0000 would not be read back.
    std::string character(std::string_view bytes) {
        const auto first = static_cast<unsigned char>(bytes.front());
        const bool isPlain = first != '\r' && first != '\0';
        if (isPlain && choice(4) == 0) return "<![CDATA[" + std::string(bytes) + "]]>";
        if (!isPlain || bytes == "<" || bytes == "&" || (first < 0x80 && choice(4) == 0))
            return reference(first);
        return std::string(bytes);
    }
    std::string text(std::string_view characters) {
        std::string result = comment();
        while (!characters.empty()) {
            const std::size_t length = PropertyLists::lengthOfFirstCharacter(characters);
            result += character(characters.substr(0, length)) + (choice(8) == 0 ? comment() : "");
            characters.remove_prefix(length);
        }
        return result;
    }

    std::string value(const PropertyListValue& value) {
        if (value.isDictionary()) return dictionary(value.dictionary());
        if (value.isArray()) return array(value.array());
        if (value.isString()) return element("string", text(value.stringView()));
        const std::string plain = writtenElement(value);
        const std::string name = plain.substr(1, plain.find_first_of("/>") - 1);
        const std::size_t begin = plain.find('>') + 1;
        const std::string space = oneOf<3>({"", " ", "\r\n\t"});
        if (value.isBoolean()) return element(name, space);
        return element(name, space + text(plain.substr(begin, plain.rfind('<') - begin)) + space);
    }
    std::string array(const NSArray& array) {
        std::string contents;
        for (const PropertyListValue& one : array) contents += filled(value(one));
        return element("array", contents);
    }
    std::string dictionary(const NSDictionary& dictionary) {
        std::string contents;
        for (const auto& [key, one] : dictionary)
            contents += filled(element("key", text(key))) + filled(value(one));
        return element("dict", contents);
    }

    const std::vector<unsigned> choices_;
    std::size_t next_ = 0;
};

}  // namespace

TEST(XMLNotation, EveryNotationOfATreeIsReadAsThatTree) {
    const bool holds = rc::check("every notation of a tree is read as that tree", [] {
        const PropertyListValue tree = *anyTree();
        const auto choices =
            *rc::gen::container<std::vector<unsigned>>(rc::gen::inRange<unsigned>(0, 1U << 30U));
        const std::string file = Notation(choices).file(tree);
        const auto read = NSPropertyListSerialization::propertyListWithData(file);
        RC_LOG() << file;
        RC_ASSERT(!read.error);
        RC_ASSERT(isSameTree(read.value, tree));
    });
    EXPECT_TRUE(holds);
}

TEST(XMLNotation, UnusualMarkupIsRead) {
    const std::vector<std::pair<std::string, PropertyListValue>> files{
        {"<string>]]></string>", "]]>"},
        {"<string>a > b</string>", "a > b"},
        {"<string><![CDATA[]]]]><![CDATA[>]]></string>", "]]>"},
        {"<string><!----->x</string>", "x"},
        {"<string><?a ?"
         "?>x</string>",
         "x"},
        {"<string\n>\n</string\t>", "\n"},
        {"<array><![CDATA[]]><true/><![CDATA[ \n]]></array>", NSArray{true}},
        {"<!DOCTYPE plist><!DOCTYPE plist ']' \"\"><true/>", true},
        {"<!DOCTYPEplist><true/>", true},
        {"<true/><?end?><!---->\r\n", true},
        {"<?xml-stylesheet encoding='UTF-8'?><true/>", true},
        {"<true xmlns:a='b' _c=\"d\"/>", true},
    };
    for (const auto& [file, value] : files) EXPECT_TRUE(sameTree(readableXML(file), value)) << file;
}

TEST(XMLNotation, WhatIsNoXMLIsRefusedAtItsPlace) {
    const std::vector<std::pair<std::string, std::string>> files{
        {"<array>\n<true></array>", "malformed XML: <true> is not closed, line 2, column 1"},
        {"<array>\n<true/>", "malformed XML: <array> is not closed, line 1, column 1"},
        {"<array></arrays>", "malformed XML: <array> is not closed, line 1, column 1"},
        {"<array></array x>", "malformed XML: an end tag is not closed, line 1, column 8"},
        {"<true/></true>", "malformed XML: nothing to close, line 1, column 8"},
        {"<true x/>", "malformed XML: an attribute has no value, line 1, column 7"},
        {"<true a='1'b='2'/>", "malformed XML: a start tag is not closed, line 1, column 1"},
        {"<true a='1/>", "malformed XML: an attribute is not closed, line 1, column 9"},
        {"<true a='1'", "malformed XML: a start tag is not closed, line 1, column 1"},
        {"<tr%ue/>", "malformed XML: a start tag is not closed, line 1, column 1"},
        {"<!-->--<true/>", "malformed XML: a comment is not closed, line 1, column 1"},
        {"<array><! ></array>", "malformed XML: unknown markup, line 1, column 8"},
        {"<string>a<1</string>", "malformed XML: unknown markup, line 1, column 10"},
        {"<? a?><true/>", "malformed XML: unknown markup, line 1, column 1"},
        {"<?a><true/>", "malformed XML: a processing instruction is not closed, line 1, column 1"},
        {"<string><![CDATA[a]]", "malformed XML: a CDATA section is not closed, line 1, column 9"},
        {"<!DOCTYPE plist '><true/>",
         "malformed XML: the document type is not closed, line 1, column 17"},
        {"<!DOCTYPE plist <!-- --> ><true/>",
         "malformed XML: the document type is not closed, line 1, column 1"},
        {"<true/><!DOCTYPE plist>", "the document type follows the value, line 1, column 18"},
        {"<array><![CDATA[ x]]></array>", "unexpected text, line 1, column 18"},
        {"<string>&am<!---->p;</string>", "an entity is not closed by \";\", line 1, column 9"},
    };
    for (const auto& [file, message] : files) EXPECT_EQ(refusal(file), message) << file;
}
