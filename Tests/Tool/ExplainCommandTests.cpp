// SPDX-License-Identifier: MIT
// The command `explain`: which layer answers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tool/ToolSupport.h"

using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::writeSettings;

namespace {

/// A file that needs no start-up to change it: what it holds is all that is stored.
void writeMigrated(const std::string& entries) {
    writeSettings(
        propertyList("<key>Migration</key><dict><key>CombinedPowerItems</key><true/>"
                     "<key>Profiles</key><true/></dict>" +
                     entries));
}

const std::string cpuIsOff =
    "<key>CPU</key><dict><key>Menubar</key><dict><key>Enabled</key><false/></dict></dict>";

}  // namespace

TEST(Explain, TheStoredValueAnswersBeforeTheDefault) {
    writeMigrated(cpuIsOff);
    const Outcome outcome = run({"explain", "CPU.Menubar.Enabled"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output,
              "key path:       CPU.Menubar.Enabled\n"
              "effective:      false\n"
              "effective kind: boolean\n"
              "layer:          stored\n"
              "stored:         false\n"
              "stored kind:    boolean\n"
              "default:        true\n"
              "default kind:   boolean\n"
              "kinds differ:   no\n"
              "scope:          of each profile: none\n"
              "profile:        default\n"
              "in profile:     not set\n");
}

TEST(Explain, TheDefaultAnswersWhereNothingIsStored) {
    const Outcome outcome = run({"explain", "Menu.Theme.Dark", "--json"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output,
              R"({"default":"indigo","defaultKind":"string","effective":"indigo",)"
              R"("effectiveKind":"string","keyPath":"Menu.Theme.Dark","kindDiffers":null,)"
              R"("lastChange":null,)"
              R"("layer":"default","lockFile":null,"profile":"default","profileKind":null,)"
              R"("profileLastChange":null,"profileValue":null,"profiles":["default"],)"
              R"("scope":"application","site":null,"siteFile":null,"siteKind":null,)"
              R"("stored":null,"storedKind":null})"
              "\n");
}

TEST(Explain, TheKindsThatDifferAreNamed) {
    writeMigrated(
        "<key>UpdateFrequency</key><true/><key>Processes</key><dict><key>Combine</key>"
        "<real>2.5</real></dict>");
    EXPECT_THAT(run({"explain", "UpdateFrequency"}).output,
                testing::HasSubstr("stored kind:    boolean\ndefault:        1\n"
                                   "default kind:   integer\nkinds differ:   yes\n"));
    EXPECT_THAT(run({"explain", "Processes.Combine"}).output,
                testing::HasSubstr("stored kind:    real\ndefault:        1\n"
                                   "default kind:   integer\nkinds differ:   no\n"))
        << "both are numbers";
    EXPECT_THAT(run({"explain", "UpdateFrequency", "--json"}).output,
                testing::HasSubstr(R"("kindDiffers":true)"));
}

TEST(Explain, ASettingOfTheApplicationNamesNoProfileUnlessAskedOrThereIsAValue) {
    const auto namesAProfile = testing::HasSubstr("in profile:");
    EXPECT_THAT(run({"explain", "UpdateFrequency"}).output, testing::Not(namesAProfile));
    EXPECT_THAT(run({"explain", "UpdateFrequency", "--profile"}).output, namesAProfile);
    ASSERT_EQ(run({"set", "UpdateFrequency", "3", "--profile"}).exitCode, 0);
    EXPECT_THAT(run({"explain", "UpdateFrequency"}).output, namesAProfile);
}

TEST(Explain, InAProfileItsOwnValueAnswersElseTheDefault) {
    ASSERT_EQ(run({"set", "UpdateFrequency", "5"}).exitCode, 0);
    ASSERT_EQ(run({"set", "UpdateFrequency", "3", "--profile", "work"}).exitCode, 0);
    EXPECT_THAT(run({"explain", "UpdateFrequency", "--profile", "work"}).output,
                testing::AllOf(testing::HasSubstr("effective:       3\n"),
                               testing::HasSubstr("layer:           profile\n"),
                               testing::HasSubstr("stored:          5\n"),
                               testing::HasSubstr("profile:         work\n"),
                               testing::HasSubstr("in profile:      3\n")));
    EXPECT_THAT(run({"explain", "UpdateFrequency", "--profile", "play"}).output,
                testing::AllOf(testing::HasSubstr("effective:      1\n"),
                               testing::HasSubstr("layer:          default\n"),
                               testing::HasSubstr("in profile:     not set\n")));
    ASSERT_EQ(run({"set", "UpdateFrequency", "7", "--profile", "default"}).exitCode, 0);
    EXPECT_THAT(run({"explain", "UpdateFrequency"}).output,
                testing::AllOf(testing::HasSubstr("effective:       5\n"),
                               testing::HasSubstr("layer:           stored\n"),
                               testing::HasSubstr("in profile:      7\n")));
}

TEST(Explain, WhatNothingAnswersIsExplainedAndFails) {
    const Outcome outcome = run({"explain", "Menu.Theme.Drak"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output,
              "key path:  Menu.Theme.Drak\neffective: not set\nlayer:     none\n"
              "stored:    not set\ndefault:   not set\n");
    EXPECT_EQ(outcome.errors,
              "qrvsettings: not set, Menu.Theme.Drak; did you mean Menu.Theme.Dark?\n");
    EXPECT_EQ(run({"explain", "Frobnicate"}).errors, "qrvsettings: not set, Frobnicate\n");
}

TEST(Explain, WhatIsStoredIsWhatTheFileHoldsAlsoWhereTheStartUpResetsIt) {
    writeMigrated(
        "<key>Device</key><dict><key>Device</key><string>another</string></dict><key>Network</key>"
        "<dict><key>Menubar</key><dict><key>Global</key><dict><key>PrimaryInterface</key>"
        "<string>en0</string></dict></dict></dict>");
    const Outcome outcome = run({"explain", "Network.Menubar.Global.PrimaryInterface"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output,
                testing::AllOf(testing::HasSubstr("effective:   not set\nlayer:       none\n"),
                               testing::HasSubstr("stored:      \"en0\"\n")));
}

TEST(Explain, RefusesAKeyPathThatIsNoText) {
    EXPECT_EQ(run({"explain", "a\xff"}).exitCode, 5);
    EXPECT_EQ(run({"explain", "a", "--profile", "\xff"}).exitCode, 5);
}
