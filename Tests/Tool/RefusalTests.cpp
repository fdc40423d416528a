// SPDX-License-Identifier: MIT
// Typos of known key paths, and values that a setting does not take.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::storedSettings;
using ToolSupport::writeFile;
using ToolSupport::writeSettings;

namespace {

using Arguments = std::vector<std::string>;

constexpr const char* forNew = " (--new stores it all the same)\n";
constexpr const char* forAnyKind = " (--any-kind stores it all the same)\n";
constexpr const char* color = "Network.Menubar.Mode.Status.NoIP.Color";

void expectRefused(const Arguments& arguments, const std::string& message,
                   const std::string& input = "") {
    const Outcome outcome = run(arguments, {input, {}});
    EXPECT_EQ(outcome.exitCode, 5) << testing::PrintToString(arguments);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "qrvsettings: " + message);
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::settingsFile()));
}

void expectStored(const Arguments& arguments) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << testing::PrintToString(arguments) << outcome.errors;
}

void installList(const std::string& json) {
    setenv("XDG_DATA_HOME", std::filesystem::absolute("data").c_str(), 1);
    writeFile("data/qrvsettings/known/host.json", json);
}

}  // namespace

TEST(Typo, IsRefusedAndTheKnownKeyPathNamed) {
    for (const auto& [keyPath, meant] : std::vector<std::pair<std::string, std::string>>{
             {"CPU.Menubar.Enable", "CPU.Menubar.Enabled"},
             {"CPU.Menubar.Enabeld", "CPU.Menubar.Enabled"},
             {"cpu.menubar.enabled", "CPU.Menubar.Enabled"},
             {"UpdateFrequency1", "UpdateFrequency"},
             {"Disk.Menubar.Enabled", "Disks.Menubar.Enabled"},
             {"Profiles.Settings.p.UpdateFrequenc", "Profiles.Settings.p.UpdateFrequency"}})
        expectRefused({"set", keyPath, "true"}, "nothing is known to read " + keyPath +
                                                    "; did you mean " + meant + "?" + forNew);
    expectRefused({"set", "CPU", R"({"Menubar":{"Enable":true}})"},
                  std::string("nothing is known to read CPU.Menubar.Enable; did you mean "
                              "CPU.Menubar.Enabled?") +
                      forNew);
}

TEST(Typo, TheNamesThatAreMisspeltAreTheRealOnes) {
    for (const auto& [spelled, real] : std::vector<std::pair<std::string, std::string>>{
             {"Menu.Theme.Vibrancy", "Menu.THeme.Vibrancy"},
             {"Time.Menubar.FlashSeparators", "Time.Menubar.FlashSeperators"},
             {"MenubarCurrentAppearance", "MenubarCurrentApperance"}})
        expectRefused({"set", spelled, "1"}, "nothing is known to read " + spelled +
                                                 "; did you mean " + real + "?" + forNew);
    expectStored({"set", "Menu.THeme.Vibrancy", "false"});
    expectStored({"set", "Time.Menubar.FlashSeperators", "1"});
    expectStored({"set", "MenubarCurrentApperance", "Dark"});
}

TEST(Typo, IsStoredWhenItIsNew) {
    expectStored({"set", "--new", "CPU.Menubar.Enable", "true"});
    expectStored({"set", "CPU.Menubar.Enable", "false"});
    EXPECT_EQ(run({"get", "CPU.Menubar.Enable"}).output, "false\n");
}

TEST(Typo, OtherUnknownKeyPathsAreStored) {
    for (const char* keyPath :
         {"GPU.Menubar.Enabled", "Weather.Menu.Forecast.Graph.3", "Mine", "CPU.Menubar.Width"})
        expectStored({"set", keyPath, "1"});
}

TEST(Typo, WhatIsStoredAlreadyIsNone) {
    writeSettings(propertyList("<key>UpdateFrequenc</key><integer>1</integer>"));
    expectStored({"set", "UpdateFrequenc", "2"});
    EXPECT_EQ(run({"set", "--profile", "p", "UpdateFrequenc", "2"}).exitCode, 5);
}

TEST(Typo, AListOfAHostNamesWhatIsNone) {
    installList(R"({"settings":{"UpdateFrequencies":{"kind":"array"},
                                "Mine.Width":{"kind":"integer","renamed-from":["Mine.Breadth"]}}})");
    expectRefused(
        {"set", "Mine.Widht", "1"},
        std::string("nothing is known to read Mine.Widht; did you mean Mine.Width?") + forNew);
    expectRefused({"set", "Mine.Breadth", "1"},
                  std::string("Mine.Breadth was renamed; did you mean Mine.Width?") + forNew);
    expectStored({"set", "UpdateFrequencies", "[1]"});
}

