// SPDX-License-Identifier: MIT
// Words for a shell, and the same words read without one.
#include "Text/ShellWords.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "Reporting/Failure.h"
#include "Text/ShellCommands.h"
#include "Tool/AnyValue.h"

using Tool::shellWord;
using Tool::shellWordsOf;

TEST(ShellWords, AnyWordIsReadAsItWasWritten) {
    EXPECT_TRUE(rc::check([] {
        std::string text;
        for (const std::string& part : *rc::gen::container<std::vector<std::string>>(
                 rc::gen::oneOf(ToolSupport::anyText(),
                                rc::gen::element<std::string>("'", "\n", "$", "`", "\\", "%", " ",
                                                              "\"", "-", "\x1b", "*"))))
            text += part;
        std::erase(text, '\0');
        const auto words = shellWordsOf("a " + shellWord(text) + " b");
        RC_ASSERT(words.size() == 3U);
        RC_ASSERT(words[1].text == text);
        RC_ASSERT(words[2].text == "b");
    }));
}

TEST(ShellWords, QuotationMarksAndBackslashesAreReadAsAShellDoes) {
    const auto only = [](std::string_view line) {
        const auto words = shellWordsOf(line);
        EXPECT_EQ(words.size(), 1U) << line;
        return words.empty() ? "" : words.front().text;
    };
    EXPECT_EQ(only("''"), "");
    EXPECT_EQ(only("\"\""), "");
    EXPECT_EQ(only("a'b c'\"d\"\\ e"), "ab cd e");
    EXPECT_EQ(only(R"("a\"b\\c\d\$")"), R"(a"b\c\d$)");
    EXPECT_EQ(only(R"('a\b')"), R"(a\b)");
    EXPECT_EQ(only(R"x("$(printf 'a\012b\012\012')")x"), "a\nb")
        << "line ends at the end are dropped";
    EXPECT_EQ(only(R"("${IFS#??}")"), "\n");
    EXPECT_EQ(shellWordsOf(" \t a\tb  ").size(), 2U);
    EXPECT_TRUE(shellWordsOf("").empty());
}
