// SPDX-License-Identifier: MIT
// The command `diff`, against the defaults and against a file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::settingsFile;
using ToolSupport::writeFile;
using ToolSupport::writeSettings;

namespace {

const std::string sample =
    "<key>CPU</key><dict><key>Menubar</key><dict><key>Enabled</key><false/>"
    "<key>Width</key><integer>60</integer></dict></dict>"
    "<key>Menu</key><dict><key>Theme</key><dict><key>Dark</key><string>indigo</string></dict>"
    "</dict><key>UpdateFrequency</key><true/>";

constexpr const char* values =
    R"({"one":"1","dash":"-","real":40.0,"nan":{"$real":"nan"},"empty":"","yes":true,
        "big":18446744073709551615,"date":{"$date":"2020-01-02T03:04:05Z"},
        "data":{"$data":"AQI="},"text":"a'b\"$HOME`\n","list":[1,{"x":2}]})";

void set(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"set"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const Outcome outcome = run(words);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
}

void expectDifference(const std::vector<std::string>& arguments, const std::string& output) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exitCode, output.empty() ? 0 : 1) << testing::PrintToString(arguments);
    EXPECT_EQ(outcome.output, output);
    EXPECT_EQ(outcome.errors, "");
}

}  // namespace

TEST(Diff, PrintsWhatIsStoredAndDiffersFromTheDefaults) {
    writeSettings(propertyList(sample));
    expectDifference({"diff"},
                     "CPU.Menubar.Enabled\ttrue -> false\nCPU.Menubar.Width\tnull -> 60\n"
                     "UpdateFrequency\t1 -> true\n");
}

TEST(Diff, NothingStoredIsLikeTheDefaults) {
    expectDifference({"diff"}, "");
    expectDifference({"diff", "--json"}, "");
    expectDifference({"diff", "--as-commands"}, "");
    writeSettings("");
    expectDifference({"diff"}, "");
    writeSettings(
        propertyList("<key>Menu</key><dict><key>Theme</key><dict><key>Dark</key>"
                     "<string>indigo</string></dict></dict><key>Empty</key><dict/>"));
    expectDifference({"diff"}, "");
}

TEST(Diff, PrintsObjectsWhenAskedForJSON) {
    writeSettings(propertyList("<key>UpdateFrequency</key><true/><key>a&#9;</key><real>1</real>"));
    expectDifference({"diff", "--json"},
                     "{\"keyPath\":\"UpdateFrequency\",\"before\":1,\"after\":true}\n"
                     "{\"keyPath\":\"a\\t\",\"before\":null,\"after\":1.0}\n");
}

TEST(Diff, GoesByTheFileAsItIsAlsoWhereTheApplicationCannotStart) {
    writeSettings(propertyList("<key>Migration</key><string>x</string><key>Device</key><true/>"));
    ASSERT_EQ(run({"get", "a"}).exitCode, 5);
    expectDifference({"diff", "--records"}, "Device\tnull -> true\nMigration\tnull -> \"x\"\n");
}

TEST(Diff, AReplayOnNothingGivesTheSameSettings) {
    set({"t", values});
    set({"CPU.Menubar.Enabled", "false"});
    set({"--any-kind", "UpdateFrequency", "true"});
    set({"it's", "$HOME"});
    const Outcome commands = run({"diff", "--as-commands"});
    ASSERT_EQ(commands.exitCode, 1);
    EXPECT_THAT(commands.output, HasSubstr("qrvsettings set -- 'CPU.Menubar.Enabled' 'false'\n"));
    const std::string before = run({"export"}).output;
    std::filesystem::remove(settingsFile());
    const Outcome replay = ToolSupport::runShell(commands.output);
    ASSERT_EQ(replay.exitCode, 0) << replay.errors;
    EXPECT_EQ(run({"export"}).output, before);
}

TEST(DiffOfAProfile, PrintsWhatTheProfileChanges) {
    set({"UpdateFrequency", "5"});
    set({"UpdateFrequency", "3", "--profile", "at work"});
    set({"a", "true", "--profile", "at work"});
    expectDifference({"diff", "--profile", "at work"},
                     "UpdateFrequency\t1 -> 3\na\tnull -> true\n");
    expectDifference({"diff", "--profile", "absent"}, "");
}

TEST(DiffOfAProfile, AReplayGivesTheSameProfile) {
    set({"a", "true", "--profile", "it's"});
    set({"CPU.Menubar.Enabled", "false", "--profile", "it's"});
    const std::string commands = run({"diff", "--profile", "it's", "--as-commands"}).output;
    const std::string before = run({"export"}).output;
    std::filesystem::remove(settingsFile());
    const Outcome replay = ToolSupport::runShell(commands);
    ASSERT_EQ(replay.exitCode, 0) << replay.errors << commands;
    EXPECT_EQ(run({"export"}).output, before);
}