TEST(Kind, AnotherOneIsRefused) {
    const auto expectSaid = [](const std::string& keyPath, const std::string& value,
                               const std::string& said) {
        expectRefused({"set", keyPath, value}, keyPath + " is " + said + forAnyKind);
    };
    expectSaid("CPU.Menubar.Enabled", "yes", "a boolean, not a string: \"yes\"; say true or false");
    expectSaid("CPU.Menubar.Enabled", "1", "a boolean, not an integer: 1; say true or false");
    expectSaid("UpdateFrequency", "fast",
               "an integer, not a string: \"fast\"; say a whole number, such as 1");
    expectSaid("UpdateFrequency", "4.0",
               "an integer, not a real: 4.0; say a whole number, such as 1");
    expectSaid("Menu.Theme.Dark", "5", "a string, not an integer: 5; say it with --type string");
    expectSaid("Notifications.Items", "x", "an array, not a string: \"x\"; say it as JSON, [...]");
    expectSaid("Weather.Global.Location", "5",
               "a dictionary, not an integer: 5; say it as JSON, {...}");
    expectSaid(color, "red",
               "a colour, not a string: \"red\"; say four numbers from 0 to 1, such as "
               "'1 0.776 0 1', or qrvsettings color set");
    for (const char* level : {"CPU", "Profiles.Settings", "Profiles.Settings.p"})
        expectSaid(level, "5", "a dictionary of settings, not an integer: 5");
    expectSaid("Profiles.Settings.p.CPU.Menubar.Enabled", "1",
               "a boolean, not an integer: 1; say true or false");
    expectRefused({"set", "--profile", "p", "CPU.Menubar.Enabled", "1"},
                  std::string("CPU.Menubar.Enabled is a boolean, not an integer: 1; say true or "
                              "false") +
                      forAnyKind);
}

TEST(Kind, AnotherOneIsRefusedBelowAndAbove) {
    expectRefused({"set", "CPU", R"({"Menubar":{"Enabled":"yes"}})"},
                  std::string("CPU.Menubar.Enabled is a boolean, not a string: \"yes\"; say true "
                              "or false") +
                      forAnyKind);
    expectRefused({"set", "CPU.Menubar.Enabled.Deeper", "1"},
                  std::string("CPU.Menubar.Enabled is a boolean, so that nothing can be below it: "
                              "CPU.Menubar.Enabled.Deeper") +
                      forAnyKind);
    expectStored({"set", "Weather.Global.Location.identifier", "5"});
}

TEST(Kind, TheOneThatIsTakenIsStored) {
    expectStored({"set", "--type", "string", "Menu.Theme.Dark", "5"});
    expectStored({"set", color, "1 -0.5 1e1 1"});
    expectStored({"set", "Network.Menubar.Global.PrimaryInterface", "eth0"});
    expectStored({"set", "--any-kind", "CPU.Menubar.Enabled", "yes"});
    EXPECT_EQ(run({"get", "CPU.Menubar.Enabled"}).output, "yes\n");
}

TEST(Kind, AColourIsRefusedWhereItIsNone) {
    expectRefused({"color", "set", "CPU.Menubar.Enabled", "#ffffff"},
                  std::string("CPU.Menubar.Enabled is a boolean, not a colour") + forAnyKind);
    expectRefused({"color", "set", "Menu.Theme.Dark", "#ffffff"},
                  std::string("Menu.Theme.Dark is a string, not a colour") + forAnyKind);
    expectRefused({"color", "set", "CPU", "#ffffff"},
                  std::string("CPU is a dictionary of settings, not a colour") + forAnyKind);
    expectRefused({"color", "set", std::string(color) + "s", "#ffffff"},
                  std::string("nothing is known to read ") + color + "s; did you mean " + color +
                      "?" + forNew);
    expectStored({"color", "set", color, "#ffffff"});
    expectStored({"color", "set", "Mine.Color", "#ffffff"});
    expectStored({"color", "set", "--any-kind", "CPU.Menubar.Enabled", "#ffffff"});
}

TEST(Values, OfAHostsListAreRefusedOutsideOfChoicesAndRange) {
    installList(R"({"settings":{
        "Style":{"kind":"string","choices":["line","bar"]},
        "Share":{"kind":"real"},
        "Width":{"kind":"integer","range":{"from":1,"to":9},"unit":"points"}}})");
    expectRefused(
        {"set", "Style", "pie"},
        std::string("Style is none of its choices, pie; say one of line, bar") + forAnyKind);
    expectRefused(
        {"set", "Width", "10"},
        std::string("Width is out of range, 10; say a number from 1 to 9 points") + forAnyKind);
    expectStored({"set", "Style", "bar"});
    expectStored({"set", "Width", "9"});
    expectStored({"set", "Share", "1"});
    expectStored({"set", "--any-kind", "Width", "10"});
}

