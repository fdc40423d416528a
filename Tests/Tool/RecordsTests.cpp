// SPDX-License-Identifier: MIT
// What the store keeps for itself stays out of what people list, compare and repeat.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/ChildProcess.h"
#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using testing::Not;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::RunningTool;
using ToolSupport::writeFile;
using ToolSupport::writeSettings;

namespace {

constexpr const char* width = "CPU.Menubar.Mode.HistoryGraph.Width";
const std::vector<std::string> records = {"Device.Device",
                                          "Device.Model",
                                          "Migration.CombinedPowerItems",
                                          "Migration.Profiles",
                                          "Profiles.Available.identifier",
                                          "MenubarCurrentApperance"};

void set(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"set"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const Outcome outcome = run(words);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
}

/// One setting of a person, and every record there is.
void makeRecords() {
    set({width, "60"});
    ASSERT_EQ(run({"appearance", "set", "dark"}).exitCode, 0);
}

void expectRecordsOnlyWhenAskedFor(std::vector<std::string> arguments) {
    const std::string without = run(arguments).output;
    arguments.emplace_back("--records");
    const std::string with = run(arguments).output;
    for (const std::string& record : records) {
        EXPECT_THAT(without, Not(HasSubstr(record))) << testing::PrintToString(arguments);
        EXPECT_THAT(with, HasSubstr(record)) << testing::PrintToString(arguments);
    }
    EXPECT_THAT(without, HasSubstr(width));
    EXPECT_THAT(with, HasSubstr(width));
}

}  // namespace

TEST(Records, TheFirstSetOfAMachineIsOneDifference) {
    set({width, "60"});
    EXPECT_EQ(run({"diff"}).output, std::string(width) + "\t40 -> 60\n");
    EXPECT_EQ(run({"diff", "--as-commands"}).output,
              std::string("qrvsettings set -- '") + width + "' '60'\n");
    EXPECT_EQ(run({"list", "--layer", "stored"}).output, std::string(width) + "\t60\n");
}

TEST(Records, ArePrintedWhenAskedFor) {
    makeRecords();
    expectRecordsOnlyWhenAskedFor({"diff"});
    expectRecordsOnlyWhenAskedFor({"diff", "--json"});
    expectRecordsOnlyWhenAskedFor({"diff", "--as-commands"});
    expectRecordsOnlyWhenAskedFor({"list"});
    expectRecordsOnlyWhenAskedFor({"list", "--json"});
    expectRecordsOnlyWhenAskedFor({"list", "--keys", "--layer", "stored"});
    expectRecordsOnlyWhenAskedFor({"search", "e"});
    writeFile("nothing.json", "{}");
    expectRecordsOnlyWhenAskedFor({"diff", "nothing.json"});
}

TEST(Records, AreNoDifferenceOfTwoMachines) {
    makeRecords();
    writeFile("other.plist", propertyList("<key>Device</key><dict><key>Device</key>"
                                          "<string>another</string></dict><key>a</key><true/>"));
    EXPECT_EQ(run({"diff", "other.plist"}).output,
              std::string(width) + "\t60 -> null\na\tnull -> true\n");
    set({"a", "true"});
    ASSERT_EQ(run({"unset", width}).exitCode, 0);
    const Outcome same = run({"diff", "other.plist"});
    EXPECT_EQ(same.exitCode, 0);
    EXPECT_EQ(same.output, "");
}

TEST(Records, CommandsForAnotherMachineLeaveItsHardwareSettings) {
    writeSettings(
        propertyList("<key>Device</key><dict><key>Device</key><string>another</string>"
                     "<key>Model</key><string>another</string></dict><key>a</key><true/>"));
    const std::string commands = run({"diff", "--as-commands"}).output;
    EXPECT_EQ(commands, "qrvsettings set -- 'a' 'true'\n");
    std::filesystem::remove(ToolSupport::settingsFile());
    set({"Network.Menubar.Global.PrimaryInterface", "eth0"});
    ASSERT_EQ(ToolSupport::runShell(commands).exitCode, 0);
    EXPECT_EQ(run({"get", "a"}).output, "true\n");
    EXPECT_EQ(run({"get", "Network.Menubar.Global.PrimaryInterface"}).output, "eth0\n");
}

