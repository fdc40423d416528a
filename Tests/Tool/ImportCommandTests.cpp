// SPDX-License-Identifier: MIT
// The command `import`, and migration by it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/ChildProcess.h"
#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using testing::StartsWith;
using ToolSupport::configurationFolder;
using ToolSupport::contentsOf;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::RunningTool;
using ToolSupport::settingsFile;
using ToolSupport::snapshot;
using ToolSupport::storedSettings;
using ToolSupport::writeFile;
using ToolSupport::writeSettings;

namespace {

constexpr const char* migrated =
    "qrvsettings: the settings are of an earlier version, and are migrated\n";

constexpr const char* flags =
    "<key>Migration</key><dict><key>CombinedPowerItems</key><true/><key>Profiles</key><true/>"
    "</dict>";

void expectRefused(const std::string& bytes, const std::string& message) {
    writeFile("new.plist", bytes);
    const auto before = snapshot(configurationFolder());
    for (const std::string option : {"--dry-run", "--replace-damaged"}) {
        const Outcome outcome = run({"import", "new.plist", option});
        EXPECT_EQ(outcome.exitCode, 5) << bytes;
        EXPECT_EQ(outcome.output, "") << bytes;
        EXPECT_THAT(outcome.errors, StartsWith("qrvsettings: " + message)) << bytes;
        EXPECT_TRUE(outcome.errors.ends_with(", new.plist\n")) << outcome.errors;
    }
    EXPECT_EQ(snapshot(configurationFolder()), before);
}

std::string ofAnEarlierVersion() {
    std::string items;
    for (const char* source : {"3", "8", "5", "8", "21"})
        items += std::string("<dict><key>source</key><integer>") + source + "</integer></dict>";
    return propertyList(
        "<key>CPU</key><dict><key>Menubar</key><dict><key>Enabled</key><false/></dict></dict>"
        "<key>Profiles</key><dict><key>Settings</key><dict><key>default</key><dict>"
        "<key>Combined</key><dict><key>Menubar</key><dict><key>Items</key><array>" +
        items + "</array></dict></dict></dict></dict></dict>");
}

}  // namespace

TEST(Import, ReplacesAllStoredSettings) {
    ASSERT_EQ(run({"set", "old", "1"}).exitCode, 0);
    writeFile("new.plist", propertyList(std::string("<key>a</key><real>1</real>") + flags));
    const Outcome outcome = run({"import", "new.plist"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "qrvsettings: 2 changed\n") << "records of the store do not count";
    EXPECT_EQ(run({"export", "--json"}).output,
              "{\"Migration\":{\"CombinedPowerItems\":true,\"Profiles\":true},\"a\":1.0}\n");
}

TEST(Import, TakesEveryFormat) {
    const std::string python =
        "import plistlib, sys\n"
        "tree = {'a': {'b': [1, 2.0, b'\\n']},\n"
        "        'Migration': {'CombinedPowerItems': True, 'Profiles': True}}\n"
        "plistlib.dump(tree, open('binary', 'wb'), fmt=plistlib.FMT_BINARY)\n"
        "plistlib.dump(tree, open('xml', 'wb'))\n";
    ASSERT_EQ(ToolSupport::runProgram(QRV_PYTHON, {"-c", python}).exitCode, 0);
    writeFile("json", R"({"Migration":{"CombinedPowerItems":true,"Profiles":true},
                          "a":{"b":[1,2.0,{"$data":"Cg=="}]}})");
    const std::string wanted =
        "{\"Migration\":{\"CombinedPowerItems\":true,\"Profiles\":true},"
        "\"a\":{\"b\":[1,2.0,{\"$data\":\"Cg==\"}]}}\n";
    for (const char* file : {"binary", "xml", "json"}) {
        ASSERT_EQ(run({"set", "a", "0"}).exitCode, 0);
        ASSERT_EQ(run({"import", "-"}, {contentsOf(file), {}}).exitCode, 0) << file;
        EXPECT_EQ(run({"export", "--json"}).output, wanted) << file;
        EXPECT_EQ(run({"import", file, "--dry-run"}).output, "") << file;
    }
    writeFile("old-style", "{ Migration = { CombinedPowerItems = 1; Profiles = 1; }; a = b; }");
    ASSERT_EQ(run({"import", "old-style"}).exitCode, 0);
    EXPECT_EQ(run({"get", "a"}).output, "b\n");
}