TEST(RefusedLines, AreNamedAndNothingIsChanged) {
    const std::string typo =
        ":3: nothing is known to read CPU.Menubar.Enable; did you mean CPU.Menubar.Enabled?";
    writeFile("lines", "set a 1\n# a comment\nset CPU.Menubar.Enable true\n");
    expectRefused({"apply", "lines"}, "lines" + typo + forNew);
    expectRefused({"apply", "lines", "--dry-run"}, "lines" + typo + forNew);
    expectRefused({"apply", "-"},
                  std::string("standard input:2: UpdateFrequency is an integer, not a string: "
                              "\"on\"; say a whole number, such as 1") +
                      forAnyKind,
                  "set a 1\nset UpdateFrequency on\n");
    expectStored({"apply", "--new", "lines"});
}

TEST(RefusedLines, ALineMayTakeThem) {
    EXPECT_EQ(run({"apply", "-"}, {"set --new CPU.Menubar.Enable true\n"
                                   "set --any-kind --profile p UpdateFrequency on\n",
                                   {}})
                  .exitCode,
              0);
    EXPECT_EQ(run({"get", "--profile", "p", "UpdateFrequency"}).output, "on\n");
    EXPECT_EQ(run({"apply", "-"}, {"unset --new a\n", {}}).exitCode, 5);
    EXPECT_EQ(run({"apply", "-"}, {"set --new=1 a 1\n", {}}).exitCode, 5);
    EXPECT_EQ(run({"apply", "-"}, {"unset CPU.Menubar.Enable\n", {}}).exitCode, 0);
}

TEST(RefusedLines, AReplayTakesWhatThisMachineHas) {
    expectStored({"set", "--new", "CPU.Menubar.Enable", "true"});
    expectStored({"set", "--any-kind", "UpdateFrequency", "on"});
    const std::string before = storedSettings();
    const std::string commands = run({"diff", "--as-commands"}).output;
    EXPECT_EQ(commands,
              "qrvsettings set --new -- 'CPU.Menubar.Enable' 'true'\n"
              "qrvsettings set --any-kind -- 'UpdateFrequency' '\"on\"'\n");
    std::filesystem::remove(ToolSupport::settingsFile());
    const Outcome replay = ToolSupport::runShell(commands);
    EXPECT_EQ(replay.exitCode, 0) << replay.errors;
    EXPECT_EQ(storedSettings(), before);
}

TEST(ImportDryRun, NamesWhatSetWouldRefuse) {
    writeFile("new.json", R"({"CPU.Menubar.Enable":true,"UpdateFrequency":"on","a":1,
                              "Migration":{"CombinedPowerItems":true,"Profiles":true}})");
    const Outcome outcome = run({"import", "new.json", "--dry-run"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(
        outcome.errors,
        "qrvsettings: nothing is known to read CPU.Menubar.Enable; did you mean "
        "CPU.Menubar.Enabled?\n"
        "qrvsettings: UpdateFrequency is an integer, not a string: \"on\"; say a whole number, "
        "such as 1\n");
    EXPECT_EQ(run({"import", "new.json"}).errors, "qrvsettings: 3 changed\n");
    EXPECT_EQ(run({"get", "UpdateFrequency"}).output, "on\n");
}

TEST(ImportDryRun, NamesNotMoreThanAFew) {
    std::string settings = R"({"Migration":{"CombinedPowerItems":true,"Profiles":true})";
    for (const char* module : {"CPU", "Memory", "Disks", "Network", "Sensors"})
        settings += std::string(",\"") + module + ".Menubar.Enabled\":1";
    writeFile("new.json", settings + R"(,"UpdateFrequency":"on","Menubar.Style":"x"})");
    EXPECT_THAT(run({"import", "new.json", "--dry-run"}).errors,
                testing::EndsWith("qrvsettings: the same holds for 2 more settings\n"));
}

TEST(Typo, UnsetNamesWhatMayBeMeant) {
    const Outcome outcome = run({"unset", "CPU.Menubar.Enable", "absent"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors,
              "qrvsettings: not set, CPU.Menubar.Enable; did you mean CPU.Menubar.Enabled?\n"
              "qrvsettings: not set, absent\n");
}
