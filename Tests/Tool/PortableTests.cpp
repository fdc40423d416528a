// SPDX-License-Identifier: MIT
// `export --portable` and `import --portable`: what belongs to one machine.
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>

#include "Tool/ToolSupport.h"

using ToolSupport::Outcome;
using ToolSupport::run;
using ToolSupport::writeFile;

namespace {

nlohmann::json exported(const std::vector<std::string>& options = {}) {
    std::vector<std::string> words = {"export", "--json"};
    words.insert(words.end(), options.begin(), options.end());
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    return nlohmann::json::parse(outcome.output);
}

const std::string settingsOfMachines =
    R"({"CPU":{"Menubar":{"Width":60}},"Keep":{"Empty":{}},
        "Device":{"Device":"another","Model":"another"},
        "MenubarCurrentApperance":"NSAppearanceNameDarkAqua",
        "Migration":{"CombinedPowerItems":true,"Profiles":true},
        "Network":{"Menubar":{"Global":{"PrimaryInterface":"eth0"}}},
        "Sensors":{"Global":{"Fans":{"1":{"Speed":2}},"Unit":"C"}},
        "Profiles":{"Available":{"identifier":"default"},"Settings":{
            "default":{"Sensors":{"Menubar":{"Sensors":["a"],"Width":1}},"x":1},
            "work":{"Sensors":{"Menubar":{"Sensors":["b"]}}}}}})";

void import(const std::string& text, const std::vector<std::string>& options = {}) {
    writeFile("settings.json", text);
    std::vector<std::string> words = {"import", "settings.json"};
    words.insert(words.end(), options.begin(), options.end());
    const Outcome outcome = run(words);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
}

/// By key path, without empty dictionaries.
std::map<std::string, std::string> leavesOf(const nlohmann::json& settings) {
    std::map<std::string, std::string> leaves;
    const nlohmann::json flat = settings.flatten();
    for (const auto& [keyPath, value] : flat.items())
        if (!value.is_null()) leaves[keyPath] = value.dump();
    return leaves;
}

}  // namespace

TEST(Portable, LeavesOutWhatTheStartOnAnotherMachineResets) {
    import(settingsOfMachines);
    const auto portable = leavesOf(exported({"--portable"}));
    ASSERT_EQ(run({"unset", "CPU.Menubar.Width"}).exitCode, 0);
    ASSERT_EQ(run({"set", "CPU.Menubar.Width", "60"}).exitCode, 0);
    nlohmann::json afterStart = exported();
    EXPECT_NE(afterStart["Device"]["Device"], "another");
    afterStart.erase("Device");
    afterStart.erase("MenubarCurrentApperance");
    EXPECT_EQ(portable, leavesOf(afterStart));
}

TEST(Portable, LeavesOutTheRecordsOfTheMachineAndKeepsThoseOfMigrations) {
    import(settingsOfMachines);
    const nlohmann::json portable = exported({"--portable"});
    EXPECT_FALSE(portable.contains("Device"));
    EXPECT_FALSE(portable.contains("MenubarCurrentApperance"));
    EXPECT_FALSE(portable.contains("Network"));
    EXPECT_EQ(portable["Keep"].dump(), R"({"Empty":{}})");
    EXPECT_EQ(portable["Migration"].dump(), R"({"CombinedPowerItems":true,"Profiles":true})");
    EXPECT_EQ(portable["Profiles"]["Settings"]["default"].dump(),
              R"({"Sensors":{"Menubar":{"Width":1}},"x":1})");
}

TEST(Portable, AnImportOnAnotherMachineKeepsWhatBelongsThere) {
    import(R"({"Device":{"Device":"here"},"Sensors":{"Global":{"Fans":{"1":9}}},
               "Migration":{"CombinedPowerItems":true,"Profiles":true},"Old":1})");
    import(settingsOfMachines, {"--portable"});
    const nlohmann::json settings = exported();
    EXPECT_EQ(settings["Device"].dump(), R"({"Device":"here"})");
    EXPECT_EQ(settings["Sensors"].dump(), R"({"Global":{"Fans":{"1":9},"Unit":"C"}})");
    EXPECT_EQ(settings["CPU"]["Menubar"]["Width"], 60);
    EXPECT_FALSE(settings.contains("Network"));
    EXPECT_FALSE(settings.contains("Old"));
}

TEST(Portable, SettingsOfTheMachineAloneAreNothing) {
    ToolSupport::writeSettings(ToolSupport::propertyList(
        "<key>Device</key><dict><key>Device</key><string>here</string></dict>"));
    const Outcome outcome = run({"export", "--portable"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "qrvsettings: nothing is set\n");
}

TEST(Portable, AValueInPlaceOfALevelIsKept) {
    ToolSupport::writeSettings(ToolSupport::propertyList(
        "<key>Device</key><true/><key>Profiles</key><integer>1</integer>"));
    EXPECT_EQ(exported({"--portable"}).dump(), R"({"Device":true,"Profiles":1})");
}
