// SPDX-License-Identifier: MIT
// The command `describe`.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>

#include "Tool/ToolSupport.h"

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::writeSettings;

namespace {

constexpr const char* width = "CPU.Menubar.Mode.HistoryGraph.Width";
constexpr const char* migrated =
    "<key>Migration</key><dict><key>CombinedPowerItems</key><true/><key>Profiles</key><true/>"
    "</dict>";

std::string described(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"describe"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    return outcome.output;
}

void installList() {
    setenv("XDG_DATA_HOME", std::filesystem::absolute("data").c_str(), 1);
    ToolSupport::writeFile("data/qrvsettings/known/host.json", R"({"settings":{
        "Host.Style":{"sentence":"How it looks.","kind":"string","default":"bar","choices":
            [{"value":"bar","sentence":"Bars side by side."},"line"],"renamed-from":["Host.Look"]},
        "Host.Width":{"sentence":"How wide it is.","kind":"integer","unit":"points",
                      "range":{"from":1,"to":9}}}})");
}

}  // namespace

TEST(Describe, OneSettingWithAllThatIsKnown) {
    EXPECT_EQ(described({width}),
              "key path: CPU.Menubar.Mode.HistoryGraph.Width\n"
              "what:     The width of the history graph in the CPU item of the menu bar.\n"
              "kind:     integer\n"
              "default:  40\n"
              "scope:    of the application\n"
              "value:    the default\n");
    writeSettings(
        propertyList(std::string(migrated) + "<key>UpdateFrequency</key><integer>3</integer>"));
    EXPECT_THAT(described({"UpdateFrequency"}), HasSubstr("\nvalue:    3 (stored)\n"));
    EXPECT_THAT(described({"Network.Menubar.Global.PrimaryInterface"}),
                HasSubstr("kind:     any kind\ndefault:  none\n"));
    EXPECT_THAT(described({"Device.Model"}), HasSubstr("scope:    a record of the store\n"));
}

TEST(Describe, ASettingOfEachProfileHasTheValueOfItsProfile) {
    writeSettings(
        propertyList(std::string(migrated) +
                     "<key>CPU</key><dict><key>Menubar</key><dict><key>Enabled</key><string>plain"
                     "</string></dict></dict><key>Profiles</key><dict><key>Settings</key><dict>"
                     "<key>default</key><dict><key>CPU</key><dict><key>Menubar</key><dict>"
                     "<key>Enabled</key><false/></dict></dict></dict>"
                     "<key>travel</key><dict><key>a</key><true/></dict></dict></dict>"));
    EXPECT_THAT(described({"CPU.Menubar.Enabled"}),
                HasSubstr("scope:    of each profile: default, travel\n"
                          "value:    false (stored in the profile default)\n"));
    EXPECT_THAT(described({"CPU.Menubar.Enabled", "--profile", "travel"}),
                HasSubstr("value:    the default\n"));
    EXPECT_THAT(described({"Profiles.Settings.travel.CPU.Menubar.Enabled"}),
                HasSubstr("key path: CPU.Menubar.Enabled\n"));
}

TEST(Describe, SeveralByTheirKeyPaths) {
    EXPECT_EQ(described({"Weather.Menu"}),
              "Weather.Menu.Forecast.Graph.1\n"
              "    What graph 1 of the weather forecast shows. String, default \"windspeed\".\n"
              "Weather.Menu.Forecast.Graph.2\n"
              "    What graph 2 of the weather forecast shows. String, default \"humidity\".\n");
    const std::string fans = described({"Sensors.Global.Fans"});
    EXPECT_THAT(fans, testing::StartsWith("key path: Sensors.Global.Fans\n"));
    EXPECT_THAT(fans, HasSubstr("\n\nSensors.Global.Fans.Curve.Manual.Sync\n    "));
}

TEST(Describe, AllKnownSettingsInLinesThatATerminalHasRoomFor) {
    const std::string all = described({});
    std::istringstream lines(all);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80U) << line;
    EXPECT_THAT(all, HasSubstr("\n\nCPU.Global.EfficiencyCores.Visible\n"));
    EXPECT_THAT(all, HasSubstr("MenubarCurrentApperance\n    The appearance of the menu bar. A "
                               "record of the store.\n"));
    const json objects = json::parse(described({"--json"}));
    const json listed = json::parse(run({"list", "--keys", "--json", "--layer", "default"}).output);
    EXPECT_GT(objects.size(), listed.size());
    for (const json& one : listed) {
        const std::string keyPath = one;
        // A location is one setting.
        EXPECT_THAT(all, HasSubstr(keyPath.substr(0, keyPath.find(".identifier")) + "\n    "));
    }
}

