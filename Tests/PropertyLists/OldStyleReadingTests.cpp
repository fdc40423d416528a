// SPDX-License-Identifier: MIT
// Reading the old-style text format.

#include <gtest/gtest.h>

#include <string>

#include "PropertyLists/PropertyListTesting.h"

TEST(OldStyleReading, ReadsDictionariesArraysStringsAndData) {
    EXPECT_TRUE(
        sameTree(readableOldStyle("{ a = b; \"c d\" = ( e, 'f g', ( ), { } ); h = <0fbd 77>; }\n"),
                 NSDictionary{{"a", "b"},
                              {"c d", NSArray{"e", "f g", NSArray{}, NSDictionary{}}},
                              {"h", NSData("\x0F\xBD\x77")}}));
    EXPECT_FALSE(readableOldStyle("{}").dictionary().isMutable());
}

TEST(OldStyleReading, SeparatorsBeforeTheEndMayBeThereOrMissing) {
    EXPECT_TRUE(sameTree(readableOldStyle("{a=b}"), NSDictionary{{"a", "b"}}));
    EXPECT_TRUE(sameTree(readableOldStyle("{a=b;c=d}"), NSDictionary{{"a", "b"}, {"c", "d"}}));
    EXPECT_TRUE(sameTree(readableOldStyle("(a,b,)"), NSArray{"a", "b"}));
    for (const char* text : {"{;}", "{a=b;;}", "(,)", "(a,,b)", "{a=b c=d;}", "(a b)", "{a}",
                             "{=b;}", "{a=;}", "{a b;}"}) {
        EXPECT_NE(refusal(text), "") << text;
    }
}

TEST(OldStyleReading, TheOuterBracesMayBeMissing) {
    EXPECT_TRUE(sameTree(readableOldStyle("a = b;\n\"c\" = (d);\n"),
                         NSDictionary{{"a", "b"}, {"c", NSArray{"d"}}}));
    EXPECT_EQ(refusal("a = b; c = d"), "; is expected after a value, line 1, column 13");
    EXPECT_NE(refusal("a = b; c"), "");
    EXPECT_NE(refusal("a = b; }"), "");
}

TEST(OldStyleReading, AKeyWithoutValueIsItsOwnValue) {
    EXPECT_TRUE(sameTree(readableOldStyle("{a;}"), NSDictionary{{"a", "a"}}));
    EXPECT_TRUE(sameTree(readableOldStyle("{ 'b c' ; d = e; \"\\U20\"; }"),
                         NSDictionary{{"b c", "b c"}, {"d", "e"}, {" ", " "}}));
    EXPECT_TRUE(sameTree(readableOldStyle("a; b = (c); d;"),
                         NSDictionary{{"a", "a"}, {"b", NSArray{"c"}}, {"d", "d"}}));
    EXPECT_EQ(refusal("{a}"), "= or ; is expected after a key, line 1, column 3");
    for (const char* text : {"{(a);}", "{<00>;}", "{;}", "{a;b}", "(a;)", "a; b", "{a;", ";"}) {
        EXPECT_NE(refusal(text), "") << text;
    }
}

TEST(OldStyleReading, OnlyLinesWithoutBracesMayBeCutOff) {
    const auto mayBeCutOff = [](std::string_view text) {
        return NSPropertyListSerialization::propertyListWithData(text).mayBeCutOff;
    };
    for (const char* text : {"a = b;", "a = {};\nc = d;", "\"a\" = (b); // end", "a;"})
        EXPECT_TRUE(mayBeCutOff(text)) << text;
    for (const char* text : {"{ a = b; }", "{}", "(a)", "<00>", "\"a\"", "<true/>", "a = b; c"})
        EXPECT_FALSE(mayBeCutOff(text)) << text;
}

TEST(OldStyleReading, OfEqualKeysTheLastWins) {
    EXPECT_TRUE(sameTree(readableOldStyle("{a=1;a=2;}"), NSDictionary{{"a", "2"}}));
    EXPECT_TRUE(sameTree(readableOldStyle("a=1;a=2;"), NSDictionary{{"a", "2"}}));
}

TEST(OldStyleReading, ALoneWordIsRefusedAndALoneQuotedStringIsAString) {
    EXPECT_TRUE(sameTree(readableOldStyle(" \"hello\" "), "hello"));
    EXPECT_TRUE(sameTree(readableOldStyle("''"), ""));
    EXPECT_EQ(refusal("hello"), "a lone word is no property list, line 1, column 1");
    EXPECT_NE(refusal("hello world"), "");
    EXPECT_NE(refusal("\"hello\" world"), "");
}

TEST(OldStyleReading, BlankTextIsRefused) {
    EXPECT_EQ(refusal(""), "there is no value, line 1, column 1");
    EXPECT_EQ(refusal(" \n\t"), "there is no value, line 2, column 2");
    EXPECT_NE(refusal("// comment\n/* and another */"), "");
}

