// SPDX-License-Identifier: MIT
// The user's locale of times, and its short time pattern.

#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "Files/SystemCallFilter.h"
#include "Platform/Machine/ICUTimePattern.h"
#include "Platform/Machine/TimePatternTable.h"
#include "Platform/Machine/UserLocale.h"
#include "Platform/System/System.h"
#include "QRVSettings/QRVSettings.h"
#include "Support/ChildProcess.h"
#include "Support/MachineSupport.h"
#include "Support/PrivilegedProgram.h"

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

/// All that it can have, with encoding and modifier.
std::vector<std::string> localesOfTheCLibrary() {
    std::vector<std::string> names;
    std::ifstream list("/usr/share/i18n/SUPPORTED");
    for (std::string line; std::getline(list, line);)
        if (line.find(' ') != std::string::npos) names.push_back(line.substr(0, line.find(' ')));
    return names;
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

// Which may be a newer one than the build has asked.
TEST(ShortTimePattern, OfEachKnownLocaleIsThatOfTheInstalledICU) {
    EXPECT_GT(TimePatternTable::rows.size(), 800U);
    for (const TimePatternTable::Row& row : TimePatternTable::rows)
        EXPECT_EQ(ICUTimePattern::of(row.locale.data()), shortTimePattern(row.locale.data()))
            << row.locale.data();
}

TEST(ShortTimePattern, OfEachLocaleOfTheCLibraryIsKnown) {
    const std::vector<std::string> locales = localesOfTheCLibrary();
    if (locales.empty()) GTEST_SKIP() << "the C library lists no locales here";
    for (const std::string& locale : locales) shortTimePattern(locale);
    EXPECT_FALSE(hasLoadedICU());
    for (const std::string& locale : locales)
        EXPECT_EQ(shortTimePattern(locale), ICUTimePattern::of(locale)) << locale;
}

TEST(ShortTimePattern, OfAKnownLocaleDoesNotLoadICU) {
    for (const char* name : {"de_DE", "de_DE.UTF-8", "de_DE.UTF-8@euro", "C", "POSIX", "en_US.utf8",
                             "zh_CN.GB18030", "sr_RS@latin", "no_NO", "de"})
        shortTimePattern(name);
    EXPECT_FALSE(hasLoadedICU());
    EXPECT_EQ(shortTimePattern("de_XX"), "HH:mm") << "as the language has it";
    EXPECT_TRUE(hasLoadedICU());
}

TEST(ShortTimePattern, OfTheDefaultsOfAKnownLocaleDoesNotLoadICU) {
    setVariables("de_DE.UTF-8", "", "");
    MachineSupport::beMachine("1", "M");
    QRVSettings::sharedSettings().loadDefaults();
    EXPECT_FALSE(QRVSettings::sharedSettings().defaults().isNull());
    EXPECT_FALSE(hasLoadedICU());
}

TEST(ShortTimePattern, WithoutICUIsTheSameForKnownLocalesAndThatOfCForOthers) {
    ChildProcess child([] {
        int logged = 0;
        setNSLogSink([&logged](const std::string&) { ++logged; });
        failCall(SystemCall::Open, EACCES);
        return shortTimePattern("de_DE.UTF-8") == "HH:mm" &&
               shortTimePattern("kn_IN") == "hh:mm a" &&
               shortTimePattern("bg_BG").starts_with("H:mm") &&
               shortTimePattern("xx_YY") == shortTimePattern("C") &&
               shortTimePattern("").starts_with("h:mm") && logged == 0;
    });
    EXPECT_TRUE(child.succeeded());
}

// A modifier of ICU's own can change the pattern.
TEST(ShortTimePattern, OfALocaleWithAKeywordIsThatOfICU) {
    EXPECT_EQ(shortTimePattern("de_DE@calendar=buddhist"),
              ICUTimePattern::of("de_DE@calendar=buddhist"));
    EXPECT_TRUE(hasLoadedICU());
}

// Whose environment says where ICU has its data.
TEST(ShortTimePattern, OfAPrivilegedProgramDoesNotComeFromICU) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to give files away";
    EXPECT_EQ(PrivilegedProgram::printedWithoutPrivileges().at(1), "HH:mm");
    const auto lines = PrivilegedProgram::printedWithPrivileges();
    if (lines.empty()) GTEST_SKIP() << "a program gets no privileges by its file here";
    EXPECT_EQ(lines.at(1), shortTimePattern("C"));
}