TEST(Import, GivesBackWhatWasExported) {
    ASSERT_EQ(
        run({"set", "a", R"({"d":{"$date":"2020-01-01T00:00:00Z"},"n":[1,1.0,true,""]})"}).exitCode,
        0);
    const std::string before = run({"export"}).output;
    writeFile("saved.plist", before);
    writeFile("saved.json", run({"export", "--json"}).output);
    for (const char* file : {"saved.plist", "saved.json"}) {
        ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
        ASSERT_EQ(run({"import", file}).exitCode, 0);
        EXPECT_EQ(run({"export"}).output, before) << file;
    }
}

TEST(Import, TakesWhatListPrints) {
    ASSERT_EQ(run({"set", "CPU.Menubar.Enabled", "false"}).exitCode, 0);
    const std::string before = contentsOf(settingsFile());
    writeFile("list.json", run({"list", "--json", "--layer", "stored"}).output);
    EXPECT_EQ(run({"diff", "list.json"}).exitCode, 0);
    EXPECT_EQ(run({"import", "list.json", "--dry-run"}).errors,
              "qrvsettings: nothing would change\n");
    ASSERT_EQ(run({"import", "list.json"}).exitCode, 0);
    EXPECT_EQ(contentsOf(settingsFile()), before);
    EXPECT_EQ(run({"get", "CPU.Menubar.Enabled"}).output, "false\n");
}

TEST(Import, GivesTheSameFileForOddTrees) {
    const std::vector<std::string> trees = {
        "<key></key><dict><key></key><integer>1</integer></dict><key>a</key><dict/>",
        "<key>a</key><dict><key>b</key><dict/><key>c&#9;&#10;</key><real>1</real></dict>",
        "<key>$date</key><string>x</string>",
        "<key>$dictionary</key><dict/>",
        "<key>\"q\" 'x' $HOME</key><array><dict><key>x.y</key><data>AQI=</data></dict></array>",
        "<key>--type</key><dict><key>\xc2\x9b</key><string>\xc2\x85&#27;\xef\xbf\xbe</string></"
        "dict>",
        "<key>d</key><date>2020-01-01T00:00:00Z</date><key>n</key><real>nan</real>",
    };
    for (const std::string& tree : trees) {
        writeSettings(propertyList(tree + flags));
        const std::string before = run({"export"}).output;
        for (const std::vector<std::string>& command :
             {std::vector<std::string>{"list", "--json", "--layer", "stored"},
              {"export", "--json"},
              {"export"}}) {
            const std::string printed = run(command).output;
            EXPECT_EQ(run({"diff", "-"}, {printed, {}}).exitCode, 0) << printed;
            writeFile(settingsFile(), propertyList(""));
            ASSERT_EQ(run({"import", "-"}, {printed, {}}).exitCode, 0) << printed;
            EXPECT_EQ(contentsOf(settingsFile()), before) << printed;
        }
    }
}

TEST(Import, TakesKeysWithDotsOnlyWhenAskedFor) {
    writeSettings(propertyList(std::string("<key>a.b</key><integer>1</integer>") + flags));
    const std::string before = run({"export"}).output;
    EXPECT_EQ(run({"list", "--json", "--layer", "stored"}).errors,
              "qrvsettings: no key path reaches this key, a.b\n");
    writeFile("saved.plist", before);
    for (const char* command : {"import", "diff"}) {
        const Outcome refused = run({command, "saved.plist"});
        EXPECT_EQ(refused.exitCode, 5);
        EXPECT_THAT(refused.errors,
                    HasSubstr("a key holds a dot, so that no key path reaches it: a.b; "
                              "--keep-dotted-keys takes it as it is, saved.plist\n"));
        EXPECT_EQ(run({command, "saved.plist", "--keep-dotted-keys"}).exitCode, 0);
    }
    EXPECT_EQ(run({"export"}).output, before);
    const std::string marked = run({"export", "--json"}).output;
    EXPECT_THAT(marked, StartsWith("{\"$dictionary\":{"));
    ASSERT_EQ(run({"import", "-"}, {marked, {}}).exitCode, 0);
    EXPECT_EQ(run({"export"}).output, before);
    ASSERT_EQ(run({"import", "-"}, {"{\"a.b\":2}", {}}).exitCode, 0);
    EXPECT_EQ(run({"get", "a.b"}).output, "2\n");
    ASSERT_EQ(run({"import", "-", "--keep-dotted-keys"}, {"{\"a.b\":2}", {}}).exitCode, 0);
    EXPECT_EQ(run({"get", "a.b"}).exitCode, 1);
}