TEST(Describe, ListsOfHostsAddToIt) {
    installList();
    EXPECT_EQ(described({"Host"}),
              "Host.Style\n    How it looks. One of bar, line, default \"bar\".\n"
              "Host.Width\n    How wide it is. Integer from 1 to 9 points.\n");
    const std::string style = described({"Host.Style"});
    EXPECT_THAT(style, HasSubstr("choice:   bar: Bars side by side.\nchoice:   line\n"));
    EXPECT_THAT(style, HasSubstr("earlier:  Host.Look\n"));
    EXPECT_THAT(style, HasSubstr("/known/host.json\n"));
    EXPECT_THAT(described({"Host.Width"}), HasSubstr("range:    from 1 to 9 points\n"));
    const json object = json::parse(described({"Host.Style", "--json"}))[0];
    EXPECT_EQ(object["choices"][0], json({{"value", "bar"}, {"sentence", "Bars side by side."}}));
    EXPECT_EQ(object["renamedFrom"], json({"Host.Look"}));
    EXPECT_EQ(object["value"], nullptr);
    EXPECT_EQ(object["layer"], "none");
}

TEST(Describe, PrintsObjectsWhenAskedForJSON) {
    EXPECT_EQ(described({"CPU.Menubar.Enabled", "--json"}),
              R"([{"choices":[],"default":true,"keyPath":"CPU.Menubar.Enabled","kind":"boolean",)"
              R"("layer":"default","list":null,"maximum":null,"minimum":null,"profile":"default",)"
              R"("renamedFrom":[],"scope":"profile","sentence":"Whether the CPU item of the menu )"
              R"(bar is enabled.","unit":null,"value":true}])"
              "\n");
}

TEST(Describe, SaysWhatIsNotKnown) {
    const Outcome typo = run({"describe", "CPU.Menubar.Enable"});
    EXPECT_EQ(typo.exitCode, 1);
    EXPECT_EQ(typo.errors,
              "qrvsettings: nothing is known, CPU.Menubar.Enable; did you mean "
              "CPU.Menubar.Enabled?\n");
    EXPECT_EQ(run({"describe", "GPU.Menubar.Enabled"}).errors,
              "qrvsettings: nothing is known, GPU.Menubar.Enabled\n");
    EXPECT_EQ(run({"describe", "a\xff"}).exitCode, 5);
}

TEST(Describe, NeedsNoSettingsFile) {
    writeSettings("{broken");
    const Outcome outcome = run({"describe", width});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("default:  40\n"));
    EXPECT_THAT(outcome.errors, HasSubstr("damaged"));
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::settingsFile().string() + ".damaged-1"));
}

TEST(ValueCandidates, AreWhatTheSettingTakes) {
    const auto candidates = [](std::vector<std::string> words) {
        words.insert(words.begin(), {"completion", "candidates", "--"});
        return run(words).output;
    };
    installList();
    EXPECT_EQ(candidates({"set", "CPU.Menubar.Enabled", ""}),
              "false\ntrue\tthe default, the present value\n");
    EXPECT_EQ(candidates({"set", "--profile", "p", "CPU.Menubar.Enabled", "f"}), "false\n");
    EXPECT_EQ(candidates({"set", "Host.Style", ""}),
              "bar\tBars side by side. (the default)\nline\n");
    ASSERT_EQ(run({"set", width, "60"}).exitCode, 0);
    EXPECT_EQ(candidates({"set", width, ""}), "40\tthe default\n60\tthe present value\n");
    const std::string color = "Network.Menubar.Mode.Status.NoIP.Color";
    EXPECT_EQ(candidates({"set", color, ""}), "1 0.776 0 1\tthe default, the present value\n");
    ASSERT_EQ(run({"color", "set", color, "#000000"}).exitCode, 0);
    EXPECT_EQ(candidates({"color", "set", color, ""}),
              "#000000ff\tthe present value\n#ffc600ff\tthe default\n");
    EXPECT_EQ(candidates({"set", "Notifications.Items", ""}), "");
    EXPECT_EQ(candidates({"set", "CPU.Menubar", ""}), "");
}

TEST(KeyPathCandidates, HaveTheSentencesOfWhatIsKnown) {
    const std::string sentence = "\tWhether the CPU item of the menu bar is enabled.\n";
    for (const char* command : {"get", "set", "describe", "list"})
        EXPECT_EQ(run({"completion", "candidates", "--", command, "CPU.Menubar.E"}).output,
                  "CPU.Menubar.Enabled" + sentence);
    EXPECT_EQ(run({"completion", "candidates", "--", "describe", "Device.M"}).output,
              "Device.Model\tThe model of the machine that last used the settings.\n");
}
