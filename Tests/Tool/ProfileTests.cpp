// SPDX-License-Identifier: MIT
// The option `--profile`.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::writeSettings;

namespace {

constexpr const char* width = "CPU.Menubar.Mode.HistoryGraph.Width";
constexpr const char* color = "Network.Menubar.Mode.Status.Connected.Color";

void setInTravel(const std::string& keyPath, const std::string& value) {
    const Outcome outcome = run({"set", "--profile", "travel", keyPath, value});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
}

Outcome inTravel(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--profile", "travel"});
    return run(arguments);
}

}  // namespace

TEST(Profile, SetAndGetWorkInTheProfileThatIsNamed) {
    setInTravel(width, "60");
    EXPECT_EQ(inTravel({"get", width}).output, "60\n");
    EXPECT_EQ(inTravel({"get", width, "--layer", "stored"}).output, "60\n");
    EXPECT_EQ(run({"get", width}).output, "40\n");
    EXPECT_EQ(run({"get", width, "--profile", "other"}).output, "40\n");
    EXPECT_EQ(run({"get", std::string("Profiles.Settings.travel.") + width}).output, "60\n");
}

TEST(Profile, WhatItDoesNotHoldHasTheDefaultAndNotThePlainValue) {
    ASSERT_EQ(run({"set", width, "50"}).exitCode, 0);
    EXPECT_EQ(inTravel({"get", width}).output, "40\n");
    EXPECT_EQ(inTravel({"get", width, "--layer", "stored"}).exitCode, 1);
    EXPECT_EQ(inTravel({"get", width, "--layer", "default"}).output, "40\n");
    EXPECT_EQ(inTravel({"get", "absent"}).errors, "qrvsettings: not set, absent\n");
}

TEST(Profile, TheDefaultIsNotStored) {
    setInTravel(width, "60");
    setInTravel(width, "40");
    EXPECT_EQ(inTravel({"get", width, "--layer", "stored"}).exitCode, 1);
}

