// SPDX-License-Identifier: MIT
// The command `appearance`.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::storedSettings;
using ToolSupport::writeSettings;

TEST(AppearanceCommand, StoresAndPrintsTheWord) {
    const Outcome dark = run({"appearance", "set", "NSAppearanceNameDarkAqua"});
    EXPECT_EQ(dark.exitCode, 0);
    EXPECT_EQ(dark.output, "Dark\n");
    EXPECT_EQ(dark.errors, "");
    EXPECT_EQ(storedSettings(), "{\"MenubarCurrentApperance\":\"Dark\"}");
    EXPECT_EQ(run({"appearance", "get"}).output, "Dark\n");
    EXPECT_EQ(run({"appearance", "set", "NSAppearanceNameAqua"}).output, "Light\n");
    EXPECT_EQ(run({"appearance", "get"}).output, "Light\n");
}

TEST(AppearanceCommand, TakesTheWordsInAnyCase) {
    for (const char* word : {"Dark", "dark", "DARK"}) {
        ASSERT_EQ(run({"appearance", "set", "light"}).output, "Light\n");
        EXPECT_EQ(run({"appearance", "set", word}).output, "Dark\n") << word;
    }
    EXPECT_EQ(run({"appearance", "set", "Light"}).output, "Light\n");
}

TEST(AppearanceCommand, TakesOnlyTheFourNamesForDark) {
    for (const char* name :
         {"NSAppearanceNameVibrantDark", "NSAppearanceNameAccessibilityHighContrastDarkAqua",
          "NSAppearanceNameAccessibilityHighContrastVibrantDark"})
        EXPECT_EQ(run({"appearance", "set", name}).output, "Dark\n") << name;
    for (const char* name : {"NSAppearanceNameVibrantLight", "NSAppearanceNameNextDarkAqua"})
        EXPECT_EQ(run({"appearance", "set", name}).output, "Light\n") << name;
}

TEST(AppearanceCommand, RefusesWhatIsNoName) {
    for (const char* name : {"blue", "", "darkaqua"}) {
        const Outcome outcome = run({"appearance", "set", name});
        EXPECT_EQ(outcome.exitCode, 5) << name;
        EXPECT_EQ(outcome.errors,
                  std::string("qrvsettings: neither dark, light nor the name of an appearance: ") +
                      name + "\n");
    }
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
}

TEST(AppearanceCommand, SaysWhenNoneIsSet) {
    const Outcome outcome = run({"appearance", "get"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "qrvsettings: not set, MenubarCurrentApperance\n");
}

TEST(AppearanceCommand, PrintsTheStoredWordAsItIs) {
    writeSettings(propertyList("<key>MenubarCurrentApperance</key><string>Sepia</string>"));
    EXPECT_EQ(run({"appearance", "get"}).output, "Sepia\n");
}

TEST(AppearanceCommand, ADamagedFileIsReplacedWhenAskedFor) {
    writeSettings("{broken");
    EXPECT_THAT(run({"appearance", "set", "dark"}).errors, HasSubstr("--replace-damaged"));
    EXPECT_EQ(run({"appearance", "set", "dark", "--replace-damaged"}).exitCode, 0);
    EXPECT_EQ(run({"appearance", "get"}).output, "Dark\n");
}
