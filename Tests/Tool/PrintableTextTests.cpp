// SPDX-License-Identifier: MIT
// Text for terminals and shells.
#include "Reporting/PrintableText.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>

#include "Text/KeyPaths.h"
#include "Text/ShellCommands.h"
#include "Tool/ToolSupport.h"

using Tool::holdsControls;
using Tool::keyPathText;
using Tool::printable;
using Tool::shellWord;

namespace {

/// What a shell makes of these words.
std::string throughShell(const std::vector<std::string>& texts) {
    std::string command = "printf '%s|'";
    for (const std::string& text : texts) command += " " + shellWord(text);
    return ToolSupport::runProgram("/bin/sh", {"-e", "-u", "-c", command}).output;
}

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all += text + "|";
    return all;
}

std::string twoBytes(unsigned code) {
    return {static_cast<char>(0xC0U | code >> 6U), static_cast<char>(0x80U | (code & 0x3FU))};
}

}  // namespace

TEST(PrintableText, EscapesControlsAndWhatIsNotUTF8) {
    EXPECT_EQ(printable("plain ä€😀 \"\\"), "plain ä€😀 \"\\");
    EXPECT_EQ(printable(std::string("\0\x1b[m\x7f\r\n", 7)), "\\x00\\x1b[m\\x7f\\x0d\\x0a");
    EXPECT_EQ(printable("\xc2\x80\xc2\x9b\xc2\x9f\xc2\xa0"), "\\u0080\\u009b\\u009f\xc2\xa0");
    EXPECT_EQ(printable("\x9b\xff\xc3|\xed\xa0\x80\xc1\xbf"),
              "\\x9b\\xff\\xc3|\\xed\\xa0\\x80\\xc1\\xbf");
    EXPECT_EQ(printable("a\tb\n\x1b", "\n\t"), "a\tb\n\\x1b");
}

TEST(PrintableText, NothingIsLeftThatATerminalObeys) {
    EXPECT_TRUE(rc::check([](const std::string& bytes) {
        const std::string text = printable(bytes);
        RC_ASSERT(!holdsControls(text));
        RC_ASSERT(holdsControls(bytes) || text == bytes);
    }));
}

TEST(PrintableText, KeyPathsOfTheSecondSetOfControlsAreJSON) {
    EXPECT_EQ(keyPathText("a\xc2\x9b"
                          "b"),
              "\"a\\u009bb\"");
    EXPECT_EQ(keyPathText("a\xc2\xa0"
                          "b"),
              "a\xc2\xa0"
              "b");
}

TEST(ShellWord, IsPrintableAndGivesTheSameBytesBack) {
    std::vector<std::string> texts = {
        "",      "'",         "\n",          "a\n\n",         "\n\na",
        "-\x1b", "%s\\n\x1b", "\x1b'\"$`\\", "ä\n€\xc2\x9b😀", "\xff\x81\x82\x88",
        "\x81",  "a\\"};
    for (unsigned code = 1; code < 0x80; ++code)
        for (const char* end : {"", "x"})
            texts.push_back("x" + std::string(1, static_cast<char>(code)) + end);
    for (unsigned code = 0x80; code < 0x100; ++code) {
        texts.push_back(twoBytes(code));
        texts.push_back(std::string(1, static_cast<char>(code)) + "x");
    }
    for (const std::string& text : texts)
        EXPECT_FALSE(holdsControls(shellWord(text))) << shellWord(text);
    EXPECT_EQ(throughShell(texts), joined(texts));
}

TEST(ShellWord, GivesAnyBytesBack) {
    std::vector<std::string> texts;
    EXPECT_TRUE(rc::check([&texts](std::string bytes) {
        std::erase(bytes, '\0');
        RC_ASSERT(!holdsControls(shellWord(bytes)));
        texts.push_back(bytes);
    }));
    EXPECT_EQ(throughShell(texts), joined(texts));
}