TEST(Profile, UnsetRemovesFromThatProfileOnly) {
    ASSERT_EQ(run({"set", width, "50"}).exitCode, 0);
    setInTravel(width, "60");
    EXPECT_EQ(run({"unset", width, "--profile", "other"}).exitCode, 1);
    const Outcome outcome = inTravel({"unset", width, "absent"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "qrvsettings: not set, absent\n");
    EXPECT_EQ(inTravel({"get", width}).output, "40\n");
    EXPECT_EQ(run({"get", width}).output, "50\n");
}

TEST(Profile, ListPrintsPlainKeyPaths) {
    ASSERT_EQ(run({"set", "Menu.Theme.Light", "plain"}).exitCode, 0);
    setInTravel("Menu.Theme.Dark", "red");
    setInTravel("own", "1");
    EXPECT_EQ(inTravel({"list", "--layer", "stored"}).output, "Menu.Theme.Dark\t\"red\"\nown\t1\n");
    EXPECT_EQ(inTravel({"list", "Menu"}).output,
              "Menu.THeme.Vibrancy\ttrue\nMenu.Theme.Dark\t\"red\"\n"
              "Menu.Theme.Light\t\"indigo\"\n");
    EXPECT_EQ(inTravel({"list", "own", "--json"}).output, "{\"own\":1}\n");
    EXPECT_EQ(run({"list", "--layer", "stored", "--profile", "other"}).exitCode, 1);
}

TEST(Profile, ANameWithADotAddsLevels) {
    ASSERT_EQ(run({"set", "a", "1", "--profile", "on.the.road"}).exitCode, 0);
    EXPECT_EQ(run({"get", "a", "--profile", "on.the.road"}).output, "1\n");
    EXPECT_EQ(run({"list", "--layer", "stored", "--profile", "on.the.road"}).output, "a\t1\n");
    EXPECT_EQ(run({"get", "Profiles.Settings.on"}).output, "{\"the\":{\"road\":{\"a\":1}}}\n");
    EXPECT_EQ(run({"profiles"}).output, "default\non\n");
}

TEST(Profile, NamesTheStoredValueInTheWayWhereItIsStored) {
    setInTravel("a", "1");
    const Outcome outcome = inTravel({"set", "a.b", "1"});
    EXPECT_EQ(outcome.exitCode, 5);
    EXPECT_EQ(outcome.errors,
              "qrvsettings: a stored value is in the way: Profiles.Settings.travel.a is an "
              "integer, Profiles.Settings.travel.a.b\n");
}

TEST(Profile, ANameThatIsNotUTF8IsRefused) {
    EXPECT_EQ(run({"get", "a", "--profile", "a\xff"}).exitCode, 5);
    EXPECT_EQ(run({"set", "a", "1", "--profile", "a\xff"}).exitCode, 5);
    EXPECT_EQ(run({"list", "--profile", "a\xff"}).exitCode, 5);
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
}

TEST(ProfileColor, IsThatOfTheProfileElseTheDefault) {
    ASSERT_EQ(run({"color", "set", color, "#000000"}).exitCode, 0);
    EXPECT_EQ(inTravel({"color", "get", color}).output, "0.384 0.729 0.274 1\n");
    ASSERT_EQ(inTravel({"color", "set", color, "#ff0000"}).exitCode, 0);
    EXPECT_EQ(inTravel({"color", "get", color}).output, "1 0 0 1\n");
    EXPECT_EQ(run({"color", "get", color}).output, "0 0 0 1\n");
    ASSERT_EQ(inTravel({"color", "unset", color}).exitCode, 0);
    EXPECT_EQ(inTravel({"color", "get", color}).output, "0.384 0.729 0.274 1\n");
    EXPECT_EQ(run({"color", "get", color}).output, "0 0 0 1\n");
    EXPECT_EQ(inTravel({"color", "get", "a"}).exitCode, 1);
    EXPECT_EQ(inTravel({"color", "unset", color}).exitCode, 1);
}

TEST(ProfileColor, TheDefaultColourIsNotStored) {
    ASSERT_EQ(inTravel({"color", "set", color, "#000000"}).exitCode, 0);
    ASSERT_EQ(
        run({"color", "set", "--profile", "travel", color, "0.384", "0.729", "0.274"}).exitCode, 0);
    EXPECT_EQ(inTravel({"get", color, "--layer", "stored"}).exitCode, 1);
}

TEST(ProfileColor, SaysWhenTheDefaultStandsInForWhatIsStored) {
    ASSERT_EQ(inTravel({"set", "--any-kind", color, "red"}).exitCode, 0);
    const Outcome outcome = inTravel({"color", "get", color});
    EXPECT_EQ(outcome.output, "0.384 0.729 0.274 1\n");
    EXPECT_THAT(outcome.errors, HasSubstr(std::string("default, ") + color));
}

TEST(Profiles, AreListedInOrder) {
    EXPECT_EQ(run({"profiles"}).output, "default\n") << "there from the first start";
    setInTravel("a", "1");
    ASSERT_EQ(run({"set", "a", "1", "--profile", "at home\n"}).exitCode, 0);
    EXPECT_EQ(run({"profiles"}).output, "\"at home\\n\"\ndefault\ntravel\n");
    EXPECT_EQ(run({"profiles", "--json"}).output, "[\"at home\\n\",\"default\",\"travel\"]\n");
}

TEST(Profiles, SaysWhenThereAreNone) {
    writeSettings(
        propertyList("<key>Migration</key><dict><key>CombinedPowerItems</key><true/>"
                     "<key>Profiles</key><true/></dict>"));
    const Outcome outcome = run({"profiles"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "qrvsettings: there are no profiles\n");
}

TEST(ProfileHint, SetSaysThatTheApplicationReadsElsewhere) {
    const Outcome first = run({"set", "CPU.Menubar.Enabled", "false"});
    EXPECT_EQ(first.exitCode, 0);
    EXPECT_EQ(first.errors,
              "qrvsettings: the application reads CPU.Menubar.Enabled in its profile; --profile "
              "NAME sets it there (profiles: default)\n");
    setInTravel("CPU.Menubar.Enabled", "false");
    EXPECT_THAT(run({"set", "CPU.Menubar.Enabled", "true"}).errors,
                HasSubstr("(profiles: default, travel)\n"));
    EXPECT_EQ(run({"set", "CPU.Menubar.Enabled", "false", "--quiet"}).errors, "");
}

TEST(ProfileHint, SetSaysNothingWhereTheApplicationReads) {
    EXPECT_EQ(run({"set", "--profile", "default", "CPU.Menubar.Enabled", "false"}).errors, "");
    EXPECT_EQ(run({"set", "Profiles.Settings.p.CPU.Menubar.Enabled", "false"}).errors, "");
    EXPECT_EQ(run({"set", width, "60"}).errors, "");
    EXPECT_EQ(run({"set", "GPU.Menubar.Enabled", "true"}).errors, "");
}

TEST(ProfileHint, TheFirstExampleOfTheManualPageReachesTheApplication) {
    ASSERT_EQ(run({"set", "CPU.Menubar.Enabled", "false", "--profile"}).exitCode, 0);
    EXPECT_EQ(run({"get", "Profiles.Settings.default.CPU.Menubar.Enabled"}).output, "false\n");
    EXPECT_EQ(run({"get", "CPU.Menubar.Enabled", "--profile"}).output, "false\n");
    ASSERT_EQ(run({"unset", "CPU.Menubar.Enabled", "--profile"}).exitCode, 0);
    EXPECT_EQ(run({"get", "--profile", "--json", "CPU.Menubar.Enabled"}).output, "true\n");
}

TEST(ProfileHint, GetSaysWhatTheApplicationReadsInstead) {
    ASSERT_EQ(run({"set", "CPU.Menubar.Enabled", "false"}).exitCode, 0);
    const Outcome outcome = run({"get", "CPU.Menubar.Enabled"});
    EXPECT_EQ(outcome.output, "false\n");
    EXPECT_EQ(outcome.errors,
              "qrvsettings: the application reads CPU.Menubar.Enabled in its profile (default: "
              "true)\n");
    EXPECT_EQ(run({"get", "CPU.Menubar.Enabled", "--quiet"}).errors, "");
    EXPECT_EQ(run({"get", "CPU.Menubar.Enabled", "--layer", "stored"}).errors, "");
    EXPECT_EQ(run({"get", "CPU.Menubar.Enabled", "--profile"}).errors, "");
    EXPECT_EQ(run({"get", width}).errors, "");
    setInTravel("CPU.Menubar.Enabled", "false");
    EXPECT_THAT(run({"get", "CPU.Menubar.Enabled"}).errors,
                HasSubstr("(default: true, travel: false)\n"));
}

TEST(ProfileHint, ExplainNamesTheProfiles) {
    setInTravel("CPU.Menubar.Enabled", "false");
    EXPECT_THAT(run({"explain", "CPU.Menubar.Enabled"}).output,
                HasSubstr("scope:          of each profile: default, travel\n"));
    EXPECT_THAT(run({"explain", "CPU.Menubar.Enabled", "--json"}).output,
                HasSubstr(R"("profiles":["default","travel"],"scope":"profile")"));
    EXPECT_THAT(run({"explain", width}).output, testing::Not(HasSubstr("scope:")));
    EXPECT_THAT(run({"explain", width, "--json"}).output, HasSubstr(R"("scope":"application")"));
}

TEST(ProfileHint, SetSaysThatTheStoreKeepsARecordForItself) {
    EXPECT_EQ(run({"set", "Migration.Profiles", "true"}).errors,
              "qrvsettings: Migration.Profiles is a record that the store keeps for itself\n");
    EXPECT_EQ(run({"set", "Mine", "true"}).errors, "");
    EXPECT_EQ(run({"set", "Migration.Profiles", "true", "--quiet"}).errors, "");
}

TEST(ProfileHint, AReadSaysThatAProfileHasNoSettings) {
    setInTravel("CPU.Menubar.Enabled", "false");
    for (const std::string command : {"get", "list", "search"}) {
        const Outcome outcome = run({command, "CPU.Menubar.Enabled", "--profile", "travle"});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.errors,
                  "qrvsettings: there are no settings in the profile travle (profiles: default, "
                  "travel)\n");
    }
    EXPECT_EQ(run({"get", "CPU.Menubar.Enabled", "--profile", "travel"}).errors, "");
    EXPECT_EQ(run({"get", "CPU.Menubar.Enabled", "--profile"}).errors, "");
}