TEST(Import, NamesKeyPathsThatExcludeEachOther) {
    expectRefused(R"({"CPU.Menubar":1,"CPU.Menubar.Enabled":false})",
                  "cannot be imported: CPU.Menubar has a value, so that there can be no "
                  "CPU.Menubar.Enabled");
    expectRefused(R"({"CPU":{"Width":1},"CPU.Width":2})",
                  "cannot be imported: two values for one key path: CPU.Width");
}

TEST(Import, SettingsOfAnEarlierVersionAreMigrated) {
    ASSERT_EQ(run({"set", "old", "1"}).exitCode, 0);
    writeFile("earlier.plist", ofAnEarlierVersion());
    const Outcome outcome = run({"import", "earlier.plist"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, migrated + std::string("qrvsettings: 5 changed\n"));
    EXPECT_EQ(run({"get", "Combined.Menubar.Items", "--layer", "stored"}).output,
              "[{\"source\":3},{\"source\":21},{\"source\":5},{\"source\":21}]\n");
    EXPECT_EQ(
        run({"get", "Profiles.Settings.default.CPU.Menubar.Enabled", "--layer", "stored"}).output,
        "false\n");
    EXPECT_EQ(run({"get", "Migration", "--layer", "stored"}).output,
              "{\"CombinedPowerItems\":true,\"Profiles\":true}\n");
    EXPECT_EQ(run({"get", "old"}).exitCode, 1);
    EXPECT_EQ(run({"set", "a", "1"}).errors, "") << "once";
}

TEST(Import, ArrivesAsOneChange) {
    ASSERT_EQ(run({"set", "m", "1"}).exitCode, 0);
    writeFile("new.json", run({"export", "--json"}).output);
    ASSERT_EQ(run({"set", "m", "2"}).exitCode, 0);
    ASSERT_EQ(run({"set", "z", "2"}).exitCode, 0);
    RunningTool watch({"watch", "--count", "2"});
    ASSERT_TRUE(waitUntil([&] { return watch.errors().ends_with(".plist\n"); })) << watch.errors();
    ASSERT_EQ(run({"import", "new.json"}).exitCode, 0);
    EXPECT_EQ(watch.finish().output, "m\t1\nz\tnull\n");
}

TEST(Import, WhatIsReplacedCannotBeInTheWay) {
    writeSettings(propertyList("<key>Device</key><string>flat</string>"));
    ASSERT_EQ(run({"get", "a"}).exitCode, 5);
    writeFile("new.plist", propertyList("<key>a</key><true/>"));
    EXPECT_EQ(run({"import", "new.plist"}).exitCode, 0);
    EXPECT_EQ(run({"get", "a"}).output, "true\n");
}

TEST(Import, RefusesWhatIsNoTreeOfSettings) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    expectRefused("", "cannot be imported: empty");
    expectRefused(" \n", "cannot be imported: empty");
    expectRefused("(1, 2)", "cannot be imported: the root is an array, not a dictionary");
    expectRefused("[1]", "cannot be imported: the root is an array, not a dictionary");
    expectRefused("<plist><string>a</string></plist>",
                  "cannot be imported: the root is a string, not a dictionary");
    expectRefused("<plist><dict><key>a</key></dict></plist>", "cannot be imported: ");
    expectRefused("bplist00x", "cannot be imported: ");
    expectRefused(R"({"a":)",
                  "cannot be imported: wrong JSON at line 1, column 6: unexpected end of input");
    expectRefused("{\n\"a\": null}", "cannot be imported: wrong JSON at line 2, column 6: null is");
    expectRefused("a: b", "cannot be imported: neither JSON nor a property list");
    expectRefused("{ Migration = flat; }", "cannot be migrated: ");
}