TEST(DiffOfAFile, LeadsFromWhatIsStoredToTheFile) {
    writeSettings(propertyList("<key>a</key><true/><key>b</key><integer>1</integer>"));
    writeFile("other.plist", propertyList("<key>b</key><real>1</real><key>c</key><string/>"));
    expectDifference({"diff", "other.plist"}, "a\ttrue -> null\nb\t1 -> 1.0\nc\tnull -> \"\"\n");
    expectDifference({"diff", settingsFile()}, "");
}

TEST(DiffOfAFile, ReadsJSONAndStandardInput) {
    writeSettings(propertyList("<key>a</key><true/>"));
    EXPECT_EQ(run({"diff", "-"}, {"{\"a\":true}", {}}).exitCode, 0);
    const Outcome outcome = run({"diff", "-", "--json"}, {"{\"a\":{\"b\":2}}", {}});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output,
              "{\"keyPath\":\"a\",\"before\":true,\"after\":null}\n"
              "{\"keyPath\":\"a.b\",\"before\":null,\"after\":2}\n");
    EXPECT_EQ(run({"diff", "-"}, {run({"export"}).output, {}}).exitCode, 0);
}

TEST(DiffOfAFile, AReplayGivesTheSettingsOfTheFile) {
    set({"t", values});
    set({"becomesLeaf.a.b", "1"});
    set({"becomesTree", "1"});
    const std::string before = run({"export"}).output;
    ASSERT_EQ(run({"unset", "t"}).exitCode, 0);
    set({"becomesLeaf", "true"});
    set({"becomesTree", R"({"a":true})"});
    set({"CPU.Menubar.Enabled", "false"});
    ASSERT_EQ(run({"export", "other.plist"}).exitCode, 0);
    writeSettings(before);
    const Outcome commands = run({"diff", "other.plist", "--as-commands"});
    ASSERT_EQ(commands.exitCode, 1);
    EXPECT_THAT(commands.output, testing::Not(HasSubstr("becomesLeaf.a.b")));
    const Outcome replay = ToolSupport::runShell(commands.output);
    ASSERT_EQ(replay.exitCode, 0) << replay.errors << commands.output;
    expectDifference({"diff", "other.plist"}, "");
}

TEST(DiffOfAFile, AKeyThatNoKeyPathReachesIsToldButNoCommand) {
    writeSettings(propertyList("<key>a.b</key><true/>"));
    expectDifference({"diff"}, "a.b\tnull -> true\n");
    const Outcome outcome = run({"diff", "--as-commands"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "qrvsettings: no key path reaches this key, a.b\n");
    EXPECT_EQ(run({"diff", "-", "--as-commands"}, {"{\"c\":1}", {}}).output,
              "qrvsettings set -- 'c' '1'\n");
}

TEST(DiffOfAFile, ComparesTrees) {
    writeSettings(propertyList("<key>a.b</key><true/><key>e</key><dict/>"));
    writeFile("tree.json", R"({"a":{"b":true},"f":{}})");
    expectDifference({"diff", "tree.json"},
                     "a.b\tnull -> true\na.b\ttrue -> null\ne\t{} -> null\nf\tnull -> {}\n");
    writeSettings(propertyList("<key>a</key><dict><key>b</key><true/></dict><key>e</key><dict/>"));
    writeFile("tree.json", R"({"a":{},"e":{"x":1}})");
    expectDifference({"diff", "tree.json"}, "a\t{\"b\":true} -> {}\ne.x\tnull -> 1\n");
    const Outcome replay =
        ToolSupport::runShell(run({"diff", "tree.json", "--as-commands"}).output);
    ASSERT_EQ(replay.exitCode, 0) << replay.errors;
    EXPECT_EQ(run({"list", "a", "--json", "--layer", "stored"}).output, "{\"a\":{}}\n");
    EXPECT_EQ(run({"get", "e"}).output, "{\"x\":1}\n");
}

TEST(DiffOfAFile, ReadsWhatListPrints) {
    set({"CPU.Menubar.Enabled", "false"});
    set({"a", R"({"b":{},"c":[{"x.y":1}]})"});
    const std::string flat = run({"list", "--json", "--layer", "stored"}).output;
    EXPECT_THAT(flat, HasSubstr("\"a.b\":{}"));
    writeFile("flat.json", flat);
    expectDifference({"diff", "flat.json"}, "");
    set({"a.b.d", "1"});
    expectDifference({"diff", "flat.json"}, "a.b\t{\"d\":1} -> {}\n");
}

TEST(DiffOfAFile, WhatIsNoSettingsFileIsNamed) {
    const Outcome missing = run({"diff", "absent"});
    EXPECT_EQ(missing.exitCode, 5);
    EXPECT_EQ(missing.errors, "qrvsettings: cannot be read: No such file or directory, absent\n");
    writeFile("list", "[1]");
    const Outcome list = run({"diff", "list"});
    EXPECT_EQ(list.exitCode, 5);
    EXPECT_THAT(list.errors,
                testing::AllOf(testing::StartsWith("qrvsettings: cannot be compared: "),
                               HasSubstr(", list\n")));
    EXPECT_EQ(run({"diff", "-"}).exitCode, 5) << "empty";
    EXPECT_EQ(run({"diff", "--profile", "\xff"}).exitCode, 5);
}
