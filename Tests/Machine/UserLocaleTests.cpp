// SPDX-License-Identifier: MIT
// The user's locale of times, and its short time pattern.

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "Files/SystemCallFilter.h"
#include "Platform/Machine/UserLocale.h"
#include "Platform/System/System.h"
#include "Support/ChildProcess.h"

using namespace QRVPlatform;

namespace {

void setVariables(const char* all, const char* time, const char* lang) {
    setenv("LC_ALL", all, 1);
    setenv("LC_TIME", time, 1);
    setenv("LANG", lang, 1);
}

bool hasLoadedICU() {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        if (line.find("libicu") != std::string::npos) return true;
    return false;
}

}  // namespace

TEST(UserLocale, TheFirstVariableWithTextNamesIt) {
    setVariables("kn_IN", "bg_BG", "de_DE");
    EXPECT_EQ(userTimeLocale(), "kn_IN");
    setVariables("", "bg_BG", "de_DE");
    EXPECT_EQ(userTimeLocale(), "bg_BG");
    setVariables("", "", "de_DE");
    EXPECT_EQ(userTimeLocale(), "de_DE");
    setVariables("", "", "");
    EXPECT_EQ(userTimeLocale(), "C");
    for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) unsetenv(variable);
    EXPECT_EQ(userTimeLocale(), "C");
}

TEST(UserLocale, OtherCategoriesDoNotNameIt) {
    setVariables("", "", "de_DE");
    setenv("LC_MESSAGES", "bg_BG", 1);
    setenv("LANGUAGE", "kn", 1);
    EXPECT_EQ(userTimeLocale(), "de_DE");
}

TEST(ShortTimePattern, IsThatOfTheLocale) {
    EXPECT_EQ(shortTimePattern("de_DE"), "HH:mm");
    EXPECT_EQ(shortTimePattern("kn_IN"), "hh:mm a");
    EXPECT_EQ(shortTimePattern("fr_CA"), "HH 'h' mm");
    EXPECT_TRUE(shortTimePattern("bg_BG").starts_with("H:mm"));
    EXPECT_TRUE(shortTimePattern("en_US").starts_with("h:mm"));
}

TEST(ShortTimePattern, EncodingAndModifierDoNotMatter) {
    EXPECT_EQ(shortTimePattern("de_DE.UTF-8"), "HH:mm");
    EXPECT_EQ(shortTimePattern("de_DE.ISO-8859-15@euro"), "HH:mm");
    EXPECT_EQ(shortTimePattern("de_DE@euro"), "HH:mm");
    EXPECT_EQ(shortTimePattern("kn_IN.UTF-8"), "hh:mm a");
    EXPECT_EQ(shortTimePattern("sr_RS.UTF-8@latin"), "HH:mm");
}

TEST(ShortTimePattern, WithoutAChosenLocaleIsThatOfTheComputer) {
    for (const char* name : {"C", "POSIX", "C.UTF-8", "C.utf8"}) {
        EXPECT_TRUE(shortTimePattern(name).starts_with("h:mm")) << name;
    }
}

// The library's own fallback is a default locale, which it takes from the host.
TEST(ShortTimePattern, OfAnUnknownLocaleDoesNotDependOnTheHost) {
    setVariables("kn_IN.UTF-8", "kn_IN.UTF-8", "kn_IN.UTF-8");
    EXPECT_EQ(shortTimePattern("xx_YY"), "HH:mm");
    EXPECT_EQ(shortTimePattern("xx_YY.UTF-8"), "HH:mm");
    EXPECT_EQ(shortTimePattern("/usr/share/anything"), "HH:mm");
    EXPECT_EQ(shortTimePattern(std::string(4000, 'x')), "HH:mm");
    EXPECT_EQ(shortTimePattern(""), "HH:mm");
}

TEST(ShortTimePattern, DoesNotDependOnTheLocaleOfTheProgram) {
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    EXPECT_EQ(shortTimePattern("kn_IN"), "hh:mm a");
}

TEST(ShortTimePattern, IsWhatLoadsICU) {
    EXPECT_FALSE(hasLoadedICU());
    shortTimePattern("de_DE");
    EXPECT_TRUE(hasLoadedICU());
}

TEST(ShortTimePattern, IsEmptyWhereICUCannotBeLoadedWhichIsLoggedOnce) {
    ChildProcess child([] {
        std::vector<std::string> logged;
        setNSLogSink([&logged](const std::string& text) { logged.push_back(text); });
        failCall(SystemCall::Open, EACCES);
        return shortTimePattern("de_DE").empty() && shortTimePattern("kn_IN").empty() &&
               logged.size() == 1 && logged.front().find("libicui18n.so") != std::string::npos;
    });
    EXPECT_TRUE(child.succeeded());
}
