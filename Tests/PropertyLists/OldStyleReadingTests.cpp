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
                             "{a;}", "{=b;}", "{a=;}", "{a b;}"}) {
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
    for (const char* text : {R"("\U00e")", R"("\U00eg")", R"("\UD83D")", R"("\UD83Dx")",
                             R"("\UDE00")", R"("\UD83D\U0041")", R"("\u00e9")"}) {
        EXPECT_NE(refusal(text), "") << text;
    }
}

TEST(OldStyleReading, OctalEscapesAreInTheNeXTSTEPEncoding) {
    EXPECT_TRUE(sameTree(readableOldStyle(R"("\101\12\0")"), std::string("A\n\0", 3)));
    EXPECT_TRUE(sameTree(readableOldStyle(R"("\200\341\243\256\3751\373")"),
                         "\u00a0\u00c6\u00a3\ufb01\u00ff1\u00df"));
    EXPECT_EQ(refusal(R"("\376")"), "an octal escape stands for no character, line 1, column 2");
    EXPECT_NE(refusal(R"("\377")"), "");
    EXPECT_NE(refusal(R"("\400")"), "");
    EXPECT_NE(refusal(R"("\8")"), "");
    EXPECT_NE(refusal(R"("\q")"), "");
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