TEST(Records, AnswerThoseWhoNameThem) {
    makeRecords();
    EXPECT_EQ(run({"get", "MenubarCurrentApperance"}).output, "Dark\n");
    EXPECT_THAT(run({"get", "Device"}).output, HasSubstr("\"Device\":"));
    EXPECT_THAT(run({"list", "Device"}).output, HasSubstr("Device.Model\t"));
    EXPECT_EQ(run({"list", "Migration", "--keys"}).output,
              "Migration.CombinedPowerItems\nMigration.Profiles\n");
    EXPECT_EQ(run({"list", "Combined.Menubar.Items"}).output, "Combined.Menubar.Items\t[]\n");
}

TEST(Records, AreNamedWhereNothingElseIsFound) {
    makeRecords();
    ASSERT_EQ(run({"unset", width}).exitCode, 0);
    const Outcome list = run({"list", "--layer", "stored"});
    EXPECT_EQ(list.exitCode, 1);
    EXPECT_EQ(list.errors, "qrvsettings: nothing is set but records of the store (--records)\n");
    const Outcome search = run({"search", "apperance"});
    EXPECT_EQ(search.exitCode, 1);
    EXPECT_EQ(search.errors,
              "qrvsettings: not found, apperance, but in records of the store (--records)\n");
    EXPECT_EQ(run({"diff"}).exitCode, 0);
}

TEST(Records, ATreeForImportHasThem) {
    makeRecords();
    set({"--profile", "default", "CPU.Menubar.Enabled", "false"});
    const std::string before = run({"export"}).output;
    writeFile("tree.json", run({"list", "--json", "--layer", "stored"}).output);
    ASSERT_EQ(run({"unset", width}).exitCode, 0);
    ASSERT_EQ(run({"import", "tree.json"}).exitCode, 0);
    EXPECT_EQ(run({"export"}).output, before);
}

TEST(Records, AListThatSomebodyEmptiedIsADifference) {
    set({"Combined.Menubar.Items", R"([{"source":1}])"});
    EXPECT_EQ(run({"diff"}).output, "Combined.Menubar.Items\tnull -> [{\"source\":1}]\n");
    writeFile("before.plist", run({"export"}).output);
    set({"Combined.Menubar.Items", "[]"});
    EXPECT_EQ(run({"diff", "before.plist"}).output,
              "Combined.Menubar.Items\t[] -> [{\"source\":1}]\n");
    EXPECT_EQ(run({"diff"}).output, "");
}

TEST(Records, OfAProfileAreSettings) {
    set({"--profile", "travel", "Device.Device", "mine"});
    EXPECT_EQ(run({"diff", "--profile", "travel"}).output, "Device.Device\tnull -> \"mine\"\n");
    EXPECT_EQ(run({"list", "--profile", "travel", "--layer", "stored"}).output,
              "Device.Device\t\"mine\"\n");
}

TEST(Records, AWatchCountsOnlyTheChangesOfPeople) {
    RunningTool watch({"watch", "--count", "1"});
    ASSERT_TRUE(waitUntil([&] { return watch.errors().ends_with(".plist\n"); })) << watch.errors();
    set({width, "60"});
    EXPECT_EQ(watch.finish().output, std::string(width) + "\t60\n");
}

TEST(Records, AWatchPrintsThemWhenAskedFor) {
    RunningTool all({"watch", "--records", "--count", "8"});
    RunningTool device({"watch", "Device", "--count", "2", "--as-commands"});
    for (const RunningTool* watch : {&all, &device}) {
        ASSERT_TRUE(waitUntil([&] { return watch->errors().ends_with(".plist\n"); }))
            << watch->errors();
    }
    set({width, "60"});
    EXPECT_THAT(all.finish().output, HasSubstr("Device.Device\t"));
    EXPECT_THAT(device.finish().output, HasSubstr("qrvsettings set -- 'Device.Device' "));
}