TEST(OldStyleReading, CommentsStandWhereWhiteSpaceMay) {
    EXPECT_TRUE(sameTree(readableOldStyle("/* x */{// y\na /**/=/* ; */b;//\r}// end"),
                         NSDictionary{{"a", "b"}}));
    EXPECT_EQ(refusal("{a=b;} /* open"), "a comment is not closed, line 1, column 8");
    EXPECT_NE(refusal("{a=b;} /"), "");
    EXPECT_NE(refusal("{a/**/=b;}"), "") << "within a word a slash is a character";
}

TEST(OldStyleReading, UnquotedStringsAreOfTheNamedCharacters) {
    const std::string all = "azAZ09_$/:.-+";
    EXPECT_TRUE(
        sameTree(readableOldStyle("(" + all + ", http://x/y)"), NSArray{all, "http://x/y"}));
    for (const char* text : {"(a*)", "(a\u00e9)", "(a%)", "(#)", "(a@b)", "(a\\b)"}) {
        EXPECT_NE(refusal(text), "") << text;
    }
    EXPECT_EQ(refusal("{\n  a = %;\n}"), "unexpected character, line 2, column 7");
}

TEST(OldStyleReading, EscapesInQuotedStrings) {
    EXPECT_TRUE(sameTree(readableOldStyle(R"("\a\b\f\n\r\t\v\\\"\'")"), "\a\b\f\n\r\t\v\\\"'"));
    EXPECT_TRUE(sameTree(readableOldStyle("\"a\\\nb\nc\""), "a\nb\nc"));
}

TEST(OldStyleReading, QuotesOfTheOtherKindNeedNoEscape) {
    EXPECT_TRUE(sameTree(readableOldStyle("'say \"x\"'"), "say \"x\""));
    EXPECT_TRUE(sameTree(readableOldStyle("\"it's\""), "it's"));
    EXPECT_NE(refusal("'it''s'"), "");
}

TEST(OldStyleReading, UnicodeEscapesAreUTF16Units) {
    EXPECT_TRUE(
        sameTree(readableOldStyle(R"("\U00e9\U20AC\UD83D\UDE00")"), "\u00e9\u20ac\U0001F600"));
    EXPECT_TRUE(sameTree(readableOldStyle(R"("\U9\Ue9\U20acx\U00e90")"), "\t\u00e9\u20acx\u00e90"));
    EXPECT_EQ(refusal(R"("\Ug")"), R"(a hexadecimal digit is expected after \U, line 1, column 2)");
    for (const char* text : {R"("\U")", R"("\U)", R"("\UD83D")", R"("\UD83Dx")", R"("\UDE00")",
                             R"("\UD83D\U0041")", R"("\UD83D\U")", R"("\UD83D\UDE0")"}) {
        EXPECT_NE(refusal(text), "") << text;
    }
}

TEST(OldStyleReading, ABackslashBeforeACharacterWithoutMeaningIsDropped) {
    EXPECT_TRUE(sameTree(readableOldStyle(R"("\z\q\8\9\-\ \u00e9\x41")"), "zq89- u00e9x41"));
    EXPECT_TRUE(sameTree(readableOldStyle("\"\\\u00e9\\\U0001F600\""), "\u00e9\U0001F600"));
    EXPECT_EQ(refusal(R"("a\)"), "a string is not closed, line 1, column 4");
    EXPECT_NE(refusal(R"("\")"), "");
    EXPECT_NE(refusal(R"((\z))"), "") << "outside quotes a backslash is no character of a string";
}

TEST(OldStyleReading, OctalEscapesAreInTheNeXTSTEPEncoding) {
    EXPECT_TRUE(sameTree(readableOldStyle(R"("\101\12\0")"), std::string("A\n\0", 3)));
    EXPECT_TRUE(sameTree(readableOldStyle(R"("\200\341\243\256\3751\373")"),
                         "\u00a0\u00c6\u00a3\ufb01\u00ff1\u00df"));
    EXPECT_TRUE(sameTree(readableOldStyle(R"("\375\376\377")"), "\u00ff\uFFFD\uFFFD"));
    EXPECT_TRUE(sameTree(readableOldStyle(R"("\501\741\777\1012")"), "A\u00c6\uFFFDA2"))
        << "three digits are more than a byte can hold: its low 8 bits count";
    EXPECT_TRUE(sameTree(readableOldStyle(R"("\400")"), std::string_view("\0", 1)));
}

TEST(OldStyleReading, DataIsWholeBytesInHexadecimal) {
    EXPECT_TRUE(sameTree(readableOldStyle("<>"), NSData()));
    EXPECT_TRUE(sameTree(readableOldStyle("(< 0 F\nbD77 >)"), NSArray{NSData("\x0F\xBD\x77")}));
    for (const char* text : {"(<0>)", "(<0g>)", "(<00)", "(<", "(<0-0>)"}) {
        EXPECT_NE(refusal(text), "") << text;
    }
}

TEST(OldStyleReading, TextAfterTheValueIsRefused) {
    EXPECT_EQ(refusal("{} x"), "unexpected text after the value, line 1, column 4");
    EXPECT_NE(refusal("(a))"), "");
}