TEST(Import, NamesTheFileThatCannotBeRead) {
    const Outcome missing = run({"import", "absent.plist"});
    EXPECT_EQ(missing.exitCode, 5);
    EXPECT_EQ(missing.errors,
              "qrvsettings: cannot be read: No such file or directory, absent.plist\n");
    writeFile("large", "<");
    std::filesystem::resize_file("large", std::uintmax_t{64} * 1024 * 1024 + 1);
    EXPECT_EQ(run({"import", "large"}).exitCode, 5);
    EXPECT_FALSE(std::filesystem::exists(configurationFolder()));
}

TEST(Import, ADamagedFileIsReplacedWhenAskedFor) {
    writeSettings("{broken");
    writeFile("new.plist", propertyList("<key>a</key><true/>"));
    EXPECT_EQ(run({"import", "new.plist"}).exitCode, 3);
    EXPECT_EQ(run({"import", "new.plist", "--replace-damaged"}).exitCode, 0);
    EXPECT_EQ(storedSettings(), "{\"a\":true}");
    EXPECT_EQ(contentsOf(settingsFile().string() + ".damaged-1"), "{broken");
}

TEST(Import, SaysWhatStrictXMLReadersRefuse) {
    writeFile("new.json", R"({"a":{"b":"\u0001","c":"fine"},"d.e":"\ufffe","f":"1"})");
    EXPECT_THAT(
        run({"import", "new.json"}).errors,
        HasSubstr("qrvsettings: a string holds U+0001, which strict XML readers refuse, a.b\n"
                  "qrvsettings: a string holds U+FFFE, which strict XML readers refuse, "
                  "d.e\n"));
    std::string many = "{";
    for (const char key : {'a', 'b', 'c', 'd', 'e', 'f', 'g'})
        many += std::string(1, key) + " = \"\\001\"; ";
    EXPECT_THAT(run({"import", "-"}, {many + "}", {}}).errors,
                HasSubstr("U+0001, which strict XML readers refuse, e\nqrvsettings: they refuse 2 "
                          "more settings\n"));
}

TEST(Import, SaysWhenFractionsOfSecondsAreLost) {
    writeFile("new.json", R"({"a":{"$date":"2020-01-01T00:00:00.5Z"}})");
    EXPECT_THAT(run({"import", "new.json"}).errors,
                HasSubstr("fractions of seconds are not kept, new.json\n"));
    EXPECT_EQ(run({"get", "a"}).output, "2020-01-01T00:00:00Z\n");
}

TEST(ImportDryRun, PrintsWhatWouldChangeAndWritesNothing) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    writeFile("same.json", run({"export", "--json"}).output);
    ASSERT_EQ(run({"set", "a", "2"}).exitCode, 0);
    ASSERT_EQ(run({"set", "b", "2"}).exitCode, 0);
    const auto before = snapshot(configurationFolder());
    const Outcome outcome = run({"import", "same.json", "--dry-run"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "a\t2 -> 1\nb\t2 -> null\n");
    EXPECT_EQ(outcome.errors, "");
    writeFile("earlier.plist", ofAnEarlierVersion());
    const Outcome earlier = run({"import", "earlier.plist", "--dry-run"});
    EXPECT_THAT(earlier.output, HasSubstr("\nCombined.Menubar.Items\t[] -> [{\"source\":3},"));
    EXPECT_EQ(earlier.errors, migrated);
    EXPECT_EQ(snapshot(configurationFolder()), before);
}

TEST(ImportDryRun, SaysWhenNothingWouldChange) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    writeFile("same.plist", run({"export"}).output);
    const Outcome outcome = run({"import", "same.plist", "--dry-run"});
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "qrvsettings: nothing would change\n");
}
