// SPDX-License-Identifier: MIT
// The commands `set` and `unset`.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using ToolSupport::contentsOf;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::settingsFile;
using ToolSupport::storedSettings;
using ToolSupport::writeSettings;

TEST(Set, TheFileHoldsTheValueOnReturn) {
    EXPECT_EQ(run({"set", "CPU.Width", "40"}).exitCode, 0);
    EXPECT_THAT(contentsOf(settingsFile()), HasSubstr("<integer>40</integer>"));
}

TEST(Set, ANewFileIsPrivate) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    struct stat status {};
    ASSERT_EQ(stat(settingsFile().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST(Set, OneProcessBuildsOnWhatAnotherWrote) {
    ASSERT_EQ(run({"set", "CPU.Width", "40"}).exitCode, 0);
    ASSERT_EQ(run({"set", "CPU.Enabled", "true"}).exitCode, 0);
    ASSERT_EQ(run({"set", "CPU.Width", "41"}).exitCode, 0);
    EXPECT_EQ(storedSettings(), "{\"CPU\":{\"Enabled\":true,\"Width\":41}}");
}

TEST(Set, WritesAnEqualNumberOfAnotherKind) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    ASSERT_EQ(run({"set", "a", "1.0"}).exitCode, 0);
    EXPECT_EQ(run({"get", "a"}).output, "1.0\n");
}

TEST(Set, ReplacesADictionaryAndSaysWhatWasInIt) {
    ASSERT_EQ(run({"set", "a.b", "1"}).exitCode, 0);
    const Outcome outcome = run({"set", "a", "2"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "qrvsettings: this replaces what was stored below, a: a.b was 1\n");
    EXPECT_EQ(storedSettings(), "{\"a\":2}");
}

TEST(Set, ADictionaryReplacesWhatWasStoredBelowAndSaysWhat) {
    ASSERT_EQ(run({"set", "a", R"({"b":1,"c":{"d":"x","e":true},"same":[1]})"}).exitCode, 0);
    EXPECT_EQ(run({"set", "a", R"({"b":1.0,"new":1,"same":[1]})"}).errors,
              "qrvsettings: this replaces what was stored below, a: a.b was 1, a.c.d was \"x\", "
              "a.c.e was true\n");
    EXPECT_EQ(run({"set", "a", R"({"b":1.0,"new":1,"same":[1],"more":{}})"}).errors, "");
    EXPECT_EQ(run({"set", "a", "{}", "--quiet"}).errors, "");
    ASSERT_EQ(run({"set", "a", R"({"b":1,"c":2,"d":3,"e":4,"f":5,"g":6,"h":7})"}).exitCode, 0);
    EXPECT_EQ(run({"set", "a", "{}"}).errors,
              "qrvsettings: this replaces what was stored below, a: a.b was 1, a.c was 2, a.d was "
              "3, a.e was 4, a.f was 5, and 2 more\n");
    EXPECT_EQ(run({"get", "a"}).output, "{}\n");
}

TEST(Set, ADefaultIsNotStoredAndLeavesNoEmptyLevel) {
    const std::string byDefault = run({"get", "CPU.Menubar"}).output;
    ASSERT_EQ(run({"set", "CPU.Menubar.Enabled", "true"}).exitCode, 0);
    EXPECT_EQ(run({"get", "CPU.Menubar"}).output, byDefault);
    EXPECT_EQ(run({"export"}).exitCode, 1) << "nothing is set";
    ASSERT_EQ(run({"set", "CPU.Menubar.Enabled", "false"}).exitCode, 0);
    ASSERT_EQ(run({"set", "CPU.Menubar.Enabled", "true"}).exitCode, 0);
    EXPECT_EQ(run({"get", "CPU.Menubar"}).output, byDefault);
    EXPECT_EQ(storedSettings(), "{}");
}

TEST(Set, SaysWhichCharactersStrictXMLReadersRefuse) {
    const auto said = [](const std::string& what, const std::string& keyPath) {
        return "qrvsettings: a " + what + ", which strict XML readers refuse, " + keyPath + "\n";
    };
    EXPECT_EQ(run({"set", "a", "\x1b[m"}).errors, said("string holds U+001B", "a"));
    EXPECT_EQ(run({"set", "b", "\xef\xbf\xbe"}).errors, said("string holds U+FFFE", "b"));
    EXPECT_EQ(run({"set", "c", "[\"x\",{\"\\uffff\":1}]"}).errors, said("key holds U+FFFF", "c"));
    EXPECT_EQ(run({"set", "d", R"({"e":{"f\u0000":{"g":1}}})"}).errors,
              said("key holds U+0000", "d.e.f\\x00"));
    EXPECT_EQ(run({"set", "e\x01", "1"}).errors, said("key holds U+0001", "e\\x01"));
    EXPECT_EQ(run({"set", "f", "\t\r\n\x7f\xc2\x9b\xef\xbf\xbd😀"}).errors, "");
    EXPECT_EQ(run({"set", "a", "\x1b", "--quiet"}).errors, "");
    const auto python = ToolSupport::runProgram(
        QRV_PYTHON,
        {"-c", "import plistlib, sys\nplistlib.load(open(sys.argv[1], 'rb'))", settingsFile()});
    EXPECT_NE(python.exitCode, 0) << "a strict reader";
}

TEST(Set, AnEmptyFileIsNoObstacle) {
    writeSettings("");
    const Outcome outcome = run({"set", "a", "1"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(run({"get", "a"}).output, "1\n");
}

TEST(Set, NamesTheStoredValueInTheWay) {
    writeSettings(
        propertyList("<key>CPU</key><dict><key>Width</key><integer>40</integer></dict>"
                     "<key>Items</key><array/>"));
    const std::string before = contentsOf(settingsFile());
    const Outcome outcome = run({"set", "CPU.Width.Max.x", "1"});
    EXPECT_EQ(outcome.exitCode, 5);
    EXPECT_EQ(outcome.errors,
              "qrvsettings: a stored value is in the way: CPU.Width is an integer, "
              "CPU.Width.Max.x\n");
    EXPECT_EQ(run({"set", "Items.0", "1"}).errors,
              "qrvsettings: a stored value is in the way: Items is an array, Items.0\n");
    EXPECT_EQ(contentsOf(settingsFile()), before);
}

TEST(Unset, RemovesWhatIsStored) {
    ASSERT_EQ(run({"set", "a", R"({"b":1,"c":2,"d":3})"}).exitCode, 0);
    const Outcome outcome = run({"unset", "a.b", "a.c"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output + outcome.errors, "");
    EXPECT_EQ(storedSettings(), "{\"a\":{\"d\":3}}");
}

TEST(Unset, BringsTheDefaultBackAlsoOfTheLevelsAbove) {
    const std::string location = "Astronomical.Global.Location";
    const std::string byDefault = run({"get", location}).output;
    ASSERT_NE(byDefault, "{}\n");
    ASSERT_EQ(run({"set", location + ".identifier", "5"}).exitCode, 0);
    ASSERT_EQ(run({"unset", location + ".identifier"}).exitCode, 0);
    EXPECT_EQ(run({"get", location}).output, byDefault);
    EXPECT_EQ(storedSettings(), "{}");
    ASSERT_EQ(run({"set", location + ".identifier", "5"}).exitCode, 0);
    ASSERT_EQ(run({"apply", "-"}, {"unset " + location + ".identifier\n", {}}).exitCode, 0);
    EXPECT_EQ(storedSettings(), "{}");
}

TEST(Unset, LeavesLevelsThatStillHoldSomething) {
    ASSERT_EQ(run({"set", "a", R"({"b":{"c":{"d":1}},"e":{}})"}).exitCode, 0);
    ASSERT_EQ(run({"unset", "a.b.c.d"}).exitCode, 0);
    EXPECT_EQ(storedSettings(), R"({"a":{"e":{}}})");
    ASSERT_EQ(run({"apply", "-"}, {"unset a.e.absent\n", {}}).exitCode, 0);
    EXPECT_EQ(storedSettings(), R"({"a":{"e":{}}})") << "which is what was stored";
    ASSERT_EQ(run({"unset", "a.e"}).exitCode, 0);
    EXPECT_EQ(storedSettings(), "{}");
}

TEST(Unset, AProfileWithoutSettingsIsGone) {
    ASSERT_EQ(run({"set", "--profile", "work", "CPU.Menubar.Enabled", "false"}).exitCode, 0);
    EXPECT_EQ(run({"profiles"}).output, "default\nwork\n");
    ASSERT_EQ(run({"unset", "--profile", "work", "CPU.Menubar.Enabled"}).exitCode, 0);
    EXPECT_EQ(run({"profiles"}).output, "default\n");
}

TEST(Unset, NamesWhatIsNotSetAndRemovesTheRest) {
    ASSERT_EQ(run({"set", "a", R"({"b":1,"c":2})"}).exitCode, 0);
    const Outcome outcome = run({"unset", "x", "a.b", "a.b.c"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "qrvsettings: not set, x\nqrvsettings: not set, a.b.c\n");
    EXPECT_EQ(storedSettings(), "{\"a\":{\"c\":2}}");
}

TEST(Unset, LeavesTheFileAloneWhenNothingIsSet) {
    EXPECT_EQ(run({"unset", "x"}).exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
    writeSettings(propertyList("<key>a</key><true/>"));
    const auto before = ToolSupport::snapshot(ToolSupport::configurationFolder());
    EXPECT_EQ(run({"unset", "x", "y"}).exitCode, 1);
    EXPECT_EQ(ToolSupport::snapshot(ToolSupport::configurationFolder()), before);
}

TEST(Unset, OneKeyPathMayLieBelowAnother) {
    for (const bool parentFirst : {true, false}) {
        ASSERT_EQ(run({"set", "a", R"({"b":{"c":1}})"}).exitCode, 0);
        ASSERT_EQ(run({"set", "z", "1"}).exitCode, 0);
        const Outcome outcome =
            parentFirst ? run({"unset", "a", "a.b.c", "a"}) : run({"unset", "a.b.c", "a", "a.b.c"});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_EQ(storedSettings(), "{\"z\":1}");
    }
}

TEST(Set, AnEmptyKeyIsNamedAsJSON) {
    ASSERT_EQ(run({"set", "", "4"}).exitCode, 0);
    EXPECT_EQ(run({"set", ".a", "4"}).errors,
              "qrvsettings: a stored value is in the way: \"\" is an integer, .a\n");
    EXPECT_EQ(run({"list", "--layer", "stored"}).output, "\"\"\t4\n");
}
